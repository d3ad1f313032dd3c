#!/usr/bin/env bash
# Tells the size of Windows modules and which libraries they import, and fails for a library that does not come with the
# system: check-imports.sh MODULE...
set -euo pipefail

# Every Windows 10 has these, in its system directory; so has wine.
system='advapi32 bcrypt crypt32 gdi32 kernel32 msvcrt ole32 psapi secur32 shell32 user32 userenv winhttp wintrust ws2_32'
objdump=${OBJDUMP:-x86_64-w64-mingw32-objdump}

[ $# -gt 0 ] || { echo "usage: check-imports.sh MODULE..." >&2; exit 2; }
status=0
for module in "$@"; do
  table=$("$objdump" -p "$module" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr -d '\r' | sort -fu)
  [ -n "$table" ] || { echo "check-imports: $module imports nothing, so it is no module that can run" >&2; exit 2; }
  printf '%s: %d KiB, imports %s\n' "${module##*/}" "$(($(stat -c %s "$module") / 1024))" "$(echo "$table" | tr '\n' ' ')"
  while IFS= read -r name; do
    lower=${name,,}
    case " $system " in *" ${lower%.dll} "*) continue ;; esac
    case "$lower" in api-ms-win-*.dll) continue ;; esac
    # What is built beside it comes along.
    [ -f "$(dirname "$module")/$name" ] && [ "$name" = OrvUpdate.dll ] && continue
    echo "check-imports: ${module##*/} imports $name, which does not come with the system" >&2
    status=1
  done <<<"$table"
done
exit "$status"
