# Writes texts as literals: cmake -P embed.cmake -- OUTPUT TEXT... makes page_html of page.html, and so on. A compiler
# may bound the length of a literal's line, so each line of a text is a piece of its own.
set(code "// Made by src/report/page/embed.cmake.\n#include \"report/page_parts.h\"\n")
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE 5 ${last})
  get_filename_component(name ${CMAKE_ARGV${i}} NAME)
  string(REPLACE "." "_" name ${name})
  file(READ ${CMAKE_ARGV${i}} text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\n" "\\n\"\n    \"" text "${text}")
  string(APPEND code "\nconst char ${name}[] =\n    \"${text}\";\n")
endforeach()
file(WRITE ${CMAKE_ARGV4} "${code}")
