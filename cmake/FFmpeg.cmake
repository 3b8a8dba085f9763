# FFmpeg as the distribution ships it. The sources are written against the 4.x interface and build
# with libavformat 58, 59 and 60; Parser2Impl/ffmpeg/FFmpegCompat.h holds what differs.
find_package(PkgConfig REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
string(REGEX MATCH "^[0-9]+" ORVEL_AVFORMAT_MAJOR "${FFMPEG_libavformat_VERSION}")
if(ORVEL_AVFORMAT_MAJOR LESS 58 OR ORVEL_AVFORMAT_MAJOR GREATER 60)
  message(FATAL_ERROR
    "libavformat ${FFMPEG_libavformat_VERSION} was found; this project builds with libavformat 58, "
    "59 and 60 (FFmpeg 4.x, 5.x and 6.x).")
endif()
