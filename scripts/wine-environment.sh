# What wine is told wherever it runs: sourced by the scripts beside it.
# Its prefix lies in the build folder; without the locale, names in other scripts than Latin are mangled.
export WINEPREFIX=${WINEPREFIX:-$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine}
export WINEDEBUG=${WINEDEBUG:--all} LC_ALL=C.UTF-8 WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
