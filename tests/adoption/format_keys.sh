#!/usr/bin/env bash
# format_keys.sh ROOT COMMAND...: docs/format-keys.md is what COMMAND prints, and COMMAND explains
# exactly the keys that the plug-in's sources use.
set -euo pipefail
root=$1
shift
"$@" | diff -u "$root/docs/format-keys.md" - ||
  { echo "make it again with the build target format_keys_doc"; exit 1; }

keys() { grep -rhoE --include='*.cpp' '\bkKey[A-Z][A-Za-z0-9]*' "$@" | sort -u; }
diff <(keys "$root/Parser2Impl" --exclude=MetaKeyTables.cpp) \
  <(sed -n '/kNotes\[\] = {/,/^};/p' "$root/docs/tool/FormatKeys.cpp" | grep -oE 'kKey[A-Za-z0-9]+' |
    sort -u) || { echo "keys used by the plug-in (<) and explained in FormatKeys.cpp (>)"; exit 1; }
