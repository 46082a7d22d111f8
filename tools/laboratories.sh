# The laboratories with the real ConnMan, as steps of ./check. Sourced, after tools/build-and-test.sh.

#   RunLaboratory wired|wifi
RunLaboratory() {
    local tree status=0
    tree=$(TreeOf coverage)
    [[ -x $tree/corvane/corvane ]] || NotRun "coverage is not built" || return
    "tools/$1-lab" --tree "$tree" >"$logs/$1-lab" 2>&1 || status=$?
    cat "$logs/$1-lab"
    Detail "$(tail -n 1 "$logs/$1-lab")"
    return "$status"
}
