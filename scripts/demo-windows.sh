#!/usr/bin/env bash
# The demonstration of the Windows build under wine, with the update cloud as a program of this system:
#   demo-windows.sh WINDOWS_BUILD NATIVE_BUILD [options of orvdemo]
# The installer is started by the system's own call for raised rights. The native orvdemo is built when it is missing.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
windows=$1 native=$2
shift 2

if [ ! -x "$native/programs/bin/orvdemo" ]; then
  [ -f "$native/build.ninja" ] || cmake -S "$here/.." -B "$native" -G Ninja -DCMAKE_BUILD_TYPE=Debug >"$native.log" 2>&1
  cmake --build "$native" --target orvdemo >>"$native.log" 2>&1 || { tail -n 40 "$native.log" >&2; exit 1; }
fi

work=$(mktemp -d)
coproc CLOUD { exec "$native/programs/bin/orvdemo" --cloud-only; }
cloud=$CLOUD_PID
trap 'kill "$cloud" 2>/dev/null || true; rm -rf "$work"' EXIT
read -r address <&"${CLOUD[0]}"

run() { "$here/under-wine.sh" "$windows/bin/orvdemo.exe" "$@" </dev/null; }
run --list-packages | tr -d '\r' >"$work/packages"
while read -r -a words; do
  "$here/make-package.sh" "${words[@]:0:${#words[@]}-1}" "$work/${words[-1]}"
done <"$work/packages"

echo "The update cloud is a program of this system; node and installer run under wine."
run --elevated --cloud "$address" --packages "Z:$work" "$@"
