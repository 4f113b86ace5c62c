# shellcheck shell=bash disable=SC2034,SC2154 # sourced: variables come from and go to the others
# A Wine prefix inside build/, and a display and a Wine server for as long as a command runs.

export WINEPREFIX=$build/wine
export WINEDEBUG=${WINEDEBUG:--all}
# A crash must end the program instead of waiting in a debugger, and no download dialogs may appear.
export WINEDLLOVERRIDES='winedbg.exe=d;mscoree=d;mshtml=d'

prefix_mark=$WINEPREFIX/.tessel-ready

start_display() {
    local number
    trap stop_wine EXIT
    trap 'exit 130' INT TERM
    exec 8< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>/dev/null 9>&-)
    xvfb_pid=$!
    read -r -t 20 number <&8 || fail "Xvfb did not start"
    exec 8<&-
    export DISPLAY=:$number
}

stop_display() {
    [ -n "${xvfb_pid:-}" ] || return 0
    kill "$xvfb_pid" 2>/dev/null || true
    wait "$xvfb_pid" 2>/dev/null || true
    xvfb_pid=
}

# Wine's own files are linked instead of copied: the prefix takes 0.15 GB instead of 1.3 GB.
link_wine_files() {
    local folder=$1 own=$2 file name
    [ -d "$folder" ] && [ -d "$own" ] || return 0
    for file in "$folder"/*; do
        name=${file##*/}
        if [ -f "$file" ] && [ ! -L "$file" ] && cmp -s "$file" "$own/$name"; then
            ln -sf "$own/$name" "$file"
        fi
    done
}

create_prefix() {
    say "creating a Wine prefix in build/wine"
    rm -rf "$WINEPREFIX"
    timeout 300 wineboot -i >"$build/wineboot.log" 2>&1 9>&- || fail "wineboot failed (log: build/wineboot.log)"
    timeout 60 wineserver -w || fail "Wine's server does not stop (log: build/wineboot.log)"
    link_wine_files "$WINEPREFIX/drive_c/windows/system32" /usr/lib/x86_64-linux-gnu/wine/x86_64-windows
    link_wine_files "$WINEPREFIX/drive_c/windows/syswow64" /usr/lib/i386-linux-gnu/wine/i386-windows
    touch "$prefix_mark"
}

# In a subshell, so that the caller's display stays unchanged.
need_prefix() (
    [ ! -e "$prefix_mark" ] || exit 0
    sound_server= # the caller's goes on
    start_display
    create_prefix
)

# A server that stays up between programs makes each start fast; the warm-up program writes
# to a file because the server keeps the pipes of the program that starts it.
start_server() {
    trap stop_wine EXIT
    trap 'exit 130' INT TERM
    timeout 60 wineserver -p 9>&- >/dev/null 2>&1 || fail "Wine's server does not start"
    timeout 120 wine cmd /c exit >"$build/warm-up.log" 2>&1 9>&- || fail "Wine does not start (log: build/warm-up.log)"
}

# Windows appear on a separate, invisible display.
start_wine() {
    need_prefix
    start_display
    start_server
}

# Windows appear on the user's display.
start_wine_in_sight() {
    need_prefix
    start_server
}

stop_wine() {
    timeout 30 wineserver -k >/dev/null 2>&1 || true
    stop_display
    stop_sound
}

image_options='HKLM\Software\Microsoft\Windows NT\CurrentVersion\Image File Execution Options'

# set_heap_flags FLAGS PROGRAM...: sets Wine's heap checks for the programs.
set_heap_flags() {
    local flags=$1 program
    shift
    for program; do
        wine reg add "$image_options\\${program##*/}" /v GlobalFlag /t REG_DWORD /d "$flags" /f >/dev/null 2>&1 9>&- ||
            fail "cannot set the heap flags"
    done
}

# Also removes flags left by an interrupted run.
clear_heap_flags() { wine reg delete "$image_options" /f >/dev/null 2>&1 9>&- || true; }
