# The laboratories, as steps of ./check. Sourced, after tools/build-and-test.sh.

#   RunLaboratory wired|wifi|simulated
RunLaboratory() {
    local tree passed status=0
    tree=$(TreeOf coverage)
    [[ -x $tree/corvane/corvane ]] || NotRun "coverage is not built" || return
    "tools/$1-lab" --tree "$tree" >"$logs/$1-lab" 2>&1 || status=$?
    cat "$logs/$1-lab"
    passed=$(grep 'scenarios passed$' "$logs/$1-lab" | paste -sd ';' | sed 's/;/; /g')
    Detail "${passed:-$(tail -n 1 "$logs/$1-lab")}"
    return "$status"
}
