#!/usr/bin/env bash
# Checks the formatting of every source file, and with --tidy runs the linter over the whole tree (some minutes).
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
clang-format --dry-run --Werror "${sources[@]}"
[ "${1:-}" = "--tidy" ] || exit 0

cmake --preset debug >/dev/null
git ls-files '*.cpp' | grep -v '^Fuzz/\|^Benchmarks/' |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/debug
