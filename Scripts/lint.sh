#!/usr/bin/env bash
# Checks the formatting of every source file, the includes among the modules, and the names of commands and settings.
# What takes longer: Scripts/tidy.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh lint
mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
Scripts/check-includes.py
Scripts/check-names.py
clang-format --dry-run --Werror "${sources[@]}"
