# What "cmake --install" puts where, and the Debian package that CPack makes of it.
include(GNUInstallDirs)

# Everything finds its neighbours by relative paths: the installation can be moved as a whole.
file(RELATIVE_PATH ORVEL_LIBRARIES_FROM_BIN
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(orvelprobe PROPERTIES INSTALL_RPATH "$ORIGIN/${ORVEL_LIBRARIES_FROM_BIN}")
set_target_properties(orvelmedia2_parserextractor PROPERTIES INSTALL_RPATH "$ORIGIN")
target_compile_definitions(orvelprobe PRIVATE
  ORVEL_LIBRARIES_FROM_BIN="${ORVEL_LIBRARIES_FROM_BIN}")

install(TARGETS orvelprobe orvel_platform orvelmedia2_parserextractor
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orvelprobe)

set(shell ${CMAKE_BINARY_DIR}/host/orvelprobe/shell)
install(FILES ${shell}/orvelprobe.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${shell}/orvelprobe DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${shell}/orvelprobe.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
# Debian's zsh looks into a folder of its own for what packages bring.
install(CODE "
  set(folder site-functions)
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\" AND EXISTS /etc/debian_version)
    set(folder vendor-completions)
  endif()
  file(INSTALL \"${shell}/_orvelprobe\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/zsh/\${folder}\")")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvelprobe)
set(CPACK_PACKAGE_VENDOR OrvelMedia2)
set(CPACK_PACKAGE_CONTACT "OrvelMedia2 maintainers <maintainers@orvelmedia2.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "shows what the OrvelMedia2 extractor makes of media files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The media-extractor plug-in of a device, built for this machine, and a command
that loads it and plays the media framework for a file: whether it is taken, its
formats, its samples, and where seeks land.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # needs dpkg-dev; without it, CPack only warns
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/RelaxDependency.cmake)
include(CPack)
