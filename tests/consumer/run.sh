#!/usr/bin/env bash
# Installs the build into a fresh prefix and builds and runs the consumer against it, by CMake and by pkg-config.
# usage: run.sh BUILD_DIR WORK_DIR
set -euo pipefail
build=$1
work=$2
source=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
rm -rf "$work"
work="$work/with a blank"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >"$work/install.log"

# The sanitizers of the build under test, if any, must be linked into the consumer too.
flags=$(sed -n 's/^ORV_SANITIZER:STRING=//p' "$build/CMakeCache.txt" | sed -E 's/^address$/-fsanitize=address,undefined/; s/^thread$/-fsanitize=thread/')
cmake -G Ninja -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_FLAGS="$flags" >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"
"$work/cmake/consumer" "$work/store" | grep -x 'start 0, version 1.11.0.8, 0 packages'

pc=$(dirname "$(find "$work/prefix" -name OrvUpdate.pc)")
export PKG_CONFIG_PATH=$pc
# Its answer is quoted as a shell reads it.
eval "c++ $flags \"\$source/main.cpp\" $(pkg-config --cflags --libs OrvUpdate) -Wl,-rpath,\"\$(dirname \"\$pc\")\" -o \"\$work/by-pkg-config\""
"$work/by-pkg-config" "$work/store" | grep -x 'start 0, version 1.11.0.8, 0 packages'

# The installer runs from there too; without arguments it tells how it is used.
status=0
"$work/prefix/bin/orvinstaller" 2>"$work/usage" || status=$?
[ "$status" = 2 ] && grep -q '^usage: orvinstaller PACKAGE' "$work/usage"
[ -x "$work/prefix/bin/orvInstaller.exe" ]
