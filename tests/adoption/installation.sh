#!/usr/bin/env bash
# installation.sh CMAKE BUILD WORK [EMULATOR...]: installs a build, moves the installation elsewhere,
# and uses it there as a user would.
set -euo pipefail
cmake=$1 build=$2 work=$3
shift 3
fail() { echo "FAILED: $*"; exit 1; }

rm -rf "$work/first" "$work/moved"
"$cmake" --install "$build" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/moved"
cd "$work/moved"
probe=$PWD/bin/orvelprobe
help=$("$@" "$probe" --help)

# A WAV file of half a second of silence, 8000 Hz, 8 bits: everything is found, and the file taken.
{
  printf 'RIFF\xc4\x0f\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x40\x1f\0\0\x01\0\x08\0data\xa0\x0f\0\0'
  head -c 4000 /dev/zero | tr '\0' '\200'
} >silence.wav
taken=$(cd / && "$@" "$probe" --read "$OLDPWD/silence.wav") || fail "silence.wav: $taken"
grep -q 'taken' <<<"$taken" && grep -q 'audio/raw' <<<"$taken" || fail "silence.wav: $taken"
for file in bin/orvelprobe $(find . -name '*.so'); do
  ! grep -aqF "$build" "$file" || fail "$file still points into the build folder"
done

# Each option of --help stands in the man page, where one was made.
man=share/man/man1/orvelprobe.1.gz
options=$(grep -oE '^  (-[A-Za-z],)?--[a-z-]+' <<<"$help" | grep -oE '[a-z][a-z-]*$')
[ "$(wc -w <<<"$options")" -ge 10 ] || fail "--help lists too few options: $options"
for option in $options; do
  [ ! -f $man ] || zgrep -qF "\\-\\-${option//-/\\-}" $man || fail "$man: --$option"
done
for file in orvelprobe-json.md copyright changelog.gz; do
  [ -s share/doc/orvelprobe/$file ] || fail "no $file"
done
