#!/bin/bash
# usage: sum_results.sh REPOSITORY
#
# Checks how .ci/sum-results sums the reports of successful and failed runs.
set -euo pipefail
sum=$1/.ci/sum-results
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# ctest_says STATUS NAME
ctest_says() { printf '<testcase name="%s" status="%s">\n</testcase>\n' "$2" "$1" >>"$work/ctest.xml"; }

# program_says NAME TESTS FAILURES ERRORS SKIPPED
program_says() {
    printf '<testsuites>\n  <testsuite name="A" tests="%s" failures="%s" disabled="0" skipped="%s" errors="%s">\n' \
        "$2" "$3" "$5" "$4" >"$work/test-$1.xml"
}

# expect RULE STATUS LINE, for the output since the last one.
expect() {
    local line status=0
    line=$("$sum" "$work") || status=$?
    if [[ $line != "$3" || $status -ne $2 ]]; then
        failed=1
        printf 'broken rule: %s: "%s", exit status %s\n' "$1" "$line" "$status"
    fi
    rm -f "$work"/*.xml
}

expect "nothing at all is no success" 1 "0 passed, 0 failed"

ctest_says run views
program_says views 5 0 0 0
ctest_says run qmllint
expect "cases and other tests are added up" 0 "6 passed, 0 failed"

ctest_says fail views
program_says views 5 2 0 1
expect "a program with failing cases fails by these alone" 1 "2 passed, 2 failed, 1 skipped"

ctest_says fail views
program_says views 5 0 0 0
expect "a fault after the last case is a failure" 1 "5 passed, 1 failed"

ctest_says fail views
ctest_says run qmllint
expect "a program that died without a report is a failure" 1 "1 passed, 1 failed"

ctest_says notrun views
ctest_says run qmllint
expect "what could not be started is a failure" 1 "1 passed, 1 failed"

ctest_says run qmllint
ctest_says skipped windows
expect "what is skipped is neither" 0 "1 passed, 0 failed, 1 skipped"

ctest_says run views
program_says views 1 0 0 0
printf '<failure><![CDATA[\n  <testsuite tests="99" failures="99" errors="0" skipped="0" disabled="0">\n]]>\n' \
    >>"$work/test-views.xml"
expect "what a test prints is not read" 0 "1 passed, 0 failed"
exit "$failed"
