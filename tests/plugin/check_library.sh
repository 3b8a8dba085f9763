#!/bin/sh
# check_library.sh LIBRARY: whether the built plug-in is hardened as it is meant to be. Reads the
# file with readelf; names everything that is missing.
set -eu
library=$1
failed=0
check() { # WHAT COMMAND...
  what=$1
  shift
  if ! "$@" >/dev/null; then
    echo "$library: $what" >&2
    failed=1
  fi
}
no() { ! "$@"; }

dynamic=$(readelf -Wd "$library")
segments=$(readelf -Wl "$library")
symbols=$(readelf -W --dyn-syms "$library" | awk 'NR > 3 && NF >= 8 && $1 ~ /:$/')
exported=$(echo "$symbols" | awk '$7 != "UND" && $5 != "LOCAL" { print $8 }')
imported=$(echo "$symbols" | awk '$7 == "UND" { print $8 }')
has() { echo "$1" | grep -Eq "$2"; }

check "exports other symbols than GETEXTRACTORDEF alone: $(echo "$exported" | head -n 3 | tr '\n' ' ')" \
  [ "$exported" = GETEXTRACTORDEF ]
check "binds symbols lazily" has "$dynamic" 'FLAGS_1.*NOW'
check "has no read-only relocations" has "$segments" 'GNU_RELRO'
check "has text relocations" no has "$dynamic" 'TEXTREL'
check "does not say that its stack is not executable" has "$segments" 'GNU_STACK.* RW '
check "has memory that is both writable and executable" no has "$segments" 'LOAD.* RWE '
check "may be unloaded, though its looper may still run in it" has "$dynamic" 'NODELETE'
check "has no stack protector" has "$imported" '^__stack_chk_(fail|guard)'
check "uses no fortified function" has "$imported" '^__[a-z]*(printf|mem|str)[a-z]*_chk'
exit $failed
