#!/usr/bin/env bash
# Takes this project's own C++ sources into a model, writes it as JSON and XML, reads both back and shows that they are
# the same model, and prints what is in it. Installs and builds what is missing first.
set -euo pipefail
cd "$(dirname "$0")/.."

echo "== building (the first time takes two minutes)"
scripts/build.sh install zelkor
zelkor=build/install/tools/command/zelkor
out=build/demo
mkdir -p "$out"

echo "== importing the library's own sources"
# A compile database of the library alone; nothing is built there.
cmake --preset release -B "$out/tree" -DZELKOR_BUILD_TESTS=OFF -DZELKOR_BUILD_TOOLS=OFF >/dev/null
"$zelkor" import -p "$out/tree" --root . -o "$out/model.json" --error-limit 5

echo "== JSON to XML and back"
"$zelkor" convert "$out/model.json" "$out/model.xml"
"$zelkor" convert "$out/model.xml" "$out/again.json"
cmp "$out/model.json" "$out/again.json"
echo "the same model: $(stat -c %s "$out/model.json") bytes of JSON, $(stat -c %s "$out/model.xml") bytes of XML"

echo "== what is in it"
"$zelkor" stats "$out/model.json"

echo "== asking it"
# Shows a command and the first lines of what it prints.
ask() {
  local lines=$1
  shift
  echo "\$ zelkor $*"
  "$zelkor" "$@" | awk -v most="$lines" 'NR <= most'
}
ask 4 find "$out/model.json" --name beginTransaction
ask 4 find "$out/model.json" --class EnumType --regex 'zelkor::.*Kind'
ask 2 signature "$out/model.json" brant::zero::Core::contain
ask 8 show "$out/model.json" brant::zero::UndoLog
ask 5 callers "$out/model.json" brant::zero::Core::contain
ask 3 writes "$out/model.json" brant::zero::ModelElementImpl::container_
ask 8 path "$out/model.json" zelkor::ast::io::deserializeFromFile brant::zero::Core::contain
