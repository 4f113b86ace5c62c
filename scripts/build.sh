#!/usr/bin/env bash
# ./dev build: compiles everything for both bitnesses.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
need_build_packages
compile win32
compile win64
say "programs are in build/win32/bin and build/win64/bin"
