# Configuring, building and testing a preset. Sourced, after tools/steps.sh.

jobs=$(nproc)
readonly jobs
# Tests mostly wait: for a bus, for a daemon, for a thread to end.
readonly testsAtOnce=$((2 * jobs))

# Labels as regular expressions for ctest: what is run apart, and what the inner loop leaves out.
readonly apart='^timing$'
readonly longLabels='^(timing|stress)$'

# Where a preset is built. Full counts are compiled in, so they have trees of their own.
TreeOf() {
    echo "build/$1${long:+-long}"
}

#   Build PRESET TARGETS
Build() {
    local preset=$1 targets tree
    read -ra targets <<<"$2"
    tree=$(TreeOf "$preset")
    cmake --preset "$preset" -B "$tree" ${long:+-DCORVANE_LONG=ON} &&
        cmake --build "$tree" -j "$jobs" --target "${targets[@]}"
}

# The thread sanitizer knows only some address-space layouts; where it is allowed, switch the
# randomisation off.
Fixed() {
    if setarch -R true 2>/dev/null; then
        setarch -R "$@"
    else
        "$@"
    fi
}

#   RunTests PRESET CTEST-ARGUMENT...
RunTests() {
    local preset=$1 tree status=0
    tree=$(TreeOf "$preset")
    shift
    local run=(ctest --test-dir "$tree" --no-tests=error --output-on-failure -j "$testsAtOnce"
        --output-junit "$PWD/$logs/results.xml" "$@")
    [[ $preset == tsan ]] && run=(Fixed "${run[@]}")
    rm -f "$logs/results.xml"
    "${run[@]}" || status=$?
    [[ -s $logs/results.xml ]] || return 1
    CollectTold "$preset" "$tree/Testing/Temporary/LastTest.log"
    CountResults "$preset" || return 1
    return "$status"
}

# Keeps what the tests told of themselves: why they were skipped, and counts, in lines such as
# "[ COUNT    ] trees 5000 of 100000".
CollectTold() {
    awk -v preset="$1" -v skips="$logs/skips" -v counts="$logs/counts" '
        /^[0-9]+\/[0-9]+ Test: / { test = $3 }
        skipped { print preset ": " test ": " $0 >> skips; skipped = 0 }
        /: Skipped$/ { skipped = 1 }
        /^\[ COUNT +\] / { sub(/^[^]]*\] */, ""); print preset ": " $0 >> counts }
    ' "$2"
}

# Fails where ctest counts as tests what it has not run, so that nothing can pass unseen.
CountResults() {
    local tests failures disabled skipped passed
    read -r tests failures disabled skipped < <(
        sed -n '1,/>$/s/^[[:space:]]*\(tests\|failures\|disabled\|skipped\)="\([0-9]*\)"$/\2/p' \
            <(tail -n +2 "$logs/results.xml") | xargs
    )
    passed=$((tests - failures - disabled - skipped))
    sed -n "s/.*<testcase name=\"\([^\"]*\)\".*status=\"disabled\".*/$1: \1: disabled/p" \
        "$logs/results.xml" >>"$logs/skips"
    local figures="$passed passed"
    ((failures == 0)) || figures+=", $failures FAILED"
    ((disabled + skipped == 0)) || figures+=", $((disabled + skipped)) skipped"
    Detail "$figures"
    ((passed > 0))
}

#   BuildAndTest PRESET TARGETS CTEST-ARGUMENT...
BuildAndTest() {
    local preset=$1 targets=$2
    shift 2
    if Step "build, $preset" Build "$preset" "$targets"; then
        Step "tests, $preset" RunTests "$preset" "$@"
    else
        Skip "tests, $preset" "it does not build"
    fi
}

# What the tests told of themselves.
PrintTold() {
    if [[ -s $logs/skips ]]; then
        printf '\nSkipped tests, and why\n'
        sort -u "$logs/skips" | sed 's/^/  /'
    fi
    if [[ -s $logs/counts ]]; then
        printf '\nCounts: what ran now, of what ./check --long runs\n'
        sort -u "$logs/counts" | sed 's/^/  /'
    fi
}
