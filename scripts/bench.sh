#!/usr/bin/env bash
# ./dev bench [--slow-trips COUNT] [NAME]: measures against the bare Windows calls; NAME is a regular expression of
# benchmarks. COUNT single round trips are timed at 10 a second, by the library and by the bare calls.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=scripts/fetch-benchmark.sh
source "$root/scripts/fetch-benchmark.sh"

slow_trips=300
if [ "${1:-}" = --slow-trips ]; then
    slow_trips=${2:?--slow-trips needs a number}
    shift 2
fi

take_turn
need_build_packages
need_run_packages
install_packages "${bench_packages[@]}"
need_benchmark_source
bits=$(runnable_bits)
preset=win${bits%% *}
configure "$preset" -DTESSEL_BENCHMARK_SOURCE="$benchmark_source"
compile "$preset" tessel_bench

# Wine's server answers in 10 or in 50 microseconds, depending on whether the scheduler wakes it on the caller's core
# or on another, and the scheduler changes its mind during a run. On one core it has no choice.
stay_on_one_core() {
    local allowed
    allowed=$(taskset -cp $$)
    taskset -cp "${allowed##*[ ,-]}" $$ >/dev/null
}

stay_on_one_core
start_wine
results=$build/bench.json
# Repetitions in random order, so that other load on the machine affects both sides of a ratio alike.
timeout $((3000 + slow_trips / 4)) wine "$build/$preset/bin/tessel_bench.exe" --benchmark_filter="${1:-.}" \
    --slow_trips="$slow_trips" \
    --benchmark_repetitions=15 --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 \
    --benchmark_report_aggregates_only=true --benchmark_out="$(windows_path "$results")" --benchmark_out_format=json \
    >"$build/bench.log" 2>&1 || fail "the benchmarks failed (log: build/bench.log)"
if grep -q '"error_occurred": true' "$results"; then fail "a benchmark found a fault (log: build/bench.log)"; fi

printf 'Processor: %s; %s, %s-bit\n\n' "$(sed -n 's/^model name\t: //p;T;q' /proc/cpuinfo)" "$(wine --version)" "${preset#win}"
jq -r -f "$root/scripts/bench-report.jq" "$results" | column -t -s $'\t' -R 2,3
tails=$(jq -r -f "$root/scripts/bench-tails.jq" "$results" | column -t -s $'\t' -R 2,3,4,5,6,7)
if [ -n "$tails" ]; then printf '\n%s\n' "$tails"; fi
say "all figures: build/bench.json"
