# Two sets of flags: orvel_device_flags for what is built as it would be for a device (the plug-in
# and the stand-in), orvel_host_flags for programs that only ever run on a workstation.
add_library(orvel_common_flags INTERFACE)
target_compile_options(orvel_common_flags INTERFACE
  -Wall -Wextra -Werror -fstack-protector-strong
  "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")
target_link_options(orvel_common_flags INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(ORVEL_SANITIZE)
  target_compile_options(orvel_common_flags INTERFACE
    -fsanitize=${ORVEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(orvel_common_flags INTERFACE -fsanitize=${ORVEL_SANITIZE})
  if(ORVEL_SANITIZE MATCHES "undefined")
    # vptr needs run-time type information, which the device flags leave out.
    target_compile_options(orvel_common_flags INTERFACE -fno-sanitize=vptr)
    target_link_options(orvel_common_flags INTERFACE -fno-sanitize=vptr)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      target_compile_options(orvel_common_flags INTERFACE
        -fsanitize=unsigned-integer-overflow
        -fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/sanitizer-ignorelist.txt)
    endif()
  endif()
else()
  target_compile_options(orvel_common_flags INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # An assertion with a text for its condition, !"text", is meant.
  target_compile_options(orvel_common_flags INTERFACE -Wthread-safety -Wno-string-conversion)
endif()

add_library(orvel_device_flags INTERFACE)
target_link_libraries(orvel_device_flags INTERFACE orvel_common_flags)
target_compile_options(orvel_device_flags INTERFACE -Wconversion -Wsign-conversion
  -fno-exceptions -fno-rtti -fvisibility=hidden
  -fvisibility-inlines-hidden)

add_library(orvel_host_flags INTERFACE)
target_link_libraries(orvel_host_flags INTERFACE orvel_common_flags)

# orvel_runnable(TARGET OUT): the path that starts an executable from a test: the file itself, or,
# cross-built, a script that hands it to the emulator.
function(orvel_runnable target out)
  if(NOT CMAKE_CROSSCOMPILING)
    set(${out} "$<TARGET_FILE:${target}>" PARENT_SCOPE)
    return()
  endif()
  set(script "${CMAKE_CURRENT_BINARY_DIR}/emulated-${target}")
  string(REPLACE ";" " " emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
  file(GENERATE OUTPUT "${script}"
    CONTENT "#!/bin/sh\nexec ${emulator} '$<TARGET_FILE:${target}>' \"$@\"\n"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(${out} "${script}" PARENT_SCOPE)
endfunction()
