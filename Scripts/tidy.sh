#!/usr/bin/env bash
# Runs clang-tidy 19 with the checks of .clang-tidy; silent where it finds nothing.
#   Scripts/tidy.sh            over what the change touches: what differs from where the branch left origin/main, or where
#                              that is here, from the commit before; what is not committed belongs to it
#   Scripts/tidy.sh FILE...    over these; a header by sources that include it, its own first
#   Scripts/tidy.sh --all      over everything. Several sources are looked at as one, as most of the time goes into the headers
# With ORVANE_TIDY_SECONDS in the environment it ends after that time, and says how many files are left; ORVANE_TIDY_JOBS
# says how many run at once.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(Sources Tests Tools Benchmarks Fuzz Demo)
case "${1:-}" in
    --all) ;;
    -*) sed -n '2,8s/^# //p' "$0" >&2; exit 2 ;;
esac

# Sources, those with the most changed lines first.
changed_files() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || true)
    if [ -z "$base" ] || [ "$(git rev-parse "$base")" = "$(git rev-parse HEAD)" ]; then
        base=$(git rev-parse --verify --quiet HEAD^ || true)
    fi
    if [ -z "$base" ]; then
        echo "clang-tidy: there is no commit to compare with, nothing is checked" >&2
        return
    fi
    git diff --numstat --no-renames --diff-filter=d "$base" -- '*.cpp' '*.h' | sort -rn | cut -f3
    git ls-files --others --exclude-standard -- '*.cpp' '*.h'
}
# A header is seen with the sources that include it: these few of them.
sources_of() {
    local most=2
    case "$1" in
        *.cpp) echo "$1" ;;
        *.h)
            { ls "${1%.h}.cpp" 2>/dev/null || true
              grep -rlF --include='*.cpp' "#include \"${1#*/}\"" "${folders[@]}" || true
            } | awk -v most=$most '!seen[$0]++ && ++count <= most' ;;
    esac
}

if [ "${1:-}" = --all ]; then
    build=build/tidy-all unity=ON
else
    build=build/tidy unity=OFF
    if [ $# -gt 0 ]; then mapfile -t asked < <(printf '%s\n' "$@"); else mapfile -t asked < <(changed_files); fi
    mapfile -t files < <(for file in "${asked[@]}"; do sources_of "${file#"$PWD"/}"; done | awk '!seen[$0]++')
    [ ${#files[@]} -gt 0 ] || exit 0
fi
Scripts/install-dependencies.sh build tidy
benchmarks=OFF
if pkg-config --exists benchmark libebur128; then benchmarks=ON; fi
cmake --preset debug -B "$build" -DCMAKE_CXX_COMPILER=clang++-19 -DCMAKE_UNITY_BUILD=$unity \
    -DORVANE_FUZZ=ON -DORVANE_DEMO=ON -DORVANE_BENCHMARKS=$benchmarks >/dev/null
# Sources that the build makes of other files are needed, and not looked at.
all=$(grep -oP '"file": "\K[^"]+' "$build/compile_commands.json" | sort -u)
made=$( (echo "$all"; grep -rhoP --include='unity_*.cxx' '#include "\K[^"]+' "$build" || true) |
    grep -v /Unity/ | grep -F "$PWD/$build/" | sort -u || true)
[ -z "$made" ] || (cd "$build" && ninja --quiet ${made//"$PWD/$build/"/} >/dev/null)
known=$(grep -Fxv -f <(printf '%s\n' "${made:-none}") <<<"$all")
if [ $unity = ON ]; then
    mapfile -t files <<<"$known"
else
    mapfile -t files < <(printf "$PWD/%s\n" "${files[@]}" | grep -Fxf <(echo "$known") || true)
fi
[ ${#files[@]} -gt 0 ] || exit 0

export build left deadline
left=$(mktemp)
deadline=$(($(date +%s) + ${ORVANE_TIDY_SECONDS:-1000000}))
check() {
    local seconds status=0 said
    seconds=$((deadline - $(date +%s)))
    if [ "$seconds" -le 0 ]; then echo "$1" >>"$left"; return; fi
    # A source that is looked at with others is included by them.
    said=$(timeout "$seconds" clang-tidy-19 --quiet -p "$build" --checks=-bugprone-suspicious-include "$1" 2>&1) || status=$?
    case $status in
        0) ;;
        124) echo "$1" >>"$left" ;;
        *) printf '%s\n%s\n' "$1:" "$said"; return 1 ;;
    esac
}
export -f check
status=0
printf '%s\n' "${files[@]}" |
    xargs -d '\n' -P "${ORVANE_TIDY_JOBS:-$(nproc)}" -n 1 bash -c 'check "$1"' check || status=1
if [ -s "$left" ]; then
    echo "clang-tidy: $(wc -l <"$left") of ${#files[@]} files were not looked at for want of time" >&2
fi
rm -f "$left"
exit $status
