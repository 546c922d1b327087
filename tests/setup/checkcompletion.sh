#!/bin/bash
# Sources the completion of the inventory and asks for words, as bash does: checkcompletion.sh PROGRAM
set -u
failures=0
# shellcheck source=/dev/null
. <("$1" --help=bash:inventory)
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder" || exit 1
mkdir folder 'a folder'
touch file

# expect WORDS WORD...: completes the last word of the line; blanks in the offered ones are "_".
expect() {
    local wanted=$1
    shift
    COMP_WORDS=(inventory "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _inventory
    local got
    got=$(printf '%s\n' "${COMPREPLY[@]// /_}" | LC_ALL=C sort | xargs)
    if [ "$got" != "$wanted" ]; then
        echo "inventory $*: $got"
        echo "         not: $wanted"
        failures=$((failures + 1))
    fi
}

complete -p inventory | grep -q -- '-F _inventory inventory$' || failures=1
expect "--build --graph --help --settings --version -H -a -c -d -h -p -s" -
expect "--build --graph --help --settings --version" --
expect "--graph" --g
expect "--settings" -a --graph --s
expect "bytes files suffix" -s ""
expect "bytes" -s b
expect "bytes files suffix" -as ""
expect "suffix" -a -Hps s
expect "" -s x
expect "" -d ""
expect "a_folder file folder" -c ""
expect "a_folder folder" ""
expect "a_folder folder" -s files ""
expect "a_folder folder" -sfiles ""
expect "a_folder" -d 5 a
expect "-a" -d 5 -a
expect "" folder -
expect "" -- -
expect "a_folder folder" -- ""
expect "-a" -c a : b -a
expect "-a" -c -s -a
expect "" --bogus x
[ $failures = 0 ]
