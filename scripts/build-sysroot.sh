#!/usr/bin/env bash
# Cross-builds what the Windows build links, as static libraries, out of Debian's packages and source packages:
# build-sysroot.sh OUT_DIR     Does nothing when OUT_DIR is there. OpenSSL serves the tests only.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
out=$(realpath -m "$1")
[ -d "$out" ] && exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
jobs=$(nproc)

fetch() {
  "$here/fetch-source.sh" bookworm "$work/source" curl openssl libdeflate cpp-httplib
  # The next release's decodes twice as fast; this one's does where that is not to be had.
  "$here/fetch-source.sh" trixie "$work/source" xz-utils || "$here/fetch-source.sh" bookworm "$work/source" xz-utils
}

# cross NAME SOURCE OPTIONS...: configures a CMake project, builds and installs it
cross() {
  local name=$1 source=$2
  shift 2
  cmake -G Ninja -S "$source" -B "$work/$name" -DCMAKE_TOOLCHAIN_FILE="$here/../cmake/toolchains/mingw.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib "$@" &&
    cmake --build "$work/$name" -j "$jobs" &&
    cmake --install "$work/$name"
}

# Headers alone, used from Debian's own packages.
copy_headers() {
  mkdir -p "$prefix/include" "$prefix/lib/cmake"
  cp -r /usr/include/nlohmann /usr/include/spdlog /usr/include/fmt "$prefix/include/"
  cp "$work/source/cpp-httplib/httplib.h" "$prefix/include/"  # Debian's own belongs to a compiled library
  mkdir -p "$prefix/share/cmake"
  cp -r /usr/share/cmake/nlohmann_json "$prefix/share/cmake/"
  # Debian's description names a compiled library, so here is one for the headers alone.
  mkdir "$prefix/lib/cmake/spdlog"
  cat >"$prefix/lib/cmake/spdlog/spdlogConfig.cmake" <<'CMAKE'
if(NOT TARGET spdlog::spdlog)
  add_library(spdlog::spdlog INTERFACE IMPORTED)
  set_target_properties(spdlog::spdlog PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../../../include"
    INTERFACE_COMPILE_DEFINITIONS "SPDLOG_FMT_EXTERNAL;FMT_HEADER_ONLY")
endif()
CMAKE
}

build_liblzma() {
  cross lzma "$work/source/xz-utils" -DXZ_NLS=OFF -DXZ_DOC=OFF -DXZ_TOOL_XZ=OFF -DXZ_TOOL_XZDEC=OFF -DXZ_TOOL_LZMADEC=OFF \
    -DXZ_TOOL_LZMAINFO=OFF -DXZ_TOOL_SCRIPTS=OFF -DBUILD_TESTING=OFF
}

build_libdeflate() {
  make -C "$work/source/libdeflate" -j "$jobs" CC=x86_64-w64-mingw32-gcc-posix AR=x86_64-w64-mingw32-ar libdeflatestatic.lib &&
    cp "$work/source/libdeflate/libdeflatestatic.lib" "$prefix/lib/libdeflate.a" &&
    cp "$work/source/libdeflate/libdeflate.h" "$prefix/include/"
}

build_curl() {
  # All of its sources in a few units: a third of the time. This one does not mix with others.
  echo 'set_source_files_properties(warnless.c PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)' >>"$work/source/curl/lib/CMakeLists.txt"
  cross curl "$work/source/curl" -DCMAKE_UNITY_BUILD=ON -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DHTTP_ONLY=ON \
    -DCURL_USE_SCHANNEL=ON -DCURL_USE_OPENSSL=OFF -DCURL_USE_LIBSSH2=OFF -DCURL_USE_LIBPSL=OFF -DUSE_LIBIDN2=OFF \
    -DCURL_ZLIB=OFF -DENABLE_MANUAL=OFF
}

build_googletest() {
  cross gtest /usr/src/googletest -DBUILD_GMOCK=OFF
}

# For the certificates and signatures that tests make.
build_openssl() {
  (
    cd "$work/source/openssl" &&
    ./Configure mingw64 --cross-compile-prefix=x86_64-w64-mingw32- --prefix="$prefix" --libdir=lib no-shared no-tests \
      no-engine no-legacy no-module no-ssl no-dtls no-comp no-cmp no-ct no-srp no-psk no-idea no-seed no-camellia \
      no-aria no-bf no-cast no-rc2 no-rc4 no-rc5 no-md4 no-mdc2 no-whirlpool no-sm2 no-sm3 no-sm4 no-ec2m no-gost no-siphash \
      no-blake2 no-scrypt no-ocb no-des no-rmd160 no-poly1305 no-chacha no-dso no-ui-console &&
    make -j "$jobs" build_generated libcrypto.a &&
    cp libcrypto.a "$prefix/lib/" &&
    cp -r include/openssl "$prefix/include/"
  )
}

make_it() {
  fetch >"$work/fetch.log" 2>&1 || { tail -n 20 "$work/fetch.log" >&2; return 1; }
  copy_headers
  for part in liblzma libdeflate curl googletest openssl; do
    local begun=$SECONDS
    "build_$part" >"$work/$part.log" 2>&1 || { tail -n 40 "$work/$part.log" >&2; return 1; }
    echo "   $part: $((SECONDS - begun)) s"
  done
}
echo "== build the libraries for Windows"
make_it

mkdir -p "$(dirname "$out")"
mv "$prefix" "$out"
