# Runs the steps of ./check and ./demo one after the other and keeps what the summary tells of them.
# Sourced. A step is a function; it may call Detail once and returns 0 (passed), $notRun or anything
# else (failed). What it prints goes to a log of its own, which is shown when it fails.

readonly notRun=77
readonly logs=build/check

# What ctest and ninja tell of things that go well.
readonly uneventful='^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed |^\[[0-9]+/[0-9]+\] '

summary=()
failures=0

# A short text for the step's line in the summary; for a step that was not run, the reason.
Detail() {
    echo "$*" >"$logs/detail"
}

NotRun() {
    Detail "$@"
    return "$notRun"
}

#   Step NAME COMMAND...     returns whether the step passed
Step() {
    local name=$1 log start=$SECONDS status=0
    shift
    log=$logs/${name//[^A-Za-z0-9-]/-}.log
    rm -f "$logs/detail"
    printf '%-28s ' "$name"
    ("$@") >"$log" 2>&1 </dev/null || status=$?
    Note "$name" "$status" $((SECONDS - start)) "$(cat "$logs/detail" 2>/dev/null)"
    if ((status != 0 && status != notRun)); then
        echo "---- $log, of what did not pass the last 100 lines:"
        grep -vE "$uneventful" "$log" | tail -n 100
        echo "----"
    fi
    return "$status"
}

#   Skip NAME REASON
Skip() {
    printf '%-28s ' "$1"
    Note "$1" "$notRun" 0 "$2"
}

Note() {
    local name=$1 status=$2 time=$3 detail=$4 word=FAILED
    case $status in
    0) word=passed ;;
    "$notRun") word='not run' ;;
    *) failures=$((failures + 1)) ;;
    esac
    echo "$word, $time s${detail:+: $detail}"
    summary+=("$(printf '%-8s %-28s %5d s  %s' "$word" "$name" "$time" "$detail")")
}

PrintSummary() {
    printf '\nSummary\n'
    printf '  %s\n' "${summary[@]}"
}

#   Conclude NAME     the last line, and the exit status
Conclude() {
    if ((failures)); then
        printf '\n%s FAILED: %d of %d steps, %d s\n' "$1" "$failures" "${#summary[@]}" "$SECONDS"
        exit 1
    fi
    printf '\n%s passed in %d s\n' "$1" "$SECONDS"
    exit 0
}
