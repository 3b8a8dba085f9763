#!/usr/bin/env bash
# on-debian.sh RELEASE ARGUMENT...: runs "./dev ARGUMENT..." in a minimal Debian with the FFmpeg of
# RELEASE, as root. build/on-RELEASE/ keeps the system (root/, made once) and the build folder that
# ./dev sees there (build/).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
release=$1
shift

ffmpeg=
case $release in
  # Debian 11 has neither CLI11 nor a CMake that knows presets: its FFmpeg, on Debian 12.
  11) suite=bookworm ffmpeg=bullseye ;;
  12) suite=bookworm ;;
  13) suite=trixie ;;
  *)
    echo "dev: on RELEASE: 11, 12 or 13, not '$release'" >&2
    exit 1
    ;;
esac
home=$PWD/build/on-$release
root=$home/root

make_root() {
  local mirror
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Identifier: Packages' | grep -m1 '/debian/*$' ||
    echo http://deb.debian.org/debian)
  rm -rf "$home"
  mkdir -p "$home/build"
  debootstrap --variant=minbase "$suite" "$root.part" "$mirror"
  # Proxies and the like, and no flush of the disk for each package of a folder that can be made anew.
  apt-config dump | grep -E '^Acquire::(https?|Retries|Check-[A-Za-z-]+)[: ]' \
    >"$root.part/etc/apt/apt.conf.d/90this-machine" || true
  echo force-unsafe-io >"$root.part/etc/dpkg/dpkg.cfg.d/unsafe-io"
  cp -L /etc/resolv.conf /etc/hosts "$root.part/etc/"
  if [ -n "$ffmpeg" ]; then
    echo "deb $mirror $ffmpeg main" >"$root.part/etc/apt/sources.list.d/ffmpeg.list"
    printf 'Package: %s\nPin: release n=%s\nPin-Priority: %s\n\n' '*' "$ffmpeg" 1 \
      'libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libchromaprint1' "$ffmpeg" 1001 \
      >"$root.part/etc/apt/preferences.d/ffmpeg"
  fi
  mkdir "$root.part/src"
  mv "$root.part" "$root"
}

[ -d "$root" ] || make_root >&2
# The mounts are this process's own: they are gone with it, however it ends, and nobody who removes
# build/ can reach through them.
export root home
exec unshare --mount --propagation private bash -euc '
  mount --rbind /dev "$root/dev"
  mount -t proc proc "$root/proc"
  mount -t sysfs sysfs "$root/sys"
  mount --bind . "$root/src"
  mount --bind "$home/build" "$root/src/build"
  exec env LANG=C.UTF-8 HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin \
    chroot "$root" sh -c "cd /src && exec ./dev \"\$@\"" dev "$@"
' on-debian "$@"
