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
heap_checks_off
for preset in $presets; do
    case $preset in checked*) heap_checks_on "$build/$preset/bin" ;; esac
    say "testing $preset"
    ctest --preset "$preset" -j 2 ${1:+-R "$1"} || failed+=" $preset"
done
heap_checks_off
[ -z "$failed" ] || fail "tests failed in:$failed"
say "all tests passed in: $presets"
