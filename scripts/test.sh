#!/usr/bin/env bash
# ./dev test [NAME]: builds and runs the tests, plain in both bitnesses, then with run-time checks.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
need_build_packages
need_run_packages
install_packages "${sound_packages[@]}" "${verifier_packages[@]}"
if have_wine32; then presets="win32 win64 checked"; else presets="win64 checked64"; fi
# Both plain builds come first: their tests start each other's programs.
for preset in $presets; do compile "$preset"; done

start_sound
start_wine
failed=
clear_heap_flags
for preset in $presets; do
    # Checks block tails and freed blocks, and validates the whole heap on every call.
    case $preset in checked*) set_heap_flags 0xF0 "$build/$preset/bin"/*_tests.exe ;; esac
    say "testing $preset"
    ctest --preset "$preset" -j 2 ${1:+-R "$1"} || failed+=" $preset"
done
clear_heap_flags
[ -z "$failed" ] || fail "tests failed in:$failed"
say "all tests passed in: $presets"
