#!/bin/sh
# Runs a Windows program: wine.sh PROGRAM.exe [ARGUMENTS]. tools/wineprefix.sh has made the prefix.
runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
export WINEDEBUG=-all
export WINEPREFIX="${VNBASE_WINEPREFIX:-$HOME/.cache/vnbase/wine}"
export WINEPATH="$runtime;/usr/x86_64-w64-mingw32/lib${WINEPATH:+;$WINEPATH}"
# Every Windows process has a page at 0x7ffe0000. Linux puts Wine's heap anywhere in the gigabyte above 0x7d000000, so one
# start in 8,000 finds that page taken and ends without a word. With fixed addresses, which children inherit, none does.
fixed=
! setarch -R true 2> /dev/null || fixed="setarch -R"
exec $fixed /usr/lib/wine/wine64 "$@"
