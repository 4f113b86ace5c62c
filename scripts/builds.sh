# shellcheck shell=bash disable=SC2034,SC2154 # sourced: variables come from and go to the others
# Configuring and compiling the presets.

# Leaves a configured tree alone: Ninja configures it again by itself when a list of files changes.
configure() {
    local preset=$1
    shift
    [ -e "$build/$preset/build.ninja" ] && [ $# = 0 ] && return
    say "configuring $preset"
    cmake --preset "$preset" "$@" >"$build/configure-$preset.log" 2>&1 || {
        tail -n 30 "$build/configure-$preset.log" >&2
        fail "cmake could not configure $preset"
    }
}

# compile PRESET [TARGET...]
compile() {
    local preset=$1
    shift
    configure "$preset"
    say "building $preset"
    local targets=()
    [ $# = 0 ] || targets=(--target "$@")
    cmake --build --preset "$preset" "${targets[@]}" |
        { grep -vE '^ninja: no work to do|Re-checking globbed' || true; } || fail "$preset does not build"
}
