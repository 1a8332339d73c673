#!/usr/bin/env bash
# Uses the window as an editor does, with keys and clicks from outside. Detects from the played sound from which second of
# which recording each clip is played, and compares the resulting document with that of `orvanesync serve` after the same
# decisions. Installs what is missing; needs no screen and no sound card.
#   Scripts/window-run.sh [FOLDER]     the folder of the programs; without it a release is built
# If a step fails, it saves a picture of the screen as build/window-run/failed.png.
set -euo pipefail
cd "$(dirname "$0")/.."

Scripts/install-dependencies.sh build window
programs=${1:-}
if [ -z "$programs" ]; then
    cmake --preset release >/dev/null
    cmake --build --preset release
    programs=build/release/bin
fi
scratch=$PWD/build/window-run
rm -rf "$scratch"
mkdir -p "$scratch"
"$programs/orvane_make_shoot" "$scratch/shoot" >/dev/null

# A screen of its own: the first free number is the server's own choice.
exec 3<>"$scratch/display"
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp -noreset >"$scratch/xvfb.log" 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null || true' EXIT
until [ -s "$scratch/display" ]; do
    kill -0 "$server" 2>/dev/null || { cat "$scratch/xvfb.log" >&2; exit 1; }
    sleep 0.1
done
export DISPLAY=":$(cat "$scratch/display")"
unset WAYLAND_DISPLAY

# A session bus and a window manager of its own, which end with it.
dbus-run-session -- bash -c '
    openbox >"$3/openbox.log" 2>&1 &
    /usr/libexec/at-spi-bus-launcher --launch-immediately >"$3/bus.log" 2>&1 &
    status=0
    /usr/bin/python3 Tools/WindowRun/window_run.py "$@" || status=$?
    kill $(jobs -p) 2>/dev/null
    exit $status' window-run "$programs" "$scratch/shoot" "$scratch"
