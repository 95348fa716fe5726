#!/usr/bin/env bash
# Builds and runs the tests: ./test.sh [STAGE ...], with stages of release asan tsan fuzz; all of them by default.
# Stages asan and fuzz share one build. The last line is "N passed, N failed"; the exit status is zero only if nothing failed.
#   JOBS=n          processes at a time (default: all processors)
#   FUZZ_RUNS=n     calls by the fuzz target (default 300000)
set -uo pipefail
cd "$(dirname "$0")" || exit 1
jobs=${JOBS:-$(nproc)}
stages=("$@")
[ $# -gt 0 ] || stages=(release asan tsan fuzz)
reports=build/reports
passed=0 failed=0 skipped=0
# An OpenMP region's own barriers are invisible to the thread sanitizer without the runtime's race-detection tool.
archer=/usr/lib/llvm-19/lib/libarcher.so

say() { printf '== %s\n' "$*"; }

fail() {
    say "FAILED: $*"
    failed=$((failed + 1))
}

build() { # preset, target
    local preset=$1 log=$reports/$1-build.log
    say "$preset: build"
    # Last, what sources made that are gone: the structural tests read all objects.
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -j "$jobs" --target "${2:-all}" &&
        ninja -C "build/$preset" -t cleandead; } >"$log" 2>&1; then
        grep -E 'error|Error|FAILED' "$log" | head -20
        fail "$preset does not build, see $log"
        return 1
    fi
}

tests() { # preset, ctest options
    local preset=$1 report=$PWD/$reports/$1.xml log=$reports/$1-tests.log status
    shift
    say "$preset: tests"
    rm -f "$report"
    ctest --test-dir "build/$preset" -j "$jobs" --output-on-failure --no-tests=error --timeout 900 \
        --test-output-size-passed 1000000 --test-output-size-failed 1000000 --output-junit "$report" "$@" >"$log" 2>&1
    status=$?
    local p=0 f=0 s=0
    [ ! -f "$report" ] || read -r p f s < <(python3 scripts/count_tests.py "$report")
    passed=$((passed + p)) failed=$((failed + f)) skipped=$((skipped + s))
    say "$preset: $p passed, $f failed, $s skipped"
    if [ $status -ne 0 ]; then
        sed -n '/tests passed/,$!p' "$log" | grep -vE 'Passed +[0-9.]+ sec|^ +Start ' | tail -100
        sed -n '/tests passed/,$p' "$log"
        [ "$f" -gt 0 ] || fail "$preset: $(tail -1 "$log")"
    fi
}

fuzz() {
    local target count=0 log
    mkdir -p build/fuzz/corpus
    while IFS= read -r target; do
        count=$((count + 1))
        log=$reports/fuzz-$(basename "$target").log
        mkdir -p "build/fuzz/corpus/$(basename "$target")"
        # Ten calls to a unit. Waiting threads sleep at once.
        if KMP_BLOCKTIME=0 "$target" -runs=$((${FUZZ_RUNS:-300000} / 10)) -max_len=2000 -len_control=0 -entropic=0 \
            -timeout=20 -rss_limit_mb=4096 -print_final_stats=1 \
            -artifact_prefix="$reports/" "build/fuzz/corpus/$(basename "$target")" >"$log" 2>&1; then
            passed=$((passed + 1))
            say "fuzz: $(basename "$target"): $(sed -n 's/.*number_of_executed_units: *//p' "$log")0 calls"
        else
            tail -40 "$log"
            fail "fuzz target $(basename "$target"), see $log"
        fi
    done < <(find build/fuzz/tests/fuzz -maxdepth 1 -type f -perm -u+x 2>/dev/null | sort)
    [ $count -gt 0 ] || fail "there is no fuzz target"
}

mkdir -p $reports
start=$SECONDS
if scripts/packages.sh build test; then
    for stage in "${stages[@]}"; do
        case $stage in
        release) build release && tests release ;;
        asan)
            export ASAN_OPTIONS=detect_stack_use_after_return=1:${ASAN_OPTIONS:-} UBSAN_OPTIONS=print_stacktrace=1
            export LSAN_OPTIONS=suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0
            # Long double recursions judge values, which do not depend on the sanitizers.
            build fuzz && KMP_BLOCKTIME=0 tests fuzz -E '^IirAccuracy'
            ;;
        tsan)
            build tsan thread_tests && OMP_TOOL_LIBRARIES=$archer \
                TSAN_OPTIONS="ignore_noninstrumented_modules=1 ${TSAN_OPTIONS:-}" tests tsan -L threads
            ;;
        fuzz) build fuzz && fuzz ;;
        *) fail "no stage '$stage'" ;;
        esac
    done
else
    fail "packages are missing"
fi
say "$skipped skipped, $((SECONDS - start)) s"
echo "$passed passed, $failed failed"
[ $failed -eq 0 ] && [ $passed -gt 0 ]
