#!/usr/bin/env bash
# Runs every fuzz target for the given number of seconds, two at a time, with a corpus that is kept in build/fuzz-corpus.
#   Scripts/fuzz.sh SECONDS [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:?usage: Scripts/fuzz.sh SECONDS [TARGET...]}
shift
Scripts/install-dependencies.sh build sanitize
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(cd build/fuzz/bin && ls -d fuzz_*)
run() {
    local target=$1 corpus="build/fuzz-corpus/$1"
    local seeds=()
    [ -d "Fuzz/seeds/$target" ] && seeds=("$PWD/Fuzz/seeds/$target")
    mkdir -p "$corpus"
    if build/fuzz/bin/"$target" -max_total_time="$2" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$corpus-" "$corpus" "${seeds[@]}" >"$corpus.log" 2>&1; then
        echo "$target: nothing found; $(grep -o 'number_of_executed_units: [0-9]*' "$corpus.log")"
    else
        echo "$target: FOUND SOMETHING, see $corpus.log"
        return 1
    fi
}
export -f run
printf '%s\n' "${targets[@]}" | xargs -P "${FUZZ_JOBS:-$(nproc)}" -I{} bash -c 'run "$@"' _ {} "$seconds"
