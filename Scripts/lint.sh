#!/usr/bin/env bash
# Checks the formatting of every source file, the includes among the modules and the keys of the settings.
#   --tidy                also runs the linter over the whole tree (some 20 minutes)
#   --tidy-changed [REF]  over the files that differ from REF: from where the branch left origin/main, or without
#                         one, from the commit before. With ORVANE_TIDY_MOST in the environment, over so many of them,
#                         those with the most changed lines first.
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in
    "" | --tidy | --tidy-changed) ;;
    *) echo "usage: Scripts/lint.sh [--tidy | --tidy-changed [REF]]" >&2; exit 2 ;;
esac

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
# A key of a setting is written in its declaration alone; everybody else names the declaration.
keys=$(grep -Pzo '\{\s*"\K[A-Za-z]+(\.[A-Za-z0-9]+)+(?=",)' Sources/OrvaneSyncCore/Models/Settings.h | tr '\0' '\n')
if grep -rnE "\"[^\"]*\\b($(paste -sd'|' <<<"${keys//./\\.}"))\\b" Sources --include='*.cpp' --include='*.h' |
    grep -v '^Sources/OrvaneSyncCore/Models/Settings.h:'; then
    echo "the keys above belong to Sources/OrvaneSyncCore/Models/Settings.h" >&2
    exit 1
fi
clang-format --dry-run --Werror "${sources[@]}"
[ $# -gt 0 ] || exit 0

if [ "$1" = --tidy ]; then
    mapfile -t tidied < <(git ls-files '*.cpp')
else
    base=${2:-$(git merge-base HEAD origin/main 2>/dev/null || true)}
    if [ -z "$base" ] || [ "$(git rev-parse "$base")" = "$(git rev-parse HEAD)" ]; then
        base=$(git rev-parse --verify --quiet HEAD^ || git hash-object -t tree /dev/null)
    fi
    mapfile -t tidied < <(git diff --numstat --no-renames --diff-filter=d "$base" -- '*.cpp' | sort -rn | cut -f3)
fi
mapfile -t tidied < <(printf '%s\n' "${tidied[@]}" | grep -E '^(Sources|Tests|Tools)/' || true)
most=${ORVANE_TIDY_MOST:-${#tidied[@]}}
if [ "${#tidied[@]}" -gt "$most" ]; then
    echo "clang-tidy over $most of ${#tidied[@]} changed files, the most changed ones" >&2
    tidied=("${tidied[@]:0:most}")
fi
[ ${#tidied[@]} -gt 0 ] || exit 0
# A folder of its own: where several sources are compiled as one, none of them has a command.
cmake --preset debug -B build/tidy -DCMAKE_UNITY_BUILD=OFF >/dev/null
printf '%s\n' "${tidied[@]}" |
    xargs -P "$(nproc)" -n 2 clang-tidy --quiet -p build/tidy --extra-arg=-Wno-unknown-warning-option
