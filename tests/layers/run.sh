#!/usr/bin/env bash
# Plants files that break the layers, each in its own way, into a copy of the sources: the check must name every one of them.
# usage: run.sh WORK_DIR
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$1
rm -rf "$work"
mkdir -p "$work"
(cd "$root" && cp -r --parents Include OrvUpdate/Include OrvUpdate/Src platform/Include platform/Src programs "$work")
"$root/scripts/check-layers.sh" "$work"

traps=()
plant() { # FILE TEXT
  printf '%b\n' "$2" >"$work/$1"
  traps+=("$1")
}
plant OrvUpdate/Src/A.cpp '#include <unistd.h>'
plant OrvUpdate/Src/B.cpp '#include "Base/Posix/NativePath.h"'
plant OrvUpdate/Src/C.cpp '#include "../../platform/Src/Base/Posix/NativePath.h"'
plant OrvUpdate/Src/D.cpp '#include <nlohmann/json.hpp>'
plant OrvUpdate/Src/E.cpp '/* quiet */ #include <unistd.h>'
plant OrvUpdate/Src/F.cpp '#define HEADER <unistd.h>\n#include HEADER'
plant OrvUpdate/Src/G.cpp '%:include <unistd.h>'
plant OrvUpdate/Src/H.cpp '#include_next <unistd.h>'
plant OrvUpdate/Src/I.cpp '#import <unistd.h>'
plant OrvUpdate/Src/system '#include <unistd.h>'
plant OrvUpdate/Src/J.inl '#include <unistd.h>'
plant OrvUpdate/Src/K.cpp '#if defined(__linux__)\n#endif'
plant OrvUpdate/Src/LExport.h '#ifdef WIN32\n#endif'
plant OrvUpdate/Src/M.cpp 'extern "C" int unlink(const char*);'
plant OrvUpdate/Include/N.h '#include "EngineLog.h"'
plant platform/Include/Public/Base/O.h '#include <curl/curl.h>'
plant platform/Include/Public/Base/P.h '#include "OrvVersion.h"'
plant platform/Include/Public/Base/Q.h '#include "Base/JsonText.h"'
plant platform/Src/Base/R.cpp '#include <pthread.h>'
plant platform/Src/Base/S.cpp '#include "OrvVersion.h"'
plant programs/demo/T.cpp '#include "OrvInstaller/PeImports.h"'
plant Include/TWProtocol/U.h '#include "OrvVersion.h"'

if "$root/scripts/check-layers.sh" "$work" 2>"$work/found"; then
  echo "the check lets all of them pass" >&2
  exit 1
fi
status=0
for trap in "${traps[@]}"; do
  grep -qF "$trap" "$work/found" || { echo "not found: $trap" >&2; status=1; }
done
[ "$status" = 0 ] && echo "all ${#traps[@]} are found"
exit "$status"
