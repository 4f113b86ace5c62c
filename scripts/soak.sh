#!/usr/bin/env bash
# ./dev soak [MINUTES]: repeats a day's work and reports what it leaves behind; 10 minutes by default.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

minutes=${1:-10}
[[ $minutes =~ ^[1-9][0-9]*$ ]] || fail "not a number of minutes: $minutes"
take_turn
need_build_packages
need_run_packages
bits=$(runnable_bits)
preset=win${bits%% *}
compile "$preset" tessel_soak

start_wine
# Checking block tails makes Wine allocate each block separately; otherwise many share one that counts as a whole.
set_heap_flags 0x10 "$build/$preset/bin/tessel_soak.exe"
say "working for $minutes minutes"
status=0
timeout $((minutes * 60 + 600)) wine "$build/$preset/bin/tessel_soak.exe" $((minutes * 60)) || status=$?
clear_heap_flags
exit "$status"
