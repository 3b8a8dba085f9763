#!/usr/bin/env bash
# share.sh: the lines of code of the tests are at most a third of all but the benchmark's and the
# documents'. Counts what git knows; blank lines and comment lines are left out.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

lines() {
  git ls-files -z -- "$@" | grep -zE '\.(cpp|h|cc|c|js|css)$' | xargs -0 cat |
    grep -cvE '^\s*(//.*|\*.*|/\*.*)?$'
}
product=$(lines Parser2Impl platform host)
tests=$(lines tests fuzz)
all=$((product + tests))
printf 'share: %d lines of product, %d of tests and fuzzers: %d.%02d %%\n' "$product" "$tests" \
  $((tests * 100 / all)) $((tests * 10000 / all % 100))
((tests * 3 <= all)) || {
  echo "share: more than a third; $((tests - product / 2)) lines have to go" >&2
  exit 1
}
