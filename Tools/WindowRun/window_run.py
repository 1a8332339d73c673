#!/usr/bin/python3
"""An editor's work in the window: a shoot is scanned, every clip is viewed, listened to, moved, locked or named, and
exported, by keys and clicks from outside. The document must equal that of the program without a window after the same
decisions.

    window_run.py PROGRAMS SHOOT SCRATCH      the folder of the programs, the demo's shoot, and a folder for the files made

Needs a window manager and a session bus; Scripts/window-run.sh starts both.
"""

import glob
import json
import os
import subprocess
import sys
import time

from desktop import Failure, Window, click, drag, fills_screen, hold, picture_of, press, save_screen, stays, type_text, wait, xdotool
from service import Service
from sound import Output

EVENT = "Window Run"
FRAME = 1 / 25
SOUND_OF_TAKE_2 = "DAY1_T02.WAV"
CHANNEL_OF_RANGE = "Boom"
NAME = "Door, l. c. [final]"  # made of keys that mean something in the review
MOS = "A001C004_261120_MOS.mov"

CLAP = 3.0  # seconds of each recording, as the demo is made
TOLERANCE = FRAME / 2  # the sound must belong to the shown frame, and to no other

# In the order of the list: the frames by which the sound is moved, whether the picture shows the clap, and which second of
# which recording is heard where the clip opens.
CLIPS = [
    ("A001C001_261120_R1AB.mov", 1, True, "DAY1_T01.WAV", CLAP),
    ("B001C001_261120_R1CD.mov", -2, True, "DAY1_T01.WAV", CLAP),
    ("A001C002_261120_R1AB.mov", 3, True, "DAY1_T02.WAV", CLAP),
    ("B001C002_261120_R1CD.mov", 11, True, "DAY1_T02.WAV", CLAP),
    ("A001C003_261120_R1AB.mov", -10, True, "DAY1_T03.WAV", CLAP),
    ("B001C003_261120_R1CD.mov", 2, False, "DAY1_T03.WAV", 3.8),
    (MOS, 0, False, None, None),
    ("A001C005_261120_R1AB.mov", 1, False, "DAY1_T04.WAV", CLAP),
]
KEYS = {1: "period", -1: "comma", 10: "shift+period", -10: "shift+comma"}


def keys_for(frames):
    for size in (10, 1):
        step = size if frames > 0 else -size
        while abs(frames) >= size:
            frames -= step
            yield KEYS[step]


class WindowRun:
    def __init__(self, programs, shoot, scratch):
        self.programs, self.shoot, self.scratch = programs, shoot, scratch
        self.environment = dict(os.environ)
        home = self.environment["HOME"] = os.path.join(scratch, "home")
        for variable in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"):
            place = self.environment[variable] = os.path.join(home, variable.lower())
            os.makedirs(place, mode=0o700, exist_ok=True)
        self.environment.update(QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LANG="C.UTF-8",
                                QT_LOGGING_RULES="qt.accessibility.*=false")
        self.window = None
        self.output = Output(self.environment, scratch)
        self.slowest = (0.0, "")
        self.farthest = 0.0  # largest difference from the expected second of sound

    # The program and its stored files

    def start(self):
        command = [f"{self.programs}/orvanesync-app", "--language", "en", f"{self.shoot}/camera", f"{self.shoot}/sound"]
        process = subprocess.Popen(command, env=self.environment)
        self.window = Window("OrvaneSync", process)

    def end(self):
        press("ctrl+q")
        status = self.window.process.wait(30)
        if status != 0:
            raise Failure(f"the program has ended with status {status}")

    def sessions(self):
        return glob.glob(self.environment["XDG_DATA_HOME"] + "/Orvane Tandrel/Sessions/*/groups.json")

    def clips(self):
        """The clips of the open session as stored on the disk, by camera file."""
        files = sorted(self.sessions(), key=os.path.getmtime)
        if not files:
            return {}
        with open(files[-1], encoding="utf-8") as file:
            return {clip["video"]["filename"]: clip for clip in json.load(file)}

    def decisions(self):
        """The decisions of the editor; a clap that the program finds does not count."""
        kinds = ("isApproved", "isLocked", "manualAudioOffsetSeconds", "manualClipName", "manualBlockOverrides", "audioMatches")
        return {name: {kind: clip.get(kind) for kind in kinds} for name, clip in self.clips().items()}

    def kept(self, what, camera_file, condition):
        """Waits until a decision is stored on the disk."""
        wait(f"{camera_file}: {what} is kept", lambda: condition(self.clips()[camera_file]))

    def frames_of(self, clip):
        return round(clip["manualAudioOffsetSeconds"] / FRAME)

    # The screen

    def is_moving(self):
        """Whether the picture changes within some frames."""
        box = self.window.box("Picture", "filler")
        before = picture_of(box)
        time.sleep(5 * FRAME)
        return picture_of(box) != before

    def shows_clap(self):
        """The frame of the clap has a bar of the accent's colour above the slate, which no other frame has."""
        box = self.window.box("Picture", "filler")
        upper = picture_of(box)[: box[3] // 3]
        widest = 0
        for row in upper:
            run = 0
            for red, green, blue in row:
                run = run + 1 if red > 200 and 130 < green < 200 and blue < 110 else 0
                widest = max(widest, run)
        return widest > box[2] // 20

    def timed(self, what, condition):
        begun = time.monotonic()
        wait(what, condition)
        took = time.monotonic() - begun
        if took > self.slowest[0]:
            self.slowest = (took, what)

    # The run

    def run(self):
        self.output.begin(glob.glob(f"{self.shoot}/sound/*.WAV"))
        for step in (
            self.leave_during_scan, self.scan, self.open_first, self.fields_win, self.keys_of_playback, self.each_clip,
            self.hold_a_key, self.attach, self.choose_range, self.rename, self.take_back, self.multicam, self.export, self.compare,
        ):
            print(step.__name__.replace("_", " "), flush=True)
            step()
        print(f"slowest answer to a key, with reading the screen: {self.slowest[0]:.2f} s, {self.slowest[1]}")
        print(f"sound farthest from its place: {self.farthest * 1000:.1f} ms")

    def leave_during_scan(self):
        self.start()
        xdotool("search", "--sync", "--onlyvisible", "--name", "OrvaneSync", "windowactivate")
        self.end()

    def scan(self):
        self.start()
        xdotool("search", "--sync", "--onlyvisible", "--name", "OrvaneSync", "windowactivate")
        wait("all clips are found", lambda: set(self.clips()) == {name for name, *_ in CLIPS}, 60)
        wait("the list has the first clip", lambda: self.window.shows("12A-1 Cam A", "table cell"))

    def open_first(self):
        press("Return")
        self.timed("Return opens the clip", lambda: self.is_open(CLIPS[0][0]))
        stays("Return opens the clip and does nothing to it", lambda: not self.clips()[CLIPS[0][0]]["isApproved"])

    def is_open(self, camera_file):
        return self.window.is_selected("list item", camera_file.split(".")[0])

    def fields_win(self):
        before = self.decisions()
        click(self.window.box("Search clips in the list", "text"))
        type_text("c l.,]")
        wait("the field has what was typed", lambda: self.window.text_of("Search clips in the list") == "c l.,]")
        press("ctrl+a", "BackSpace")
        press("Escape")
        wait("Escape leaves the field", lambda: not self.window.focused().startswith("Search"))
        if self.decisions() != before or not self.window.shows("Review"):
            raise Failure("keys that were typed into a field did something")

    def keys_of_playback(self):
        for start, stop in (("space", "space"), ("l", "k"), ("j", "k")):
            press(start)
            self.timed(f"{start} plays", self.is_moving)
            press(stop)
            self.timed(f"{stop} stops", lambda: not self.is_moving())
        press("f")
        self.timed("F fills the screen", fills_screen)
        press("Escape")
        self.timed("Escape gives the window back", lambda: not fills_screen())
        press("question")
        self.timed("? shows the keys", lambda: self.window.shows("Keys"))
        press("Escape")
        self.timed("Escape closes them", lambda: not self.window.shows("Keys"))

    def each_clip(self):
        for i, (camera_file, frames, has_clap, recording, second) in enumerate(CLIPS):
            if i > 0:
                press("bracketright")
                self.timed(f"] opens {camera_file}", lambda: self.is_open(camera_file))
            else:
                self.open_again(camera_file, has_clap)
            if has_clap:
                wait(f"{camera_file} opens on its clap", self.shows_clap)
            if recording is None:
                self.output.expect_silence()
            else:
                self.listen(camera_file, recording, second)
                self.open_again(camera_file, has_clap)
            for key in keys_for(frames):
                press(key)
            self.timed(f"{camera_file} is moved", lambda: self.frames_of(self.clips()[camera_file]) == frames)
            if recording is None:
                continue
            if second == CLAP:  # the picture has moved together with the clap's sound
                press(*["Left" if frames > 0 else "Right"] * abs(frames))
            if has_clap:
                wait(f"{camera_file} is stepped to its clap", self.shows_clap)
            self.listen(camera_file, recording, second - frames * FRAME)
            press("ctrl+l")
            self.kept("the lock", camera_file, lambda clip: clip["isLocked"])
        press("Return")
        self.kept("the mark", CLIPS[-1][0], lambda clip: clip["isApproved"])

    def open_again(self, camera_file, has_clap):
        """A clip that is opened again is at its first position: at its clap, if it has one."""
        there, back = ("bracketright", "bracketleft") if camera_file == CLIPS[0][0] else ("bracketleft", "bracketright")
        press(there)
        wait(f"{there} leaves {camera_file}", lambda: not self.is_open(camera_file))
        press(back)
        wait(f"{back} opens {camera_file}", lambda: self.is_open(camera_file))
        if has_clap:
            wait(f"{camera_file} opens on its clap", self.shows_clap)

    def listen(self, camera_file, recording, second):
        """The sound at the current position of the clip must begin with this second of the recording."""
        heard, begins = self.output.listen()
        if heard != recording or abs(begins - second) > TOLERANCE:
            raise Failure(f"{camera_file}: {heard} is heard from {begins:.3f} s on, not {recording} from {second:.3f} s on")
        self.farthest = max(self.farthest, abs(begins - second))

    def hold_a_key(self):
        """The X server's key repeat: the sound moves while the key is down and stops when it is up; one undo takes all of it
        back."""
        camera_file, frames, *_ = CLIPS[-1]
        hold("period", 1.2)
        wait("the held key repeats", lambda: self.frames_of(self.clips()[camera_file]) > frames + 3)
        self.frames_of_still_picture(camera_file)
        press("ctrl+z")
        wait("one step takes the held key back", lambda: self.frames_of(self.clips()[camera_file]) < frames + 1)
        stood = self.frames_of_still_picture(camera_file)
        if stood != frames:
            raise Failure(f"taking the held key back leaves {stood} frames, not {frames}")

    def frames_of_still_picture(self, camera_file):
        """The frames by which the sound is moved, once they have not changed for half a second."""
        while True:
            frames = self.frames_of(self.clips()[camera_file])
            try:
                stays("moving", lambda: self.frames_of(self.clips()[camera_file]) == frames)
                return frames
            except Failure:
                continue

    def attach(self):
        press("bracketleft")
        self.timed("[ opens the clip without sound", lambda: self.is_open(MOS))
        self.window.tab_to("Attach…")
        press("space")
        wait("the recordings are offered", lambda: self.window.shows("Search recordings", "text"))
        press("Tab")  # into the list, which selects the item that is typed
        type_text(SOUND_OF_TAKE_2[:8])
        press("Return")
        self.kept("the recording", MOS, lambda clip: len(clip["audioMatches"]) == 1)
        sound = self.clips()[MOS]["audioMatches"][0]["audio"]["filename"]
        if sound != SOUND_OF_TAKE_2:
            raise Failure(f"{sound} was attached, not {SOUND_OF_TAKE_2}")

    def choose_range(self):
        camera_file = CLIPS[-1][0]  # the previous clip has moved to the take of its sound
        click(self.window.box("13-1", "list item"))
        wait("a click in the outline opens the clip", lambda: self.is_open(camera_file))
        press("a")
        _, row, _, size = self.window.box(f"{CHANNEL_OF_RANGE}: Toggle Audio Track")
        x, _, width, _ = self.window.box("Timeline", "filler")
        at = row + size // 2  # the strip is beside the switches
        drag((x + width * 2 // 5, at), (x + width * 3 // 5, at))
        self.kept("the range", camera_file, lambda clip: len(clip["manualBlockOverrides"]) == 1)

    def rename(self):
        press("F2")
        wait("a name is asked for", lambda: self.window.shows("Rename clip"))
        type_text(NAME)
        press("Return")
        self.kept("the name", CLIPS[-1][0], lambda clip: clip.get("manualClipName") == NAME)

    def take_back(self):
        camera_file = CLIPS[-1][0]
        whole = self.decisions()
        press("ctrl+z")
        self.kept("the step back", camera_file, lambda clip: not clip.get("manualClipName"))
        press("ctrl+z")
        self.kept("the step back", camera_file, lambda clip: not clip["manualBlockOverrides"])
        press("ctrl+shift+z", "ctrl+shift+z")
        wait("what was taken back is done again", lambda: self.decisions() == whole)

    def multicam(self):
        press("Escape")
        self.timed("Escape goes back to the list", lambda: self.window.shows("12A-1 Cam A", "table cell"))
        press("Home", "ctrl+m")
        self.timed("Ctrl+M shows both cameras of the take", lambda: self.window.shows("Hear Cam B"))
        for key in ("space", "l"):
            press(key)
            self.timed(f"{key} plays the cameras", self.is_moving)
            press("k")
            self.timed("k stops them", lambda: not self.is_moving())
        press("f")
        self.timed("F fills the screen with the camera that is heard", fills_screen)
        press("Escape")
        self.timed("Escape gives the window back", lambda: not fills_screen())
        self.window.tab_to("Hear Cam B")
        press("space")
        wait("the other camera is heard", lambda: self.window.is_checked("Hear Cam B"))
        press("Escape")
        self.timed("Escape leaves the cameras", lambda: self.window.shows("12A-1 Cam A", "table cell"))

    def export(self):
        press("ctrl+e")
        wait("the document is asked for", lambda: self.window.shows("Event name", "text"))
        self.window.tab_to("Event name")
        press("ctrl+a")
        type_text(EVENT)
        self.window.tab_to("Document")
        press("ctrl+a")
        type_text(self.document)
        press("Return")
        wait("the document is written", lambda: os.path.exists(self.document))
        press("Escape")
        wait("the sheet has gone", lambda: not self.window.shows("Event name", "text"))
        self.end()

    @property
    def document(self):
        return os.path.join(self.scratch, "window.fcpxml")

    def compare(self):
        decided = self.clips()
        service = Service(f"{self.programs}/orvanesync", self.environment)
        service.call("setFolders", videoFolder=f"{self.shoot}/camera", audioFolder=f"{self.shoot}/sound")
        service.call("startScan")
        ids = {name: clip["id"] for name, clip in service.clips().items()}
        for camera_file, frames, *_ in CLIPS:
            if frames:
                service.call("adjustAudioOffset", groupID=ids[camera_file], deltaSeconds=frames * FRAME)
            if camera_file != MOS:
                service.call("toggleLocked", groupID=ids[camera_file])
        last = CLIPS[-1][0]
        service.call("toggleApproved", groupID=ids[last])
        sound = next(
            match["audio"]["id"] for clip in service.clips().values() for match in clip["audioMatches"]
            if match["audio"]["filename"] == SOUND_OF_TAKE_2
        )
        service.call("attachAudioToGroup", groupID=ids[MOS], audio=sound)
        # Where the mouse button was released is only known from the window.
        chosen = decided[last]["manualBlockOverrides"][0]
        service.call("addBlockOverride", groupID=ids[last], **{key: chosen[key] for key in ("startSeconds", "endSeconds", "trackIndex")})
        service.call("setManualClipName", groupID=ids[last], name=NAME)
        same = os.path.join(self.scratch, "service.fcpxml")
        version = "1.14"
        service.call("exportFCPXML", output=same, eventName=EVENT, version=version, overwrite=True)
        if service.close() != 0:
            raise Failure("the program without a window has failed")
        subprocess.run(["diff", "-u", same, self.document], check=True)


def main():
    programs, shoot, scratch = map(os.path.abspath, sys.argv[1:4])
    run = WindowRun(programs, shoot, scratch)
    try:
        run.run()
    except (Failure, subprocess.CalledProcessError, RuntimeError) as why:
        picture = os.path.join(scratch, "failed.png")
        save_screen(picture)
        print(f"error: {why}\nThe screen at that moment: {picture}", file=sys.stderr)
        return 1
    finally:
        if run.window is not None and run.window.process.poll() is None:
            run.window.process.kill()
        run.output.close()
    print("the window and the service have written the same document")
    return 0


if __name__ == "__main__":
    sys.exit(main())
