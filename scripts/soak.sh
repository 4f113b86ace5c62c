#!/usr/bin/env bash
# ./dev soak [MINUTES]: repeats a day's work and reports what it leaves behind; 10 minutes by default.
# ./dev soak --kill [--stride K] [--offset N] [NAME]: kills programs after every instruction of each operation of the
# post office, and at random times, and reports what the others notice. NAME is one operation, or "random".
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage="usage: ./dev soak [MINUTES] | --kill [--stride K] [--offset N] [NAME]"
kill_all=
minutes=10
stride=1
offset=0
name=
if [ "${1:-}" = --kill ]; then
    kill_all=yes
    shift
    while [ $# -gt 0 ]; do
        case $1 in
        --stride) stride=${2:-} && shift ;;
        --offset) offset=${2:-} && shift ;;
        *) name=$1 ;;
        esac
        shift
    done
else
    minutes=${1:-10}
fi
[[ $minutes =~ ^[1-9][0-9]*$ && $stride =~ ^[1-9][0-9]*$ && $offset =~ ^[0-9]+$ ]] || fail "$usage"

take_turn
need_build_packages
need_run_packages
bits=$(runnable_bits)

# In each bitness; the other one's program is the survivor.
run_kill() {
    local bit status=0
    for bit in $bits; do compile "win$bit" tessel_soak; done
    start_wine
    clear_heap_flags
    for bit in $bits; do
        say "killing in $bit bits, every ${stride}th instruction from ${offset} on"
        wine "$build/win$bit/bin/tessel_soak.exe" kill "$stride" "$offset" "$name" || status=$?
    done
    return "$status"
}

run_work() {
    local preset=win${bits%% *} status=0
    compile "$preset" tessel_soak
    start_wine
    # Checking block tails makes Wine allocate each block separately; otherwise many share one that counts as a whole.
    set_heap_flags 0x10 "$build/$preset/bin/tessel_soak.exe"
    say "working for $minutes minutes"
    timeout $((minutes * 60 + 600)) wine "$build/$preset/bin/tessel_soak.exe" $((minutes * 60)) || status=$?
    clear_heap_flags
    return "$status"
}

if [ -n "$kill_all" ]; then run_kill; else run_work; fi
