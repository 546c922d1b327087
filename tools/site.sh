#!/bin/bash
# Builds the site, build/site: the guide from docs/ and the reference from the public headers, in one navigation with search.
#
#   tools/site.sh          builds it, and looks through its links
#   tools/site.sh check    opens it in a headless Chromium as well, at three widths, light and dark; pictures of what that
#                          shows are left in build/site-shots
#
# The list of pages is docs/index.md. Open build/site/index.html in a browser: no server is needed, and nothing is loaded from
# elsewhere. The log is build/logs/site.log.
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-} in
'' | check) ;;
-h | --help)
    sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
*)
    echo "site: there is no step $1; tools/site.sh -h helps" >&2
    exit 2
    ;;
esac
tools/setup.sh test
mkdir -p build/logs
log=build/logs/site.log
: > "$log"

step() {
    echo "$1 ($log)"
    shift
    "$@" >> "$log" 2>&1 || { tail -n 40 "$log"; echo "site: failed" >&2; exit 1; }
    tail -n 1 "$log"
}

step "building" /usr/bin/python3 site/buildsite.py . build/site build/site-work "$(command -v doxygen)"
step "looking through links, samples and classes" /usr/bin/python3 tests/site/checksite.py . build/site build/site-work
if [ "${1:-}" = check ]; then
    step "opening it in a browser" /usr/bin/python3 tests/site/checkbrowser.py "$(command -v chromium)" build/site \
        build/site-shots
fi
echo "build/site/index.html written in $SECONDS s"
