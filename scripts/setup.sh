#!/usr/bin/env bash
# ./dev setup [--packages]: installs what is missing; --packages leaves the Wine prefix alone.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
rm -f "$no_wine32_mark"
need_build_packages
need_run_packages
install_packages "${lint_packages[@]}" "${bench_packages[@]}" "${sound_packages[@]}" "${verifier_packages[@]}"
[ "${1:-}" = --packages ] || need_prefix
# Files created under sudo must belong to the user, like the rest of the tree.
[ -z "${SUDO_UID:-}" ] || [ "$(id -u)" != 0 ] || chown -R --reference="$root" "$build"
say "everything is in place"
