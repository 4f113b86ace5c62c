# shellcheck shell=bash disable=SC2034,SC2154 # sourced: variables come from and go to the others
# Which Debian packages each job needs, and how they are installed.

build_packages=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix binutils cmake ninja-build googletest)
run_packages=(wine wine64 xvfb)
wine32_package=wine32:i386
lint_packages=(git clang-format clang-tidy doxygen shellcheck)
bench_packages=(bsdextrautils jq)
sound_packages=(pulseaudio)
# They verify the sound and video files that the tests write.
verifier_packages=(sox ffmpeg)
screenshot_packages=(imagemagick fonts-liberation)

# Exists if 32-bit Wine could not be installed; ./dev setup tries again.
no_wine32_mark=$build/.no-wine32

installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

missing_of() {
    local package
    for package in "$@"; do
        installed "$package" || printf '%s\n' "$package"
    done
}

apt() { DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 "$@" </dev/null; }

apt_install() { apt install -y --no-install-recommends "$@" >>"$build/setup.log" 2>&1; }

need_root_for() {
    [ "$(id -u)" = 0 ] && return
    fail "missing packages: $* - run: sudo ./dev setup --packages"
}

install_packages() {
    local missing
    mapfile -t missing < <(missing_of "$@")
    [ ${#missing[@]} = 0 ] && return
    need_root_for "${missing[@]}"
    say "installing ${missing[*]}"
    apt update >>"$build/setup.log" 2>&1 || true
    apt_install "${missing[@]}" || {
        tail -n 20 "$build/setup.log" >&2
        fail "apt-get could not install: ${missing[*]} (log: build/setup.log)"
    }
}

# The security archive's i386 index can lag behind its amd64 one, and then the two
# architectures cannot share one version of a library. Preferring the main archive gives both
# the same one: priority 900 for new packages, 1001 where an installed one must be downgraded.
install_from_main_archive() {
    local priority=$1 preferences=$build/main-archive.pref
    shift
    printf 'Package: *\nPin: release l=Debian\nPin-Priority: %s\n' "$priority" >"$preferences"
    apt_install -o Dir::Etc::Preferences="$preferences" --allow-downgrades "$@"
}

# Installs both bitnesses of Wine at once, so that their libraries match.
install_wine_for_both() {
    [ -e "$no_wine32_mark" ] && return
    installed "$wine32_package" && return
    need_root_for "$wine32_package"
    say "installing ${run_packages[*]} $wine32_package"
    dpkg --add-architecture i386
    apt update >>"$build/setup.log" 2>&1 || true
    apt_install "${run_packages[@]}" "$wine32_package" ||
        install_from_main_archive 900 "${run_packages[@]}" "$wine32_package" ||
        install_from_main_archive 1001 "${run_packages[@]}" "$wine32_package" ||
        touch "$no_wine32_mark"
}

have_wine32() { installed "$wine32_package"; }

need_build_packages() { install_packages "${build_packages[@]}"; }

need_run_packages() {
    install_wine_for_both
    install_packages "${run_packages[@]}"
    have_wine32 || say "32-bit Wine is not available: using the 64-bit build; ./dev setup tries again"
}

# The bitnesses whose programs this machine can run.
runnable_bits() {
    if have_wine32; then echo "32 64"; else echo 64; fi
}
