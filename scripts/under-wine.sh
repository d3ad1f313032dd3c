#!/usr/bin/env bash
# Runs a Windows program: under-wine.sh PROGRAM ARGUMENTS...
source "$(dirname "${BASH_SOURCE[0]}")/wine-environment.sh"
# Not by the name "wine", which complains on each start that it cannot run 32-bit programs.
exec /usr/lib/wine/wine64 "$@"
