# The looks at the sources and at what was built. Sourced, after tools/build-and-test.sh.

Sources() {
    find . -path ./build -prune -o -path './.*' -prune -o \
        -name '*.cpp' -print -o -name '*.h' -print
}

CheckFormatting() {
    local sources
    mapfile -t sources < <(Sources)
    Detail "${#sources[@]} files"
    clang-format-14 --dry-run -Werror -ferror-limit=1 "${sources[@]}"
}

CheckShellScripts() {
    local scripts
    mapfile -t scripts < <(grep -lE '^#!/bin/(ba)?sh' check demo .ci/run tools/* lab/* \
        tests/install/* 2>/dev/null)
    Detail "${#scripts[@]} scripts and what they source"
    shellcheck -x "${scripts[@]}"
}

# Timing means something only in what is shipped, and only while nothing else runs.
RunTiming() {
    [[ -d $(TreeOf release) ]] || NotRun "release is not built" || return
    RunTests release -j 1 -L "$apart"
}

CheckExports() {
    local library
    library=$(find "$(TreeOf release)" -name libcorvane_KX22.so 2>/dev/null)
    [[ $library ]] || NotRun "nothing to check yet: no libcorvane_KX22.so is built" || return
    tools/check-exports "$library"
}

CheckAbi() {
    local library
    library=$(find "$(TreeOf release)" -name libcorvane_KX22.so 2>/dev/null)
    [[ $library ]] || NotRun "nothing to check yet: no libcorvane_KX22.so is built" || return
    tools/check-abi "$library"
}

CheckNames() {
    local tree
    tree=$(TreeOf coverage)
    [[ -f $tree/compile_commands.json ]] || NotRun "coverage is not configured" || return
    tools/check-names.py "$tree" >"$logs/names"
    local status=$?
    cat "$logs/names"
    Detail "$(tail -n 1 "$logs/names")"
    return "$status"
}

# What ships, and in the long run everything.
CheckTidy() {
    local status=0 sources=() which='all rooms'
    if [[ ! $long ]]; then
        sources=(Include/*.cpp Common/*.cpp Libraries/*/*.cpp standin/*.cpp)
        which='what ships; all rooms: --long'
    fi
    cmake --preset tidy || return 1
    tools/tidy.py build/tidy "${sources[@]}" >"$logs/tidy" || status=$?
    cat "$logs/tidy"
    Detail "$(tail -n 1 "$logs/tidy"); $which"
    return "$status"
}

# The figures of what ships, a room at a time; the tests themselves are not counted.
MeasureCoverage() {
    local tree room
    tree=$(TreeOf coverage)
    find "$tree" -name '*.gcda' 2>/dev/null | grep -q . || NotRun "coverage has not run" || return
    gcovr --root . -j "$jobs" --filter '(Include|Common|Libraries|host)/' \
        --exclude-throw-branches --json "$logs/coverage.json" "$tree" || return 1
    for room in Include Common Libraries host; do
        gcovr --root . --add-tracefile "$logs/coverage.json" --filter "$room/" \
            --json-summary-pretty --json-summary "$logs/coverage-$room.json" || return 1
        printf '%-12s lines %5.1f %%   branches %5.1f %%\n' "$room/" \
            "$(Figure line_percent "$logs/coverage-$room.json")" \
            "$(Figure branch_percent "$logs/coverage-$room.json")" >>"$logs/coverage"
    done
}

Figure() {
    sed -n "s/^ *\"$1\": \([0-9.]*\),\?$/\1/p" "$2" | tail -n 1
}

PrintCoverage() {
    [[ -s $logs/coverage ]] || return 0
    printf '\nCoverage, by room\n'
    sed 's/^/  /' "$logs/coverage"
}

# Each target for ten seconds over its corpus; what it adds to the corpus is thrown away.
RunFuzzers() {
    [[ -f fuzz/CMakeLists.txt ]] || NotRun "no fuzz targets yet" || return
    local targets scratch status=0
    cmake --preset fuzz && cmake --build build/fuzz -j "$jobs" --target fuzz/all || return 1
    scratch=$(mktemp -d) && mkdir -p "$logs/fuzz" || return 1
    mapfile -t targets < <(find build/fuzz/fuzz -maxdepth 1 -name 'fuzz_*' -type f -executable)
    ((${#targets[@]})) || return 1
    printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} tools/fuzz-once {} "$scratch" "$logs/fuzz" ||
        status=1
    rm -rf "$scratch"
    Detail "${#targets[@]} targets, 10 s each"
    return "$status"
}
