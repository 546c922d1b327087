#!/bin/bash
# Builds the packages of the library into build/packages: tools/packages.sh [OPTION]... [deb|zip|source]...
#
#   deb           Debian packages: libvnbase0, libvnbase-dev, libvnbase-doc, vnbase-tools, and debug symbols (-dbgsym)
#   zip           the libraries for Windows, cross-built by MinGW-w64
#   source        the sources of the last commit
#                 All three, if none is named.
#   --check       builds everything again from a copy in another folder, and compares each package to the byte; asks
#                 lintian about the Debian packages
#   --plain       for a quick look: the Debian packages without debug symbols and without the hardening of Debian
#   --symbols     only writes packaging/debian/libvnbase0.symbols anew, which lists what the libraries export
#   --into DIR    another folder than build/packages
#   -h, --help    this text
#
# Everything bears the date SOURCE_DATE_EPOCH, by default that of the last commit. If build/site exists, libvnbase-doc holds
# it. What is compiled stands in build/package-*; the logs are in build/logs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

# How it works: a tree of its own for each platform is configured with VNBASE_PACKAGING, built, and packed by CPack as
# packaging/CMakeLists.txt says. CPack knows nothing of symbols files, multiarch and triggers, so each Debian package is
# opened once more, gets these, and is closed by dpkg-deb, which makes the same bytes of the same files.

fail() {
    echo "packages: $*" >&2
    exit 1
}

check=false plain=false symbols=false
into=$root/build/packages
kinds=()
while [ $# -gt 0 ]; do
    case $1 in
    -h | --help)
        sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//;p}' "$0"
        exit 0
        ;;
    --check) check=true ;;
    --plain) plain=true ;;
    --symbols) symbols=true ;;
    --into)
        [ $# -gt 1 ] || fail "--into needs a folder"
        mkdir -p "$2"
        into=$(cd "$2" && pwd)
        shift
        ;;
    deb | zip | source) kinds+=("$1") ;;
    *)
        echo "packages: unknown word $1; tools/packages.sh -h tells more" >&2
        exit 2
        ;;
    esac
    shift
done
[ ${#kinds[@]} -gt 0 ] || kinds=(deb zip source)
! $symbols || kinds=(deb)

version=$(sed -n 's/^project(VNbase VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
[ -n "$version" ] || fail "CMakeLists.txt has no version"
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct 2> /dev/null) ||
        fail "SOURCE_DATE_EPOCH isn't set, and $root has no history to take the date from"
fi
# The zone and the umask would show in the packages; so would the language, which is set for the packing alone, as ccache
# keeps the compiler's results by language.
export SOURCE_DATE_EPOCH TZ=UTC
umask 022

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
log=$root/build/logs
mkdir -p "$log" "$into"

need() {
    local tool
    for tool in "$@"; do
        command -v "$tool" > /dev/null || fail "$tool isn't installed; tools/setup.sh test installs it"
    done
}

# Runs a step; tells the time so far, and shows the end of its log if it fails.
step() {
    local name=$1
    shift
    echo "== $name (${SECONDS} s)"
    if ! "$@" > "$log/package-$name.log" 2>&1; then
        tail -n 60 "$log/package-$name.log" >&2
        fail "$name failed; all of it is in $log/package-$name.log"
    fi
}

# Configures and builds the tree build/package-NAME; the other arguments are for CMake. With --plain the compiler's command
# is that of the trees release and windows, word by word, so that ccache has the result.
build_tree() {
    local name=$1
    shift
    need cmake ninja
    step "$name-configure" cmake -S "$root" -B "$root/build/package-$name" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DVNBASE_PACKAGING=ON -DVNBASE_BUILD_TESTS=OFF -DVNBASE_BUILDER=packages "$@"
    step "$name-build" cmake --build "$root/build/package-$name"
}

# Writes the list of what the libraries in an unpacked package export anew.
write_symbols() {
    local list=$root/packaging/debian/libvnbase0.symbols
    "$root/packaging/debian/checksymbols.sh" "$1" "" "$version" "$work/symbols" > /dev/null
    python3 "$root/packaging/debian/demangle.py" "$work/symbols" > "$list"
    echo "$list: $(wc -l < "$list") lines"
}

# Gives one of CPack's Debian packages what CPack can't, and puts it into the folder.
finish_deb() {
    local deb=$1 name package control
    name=$(dpkg-deb -f "$deb" Package)
    package=$work/unpacked/$name
    rm -rf "$package"
    mkdir -p "$work/unpacked"
    dpkg-deb -R "$deb" "$package"
    control=$package/DEBIAN/control
    sed -i '/^$/d' "$control"
    case $name in
    libvnbase0)
        # Instead of scripts that do the same.
        rm -f "$package/DEBIAN/postinst" "$package/DEBIAN/postrm"
        cp "$root/packaging/debian/triggers" "$package/DEBIAN/triggers"
        # For the packages of programs that link the library: the version that each symbol needs.
        "$root/packaging/debian/checksymbols.sh" "$package" "$root/packaging/debian/libvnbase0.symbols" "$version" \
            "$package/DEBIAN/symbols" ||
            fail "the libraries don't export what packaging/debian/libvnbase0.symbols lists; a new symbol is added to it by
tools/packages.sh --symbols, for a missing one VNBASE_ABI (CMakeLists.txt) and the package's name get the next number"
        printf 'Multi-Arch: same\n' >> "$control"
        ;;
    libvnbase-dev) printf 'Multi-Arch: same\n' >> "$control" ;;
    *-dbgsym)
        sed -i '/^Package-Type: ddeb$/d' "$control"
        printf 'Multi-Arch: same\n' >> "$control"
        # The package whose symbols these are has the copyright and the changelog.
        mkdir -p "$package/usr/share/doc"
        ln -s "${name%-dbgsym}" "$package/usr/share/doc/$name"
        ;;
    libvnbase-doc | vnbase-tools) printf 'Multi-Arch: foreign\n' >> "$control" ;;
    esac
    # As Debian has them; without a name and a date within, so that the bytes stay the same.
    [ ! -d "$package/usr/share/man" ] || find "$package/usr/share/man" -type f ! -name '*.gz' -exec gzip -9n {} +
    (cd "$package" && find usr -type f -print0 | sort -z | xargs -0 md5sum > DEBIAN/md5sums)
    find "$package" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
    dpkg-deb --root-owner-group --uniform-compression -Zxz --threads-max=1 -b "$package" "$into" > /dev/null
}

build_deb() {
    need dpkg-deb dpkg-architecture dpkg-gensymbols dpkg-shlibdeps file objcopy python3
    local flags="" link="" tree=deb deb site=""
    if $plain; then
        tree="deb-plain"
    else
        # In quotes, as the folder may have a blank in its name.
        flags="-g \"-ffile-prefix-map=$root=/usr/src/libvnbase-$version\""
        flags="$flags -fstack-protector-strong -D_FORTIFY_SOURCE=2"
        link="-Wl,-z,relro -Wl,-z,now"
        # Debug symbols hold folders as the compiler was given them. A cache mustn't shorten these, nor take what it has
        # compiled in another folder.
        local -x CCACHE_BASEDIR="" CCACHE_HASHDIR=1
    fi
    [ ! -d "$root/build/site" ] || site=$root/build/site
    build_tree "$tree" -DCMAKE_CXX_COMPILER=g++ -DCMAKE_INSTALL_PREFIX=/usr \
        -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" \
        -DCMAKE_INSTALL_DOCDIR=share/doc/libvnbase-doc -DVNBASE_SITE="$site" \
        -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$link" -DCMAKE_EXE_LINKER_FLAGS="$link"
    local -x LC_ALL=C
    rm -f "$into"/*.deb
    step "$tree-pack" cpack --config "$root/build/package-$tree/CPackConfig.cmake" -B "$work/cpack-deb"
    for deb in "$work"/cpack-deb/*.deb "$work"/cpack-deb/*.ddeb; do
        if $plain && [ "${deb%.ddeb}" != "$deb" ]; then
            continue  # nothing is in it
        fi
        if $symbols; then
            [[ $deb != */libvnbase0_* ]] || { dpkg-deb -R "$deb" "$work/exporting"; write_symbols "$work/exporting"; }
            continue
        fi
        finish_deb "$deb"
    done
    rm -rf "$work/unpacked"
}

build_zip() {
    need x86_64-w64-mingw32-g++-posix
    build_tree zip -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" -DVNBASE_BUILD_EXAMPLES=OFF \
        -DVNBASE_BUILD_PROGRAMS=OFF
    local -x LC_ALL=C
    rm -f "$into"/*.zip
    step zip-pack cpack --config "$root/build/package-zip/CPackConfig.cmake" -B "$work/cpack-zip"
    cp "$work"/cpack-zip/*.zip "$into"
}

build_source() {
    need git gzip
    local name=libvnbase-$version
    git -C "$root" rev-parse -q --verify HEAD > /dev/null || fail "$root has no history to take the sources from"
    git -C "$root" archive --format=tar --prefix="$name/" HEAD > "$work/source.tar"
    gzip -9n < "$work/source.tar" > "$into/$name.tar.gz"
}

# A copy of what is built here in another folder, built anew without a cache.
compare_again() {
    local again first options=() file
    again=$work/again
    mkdir "$again"
    git clone -q "$root" "$again/another folder"
    (cd "$root" && git ls-files -z --cached --others --exclude-standard | tar --null -T - -cf -) |
        tar -C "$again/another folder" -xf -
    if [ -d "$root/build/site" ]; then
        mkdir -p "$again/another folder/build"
        cp -a "$root/build/site" "$again/another folder/build/site"
    fi
    ! $plain || options+=(--plain)
    echo "== once more, in $again/another folder"
    CCACHE_DISABLE=1 "$again/another folder/tools/packages.sh" "${options[@]}" --into "$again/packages" "${kinds[@]}"
    for first in "$into"/*.deb "$into"/*.zip "$into"/*.tar.gz; do
        [ -f "$first" ] || continue
        file=$(basename "$first")
        cmp "$first" "$again/packages/$file" || fail "$file isn't the same when it is built again"
        echo "identical: $file"
    done
}

check_lintian() {
    need lintian
    local root_option=()
    [ "$(id -u)" != 0 ] || root_option=(--allow-root)
    # Warnings that have to be are argued in packaging/debian/*.lintian-overrides; every other one is an error here.
    lintian "${root_option[@]}" --fail-on error,warning --tag-display-limit 0 "$into"/*.deb ||
        fail "lintian objects"
    echo "lintian: no error, no warning"
}

for kind in "${kinds[@]}"; do
    "build_$kind"
done
! $symbols || exit 0
if $check; then
    compare_again
    [[ " ${kinds[*]} " != *" deb "* ]] || check_lintian
fi
echo "== done (${SECONDS} s), in $into:"
(cd "$into" && find . -maxdepth 1 -type f -printf '%f  %s bytes\n' | sort)
