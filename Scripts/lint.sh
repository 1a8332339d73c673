#!/usr/bin/env bash
# Checks the formatting of every source file, the includes among the modules and the keys of the settings.
# What takes longer: Scripts/tidy.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
# A key of a setting is written in its declaration alone; everybody else names the declaration. Keys with a dot alone are
# looked for: one such as trimMode is a word of JSON forms and of members as well.
keys=$(grep -Pzo '\{\s*"\K[A-Za-z]+(\.[A-Za-z0-9]+)+(?=",)' Sources/OrvaneSyncCore/Models/Settings.h | tr '\0' '\n')
if grep -rnE "\"[^\"]*\\b($(paste -sd'|' <<<"${keys//./\\.}"))\\b" Sources --include='*.cpp' --include='*.h' |
    grep -v '^Sources/OrvaneSyncCore/Models/Settings.h:'; then
    echo "the keys above belong to Sources/OrvaneSyncCore/Models/Settings.h" >&2
    exit 1
fi
clang-format --dry-run --Werror "${sources[@]}"
