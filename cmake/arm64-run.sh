#!/bin/sh
# arm64-run.sh EXECUTABLE ARGUMENT...: runs a cross-built program under qemu. The program takes this
# script for its own name: GoogleTest's death tests start their program again by that name, then
# without EXECUTABLE, which the environment remembers.
set -eu
case ${1:--} in
  -*) executable=$ORVEL_EMULATED ;;
  *)
    executable=$1
    shift
    ;;
esac
export ORVEL_EMULATED="$executable"
case $0 in
  /*) self=$0 ;;
  *) self=$PWD/$0 ;;
esac
sysroot=$(dirname "$self")/../build/arm64-sysroot
exec qemu-aarch64-static -L "$sysroot" -0 "$self" "$executable" "$@"
