#!/usr/bin/env bash
# judge.sh TARGET ALONE INPUT OPTION...: whose is a finding of TARGET? Ends with 0 when it is FFmpeg's
# own: ALONE (FFmpegAlone.cpp) shows the same with the same file and OPTIONs, without the plug-in.
#   crash, leak   every stack of TARGET's report begins in FFmpeg's libraries, and ALONE reports a
#                 stack of the same kind that runs through the same frames there
#   timeout, oom  ALONE goes beyond the same limit
# Everything else is ours: a finding that does not come again, one that cannot be read, and memory
# that FFmpeg allocated, or crashes over, only when the plug-in uses it.
# Reports are left beside INPUT, as INPUT.target and INPUT.alone.
set -euo pipefail
target=$1 alone=$2 input=$3
shift 3

# Frame pointers do not lead through FFmpeg's libraries: unwind by their tables. A frame is printed as
# "#3 MODULE+OFFSET FUNCTION".
export ASAN_OPTIONS="${ASAN_OPTIONS:-}:fast_unwind_on_malloc=0:fast_unwind_on_fatal=0:malloc_context_size=40"
ASAN_OPTIONS+=':stack_trace_format="    #%n %m+%o %f"'
"$target" "$@" "$input" >"$input.target" 2>&1 || true
"$alone" "$@" "$input" >"$input.alone" 2>&1 || true

# One line for each stack that counts: the first one of a crash, each one of leaks. It is the frames
# in FFmpeg's libraries from the top, without those of the sanitizer and the C library, or "ours".
stacks() {
  awk -v kind="$2" '
    function finish() { if (stack != "") print (chain != "" ? substr(chain, 2) : "ours"); stack = "" }
    kind == "leak" && /leak of [0-9]+ byte/ { wanted = 1; next }
    kind == "crash" && /ERROR: (AddressSanitizer|libFuzzer)|runtime error:/ && !seen { wanted = seen = 1; next }
    /^ *#0 / { finish(); if (wanted) { stack = "open"; chain = ""; wanted = 0 } }
    stack == "open" && /^ *#[0-9]+ / {
      if ($2 ~ /\/libav[a-z]+\.so[^/]*$/) chain = chain " " $2
      else if (chain != "") stack = "done"
      else if ($3 !~ /^(__interceptor_|__asan_|__sanitizer|__lsan|fuzzer::)|^(malloc|calloc|realloc|posix_memalign|free|memcpy|memmove|memset|raise|abort|gsignal)$/ &&
               $2 !~ /\/libc\.so/) stack = "done"
    }
    END { finish() }' "$1"
}

kind=$(basename "$input" | grep -oE -m1 '(crash|leak|timeout|oom)' | head -n 1)
case $kind in
  crash | leak)
    theirs=$(stacks "$input.alone" "$kind")
    mine=$(stacks "$input.target" "$kind")
    [ -n "$mine" ] || exit 1
    while read -r stack; do
      [ "$stack" != ours ] && grep -qxF -- "$stack" <<<"$theirs" || exit 1
    done <<<"$mine"
    ;;
  timeout) grep -q 'ERROR: libFuzzer: timeout' "$input.alone" ;;
  oom) grep -q 'ERROR: libFuzzer: out-of-memory' "$input.alone" ;;
  *) exit 1 ;;
esac
