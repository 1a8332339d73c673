#!/usr/bin/env bash
# Checks the formatting of every source file and the includes among the modules.
#   --tidy                also runs the linter over the whole tree (some 20 minutes)
#   --tidy-changed [REF]  over the files that differ from REF: from where the branch left origin/main, or without
#                         one, from the commit before
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
    "" | --tidy | --tidy-changed) ;;
    *) echo "usage: Scripts/lint.sh [--tidy | --tidy-changed [REF]]" >&2; exit 2 ;;
esac

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
clang-format --dry-run --Werror "${sources[@]}"
[ $# -gt 0 ] || exit 0

if [ "$1" = --tidy ]; then
    mapfile -t tidied < <(git ls-files '*.cpp')
else
    base=${2:-$(git merge-base HEAD origin/main 2>/dev/null || true)}
    if [ -z "$base" ] || [ "$(git rev-parse "$base")" = "$(git rev-parse HEAD)" ]; then
        base=$(git rev-parse --verify --quiet HEAD^ || git hash-object -t tree /dev/null)
    fi
    mapfile -t tidied < <(git diff --name-only --diff-filter=d "$base" -- '*.cpp')
fi
mapfile -t tidied < <(printf '%s\n' "${tidied[@]}" | grep -E '^(Sources|Tests|Tools)/' || true)
[ ${#tidied[@]} -gt 0 ] || exit 0
cmake --preset debug >/dev/null
printf '%s\n' "${tidied[@]}" |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/debug --extra-arg=-Wno-unknown-warning-option
