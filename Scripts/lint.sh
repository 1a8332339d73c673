#!/usr/bin/env bash
# Checks the formatting of every source file and the includes among the modules, and with --tidy runs the linter over the whole tree (some minutes).
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
    "" | --tidy) ;;
    *) echo "usage: Scripts/lint.sh [--tidy]" >&2; exit 2 ;;
esac

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
clang-format --dry-run --Werror "${sources[@]}"
[ $# -gt 0 ] || exit 0

cmake --preset debug >/dev/null
git ls-files '*.cpp' | grep '^Sources/\|^Tests/\|^Tools/' |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/debug --extra-arg=-Wno-unknown-warning-option
