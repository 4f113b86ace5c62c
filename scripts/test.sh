#!/usr/bin/env bash
# ./dev test [NAME]: builds and runs the tests, plain in both bitnesses, then with run-time checks.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
need_build_packages
need_run_packages
install_packages "${sound_packages[@]}" "${judge_packages[@]}"
if have_wine32; then presets="win32 win64 checked"; else presets="win64 checked64"; fi
# Both plain builds first: their tests start programs of one another.
for preset in $presets; do compile "$preset"; done

start_sound
start_wine
failed=
clear_heap_flags
for preset in $presets; do
    # Tails and freed blocks are checked, and the whole heap with every call.
    case $preset in checked*) set_heap_flags 0xF0 "$build/$preset/bin"/*_tests.exe ;; esac
    say "testing $preset"
    ctest --preset "$preset" -j 2 ${1:+-R "$1"} || failed+=" $preset"
done
clear_heap_flags
[ -z "$failed" ] || fail "tests failed in:$failed"
say "all tests passed in: $presets"
