#!/usr/bin/env bash
# Installs what is missing, builds a release, makes a small shoot (two cameras, three takes, a 6-channel recorder with
# track names, a room tone, a clip without sound, a clip off-speed) and syncs it. A second run is quick. Asks nothing but, at a
# desktop, whether to open the window.
set -euo pipefail
cd "$(dirname "$0")"

Scripts/install-dependencies.sh build
cmake --preset release >/dev/null
cmake --build --preset release
bin=build/release/bin
shoot=demo/shoot

# A shoot of an earlier version of its maker is made again.
stamp=$(cat demo.sh Demo/*.cpp | cksum)
if [ "$(cat "$shoot/.complete" 2>/dev/null)" != "$stamp" ]; then
    rm -rf "$shoot"
    echo "Making a small shoot in $shoot ..."
    "$bin/orvane_make_shoot" "$shoot" >/dev/null
    echo "$stamp" >"$shoot/.complete"
fi

"$bin/orvanesync" sync "$shoot/camera" "$shoot/sound" --event "Demo Day 1" -o demo/Synced.fcpxml
echo
echo "The document: $PWD/demo/Synced.fcpxml"
echo "In Final Cut Pro: File > Import > XML. Here: less demo/Synced.fcpxml"
if [ -x "$bin/orvanesync-app" ]; then
    echo "The same shoot in the window: $bin/orvanesync-app $shoot"
    if [ -t 0 ] && [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        read -r -p "Open the window now? [y/N] " answer
        case "$answer" in [yY]*) exec "$bin/orvanesync-app" "$shoot" ;; esac
    fi
fi
