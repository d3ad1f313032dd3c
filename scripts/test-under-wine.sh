#!/usr/bin/env bash
# Runs a test program for Windows: test-under-wine.sh PROGRAM ARGUMENTS...
# Its output goes through a file: wine starts programs of its own when a test first needs them, they inherit the stream for
# errors, and a test runner would wait for the end of its pipe as long as they run.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
run() { "$(dirname "${BASH_SOURCE[0]}")/under-wine.sh" "$@" >"$output" 2>&1 </dev/null; }
run "$@"
status=$?
# A test program says its first line at once; where there is none, wine has not started it.
if [ "$status" -ne 0 ] && [ ! -s "$output" ]; then
  echo "test-under-wine: not started, status $status; once more"
  run "$@"
  status=$?
fi
cat "$output"
exit "$status"
