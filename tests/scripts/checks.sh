# Shared by the check scripts in tests/scripts: named checks that print what offends, and a closing
# line of counts. Source it; set check_prefix first. With MMI_RESULTS naming a file, summary also
# writes the counts there for tests/scripts/run-tests, one "passed N", one "failed N" and one
# "failure NAME" line per failure; nobody reads the printed lines back.
passed=0
failed=0
failures=()
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
        failures+=("$name")
    fi
}

# ctest_results BUILD_DIR JUNIT [STATUS]: adds the results of the ctest run that wrote JUNIT in
# BUILD_DIR to the counts: passed tests from its JUnit file, failed ones from ctest's list of them
# (which, unlike the JUnit file, also names a test whose program is missing). Remove that list
# before the run with ctest_results_reset. STATUS is ctest's exit status: a failed run that
# failed no test (ctest's own error) counts as a failure too.
ctest_results_reset() { rm -f "$1/Testing/Temporary/LastTestsFailed.log" "$2"; }
ctest_results() {
    local bdir="$1" junit="$2" status="${3:-0}" list="$1/Testing/Temporary/LastTestsFailed.log" names=()
    if [ ! -s "$junit" ]; then
        failed=$((failed + 1))
        failures+=("ctest wrote no results (${junit##*/})")
        return
    fi
    passed=$((passed + $(grep -c '<testcase .* status="run"' "$junit")))
    [ ! -f "$list" ] || mapfile -t names < <(sed 's/^[0-9]*://' "$list")
    failed=$((failed + ${#names[@]}))
    [ ${#names[@]} -eq 0 ] || failures+=("${names[@]}")
    if [ "$status" -ne 0 ] && [ ${#names[@]} -eq 0 ]; then
        failed=$((failed + 1))
        failures+=("ctest exited with status $status")
    fi
}

summary() {  # prints the closing line and writes MMI_RESULTS; fails when any check failed
    echo "$check_prefix: $passed passed, $failed failed"
    if [ -n "${MMI_RESULTS:-}" ]; then
        {
            echo "passed $passed"
            echo "failed $failed"
            [ ${#failures[@]} -eq 0 ] || printf 'failure %s\n' "${failures[@]}"
        } >"$MMI_RESULTS"
    fi
    [ "$failed" -eq 0 ] && [ $((passed + failed)) -gt 0 ]
}
