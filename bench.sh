#!/usr/bin/env bash
# Installs what is missing, builds a release and measures it: against a floor (the same bytes read by a bare loop), and
# against the tools one would otherwise use, in the same run. Asks nothing. The files it makes lie in build/bench.
#   ./bench.sh [Google Benchmark options]
set -euo pipefail
cd "$(dirname "$0")"

Scripts/install-dependencies.sh build bench
cmake --preset release -DORVANE_BENCHMARKS=ON >/dev/null
cmake --build --preset release
build/release/bin/orvane_bench "$PWD/build/release/bin/orvanesync" "$PWD/build/bench" "$@"
