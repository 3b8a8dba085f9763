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

# Each option of --help stands in the man page and in the completions.
man=share/man/man1/orvelprobe.1
bash_file=share/bash-completion/completions/orvelprobe
zsh_file=share/zsh/site-functions/_orvelprobe
fish_file=share/fish/vendor_completions.d/orvelprobe.fish
options=$(grep -oE '^  (-[A-Za-z],)?--[a-z-]+' <<<"$help" | grep -oE '[a-z][a-z-]*$')
[ "$(wc -w <<<"$options")" -ge 10 ] || fail "--help lists too few options: $options"
for option in $options; do
  grep -qF "\\fB\\-\\-${option//-/\\-}\\fR" $man || fail "$man: --$option"
  grep -qE -- "[\" ]--$option[=\" ]" $bash_file || fail "$bash_file: --$option"
  grep -qE -- "--$option(=?\[|\}'\[)" $zsh_file || fail "$zsh_file: --$option"
  grep -qE -- " -l $option( |$)" $fish_file || fail "$fish_file: --$option"
done
for option in $(grep -oE '\\-\\-([a-z]|\\-)+' $man | tr -d '\\'); do
  grep -qE -- "^  (-[A-Za-z],)?$option( |$)" <<<"$help" || fail "$man: $option is not an option"
done

# The completion as bash runs it, over stand-ins for bash-completion's helpers.
complete_words() {
  _init_completion() { cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} split=false; }
  _filedir() { COMPREPLY=(FILE); }
  compopt() { :; }
  # shellcheck disable=SC1090
  source $bash_file
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  _orvelprobe
  echo "${COMPREPLY[*]-}"
}
expect() {
  local wanted=$1 got
  shift
  got=$(complete_words "$@")
  [ "$got" = "$wanted" ] || fail "'$*' completes to '$got', not '$wanted'"
}
expect "--samples" orvelprobe --sa
expect "verbose" orvelprobe --log v
expect "FILE" orvelprobe --plugin ""
expect "FILE" orvelprobe fi
expect "" orvelprobe --track ""
if command -v zsh >/dev/null; then zsh -n $zsh_file; fi
if command -v fish >/dev/null; then fish -n $fish_file; fi
