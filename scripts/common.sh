# shellcheck shell=bash
# What the commands of ./dev share: paths, messages, and the functions of the files that it sources at its end.

root=${root:-$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)}
build=$root/build

say() { printf 'dev: %s\n' "$*"; }

fail() {
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

# Prevents a second ./dev in the same tree from sharing, and stopping, this one's Wine server.
take_turn() {
    mkdir -p "$build"
    exec 9>"$build/.lock"
    flock -n 9 || {
        say "waiting for another ./dev in this tree"
        flock 9
    }
}

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# shellcheck source=scripts/packages.sh
source "$root/scripts/packages.sh"
# shellcheck source=scripts/builds.sh
source "$root/scripts/builds.sh"
# shellcheck source=scripts/wine.sh
source "$root/scripts/wine.sh"
# shellcheck source=scripts/sound.sh
source "$root/scripts/sound.sh"
