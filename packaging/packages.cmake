# What is installed, and the packages made of it by tools/package.sh: a zip for Windows, a deb for Debian.
#
# Users get the guides, not the developers' pages, and the samples with what the converter makes of them.
set(guides docs/finishing.md docs/commands.md)
file(GLOB samples RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS samples/*.mr[lp])
list(FILTER samples EXCLUDE REGEX "_conv\\.mr[lp]$")

# Builds of the converter alone have no murlreport to install; the packages are made of builds that have.
set(report_program)
if(MURL_REPORT)
  set(report_program murlreport)
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

  install(TARGETS murlconv ${report_program} DESTINATION .)
  install_text(packaging/README.txt . README.txt)
  install_text(CHANGELOG.md . CHANGELOG.txt)
  install_text(LICENSE . LICENSE.txt)
  install_text(packaging/copyright . COPYRIGHT.txt)
  install_text(packaging/mcomp.txt . mcomp.txt)
  foreach(guide ${guides} docs/windows.md)
    get_filename_component(name ${guide} NAME)
    install_text(${guide} docs ${name})
  endforeach()
  foreach(sample ${samples})
    get_filename_component(stem ${sample} NAME_WE)
    get_filename_component(extension ${sample} EXT)
    install(FILES ${sample} DESTINATION examples)
    install_text(tests/golden/samples/${stem}.want examples ${stem}_conv${extension})
  endforeach()

  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-windows)
else()
  set(doc share/doc/murlconv)
  set(debian_revision 1)
  set(maintainer "the murlconv authors <murlconv@authors.invalid>")

  # Installs a text compressed, made in the build folder under its name by a command, or already there.
  function(install_compressed folder name)
    set(text ${CMAKE_BINARY_DIR}/${name})
    if(ARGN)
      add_custom_command(OUTPUT ${text} ${ARGN} VERBATIM)
    endif()
    add_custom_command(OUTPUT ${text}.gz COMMAND gzip -9nkf ${text} DEPENDS ${text} VERBATIM)
    add_custom_target(compressed_${name} ALL DEPENDS ${text}.gz)
    install(FILES ${text}.gz DESTINATION ${folder})
  endfunction()

  set(changes ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  configure_file(packaging/murlconv.1.in ${CMAKE_BINARY_DIR}/murlconv.1 @ONLY)
  install_compressed(share/man/man1 murlconv.1)
  install_compressed(${doc} changelog COMMAND ${CMAKE_COMMAND} -E copy ${changes} changelog DEPENDS ${changes})
  set(script ${CMAKE_SOURCE_DIR}/packaging/debian_changelog.sh)
  install_compressed(
    ${doc} changelog.Debian
    COMMAND ${script} ${changes} ${debian_revision} ${maintainer} changelog.Debian
    DEPENDS ${script} ${changes})

  install(TARGETS murlconv ${report_program} DESTINATION bin)
  if(report_program)
    install(FILES docs/report.schema.json DESTINATION ${doc})
    configure_file(packaging/murlreport.1.in ${CMAKE_BINARY_DIR}/murlreport.1 @ONLY)
    install_compressed(share/man/man1 murlreport.1)
    install(
      FILES packaging/murlreport.bash
      DESTINATION share/bash-completion/completions
      RENAME murlreport)
    install(
      FILES packaging/murlreport.zsh
      DESTINATION share/zsh/vendor-completions
      RENAME _murlreport)
  endif()
  install(FILES packaging/copyright packaging/mcomp.txt ${guides} DESTINATION ${doc})
  foreach(sample ${samples})
    get_filename_component(stem ${sample} NAME_WE)
    get_filename_component(extension ${sample} EXT)
    install(FILES ${sample} DESTINATION ${doc}/examples)
    install(FILES tests/golden/samples/${stem}.want DESTINATION ${doc}/examples RENAME ${stem}_conv${extension})
  endforeach()

  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE ${debian_revision})
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${maintainer})
  set(CPACK_DEBIAN_PACKAGE_SECTION text)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "zenity | kdialog")
  set(CPACK_PACKAGE_DESCRIPTION
      "murlconv reads scripts in the previous dialect of MURL, the scripting language
of the Murivo CAD system, and writes each one in the current dialect beside it.
Much of what no rule can convert stands in the output as a comment, under a tip
that tells what to change by hand; murlreport lists all that is left to do.")
endif()

set(CPACK_PACKAGE_VENDOR "the murlconv authors")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/staged.cmake)
include(CPack)
