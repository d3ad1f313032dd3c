#!/usr/bin/env bash
# Keeps one server of wine alive while a command runs: wine-session.sh COMMAND ARGUMENTS...
# Each program under wine then starts in some milliseconds, and none passes its output pipe on to the server, which would
# keep a test runner waiting for the pipe's end.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
source "$here/wine-environment.sh"
"$here/make-wine-prefix.sh"
wineserver -p
"$here/under-wine.sh" hostname >/dev/null 2>&1 </dev/null
status=0
"$@" || status=$?
wineserver -k || true
wineserver -w
exit "$status"
