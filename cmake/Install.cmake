# What "cmake --install" puts where, and the Debian package that CPack makes of it.
include(GNUInstallDirs)

# Everything finds its neighbours by relative paths: the installation can be moved as a whole. The
# libraries are for the command alone: they stand in a folder of their own.
set(libraries ${CMAKE_INSTALL_LIBDIR}/orvelprobe)
file(RELATIVE_PATH ORVEL_LIBRARIES_FROM_BIN
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${libraries})
set_target_properties(orvelprobe PROPERTIES INSTALL_RPATH "$ORIGIN/${ORVEL_LIBRARIES_FROM_BIN}")
set_target_properties(orvelmedia2_parserextractor PROPERTIES INSTALL_RPATH "$ORIGIN")
target_compile_definitions(orvel_host PRIVATE
  ORVEL_LIBRARIES_FROM_BIN="${ORVEL_LIBRARIES_FROM_BIN}")

install(TARGETS orvelprobe orvel_platform orvelmedia2_parserextractor
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${libraries})
set(doc ${CMAKE_INSTALL_DATADIR}/doc/orvelprobe)
install(FILES README.md docs/orvelprobe-json.md docs/format-keys.md cmake/debian/copyright DESTINATION ${doc})

# The man page is made of --help, and left out where help2man is missing.
find_program(HELP2MAN help2man)
set(man ${CMAKE_BINARY_DIR}/orvelprobe.1.gz)
set(changelog ${CMAKE_BINARY_DIR}/changelog.gz)
if(HELP2MAN AND NOT CMAKE_CROSSCOMPILING)
  add_custom_command(OUTPUT ${man}
    COMMAND ${HELP2MAN} --no-info --name "show what the extractor plug-in makes of media files"
      --output orvelprobe.1 $<TARGET_FILE:orvelprobe>
    COMMAND gzip -9nf orvelprobe.1
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR} DEPENDS orvelprobe VERBATIM)
  add_custom_target(orvelprobe_man ALL DEPENDS ${man})
  install(FILES ${man} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
add_custom_command(OUTPUT ${changelog}
  COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/cmake/debian/changelog > ${changelog}
  DEPENDS cmake/debian/changelog VERBATIM)
add_custom_target(orvelprobe_changelog ALL DEPENDS ${changelog})
install(FILES ${changelog} DESTINATION ${doc})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvelprobe)
set(CPACK_PACKAGE_VENDOR OrvelMedia2)
set(CPACK_PACKAGE_CONTACT "OrvelMedia2 maintainers <maintainers@orvelmedia2.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "shows what the OrvelMedia2 extractor makes of media files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The media-extractor plug-in of a device, built for this machine, and a
command that loads it and plays the media framework for a file: whether it
is taken, its formats, its samples, and where seeks land.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # needs dpkg-dev; without it, CPack only warns
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/RelaxDependency.cmake)
include(CPack)
