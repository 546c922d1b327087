#!/bin/sh
# Makes the Wine prefix of the Windows tests, once, and leaves its server running; `wineprefix.sh stop` ends it.
# Two first uses at once destroy each other, so this comes before anything that runs in parallel. The server would
# inherit and hold open whatever pipe its first client writes to, so it is started apart from ours.
#
# A program that crashes must not start Wine's debugger: that brings up the desktop if there is none, which keeps the crashed
# program's pipe open, and whoever reads the pipe waits for an end that doesn't come.
export WINEDEBUG=-all
export WINEPREFIX="${VNBASE_WINEPREFIX:-$HOME/.cache/vnbase/wine}"
if [ "$1" = stop ]; then
    exec /usr/lib/wine/wineserver64 -k
fi
mkdir -p "$WINEPREFIX"
exec </dev/null >/dev/null 2>&1
# The server that has made a prefix doesn't know the prefix's drives as volumes; the next one does.
if [ ! -e "$WINEPREFIX/system.reg" ]; then
    /usr/lib/wine/wineserver64 -p
    "$(dirname "$0")/wine.sh" cmd /c exit
    /usr/lib/wine/wineserver64 -k
    /usr/lib/wine/wineserver64 -w
fi
/usr/lib/wine/wineserver64 -p
exec "$(dirname "$0")/wine.sh" reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
    /v Debugger /d false /f
