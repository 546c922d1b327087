#!/bin/bash
# Runs a Windows program: wine.sh PROGRAM.exe [ARGUMENTS]. tools/wineprefix.sh has made the prefix.
#
# Once in some ten thousand starts Wine ends before the program begins. No program of ours fails without a word, so one
# that did is started again, once, and that is told.
runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
export WINEDEBUG=-all
export WINEPREFIX="${VNBASE_WINEPREFIX:-$HOME/.cache/vnbase/wine}"
export WINEPATH="$runtime;/usr/x86_64-w64-mingw32/lib${WINEPATH:+;$WINEPATH}"
said=$(mktemp -d)
trap 'rm -rf "$said"' EXIT
/usr/lib/wine/wine64 "$@" > "$said/out" 2> "$said/err"
code=$?
if [ $code != 0 ] && [ ! -s "$said/out" ] && [ ! -s "$said/err" ]; then
    echo "wine.sh: started again, as it ended with $code and without a word" >&2
    /usr/lib/wine/wine64 "$@" > "$said/out" 2> "$said/err"
    code=$?
fi
cat "$said/out"
cat "$said/err" >&2
exit $code
