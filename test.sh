#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests. Asks nothing; a second run only builds what changed.
#   ./test.sh [ctest options]          for example: ./test.sh -R Ingest
set -euo pipefail
cd "$(dirname "$0")"

Scripts/install-dependencies.sh build
cmake --preset debug >/dev/null
cmake --build --preset debug
ctest --test-dir build/debug --output-on-failure -j "$(nproc)" "$@"
