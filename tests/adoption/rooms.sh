#!/usr/bin/env bash
# rooms.sh ROOT: every include of the plug-in and the stand-in goes in the direction that
# docs/architecture.md gives.
set -euo pipefail
cd "$1/Parser2Impl"

# The rooms that a room's files may include.
rooms_of() {
  case $1 in
    .) echo . ffmpeg base bytes ;;
    ffmpeg/reader) echo ffmpeg/reader ffmpeg base bytes ;;
    ffmpeg) echo ffmpeg base bytes ;;
    base) echo base bytes ;;
    bytes) echo bytes ;;
  esac
}
platform='<(android|cutils|log|media|standin|utils)/'
library='<lib(av|sw)'

wrong=0
complain() {
  echo "$*" >&2
  wrong=1
}
for file in *.h *.cpp base/* bytes/* ffmpeg/*.* ffmpeg/reader/*; do
  room=$(dirname "$file")
  # The container object makes its reader: the one step back.
  allowed=" $(rooms_of "$room") $([ "$file" != ffmpeg/FFmpegObject.cpp ] || echo ffmpeg/reader) "
  while read -r included; do
    [ "$room" = . ] || [ ! -f "$room/$included" ] || included=$room/$included
    [[ $allowed == *" $(dirname "$included") "* ]] || complain "$file includes $included"
  done < <(sed -nE 's/^#include "(.*)"/\1/p' "$file")
done
! grep -nE "$platform|$library" bytes/* || complain "bytes knows neither the platform nor FFmpeg"
! grep -nE "$library" base/* *.h *.cpp || complain "FFmpeg is known in ffmpeg alone"
! grep -rnE "#include ($library|\"(base|bytes|ffmpeg)/)" ../platform || complain "platform knows nobody"
! grep -rnE '#include "(base|bytes|ffmpeg)/' ../host || complain "host reaches the plug-in by dlopen"
exit $wrong
