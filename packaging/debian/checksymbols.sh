#!/bin/sh
# Compares what the libraries of an unpacked package export with a list: checksymbols.sh PACKAGE LIST VERSION RESULT.
# Fails if a symbol is missing, and if one is new, so that none gets out by accident. RESULT gets the list as the package
# holds it. Without a LIST ("") RESULT gets all symbols.
set -e
package=$(cd "$1" && pwd) list=$2 version=$3 result=$4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# dpkg-gensymbols wants a source package around it.
mkdir "$work/debian"
printf 'Source: libvnbase\n\nPackage: libvnbase0\nArchitecture: any\n' > "$work/debian/control"
cp "$here/changelog" "$work/debian/changelog"
[ -z "$list" ] || cp "$list" "$work/list"
cd "$work"
# dpkg-gensymbols misses a symbol only if a version before this one had it; the list counts as such a version.
[ -z "$list" ] || version=$version+new
dpkg-gensymbols ${list:+-c4 -Ilist} -plibvnbase0 -v"$version" -P"$package" -Oresult
cd "$OLDPWD"
cp "$work/result" "$result"
