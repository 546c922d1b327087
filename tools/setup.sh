#!/bin/bash
# tools/setup.sh run|test|bench: installs the packages of Debian 12 that this project's commands need, if some are missing.
#
#   run      to build the library and its examples, and to run them: tools/run.sh does this by itself
#   test     to pass all tests as well: tools/test.sh does this by itself
#   bench    the same: what draws the measurements of tools/bench.sh is among them
#
# Needs root or sudo, and nothing if no package is missing. On another system install the counterparts by hand and set
# VNBASE_NO_SETUP=1; then nothing is looked for. Exit code 2: not on this system, with what to do by hand.
set -euo pipefail
cd "$(dirname "$0")/.."

packages="g++ cmake ninja-build ccache libpng-dev zlib1g-dev"
# A later Clang beside Debian's own: for the headers' tests, and for the preset libcxx.
later_clang="clang-16"
case "${1:-}" in
run) ;;
test | bench)
    packages="$packages $later_clang clang clang-format clang-tidy libclang-rt-14-dev llvm-14 g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64 googletest libbenchmark-dev
        libabsl-dev libboost-dev libboost-log-dev libcoin-dev libgflags-dev libgoogle-glog-dev libgsl-dev libpoco-dev librapidcheck-dev
        libspdlog-dev pkg-config binutils python3 tzdata git doxygen logrotate mandoc man-db shellcheck chromium graphviz fonts-dejavu-core
        doxygen-awesome-css python3-markdown-it libegl-dev libgl1-mesa-dri dpkg-dev file lintian make python3-matplotlib gdb spin
        nlohmann-json3-dev jq lnav systemd-journal-remote abigail-tools
        g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user"
    ;;
-h | --help)
    sed -n '2,/^set/s/^# \{0,1\}//p' tools/setup.sh
    exit 0
    ;;
*)
    echo "tools/setup.sh takes run, test or bench; tools/setup.sh -h tells more" >&2
    exit 2
    ;;
esac
[ -z "${VNBASE_NO_SETUP:-}" ] || exit 0

# What can't go on here ends in one line.
by_hand() {
    echo "$1: install by hand ($2), then set VNBASE_NO_SETUP=1 and start this again" >&2
    exit 2
}

packages=$(xargs <<< "$packages")
[ "$(uname -s)" = Linux ] || by_hand "this is $(uname -s), and the packages are those of Debian 12 (Linux)" "$packages"
system=$(sed -nE 's/^(ID|VERSION_ID)="?([^"]*)"?$/\1 \2/p' "${VNBASE_OS_RELEASE:-/etc/os-release}" 2> /dev/null |
    sort | cut -d' ' -f2 | xargs || true)
if ! command -v dpkg-query > /dev/null || ! command -v apt-get > /dev/null; then
    by_hand "no apt here, and the packages are those of Debian 12" "$packages"
fi
# One question for all of them; those that aren't installed at all make it fail.
# shellcheck disable=SC2086  # the packages are words
installed=$(dpkg-query -W -f='${Package} ${Status}\n' $packages 2> /dev/null | sed -n 's/ install ok installed$//p' || true)
missing=
for package in $packages; do
    grep -qxF "$package" <<< "$installed" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
missing=${missing# }
[ "$system" = "debian 12" ] || by_hand "this is ${system:-an unknown system}, and the packages are those of Debian 12" "$missing"
sudo=
if [ "$(id -u)" != 0 ]; then
    command -v sudo > /dev/null || by_hand "this needs root, and there is no sudo" "as root: apt-get install $missing"
    # Asks for the password here, in front: the steps below have no terminal.
    sudo -v || by_hand "sudo refuses" "as root: apt-get install $missing"
    sudo=sudo
fi

. tools/progress.sh
# shellcheck disable=SC2034  # progress.sh uses it
progress_sudo=$sudo
failed() {
    tail -n 20 "build/logs/$1.log" >&2
    echo "$2; the log is build/logs/$1.log" >&2
    exit 1
}
apt_get() {
    $sudo env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get "$@"
}
echo "installing: $missing"
progress_begin "tools/setup.sh"
progress_step "setup.$1.update" "asking for the packages' versions" apt_get update -q ||
    failed "setup.$1.update" "apt-get update has failed"
# shellcheck disable=SC2086
LC_ALL=C apt-get install --assume-no $missing 2> /dev/null | grep -E '^(Need to get|After this)' | sed 's/^/   /' || true
# shellcheck disable=SC2086
progress_step "setup.$1.install" "downloading and installing" apt_get install -y -q $missing ||
    failed "setup.$1.install" "apt-get install has failed"
progress_end
