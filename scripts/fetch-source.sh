#!/usr/bin/env bash
# Unpacks Debian source packages: fetch-source.sh SUITE DIR PACKAGE...
# Each lands in DIR/PACKAGE, with Debian's patches applied. They come from wherever this machine gets its packages,
# through lists of their own, so that the machine's configuration stays as it is.
set -euo pipefail
suite=$1
into=$(realpath -m "$2")
shift 2

mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' |
  awk '$2 == "bookworm" && $3 == "main" { print $1; exit }')
[ -n "$mirror" ] || { echo "fetch-source: no package source for Debian 12 is configured" >&2; exit 1; }

mkdir -p "$into/.apt/lists/partial"
trap 'rm -rf "$into/.apt"' EXIT
echo "deb-src $mirror $suite main" >"$into/.apt/sources.list"
apt=(apt-get -qq -o "Dir::Etc::SourceList=$into/.apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
  -o "Dir::State::Lists=$into/.apt/lists" -o APT::Sandbox::User=)

cd "$into/.apt"
"${apt[@]}" update
for package in "$@"; do
  "${apt[@]}" source --download-only "$package"
  dpkg-source --no-check -x "$package"_*.dsc "$into/$package"
done
