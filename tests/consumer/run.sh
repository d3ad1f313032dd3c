#!/usr/bin/env bash
# Installs the build into a fresh prefix and builds and runs the consumer against it, by CMake and by pkg-config.
# usage: run.sh BUILD_DIR WORK_DIR     A build for Windows is cross-built and run under wine.
set -euo pipefail
build=$1
work=$2
source=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
rm -rf "$work"
work="$work/with a blank"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >"$work/install.log"

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
toolchain=$(cached CMAKE_TOOLCHAIN_FILE)
expected='start 0, version 1.11.0.8, 0 packages'
if [ -n "$toolchain" ]; then
  compiler="$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")$/\1/p' "$build"/CMakeFiles/*/CMakeCXXCompiler.cmake) -static"
  # The toolchain file lets nothing be found outside of its own roots.
  configure=(-DCMAKE_TOOLCHAIN_FILE="$toolchain" -DOrvUpdate_DIR="$(dirname "$(find "$work/prefix" -name OrvUpdateConfig.cmake)")")
  before=-Wl,-Bdynamic behind=-Wl,-Bstatic  # the engine is a DLL, what the compiler adds is linked in
  suffix=.exe installer=orvInstaller.exe
  run() { "$source/../../scripts/under-wine.sh" "$@" </dev/null | tr -d '\r'; }
  # Programs find a DLL that lies beside them.
  beside() { cp "$work/prefix/bin/"*.dll "$1"; }
else
  compiler=c++ configure=() suffix= installer=orvinstaller
  before='' behind='-Wl,-rpath,"$(dirname "$pc")"'
  run() { "$@"; }
  beside() { :; }
fi

# The sanitizers of the build under test, if any, must be linked into the consumer too.
flags=$(cached ORV_SANITIZER | sed -E 's/^address$/-fsanitize=address,undefined/; s/^thread$/-fsanitize=thread/')
cmake -G Ninja -S "$source" -B "$work/cmake" "${configure[@]}" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_FLAGS="$flags" >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"
beside "$work/cmake"
run "$work/cmake/consumer$suffix" "$work/store" | grep -x "$expected"

pc=$(dirname "$(find "$work/prefix" -name OrvUpdate.pc)")
export PKG_CONFIG_PATH=$pc
# Its answer is quoted as a shell reads it.
mkdir "$work/plain"
eval "$compiler $flags \"\$source/main.cpp\" $before $(pkg-config --cflags --libs OrvUpdate) $behind -o \"\$work/plain/consumer\$suffix\""
beside "$work/plain"
run "$work/plain/consumer$suffix" "$work/store" | grep -x "$expected"

# The installer runs from there too; without arguments it tells how it is used.
status=0
run "$work/prefix/bin/$installer" 2>"$work/usage" || status=$?
[ "$status" = 2 ] && grep -q '^usage: orvinstaller PACKAGE' "$work/usage"
[ -x "$work/prefix/bin/orvInstaller.exe" ]
