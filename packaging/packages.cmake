# What is installed, and the packages made of it by tools/package.sh: a zip for Windows, a deb for Debian.
if(WIN32)
  install(TARGETS murlconv DESTINATION .)
  install(FILES README.md CHANGELOG.md LICENSE packaging/mcomp.txt DESTINATION .)
  install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN "*.md")
  install(DIRECTORY samples DESTINATION . FILES_MATCHING PATTERN "*.mr[lp]" PATTERN "*_conv.mr[lp]" EXCLUDE)

  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-windows)
else()
  set(doc share/doc/murlconv)
  set(page ${CMAKE_BINARY_DIR}/murlconv.1)
  configure_file(packaging/murlconv.1.in ${page} @ONLY)
  add_custom_command(
    OUTPUT ${page}.gz
    COMMAND gzip -9nkf ${page}
    DEPENDS ${page}
    VERBATIM)
  add_custom_target(man_page ALL DEPENDS ${page}.gz)

  install(TARGETS murlconv DESTINATION bin)
  install(FILES ${page}.gz DESTINATION share/man/man1)
  install(FILES README.md CHANGELOG.md DESTINATION ${doc})
  install(FILES LICENSE DESTINATION ${doc} RENAME copyright)
  install(DIRECTORY docs DESTINATION ${doc} FILES_MATCHING PATTERN "*.md")
  install(DIRECTORY samples DESTINATION ${doc} FILES_MATCHING PATTERN "*.mr[lp]" PATTERN "*_conv.mr[lp]" EXCLUDE)
  install(FILES packaging/mcomp.txt DESTINATION share/murlconv)

  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_DEBIAN_FILE_NAME ${PROJECT_NAME}_${PROJECT_VERSION}_amd64.deb)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "the murlconv authors <murlconv@authors.invalid>")
  set(CPACK_DEBIAN_PACKAGE_SECTION text)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "zenity | kdialog")
  set(CPACK_PACKAGE_DESCRIPTION
      "murlconv reads scripts in the previous dialect of MURL and writes each one in the current
dialect beside it. Whatever no rule can convert stands in the output as a comment, under a tip that
tells what to change by hand.")
endif()

set(CPACK_PACKAGE_VENDOR "the murlconv authors")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
