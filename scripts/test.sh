#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests.
#   scripts/test.sh [PRESET]       default: release
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}

setup=()
[[ $preset == fuzz ]] && setup=(--fuzz)
scripts/setup.sh "${setup[@]}"
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
