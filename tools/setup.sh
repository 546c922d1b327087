#!/bin/sh
# Installs, on Debian 12, what building and testing this project needs: tools/setup.sh [run|test|bench]
set -e
packages="g++ cmake ninja-build ccache libpng-dev"
if [ "$1" = test ] || [ "$1" = bench ]; then
    packages="$packages clang clang-format clang-tidy libclang-rt-14-dev llvm-14 g++-mingw-w64-x86-64-posix wine wine64 googletest libbenchmark-dev
        libabsl-dev libboost-dev libboost-log-dev libcoin-dev libgflags-dev libgoogle-glog-dev libgsl-dev libpoco-dev
        libspdlog-dev pkg-config binutils python3 tzdata git doxygen logrotate"
fi
[ "$1" != bench ] || packages="$packages python3-matplotlib"
missing=
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
echo "installing:$missing"
sudo=
[ "$(id -u)" = 0 ] || sudo=sudo
$sudo apt-get update -qq
# shellcheck disable=SC2086  # the packages are words
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq $missing > /dev/null
