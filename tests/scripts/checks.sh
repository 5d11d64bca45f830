# Shared by the check scripts in tools/: named checks that print what offends, and a closing
# ctest-style summary line that tools/run-tests counts. Source it; set check_prefix first.
passed=0
failed=0
check() {  # check NAME COMMAND...: the command prints the offending items and fails
    local name="$1" out
    shift
    if out=$("$@" 2>&1); then
        echo "$check_prefix: ok    $name"
        passed=$((passed + 1))
    else
        echo "$check_prefix: FAIL  $name"
        sed 's/^/    /' <<<"$out"
        failed=$((failed + 1))
    fi
}
add_ctest_summary() {  # add_ctest_summary OUTPUT: adds ctest's "F tests failed out of T" counts
    local line f t
    line=$(grep -E '[0-9]+ tests failed out of [0-9]+' <<<"$1" | tail -n 1) || {
        echo "$check_prefix: FAIL  no test summary from ctest"
        failed=$((failed + 1))
        return
    }
    f=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\1/' <<<"$line")
    t=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\2/' <<<"$line")
    passed=$((passed + t - f))
    failed=$((failed + f))
}
summary() {  # prints the closing line; fails when any check failed
    local total=$((passed + failed))
    echo "$check_prefix: $((total ? 100 * passed / total : 0))% tests passed, $failed tests failed out of $total"
    [ "$failed" -eq 0 ] && [ "$total" -gt 0 ]
}
