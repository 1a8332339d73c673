#!/usr/bin/env bash
# Checks the formatting of every source file, the includes among the modules, and the names of commands and settings.
# Scripts/tidy.sh has the slower checks.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
Scripts/check-names.py
# Every option that the code reads is in a table of options (`Arguments` refuses any other, but only when that line runs).
options=$(grep -hPo '\{"\K--[a-z-]+(?=")' Sources/OrvaneSyncCLI/*.cpp | sort -u)
if grep -nPo '(has|values?|number|integer)\("\K--[a-z-]+(?=")' Sources/OrvaneSyncCLI/*.cpp |
    grep -vE -- ":($(paste -sd'|' <<<"$options"))$"; then
    echo "the options above are in no table of options" >&2
    exit 1
fi
clang-format --dry-run --Werror "${sources[@]}"
