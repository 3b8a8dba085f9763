# FFmpeg as the distribution ships it. The sources are written against the 4.x interface;
# Parser2Impl/ffmpeg/FFmpegCompat.h holds what differs.
find_package(PkgConfig REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
if(FFMPEG_libavformat_VERSION VERSION_LESS 58.29 OR FFMPEG_libavformat_VERSION VERSION_GREATER_EQUAL 62)
  message(FATAL_ERROR
    "libavformat ${FFMPEG_libavformat_VERSION} was found; this project builds with libavformat 58 to "
    "61 (FFmpeg 4.2 to 7.1). docs/integrating.md says what a later one would take.")
endif()
