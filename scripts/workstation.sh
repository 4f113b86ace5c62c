#!/usr/bin/env bash
# ./dev workstation [--screenshot FILE]: starts the example workstation in a window on the user's display, or takes a
# screenshot of it on an invisible display.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

run_workstation() { wine "$program" --folder "$(windows_path "$build/images")" "$@" 9>&-; }

# The screenshot shows the second image half-way.
take_screenshot() {
    local output=$build/screenshot.log waited=0
    : >"$output" # what an earlier run said does not count
    run_workstation --run 3 >"$output" 2>&1 &
    until grep -q 'image 1 saved' "$output"; do
        [ $((waited += 1)) -le 300 ] || fail "no image was saved (log: build/screenshot.log)"
        sleep 0.1
    done
    sleep 0.5
    import -window root -trim +repage "$1"
    wait $! || fail "the workstation failed (log: build/screenshot.log)"
    say "screenshot: $1"
}

case ${1:-} in
'') [ -n "${DISPLAY:-}" ] || fail "there is no display (DISPLAY is not set)" ;;
--screenshot) [ $# = 2 ] || fail "usage: ./dev workstation [--screenshot FILE]" ;;
*) fail "usage: ./dev workstation [--screenshot FILE]" ;;
esac

take_turn
need_build_packages
need_run_packages
bits=$(runnable_bits)
compile "win${bits%% *}" workstation
program=$build/win${bits%% *}/bin/workstation.exe

if [ $# = 0 ]; then
    start_wine_in_sight
    run_workstation
else
    install_packages "${screenshot_packages[@]}"
    start_wine
    take_screenshot "$2"
fi
