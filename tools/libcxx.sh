#!/bin/bash
# tools/libcxx.sh: unpacks Clang's own standard library for the preset libcxx, once; says where it is.
#
# Its development packages can't be installed beside those of the tests' peers: both have an unwinder of the same name. So the
# packages are downloaded, which apt checks by their checksums, and unpacked into a folder of the user's own, which needs no
# root. VNBASE_LIBCXX names another folder, and cmake/libcxx.cmake looks there as well. Exit code 2: it can't be had here, with
# what to do by hand.
set -euo pipefail

version=16
folder=${VNBASE_LIBCXX:-$HOME/.cache/vnbase/libcxx-$version}
packages="libc++1-$version libc++-$version-dev libc++abi1-$version libc++abi-$version-dev libunwind-$version libunwind-$version-dev"

if [ ! -e "$folder/usr/lib/llvm-$version/include/c++/v1/__config" ]; then
    for program in apt-get dpkg-deb; do
        if ! command -v $program > /dev/null; then
            echo "no $program here: unpack libc++ $version by hand, and set VNBASE_LIBCXX to the folder that has usr/lib/llvm-$version" >&2
            exit 2
        fi
    done
    # Beside its place and moved there as a whole: a run that is interrupted leaves no half of it.
    mkdir -p "$(dirname "$folder")"
    made=$(mktemp -d "$folder.XXXXXX")
    trap 'rm -rf "$made"' EXIT
    mkdir "$made/debs" "$made/root"
    # shellcheck disable=SC2086  # the packages are words
    if ! (cd "$made/debs" && LC_ALL=C apt-get download -q $packages); then
        echo "apt-get download has failed; apt-get update may help: $packages" >&2
        exit 2
    fi
    for package in "$made"/debs/*.deb; do
        dpkg-deb -x "$package" "$made/root"
    done
    chmod 755 "$made/root"
    # Who was faster has the same.
    mv -T "$made/root" "$folder" 2> /dev/null || [ -e "$folder/usr/lib/llvm-$version" ]
fi
echo "$folder"
