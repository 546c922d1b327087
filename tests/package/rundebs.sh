#!/bin/sh
# rundebs.sh ROOT PACKAGES WORK_FOLDER COMPILER: uses the Debian packages that tools/packages.sh --plain has made in PACKAGES:
# unpacked, and the same build installed below the usual prefixes. Nothing is installed on this machine.
set -e
root=$1 packages=$2 work=$3 compiler=$4
here=$(cd "$(dirname "$0")" && pwd)
arch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
rm -rf "$work"
mkdir -p "$work/one"
unset LD_LIBRARY_PATH
T4Q_TEST_DIR=$work/log
export T4Q_TEST_DIR

printf '===== Message Logger Startup =====\n===== Started on Sun Nov 22 17:17:56 2026\n\n===== Clock Frequency: 0.000000001\n%s\n' \
    '0000000000 0000000005 (0x00001a2b) Warning: Net no answer' > "$work/one.log"

# The programs of a tree run, though nothing tells them where the libraries are.
run_programs() {
    "$1/bin/vninventory" --version | grep -q '^libVNthreadlog 0\.2 '
    "$1/bin/vncuesheet" "$root/examples/cuesheet/evening.cues" | grep -q 'House lights down'
    "$1/bin/vnlog" show "$work/one.log" | grep -q '^2026-11-22 .*: Net no answer$'
    "$1/bin/vnpointsets" "$work"
    test -s "$work/pointsets.svg"
    "$1/bin/vnskylight" -q -n 1 -w 16 -o "$work/sky.png"
    test -s "$work/sky.png"
    rm "$work/pointsets.svg" "$work/sky.png"
}

echo "--- what the packages hold"
for package in libvnbase0 libvnbase-dev libvnbase-doc vnbase-tools; do
    dpkg -x "$packages/$package"_*.deb "$work/one/$package"
    dpkg -x "$packages/$package"_*.deb "$work/unpacked"
done
# Programs need the runtime package alone; who compiles needs the links and headers of the other one.
test -f "$work/one/libvnbase0/usr/lib/$arch/libVNbase.so.0"
test ! -e "$work/one/libvnbase0/usr/lib/$arch/libVNbase.so"
test ! -e "$work/one/libvnbase0/usr/include"
test -L "$work/one/libvnbase-dev/usr/lib/$arch/libVNbase.so"
test -f "$work/one/libvnbase-doc/usr/share/doc/libvnbase-doc/docs/first-program.md"
for page in vnlog-show vnlog-merge vnlog-stats vnlog-export; do
    gzip -dc "$work/one/vnbase-tools/usr/share/man/man1/$page.1.gz" | grep -q '^\.SH NAME$'
done
# GDB looks below this folder for the library's own path.
for library in "$work/one/libvnbase0/usr/lib/$arch"/libVNbase.so.0.*; do
    test -f "$work/one/libvnbase-dev/usr/share/gdb/auto-load/usr/lib/$arch/$(basename "$library")-gdb.py"
done
test -f "$work/one/libvnbase-dev/usr/share/vnbase/libVNbase.natvis"
test -f "$work/one/vnbase-tools/usr/share/vnlog/lnav/vn_log.json"
# lnav looks below /etc alone; what an administrator changes there stays.
cmp "$work/one/vnbase-tools/etc/lnav/formats/vnbase/vn_log.json" "$root/packaging/lnav/vn_log.json"
test "$(dpkg-deb --ctrl-tarfile "$packages"/vnbase-tools_*.deb | tar -xO ./conffiles)" = /etc/lnav/formats/vnbase/vn_log.json
for program in vncuesheet vninventory vnlog vnpointsets vnskylight; do
    gzip -dc "$work/one/vnbase-tools/usr/share/man/man1/$program.1.gz" | grep -q '^\.SH NAME$'
    test -f "$work/one/vnbase-tools/usr/share/bash-completion/completions/$program"
done
grep -q "No licence has been granted yet" "$work/one/libvnbase0/usr/share/doc/libvnbase0/copyright"

echo "--- what the libraries export is what the list says"
version=$(dpkg-deb -f "$packages"/libvnbase0_*.deb Version)
symbols=$root/packaging/debian/libvnbase0.symbols
mkdir -p "$work/full"
dpkg-deb -R "$packages"/libvnbase0_*.deb "$work/full/libvnbase0"
"$root/packaging/debian/checksymbols.sh" "$work/full/libvnbase0" "$symbols" "$version" "$work/symbols"
awk '{ print } NR == 1 { print " (c++)\"Vn::ExBase::aFunctionThatWasThere() const@Base\" 0.2.0" }' "$symbols" > "$work/more.symbols"
if "$root/packaging/debian/checksymbols.sh" "$work/full/libvnbase0" "$work/more.symbols" "$version" "$work/symbols" \
    > "$work/missing.log" 2>&1; then
    echo "a symbol that is gone wasn't noticed"
    exit 1
fi
grep -q '#MISSING.*aFunctionThatWasThere' "$work/missing.log"
grep -v 'Vn::ExBase::' "$symbols" > "$work/fewer.symbols"
if "$root/packaging/debian/checksymbols.sh" "$work/full/libvnbase0" "$work/fewer.symbols" "$version" "$work/symbols" \
    > "$work/new.log" 2>&1; then
    echo "a symbol that is new wasn't noticed"
    exit 1
fi

echo "--- the packages unpacked"
"$here/consume.sh" "$work/unpacked/usr" "$work/use" "$compiler" "" "" ""
run_programs "$work/unpacked/usr"
mv "$work/unpacked" "$work/moved elsewhere"
run_programs "$work/moved elsewhere/usr"
"$here/checkrunpaths.py" --installed "$work/moved elsewhere" libVNbase.so.0.2.0 libVNthreadlog.so.0.2.0 vninventory \
    vncuesheet vnlog vnpointsets vnskylight

for prefix in /usr /usr/local "/opt/a folder"; do
    echo "--- DESTDIR and $prefix"
    DESTDIR="$work/stage" cmake --install "$root/build/package-deb-plain" --prefix "$prefix" > "$work/install.log"
    "$here/consume.sh" "$work/stage$prefix" "$work/use" "$compiler" "" "" ""
    run_programs "$work/stage$prefix"
    test -f "$(echo "$work/stage$prefix/share/gdb/auto-load$prefix/lib/$arch"/libVNbase.so.0.*-gdb.py)"
    rm -rf "$work/stage"
done
echo "all used"
