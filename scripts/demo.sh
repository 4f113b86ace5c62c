#!/usr/bin/env bash
# ./dev demo [FILE]: carries FILE from one process to another and compares the copy, then runs the example workstation
# without a window, which makes a movie of its images.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -le 1 ] || fail "usage: ./dev demo [FILE]"
file=${1:-}
if [ -n "$file" ]; then
    if [ ! -f "$file" ] || [ ! -r "$file" ]; then fail "cannot read $file"; fi
    file=$(realpath "$file")
fi

take_turn
need_build_packages
need_run_packages
bits=$(runnable_bits)
for width in $bits; do compile "win$width" courier workstation; done
sender=$build/win${bits%% *}/bin/courier.exe
receiver=$build/win${bits##* }/bin/courier.exe
workstation=$build/win${bits%% *}/bin/workstation.exe
console=$build/win${bits##* }/bin/console.exe

if [ -z "$file" ]; then
    file=$build/sample.txt
    seq 1 500000 >"$file"
fi
copy=$build/courier-copy
[ "$file" -ef "$copy" ] || rm -f "$copy"

start_wine
# The receiver pauses first, so that the pool fills up and the sender has to retry.
timeout 600 wine "$sender" "$(windows_path "$file")" "$(windows_path "$copy")" \
    --receiver "$(windows_path "$receiver")" --stall 500

# The console has the other bitness and sends its orders by mailbox.
timeout 60 wine "$workstation" --hidden --run 3 --folder "$(windows_path "$build/images")" \
    --movie "$(windows_path "$build/workstation.avi")" --console "$(windows_path "$console")"
say "the movie of the images: build/workstation.avi"
