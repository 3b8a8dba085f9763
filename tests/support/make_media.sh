#!/bin/sh
# make_media.sh FFMPEG OUT ARGUMENT...: makes one media file unless it is there, made by the same
# command line. Every build folder shares the files, and two builds may run at once: a file appears
# under its name only when it is complete.
set -eu
ffmpeg=$1
out=$2
shift 2

stamp=$(dirname "$out")/.made/$(basename "$out")
if [ -f "$out" ] && [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$*" ]; then
  touch "$out"
  exit 0
fi
mkdir -p "$(dirname "$stamp")"
temporary=$(dirname "$stamp")/$$.$(basename "$out")
if ! "$ffmpeg" -nostdin -hide_banner -loglevel error -y "$@" "$temporary"; then
  rm -f "$temporary"
  echo "ffmpeg could not make $(basename "$out")" >&2
  exit 1
fi
rm -f "$stamp"
mv "$temporary" "$out"
printf '%s\n' "$*" >"$stamp"
