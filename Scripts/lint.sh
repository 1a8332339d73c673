#!/usr/bin/env bash
# Checks the formatting of every source file, the includes among the modules, and the names of commands and settings.
# What takes longer: Scripts/tidy.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
Scripts/check-names.py
# An option that is asked for stands in a table of options (`Arguments` refuses another one, when the line is reached).
options=$(grep -hPo '\{"\K--[a-z-]+(?=")' Sources/OrvaneSyncCLI/*.cpp | sort -u)
if grep -nPo '(has|values?|number|integer)\("\K--[a-z-]+(?=")' Sources/OrvaneSyncCLI/*.cpp |
    grep -vE -- ":($(paste -sd'|' <<<"$options"))$"; then
    echo "the options above stand in no table of options" >&2
    exit 1
fi
clang-format --dry-run --Werror "${sources[@]}"
