#!/usr/bin/env bash
# ./dev clean: empties build/. The lock file stays, as others may be waiting for it.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

take_turn
find "$build/" -mindepth 1 -maxdepth 1 ! -name .lock -exec rm -rf {} +
