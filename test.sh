#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests. Asks nothing; a second run only builds what changed.
#   ./test.sh [ctest options]          for example: ./test.sh -R Ingest
# With ORVANE_UNITY=ON in the environment several sources are compiled as one: a first build takes a third of the time, a
# change more.
set -euo pipefail
cd "$(dirname "$0")"

Scripts/install-dependencies.sh build
cmake --preset debug -DCMAKE_UNITY_BUILD="${ORVANE_UNITY:-OFF}" >/dev/null
cmake --build --preset debug
ctest --test-dir build/debug --output-on-failure -j "$(nproc)" "$@"
