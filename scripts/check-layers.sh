#!/usr/bin/env bash
# The layers: each sees the public headers of its own and of those below it, and the standard library; nothing of the system
# or of a third party shows in a public header or in the engine; only Posix/ and Windows/ know which system they are on.
# usage: check-layers.sh [ROOT]     ROOT is another tree than this one, to test the check itself.
set -euo pipefail
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"

status=0
refuse() { # TITLE; the offending lines on standard input
  local lines
  lines=$(cat)
  [ -z "$lines" ] && return
  printf 'layers: %s\n%s\n' "$1" "$lines" >&2
  status=1
}

for folder in Include OrvUpdate/Include OrvUpdate/Src platform/Include platform/Src programs; do
  find "$folder" -name '*.h' | grep -q . || { echo "layers: no headers below $folder" >&2; exit 2; }
done

# Lines of the files below the folders that match: FILE:LINE:TEXT
lines() { # REGEX FOLDER...
  local regex=$1
  shift
  { find "$@" -type f \( -name '*.h' -o -name '*.cpp' \) -exec grep -nHE -e "$regex" {} + || true; }
}
directive='(#|%:|\?\?=)[[:space:]]*(include|import)'
# Headers of the C++ standard library have no suffix and no folder.
standard='^[^:]+:[0-9]+:[[:space:]]*#[[:space:]]*include[[:space:]]*<[a-z_]+>[[:space:]]*(//.*)?$'

quoted='^[^:]+:[0-9]+:[[:space:]]*#[[:space:]]*include[[:space:]]*"([^"]+\.h)"[[:space:]]*(//.*)?$'
any='include[[:space:]]*[<"]([^">]+)[">]'

# Keeps the includes below FOLDER that are neither standard nor found from one of VISIBLE, without a way up or out.
foreign() { # FOLDER VISIBLE...
  local folder=$1 line file header visible
  shift
  lines "$directive" "$folder" | { grep -vE "$standard" || true; } | while IFS= read -r line; do
    file=${line%%:*}
    header=
    [[ $line =~ $quoted ]] && header=${BASH_REMATCH[1]}
    if [ -n "$header" ] && [[ /$header/ != */../* && $header != /* ]]; then
      for visible in "$@" "${file%/*}"; do
        [ -f "$visible/$header" ] && continue 2
      done
    fi
    printf '%s\n' "$line"
  done
}

allowed='only the standard library and public headers of its own layer and those below'
refuse "records: $allowed" \
  < <(foreign Include Include platform/Include)
refuse "platform's public headers: $allowed" \
  < <(foreign platform/Include platform/Include Include)
refuse "the engine's public headers: $allowed" \
  < <(foreign OrvUpdate/Include OrvUpdate/Include platform/Include Include)
refuse "the engine: $allowed" \
  < <(foreign OrvUpdate/Src OrvUpdate/Src OrvUpdate/Include platform/Include Include)

refuse 'code lies in .h and .cpp files' \
  < <(find OrvUpdate/Include OrvUpdate/Src platform/Include Include -type f ! -name '*.h' ! -name '*.cpp' ! -name '*.proto')

refuse 'no platform #ifdef in the engine or the records' \
  < <(lines '^[[:space:]]*(#|%:|\?\?=)[[:space:]]*(if|ifdef|ifndef|elif|elifdef)\b.*(WIN32|WIN64|MINGW|CYGWIN|MSC_VER|linux|unix|APPLE|ANDROID|GNUC|GLIBC|POSIX|has_include)' OrvUpdate Include)

refuse 'the engine declares nothing of the system by itself' \
  < <(lines 'extern[[:space:]]+"C"' OrvUpdate Include)

systems='windows|win[a-z]+\.h|ws2|wsa|io\.h|direct\.h|process\.h|shlobj|shellapi|softpub|unistd|fcntl|dirent|poll|spawn|pwd|grp|pthread|sched|signal\.h|termios|syslog|netdb|dlfcn|ifaddrs|sys/|linux/|net/|netinet/|arpa/'
refuse 'headers of one system only below Posix/ and Windows/' \
  < <(lines "${directive}[[:space:]]*[<\"](${systems})" platform/Src | { grep -vE '^[^:]*/(Posix|Windows)/' || true; })

refuse 'the platform knows nothing of the engine' < <(
  while IFS= read -r line; do
    header=
    [[ $line =~ $any ]] && header=${BASH_REMATCH[1]}
    if [ -f "OrvUpdate/Include/$header" ] || [ -f "OrvUpdate/Src/$header" ]; then printf '%s\n' "$line"; fi
  done < <(lines "$directive" platform/Src))

refuse 'programs use only what is installed' < <(
  while IFS= read -r line; do
    header=
    [[ $line =~ $any ]] && header=${BASH_REMATCH[1]}
    [[ /$header/ != */../* ]] && [ ! -f "OrvUpdate/Src/$header" ] && [ ! -f "platform/Src/$header" ] || printf '%s\n' "$line"
  done < <(lines "$directive" programs))

[ "$status" = 0 ] && echo "layers hold"
exit "$status"
