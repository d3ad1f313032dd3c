#!/usr/bin/env bash
# Installs what the build and the tests need on Debian 12. Does nothing when all of it is there.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config git ca-certificates python3 xz-utils
  libcurl4-openssl-dev libssl-dev zlib1g-dev libdeflate-dev liblzma-dev nlohmann-json3-dev libspdlog-dev
  libgtest-dev
  libcpp-httplib-dev
  nsis osslsigncode openssl protobuf-compiler 7zip curl
  clang-format clang-tidy
)
# "fuzz" adds the compiler that has the fuzzing engine, "windows" what cross-builds and runs the programs for Windows.
[ "${1:-}" = fuzz ] && packages+=(clang libclang-rt-14-dev)
[ "${1:-}" = windows ] && packages+=(g++-mingw-w64-x86-64-posix gcc-mingw-w64-i686-posix libz-mingw-w64-dev wine wine64 googletest libfmt-dev dpkg-dev perl)

missing=()
for package in "${packages[@]}"; do
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || { echo "install-deps: run as root once, to install: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo env DEBIAN_FRONTEND=noninteractive)
fi
echo "== install: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
if ! { "${as_root[@]}" apt-get update -qq && "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
