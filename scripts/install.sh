#!/usr/bin/env bash
# Installs what is missing, builds the library, the command and the Python module, without tests, and installs them.
#   scripts/install.sh [PREFIX]      default: /usr/local
set -euo pipefail
if [[ $# -gt 1 || ${1:-} == -* ]]; then
  echo "usage: scripts/install.sh [PREFIX]      default: /usr/local" >&2
  exit 2
fi
prefix=$(realpath -m -- "${1:-/usr/local}") # before the folder changes
cd "$(dirname "$0")/.."

echo "== building (two minutes on two cores)"
scripts/build.sh install

as_root=()
mkdir -p "$prefix" 2>/dev/null || true
[[ -w $prefix ]] || as_root=(sudo)
"${as_root[@]}" cmake --install build/install --prefix "$prefix" >/dev/null
# The loader looks into its own folders by a cache.
if [[ ${#as_root[@]} -gt 0 || $(id -u) -eq 0 ]]; then "${as_root[@]}" ldconfig; fi

echo "installed in $prefix"
[[ :$PATH: == *:$prefix/bin:* ]] || echo "add it to your path: export PATH=$prefix/bin:\$PATH"
"$prefix/bin/zelkor" --version
