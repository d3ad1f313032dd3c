#!/usr/bin/env bash
# Makes the directory in which wine keeps its C: drive and settings. Does nothing when it is there.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/wine-environment.sh"
[ -e "$WINEPREFIX/ready" ] && exit 0

quietly() { timeout 120 "$@" >/dev/null 2>&1 </dev/null; }

echo "== make wine's prefix"
rm -rf "$WINEPREFIX"
mkdir -p "$WINEPREFIX"
quietly wineboot -i
wineserver -k || true
quietly winecfg -v win10  # Windows 7 unless told
wineserver -k || true
wineserver -w
touch "$WINEPREFIX/ready"
