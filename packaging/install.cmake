# What is installed. tools/package.sh makes the packages of it.
#
# Users get the guides, not the developers' pages, and the samples with what the converter makes of them.
set(guides docs/finishing.md docs/commands.md)
file(GLOB samples RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS samples/*.mr[lp])
list(FILTER samples EXCLUDE REGEX "_conv\\.mr[lp]$")

# Builds of the converter alone have no murlreport to install.
set(programs murlconv)
if(MURL_REPORT)
  list(APPEND programs murlreport)
endif()

if(WIN32)
  # Installs a text with Windows line ends.
  function(install_text source folder name)
    set(text ${CMAKE_BINARY_DIR}/texts/${name})
    file(READ ${CMAKE_SOURCE_DIR}/${source} content)
    string(REPLACE "\n" "\r\n" content "${content}")
    file(WRITE ${text} "${content}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    install(FILES ${text} DESTINATION ${folder})
  endfunction()

  install(TARGETS ${programs} DESTINATION .)
  install_text(packaging/README.txt . README.txt)
  install_text(CHANGELOG.md . CHANGELOG.txt)
  install_text(LICENSE . LICENSE.txt)
  install_text(packaging/copyright . COPYRIGHT.txt)
  install_text(packaging/mcomp.txt . mcomp.txt)
  # tools/package.sh adds the guides as HTML.
  foreach(sample ${samples})
    get_filename_component(stem ${sample} NAME_WE)
    get_filename_component(extension ${sample} EXT)
    install(FILES ${sample} DESTINATION examples)
    install_text(tests/golden/samples/${stem}.want examples ${stem}_conv${extension})
  endforeach()
  return()
endif()

include(GNUInstallDirs)
install(TARGETS ${programs} DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES CHANGELOG.md LICENSE packaging/mcomp.txt ${guides} DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME COPYRIGHT)
if(MURL_REPORT)
  install(FILES docs/report.schema.json DESTINATION ${CMAKE_INSTALL_DOCDIR})
  install(
    FILES packaging/murlreport.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME murlreport)
  install(
    FILES packaging/murlreport.zsh
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    RENAME _murlreport)
endif()
foreach(sample ${samples})
  get_filename_component(stem ${sample} NAME_WE)
  get_filename_component(extension ${sample} EXT)
  install(FILES ${sample} DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
  install(
    FILES tests/golden/samples/${stem}.want
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
    RENAME ${stem}_conv${extension})
endforeach()

# The man pages name the folder of the documents, and "cmake --install --prefix" can still change it: they are
# written when they are installed.
file(STRINGS CHANGELOG.md day REGEX "^## " LIMIT_COUNT 1)
string(REGEX REPLACE ".*, " "" day "${day}")
set(reporting "There is no address yet at which bugs can be reported.")
file(STRINGS packaging/home contact REGEX "^contact=.")
if(contact)
  string(REGEX REPLACE "^contact=" "Report bugs to " reporting "${contact}.")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md packaging/home)
foreach(program ${programs})
  install(CODE "
    set(version [[${PROJECT_VERSION}]])
    set(day [[${day}]])
    set(reporting [[${reporting}]])
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE prefix)
    cmake_path(APPEND prefix [[${CMAKE_INSTALL_DOCDIR}]] OUTPUT_VARIABLE documents)
    configure_file(
      [[${CMAKE_CURRENT_LIST_DIR}/${program}.1.in]] [[${CMAKE_BINARY_DIR}/${program}.1]] @ONLY NEWLINE_STYLE UNIX)")
  install(FILES ${CMAKE_BINARY_DIR}/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
