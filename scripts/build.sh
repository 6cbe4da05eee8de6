#!/usr/bin/env bash
# Installs what is missing, configures a preset and builds targets of it. Says little: what failed, when it does.
#   scripts/build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:?usage: scripts/build.sh PRESET [TARGET...]}
shift

scripts/setup.sh
log=build/$preset.log
mkdir -p build
if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1; then
  grep -E -A8 'error|FAILED' "$log" | head -40 >&2 || true
  echo "error: the build failed; all of it is in $log" >&2
  exit 1
fi
