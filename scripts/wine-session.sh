#!/usr/bin/env bash
# Keeps one server of wine alive while a command runs: wine-session.sh COMMAND ARGUMENTS...
# Each program under wine then starts in some milliseconds, and none passes its output pipe on to the server, which would
# keep a test runner waiting for the pipe's end.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
source "$here/wine-environment.sh"
"$here/make-wine-prefix.sh"
wineserver -p
# The services that the shell's calls need start with the first that asks, and inherit its pipe too.
for first in hostname "net start RpcSs" "start /wait hostname"; do
  "$here/under-wine.sh" $first >/dev/null 2>&1 </dev/null || true
done
status=0
"$@" || status=$?
wineserver -k || true
wineserver -w
exit "$status"
