#!/usr/bin/env bash
# scripts/mutate.sh [--count N] [--seed SEED] [--subsystem NAME]: plants deliberate faults in a copy of the product, one
# at a time, and reports which of them the tests catch; 60 faults by default, in about an hour. The copy stays in
# build/mutants.
set -euo pipefail
origin=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
root=$origin/build/mutants

mkdir -p "$root/build"
exec 9>"$root/build/.lock"
flock -n 9 || {
    echo "mutate: another run in this tree has not ended" >&2
    exit 1
}

# A fresh copy with the same times, so that a second run compiles only what has changed since.
find "$root" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
(cd "$origin" && git ls-files -z -co --exclude-standard | xargs -0 cp -p --parents -t "$root")

cd "$root"
# shellcheck source=scripts/common.sh
source "$root/scripts/common.sh"

need_build_packages
need_run_packages
install_packages "${sound_packages[@]}" "${verifier_packages[@]}" python3
have_wine32 || fail "the faults are tested in the 32-bit build, which needs 32-bit Wine"
# A test without a fault takes some seconds; a hanging one need not take two minutes.
configure win32 -DTESSEL_TEST_TIMEOUT=40
compile win32
start_sound
start_wine
python3 "$root/scripts/mutate.py" "$root" "$@"
