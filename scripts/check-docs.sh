#!/usr/bin/env bash
# The program that docs/hosting.md shows is the one that is compiled.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
shown=$(sed -n '/^```cpp$/,/^```$/p' docs/hosting.md | sed '1d;$d')
[ "$shown" = "$(cat programs/example/host.cpp)" ] || {
  echo "check-docs: docs/hosting.md shows another program than programs/example/host.cpp" >&2
  exit 1
}
echo "the documented program is the compiled one"
