#!/usr/bin/env bash
# Runs the tests with counters and says which lines they reach; installs what is missing first. The report of each file,
# line by line, goes to build/coverage/report/index.html.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh --coverage
cmake --preset coverage >/dev/null
cmake --build --preset coverage
# What an earlier run counted is not part of this one.
find build/coverage -name '*.gcda' -delete
ctest --preset coverage
mkdir -p build/coverage/report
# The tests do not count, and neither do system headers.
gcovr --root . --filter ast --filter kernel --filter model --filter tools --filter build/coverage/generated \
    --object-directory build/coverage -j2 --html-details build/coverage/report/index.html --print-summary
