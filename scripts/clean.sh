#!/usr/bin/env bash
# ./dev clean: removes build/.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
rm -rf "$build"
