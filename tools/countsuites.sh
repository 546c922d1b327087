#!/bin/bash
# tools/countsuites.sh LOG: how many tests have passed and failed by ctest's log of a tree where a test of ctest is a whole suite
# of a test program. tools/test.sh adds them up.
#
# A suite that ends without its count, as by a crash, counts one failure. Any other test of ctest is one.
set -euo pipefail
case "${1:-}" in
-h | --help | "")
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
awk '
    /^[0-9]+\/[0-9]+ Testing: / { isSuite = isDisabled = good = bad = 0 }
    /^Command: ""$/ { isDisabled = 1 }
    /^\[==========\] Running / { isSuite = 1 }
    /^\[  PASSED  \] [0-9]+ test/ { good = $4 }
    /^\[  FAILED  \] [0-9]+ tests?, listed below/ { bad = $4 }
    /^Test Passed\./ && !isDisabled { passed += isSuite ? good : 1 }
    /^Test Failed\./ { passed += good; failed += isSuite && bad > 0 ? bad : 1 }
    END { print passed + 0, failed + 0 }' "$1"
