#!/usr/bin/env bash
# Installs what is missing, builds a release, makes a small shoot (two cameras, three takes, a 6-channel recorder with
# track names, a room tone, a clip without sound, a clip off-speed) and syncs it. Asks nothing; a second run is quick.
set -euo pipefail
cd "$(dirname "$0")"

Scripts/install-dependencies.sh build
cmake --preset release >/dev/null
cmake --build --preset release
bin=build/release/bin
shoot=demo/shoot

movie() { # movie NAME TIMECODE SECONDS [ffmpeg options]
    local name=$1 timecode=$2 seconds=$3
    shift 3
    [ -e "$shoot/camera/$name" ] && return
    ffmpeg -nostdin -v error -f lavfi -i "testsrc2=size=1280x720:rate=25" -t "$seconds" \
        -c:v libx264 -preset ultrafast -pix_fmt yuv420p -timecode "$timecode" "$@" \
        -y "$shoot/camera/.$name.part.mov"
    mv "$shoot/camera/.$name.part.mov" "$shoot/camera/$name"
}

# A shoot of an earlier version of these two files is made anew.
stamp=$(cat demo.sh Demo/MakeShoot.cpp | cksum)
if [ "$(cat "$shoot/.complete" 2>/dev/null)" != "$stamp" ]; then
    rm -rf "$shoot"
    echo "Making a small shoot in $shoot ..."
    mkdir -p "$shoot/camera" "$shoot/sound"
    "$bin/orvane_make_shoot" "$shoot/sound"
    movie A001C001_261120_R1AB.mov 10:00:02:00 8
    movie B001C001_261120_R1CD.mov 10:00:02:12 8
    movie A001C002_261120_R1AB.mov 10:05:01:05 9
    movie B001C002_261120_R1CD.mov 10:05:02:00 7
    movie A001C003_261120_R1AB.mov 10:12:30:00 10
    movie B001C003_261120_R1CD.mov 10:12:31:20 8
    movie A001C004_261120_MOS.mov 10:20:00:00 4
    movie A001C005_261120_R1AB.mov 10:30:01:00 8 -movflags use_metadata_tags -metadata captureFrameRate=100
    cat >"$shoot/DAY1.csv" <<'REPORT'
Name,Scene,Take,Tape,Sensor FPS,Comments
A001C001_261120_R1AB.mov,12A,1,A001,25,"Wide, from the door"
B001C001_261120_R1CD.mov,12A,1,B001,25,Close on Anna
A001C005_261120_R1AB.mov,13,1,A001,100,Slow motion
REPORT
    echo "$stamp" >"$shoot/.complete"
fi

"$bin/orvanesync" sync "$shoot/camera" "$shoot/sound" --event "Demo Day 1" -o demo/Synced.fcpxml
echo
echo "The document: $PWD/demo/Synced.fcpxml"
echo "In Final Cut Pro: File > Import > XML. Here: less demo/Synced.fcpxml"
echo "The same shoot in the window: $bin/orvanesync-app $shoot"
