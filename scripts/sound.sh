# shellcheck shell=bash disable=SC2154 # sourced: variables come from the others
# A silent sound device: its microphone records what is played.

# Without rewinds the sink works in pieces of 50 ms; otherwise its microphone delivers only after two seconds.
# Call it before start_wine: programs inherit the device's address from Wine's server. The folder is a temporary one,
# because a socket's path has at most 107 characters.
start_sound() {
    local waited=0
    sound_folder=$(mktemp -d "${TMPDIR:-/tmp}/tessel-sound.XXXXXX")
    trap stop_sound EXIT
    trap 'exit 130' INT TERM
    export PULSE_SERVER=unix:$sound_folder/native
    XDG_RUNTIME_DIR=$sound_folder HOME=$sound_folder PULSE_STATE_PATH=$sound_folder pulseaudio -n --daemonize=no \
        --use-pid-file=no --exit-idle-time=-1 --log-level=error --load="module-null-sink norewinds=1" \
        --load="module-native-protocol-unix auth-anonymous=1 socket=$sound_folder/native" \
        >"$build/sound.log" 2>&1 9>&- &
    sound_server=$!
    until [ -S "$sound_folder/native" ]; do
        [ $((waited += 1)) -le 100 ] || fail "PulseAudio did not start (log: build/sound.log)"
        sleep 0.1
    done
}

stop_sound() {
    [ -n "${sound_server:-}" ] || return 0
    kill "$sound_server" 2>/dev/null || true
    wait "$sound_server" 2>/dev/null || true
    rm -rf "$sound_folder"
    sound_server=
}
