# The plug-in calls one avpriv_ function of libavcodec, and Debian ties whoever calls one to the very
# build that the package was made with: the next security update of FFmpeg could not be installed
# beside it. FFmpeg keeps these functions for the life of a library's major version, which the
# package's other dependency on the library names.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${CPACK_TEMPORARY_DIRECTORY}.relaxed")
  file(REMOVE_RECURSE "${folder}")
  execute_process(COMMAND dpkg-deb -R "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  file(READ "${folder}/DEBIAN/control" control)
  if(NOT control MATCHES "\nDepends: [^\n]*libavformat")
    file(REMOVE "${package}")
    message(FATAL_ERROR "${package} would depend on nothing: is dpkg-dev installed?")
  endif()
  string(REGEX REPLACE "(, )?libavcodec[0-9]+ \\(= [^)]*\\)" "" control "${control}")
  file(WRITE "${folder}/DEBIAN/control" "${control}")
  execute_process(COMMAND dpkg-deb -b --root-owner-group "${folder}" "${package}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
