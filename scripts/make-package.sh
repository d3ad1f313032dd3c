#!/usr/bin/env bash
# Makes a conforming upgrade package with the package compiler.
#
#   scripts/make-package.sh [options] OUT.exe
#
#   -v, --version TEXT      version, N[.N[.N[.N]]] with any ending (default 1.0.0.0)
#   -b, --bits 32|64        word size; adds the marker item win32.sysbits or win64.sysbits (default 64)
#   -l, --layout tree|msi   tree: "Orv Client", "Orv Server", "Orv VideoWall"; msi: Client.msi and so on (default tree)
#   -i, --input DIRECTORY   content: its whole tree goes into the package; without it content is generated
#   -s, --size KIB          size of each generated file (default 24)
#   -c, --compressor NAME   lzma, zlib or bzip2 (default lzma)
#       --separate          packs files one by one instead of in one stream
#       --ansi              a package that is not Unicode
#       --wide              a package that is itself a 64-bit program
#       --checksum on|off|force
#   -p, --product TEXT      product name (default "Orv Suite")
#   -m, --comment TEXT      comment (default: product, version and word size)
#       --no-version        without a version resource
#
# The same options and content give the same bytes. Needs makensis 3.
set -euo pipefail

version=1.0.0.0 bits=64 layout=tree input='' size=24 compressor=lzma solid=/SOLID unicode=true wide= checksum=on
product='Orv Suite' comment='' resource=1 out=''

usage() { sed -n '2,/^# The same/p' "$0" | sed 's/^# \{0,1\}//' >&2; exit 2; }
die() { echo "make-package: $*" >&2; exit 1; }

while [ $# -gt 0 ]; do
  case $1 in
    -v|--version) version=${2-}; shift ;;
    -b|--bits) bits=${2-}; shift ;;
    -l|--layout) layout=${2-}; shift ;;
    -i|--input) input=${2-}; shift ;;
    -s|--size) size=${2-}; shift ;;
    -c|--compressor) compressor=${2-}; shift ;;
    --separate) solid= ;;
    --ansi) unicode=false ;;
    --wide) wide=1 ;;
    --checksum) checksum=${2-}; shift ;;
    -p|--product) product=${2-}; shift ;;
    -m|--comment) comment=${2-}; shift ;;
    --no-version) resource= ;;
    -h|--help) usage ;;
    -*) echo "make-package: unknown option $1" >&2; usage ;;
    *) [ -z "$out" ] || usage; out=$1 ;;
  esac
  [ $# -gt 0 ] || usage
  shift
done
[ -n "$out" ] || usage
case $bits in 32|64) ;; *) die "bits: 32 or 64, not '$bits'" ;; esac
case $layout in tree|msi) ;; *) die "layout: tree or msi, not '$layout'" ;; esac
case $compressor in lzma|zlib|bzip2) ;; *) die "compressor: lzma, zlib or bzip2, not '$compressor'" ;; esac
case $checksum in on|off|force) ;; *) die "checksum: on, off or force, not '$checksum'" ;; esac
[[ $size =~ ^[0-9]+$ ]] || die "size: a number of KiB, not '$size'"
numbers=$(grep -oE '^[0-9]+(\.[0-9]+){0,3}' <<< "$version") || die "version: N[.N[.N[.N]]], not '$version'"
while [ "$(tr -cd . <<< "$numbers" | wc -c)" -lt 3 ]; do numbers+=.0; done
command -v makensis > /dev/null || die 'makensis is not installed'
[ -z "$input" ] || [ -d "$input" ] || die "no such directory: $input"

out=$(realpath -m "$out")
mkdir -p "$(dirname "$out")"
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
content=$stage/content
mkdir "$content"

# Half text, half noise from a fixed seed, behind the heads that tell a program or an installer database.
generate() { # FILE SEED program|database
  local file=$content/$1 half=$((size * 512))
  mkdir -p "$(dirname "$file")"
  if [ "$3" = program ]; then
    local machine='\x64\x86' magic='\x0b\x02'
    [ "$bits" = 64 ] || { machine='\x4c\x01'; magic='\x0b\x01'; }
    { printf 'MZ'; head -c 58 /dev/zero; printf '\x40\0\0\0PE\0\0%b' "$machine"; head -c 18 /dev/zero; printf '%b' "$magic"; head -c 38 /dev/zero; } > "$file"
  else
    printf '\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1' > "$file"
  fi
  awk -v line="$2 of version $version, $bits bits. " -v n="$half" \
    'BEGIN { while (n > 0) { s = substr(line, 1, n); printf "%s", s; n -= length(s) } }' >> "$file"
  LC_ALL=C awk -v seed="$2$version$bits" -v n="$half" 'BEGIN {
    for (i = 33; i < 127; ++i) code[sprintf("%c", i)] = i
    for (i = 1; i <= length(seed); ++i) x = (x * 31 + code[substr(seed, i, 1)]) % 2147483647
    while (n-- > 0) { x = (x * 48271 + 11) % 2147483647; printf "%c", 1 + x % 255 } }' >> "$file"
}

if [ -n "$input" ]; then
  cp -r "$input/." "$content/"
elif [ "$layout" = tree ]; then
  for name in OrvClient.exe core.dll media.dll lang/zh-CN.dll; do generate "Orv Client/$name" "${name#core}" program; done
  for name in OrvServer.exe core.dll tools/OrvService.exe; do generate "Orv Server/$name" "${name#core}" program; done
  for name in OrvVideoWall.exe core.dll render.dll; do generate "Orv VideoWall/$name" "${name#core}" program; done
else
  for role in Client Server VideoWall Analytics; do generate "$role.msi" "$role" database; done
fi
: > "$content/win$bits.sysbits"

quote() { # as the script's language quotes it
  local text=${1//\$/\$\$}
  printf '"%s"' "${text//\"/\$\\\"}"
}

# Every file under its own directory; the marker first, so that the word size is known before any program is met. The
# compiler reads them under plain names, since it takes some characters of a path for its own.
files() {
  local path directory last='.' name count=0
  { echo "./win$bits.sysbits"; (cd "$content" && LC_ALL=C find . -type f ! -path "./win$bits.sysbits" | LC_ALL=C sort); } |
    while IFS= read -r path; do
      directory=$(dirname "${path#./}") name=$(basename "$path")
      if [ "$directory" != "$last" ]; then
        [ "$directory" = . ] && echo 'SetOutPath "$INSTDIR"' ||
          echo "SetOutPath \"\$INSTDIR\\$(quote "${directory//\//\\}" | sed 's/^"//; s/"$//')\""
        last=$directory
      fi
      count=$((count + 1))
      ln "$content/${path#./}" "$stage/f$count"
      echo "File $(quote "/oname=$name") f$count"
    done
}

{
  [ -z "$wide" ] || echo 'Target amd64-unicode'
  echo "Unicode $unicode"
  echo "SetCompressor /FINAL $solid $compressor"
  echo "CRCCheck $checksum"
  echo 'SetDateSave off'
  echo "Name $(quote "$product")"
  echo 'OutFile package.exe'
  echo 'InstallDir "$PROGRAMFILES\Orv"'
  echo 'RequestExecutionLevel admin'
  if [ -n "$resource" ]; then
    echo "VIProductVersion $numbers"
    echo "VIFileVersion $numbers"
    key() { echo "VIAddVersionKey /LANG=1033 $1 $(quote "$2")"; }
    key ProductName "$product"
    key ProductVersion "$version"
    key FileVersion "$version"
    key Comments "${comment:-$product $version ($bits bits)}"
    key FileDescription "$product upgrade package"
    key LegalCopyright Orv
  fi
  echo 'Section "Main"'
  echo 'SetOutPath "$INSTDIR"'
  files
  echo 'SectionEnd'
} > "$stage/package.nsi"

(cd "$stage" && LC_ALL=C.UTF-8 makensis -V2 -INPUTCHARSET UTF8 package.nsi > compiler.log 2>&1) ||
  { cat "$stage/compiler.log" >&2; die 'the package compiler failed'; }
mv "$stage/package.exe" "$out"
