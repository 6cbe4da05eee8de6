#!/usr/bin/env bash
# Installs the tools that bench/compare/compare.py sets beside this one, from Debian 12 by name. Nothing else needs them. A
# package that cannot be had is named and passed over: the comparison reports that peer as absent.
set -euo pipefail

packages=(castxml clang-19 clangd-19 doxygen)

as_root=()
[[ $(id -u) -eq 0 ]] || as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
failed=0
for package in "${packages[@]}"; do
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] && continue
  echo "installing: $package" >&2
  "${as_root[@]}" apt-get install -y -qq --no-install-recommends "$package" >/dev/null || failed=1
done
[[ $failed -eq 0 ]] || echo "setup.sh: some packages are missing; run apt-get update and try again" >&2
