#!/usr/bin/env bash
# Runs clang-tidy 19 with the checks of .clang-tidy; prints nothing if it finds nothing.
#   Scripts/tidy.sh            checks the change: what differs from where the branch left origin/main, or, on origin/main
#                              itself, from the commit before; uncommitted changes are included, comments are not
#   Scripts/tidy.sh FILE...    checks these; a header by sources that include it, its own first
#   Scripts/tidy.sh --all      checks everything
# Up to thirty sources of a target are checked as one unit, as the headers take most of the time. ORVANE_TIDY_JOBS in the
# environment is the number of units that are checked at the same time; each takes up to 1.5 GB of memory.
# ORVANE_TIDY_ANALYZER=no leaves out the static analyzer, which takes more than half of the time; a number leaves it out
# for more sources than that.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(Sources Tests Tools Benchmarks Fuzz Demo)
case "${1:-}" in
    --all) ;;
    -*) sed -n '2,10s/^# //p' "$0" >&2; exit 2 ;;
esac

# A change of comments alone has no findings, unless it is about the comments that clang-tidy reads.
has_same_code() {
    ! git diff --unified=0 "$1" -- "$2" | grep -q '^[-+].*NOLINT' &&
        [ "$(git show "$1:$2" 2>/dev/null | code)" = "$(code <"$2")" ]
}
code() { g++ -fpreprocessed -dD -E -P -x c++ - 2>/dev/null | tr -d '[:space:]'; }

changed_files() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || true)
    if [ -z "$base" ] || [ "$(git rev-parse "$base")" = "$(git rev-parse HEAD)" ]; then
        base=$(git rev-parse --verify --quiet HEAD^ || true)
    fi
    if [ -z "$base" ]; then # no commit to compare with: everything is new
        git ls-files -- '*.cpp'
        return
    fi
    git diff --name-only --no-renames --diff-filter=d "$base" -- '*.cpp' '*.h' | while read -r file; do
        if ! has_same_code "$base" "$file"; then echo "$file"; fi
    done
    git ls-files --others --exclude-standard -- '*.cpp' '*.h'
}
# A header is checked through the sources that include it: through these few of them.
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

wanted=$(mktemp)
trap 'rm -f "$wanted"' EXIT
case "${1:-}" in
    --all) find "${folders[@]}" -name '*.cpp' ;;
    "") for file in $(changed_files); do sources_of "$file"; done ;;
    *) for file in "$@"; do sources_of "${file#"$PWD"/}"; done ;;
esac | sed "s|^|$PWD/|" | sort -u >"$wanted"
[ -s "$wanted" ] || exit 0

export build=build/tidy
export checks=-bugprone-suspicious-include # a source that is looked at with others is included by them
analyzer=${ORVANE_TIDY_ANALYZER:-yes}
case "$analyzer" in
    yes) ;;
    no) checks+=',-clang-analyzer-*' ;;
    *)
        sources=$(wc -l <"$wanted")
        if [ "$sources" -gt "$analyzer" ]; then
            checks+=',-clang-analyzer-*'
            echo "tidy: without the static analyzer, as there are $sources sources; Scripts/tidy.sh --all runs it over everything"
        fi
        ;;
esac
Scripts/install-dependencies.sh build tidy
benchmarks=OFF
if pkg-config --exists benchmark libebur128; then benchmarks=ON; fi
cmake --preset debug -B $build -DCMAKE_CXX_COMPILER=clang++-19 -DCMAKE_UNITY_BUILD=ON -DORVANE_UNITY_BATCH=30 \
    -DORVANE_FUZZ=ON -DORVANE_DEMO=ON -DORVANE_BENCHMARKS=$benchmarks >/dev/null
compiled=$(grep -oP '"file": "\K[^"]+' $build/compile_commands.json | sort -u)
# Sources that the build generates are needed, but not checked.
made=$( (echo "$compiled"; grep -rhoP --include='unity_*.cxx' '#include "\K[^"]+' $build) |
    grep -F "$PWD/$build/" | grep -v '/Unity/' | sort -u || true)
[ -z "$made" ] || (cd $build && ninja --quiet ${made//"$PWD/$build/"/} >/dev/null)
# Keeps the requested sources of each unit; cmake writes the whole unit the next time.
units=$(grep '/Unity/' <<<"$compiled" | while read -r unit; do
    kept=$(grep -oP '#include "\K[^"]+' "$unit" | grep -Fx -f "$wanted" || true)
    [ -n "$kept" ] || continue
    printf '#include "%s"\n' $kept >"$unit"
    echo "$unit"
done)
alone=$(grep -Fx -f "$wanted" <<<"$compiled" || true)

check() {
    local said
    # The analyzer checks included sources only when this is set. With its full depth, some functions of tests and benchmarks
    # take minutes each; in this mode it follows calls of small functions, and stops sooner.
    said=$(clang-tidy-19 --quiet -p $build --checks="$checks" \
        --extra-arg=-Xclang --extra-arg=-analyzer-opt-analyze-headers \
        --extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang --extra-arg=mode=shallow "$1" 2>&1) ||
        { printf '%s\n' "$said" | grep -v ' warnings generated'; return 1; }
}
export -f check
[ -n "$alone$units" ] || exit 0
printf '%s\n' $alone $units | xargs -d '\n' -P "${ORVANE_TIDY_JOBS:-$(nproc)}" -n 1 bash -c 'check "$1"' check
