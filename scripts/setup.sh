#!/usr/bin/env bash
# Installs what the project needs on Debian 12, by name. Does nothing when everything is there.
#   scripts/setup.sh [--bench] [--corpus] [--fuzz]
# --bench adds the peers that the benchmarks compare with, --corpus what scripts/corpus.sh needs,
# --fuzz the compiler and the run-time libraries of the fuzz targets.
set -euo pipefail

packages=(
  g++ cmake ninja-build ccache git pkg-config
  libboost-dev rapidjson-dev libexpat1-dev
  libclang-19-dev libclang-common-19-dev
  libcereal-dev libxxhash-dev libzstd-dev nettle-dev robin-map-dev
  python3 python3-jinja2 python3-jsonschema libxml2-utils
  libgtest-dev
  python3-dev pybind11-dev mypy
)
for option in "$@"; do
  case $option in
  --bench)
    packages+=(libbenchmark-dev libpugixml-dev nlohmann-json3-dev protobuf-compiler libprotobuf-dev libxml2-dev libsqlite3-dev)
    ;;
  --corpus) packages+=(bear dpkg-dev make tcl unicode-data) ;;
  --fuzz) packages+=(clang libclang-rt-14-dev) ;;
  *)
    echo "error: no option called $option; there are --bench, --corpus and --fuzz" >&2
    exit 2
    ;;
  esac
done

missing=()
for package in "${packages[@]}"; do
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "installing: ${missing[*]}" >&2
as_root=()
if [[ $(id -u) -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "error: installing packages needs root; run: apt-get install ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
