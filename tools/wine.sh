#!/bin/sh
# Runs a Windows program: wine.sh PROGRAM.exe [ARGUMENTS]. tools/wineprefix.sh has made the prefix.
runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
export WINEDEBUG=-all
export WINEPREFIX="${VNBASE_WINEPREFIX:-$HOME/.cache/vnbase/wine}"
export WINEPATH="$runtime;/usr/x86_64-w64-mingw32/lib${WINEPATH:+;$WINEPATH}"
exec /usr/lib/wine/wine64 "$@"
