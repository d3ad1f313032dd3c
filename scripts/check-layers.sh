#!/usr/bin/env bash
# The layers: the engine and the records see the standard library and the platform's public headers; public headers show
# no header of the system or of a third party; only Posix/ and Windows/ know which system they are on.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

status=0
refuse() { # TITLE LINES
  [ -z "$2" ] && return
  printf 'layers: %s\n%s\n' "$1" "$2" >&2
  status=1
}

# Every #include of the files named on standard input: FILE:LINE:HEADER
includes() {
  xargs -r grep -nHE '^[[:space:]]*#[[:space:]]*include' |
    sed -E 's/^([^:]+:[0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*[<"]([^>"]+)[>"].*/\1:\2/'
}

# Headers of the C++ standard library have no suffix and no folder.
standard='^[^:]+:[0-9]+:[a-z_]+$'
sources() { git ls-files --cached --others --exclude-standard "$@"; }

known_project_header() { # keeps the lines whose header is none of this project's
  while IFS= read -r line; do
    header=${line##*:}
    file=${line%%:*}
    for folder in platform/Include Include OrvUpdate/Include OrvUpdate/Src "$(dirname "$file")"; do
      [ -f "$folder/$header" ] && continue 2
    done
    printf '%s\n' "$line"
  done
}

refuse 'the engine, the records and public headers include only the standard library and public headers of this project' \
  "$(sources 'OrvUpdate/*.h' 'OrvUpdate/*.cpp' 'Include/*.h' 'platform/Include/*.h' | includes |
    { grep -vE "$standard" || true; } | known_project_header)"

refuse 'no platform #ifdef in the engine or the records' \
  "$(sources 'OrvUpdate/*.h' 'OrvUpdate/*.cpp' 'Include/*.h' | grep -v 'Export\.h$' |
    xargs -r grep -nHE '^[[:space:]]*#[[:space:]]*(if|ifdef|ifndef|elif).*(_WIN32|__linux__|__unix__|_MSC_VER|__APPLE__)' || true)"

refuse 'headers of one system only below Posix/ and Windows/' \
  "$(sources 'platform/Src/*.cpp' 'platform/Src/*.h' | { grep -vE '/(Posix|Windows)/' || true; } |
    xargs -r grep -nHE '#[[:space:]]*include[[:space:]]*<(windows|winsock|unistd|fcntl|dirent|poll|spawn|pwd|sys/|linux/|netinet/|arpa/)' || true)"

refuse 'programs use only what is installed' \
  "$(sources 'programs/*.h' 'programs/*.cpp' |
    xargs -r grep -nHE '#[[:space:]]*include[[:space:]]*"(OrvVersion|VersionRequest|OrvDownload|OrvInstaller|VersionService|OrvBackup)/' || true)"

[ "$status" = 0 ] && echo "layers hold"
exit "$status"
