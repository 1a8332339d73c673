"""The sound that the program plays: a sound server with a sink without hardware, recorded from its start to its end."""

import array
import collections
import os
import random
import subprocess

from desktop import Failure, press, stays, wait

RATE = 48000  # of the sink and of the recordings, so that samples arrive as they are in the file
SAMPLE_BYTES = 2 * 4  # of the record: two channels, 32-bit float
FAINTEST = 1e-6  # far below the rooms, which are at -78 dB
FILE_FRAME = 6 * 3  # bytes
PIECE = 64  # samples that are searched for together
ENOUGH = 10  # pieces that agree: during the fade-in, a single one may match another recording's clap
LISTEN = 0.8  # seconds of sound for each result


def signs(samples):
    """One byte for each sample: the sign of the fourth difference. Voices, which differ between the channels of a
    recording, change too slowly to affect it; the room and the clap remain, which all channels share."""
    for _ in range(2):
        samples = [a - 2 * b + c for a, b, c in zip(samples, samples[1:], samples[2:])]
    return bytes(value > 0 for value in samples)


def add_room(path):
    """The demo's recordings are nearly the same and have pauses without any sound. Adds to this
    one, of 6 channels with 24 bits, a faint noise of its own in place of a room, so that each piece of it can be located.
    Returns its signs."""
    with open(path, "rb") as file:
        data = file.read()
    begin = data.index(b"data", data.index(b"fmt ")) + 8
    size = int.from_bytes(data[begin - 4 : begin], "little")
    noise = random.Random(path).randbytes(size // FILE_FRAME)
    room = int.from_bytes(b"".join(bytes((value, 0, 0)) * 6 for value in noise), "little") << 3
    # One addition for all samples: after the sign bit is flipped, no sample carries into the next.
    turn = int.from_bytes(b"\0\0\x80" * (size // 3), "little")
    samples = int.from_bytes(data[begin : begin + size], "little")
    sounding = (((samples ^ turn) + room) ^ turn).to_bytes(size, "little")
    with open(path, "wb") as file:
        file.write(data[:begin] + sounding + data[begin + size :])
    first = bytearray(size // FILE_FRAME * 4)
    for i in range(3):
        first[i + 1 :: 4] = sounding[i::FILE_FRAME]
    return signs(array.array("i", bytes(first)))


class Output:
    """Call this before the program is started: it then uses the sink as the machine's device."""

    def __init__(self, environment, scratch):
        self.environment = environment
        self.record = os.path.join(scratch, "sound.raw")
        self.log = open(os.path.join(scratch, "sound.log"), "wb")
        self.processes = []
        self.signs = {}

    def begin(self, recordings):
        self.signs = {os.path.basename(path): add_room(path) for path in recordings}
        with open(os.path.join(self.environment["HOME"], ".asoundrc"), "w", encoding="utf-8") as file:
            file.write("pcm.!default { type pulse }\nctl.!default { type pulse }\n")
        sink = f"module-null-sink sink_name=window_run format=float32le rate={RATE} channels=2"
        server = ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disable-shm=yes", "--use-pid-file=no",
                  "-L", "module-native-protocol-unix", "-L", sink]
        self.processes.append(self.start(server))
        wait("the sound server answers", lambda: self.start(["pactl", "info"]).wait() == 0)
        with open(self.record, "wb") as file:
            form = ["--format=float32le", f"--rate={RATE}", "--channels=2", "--latency-msec=20"]
            self.processes.append(self.start(["parec", "-d", "window_run.monitor", *form], file))
        wait("the sink is recorded", self.length)

    def start(self, command, output=None):
        return subprocess.Popen(command, env=self.environment, stdout=output or self.log, stderr=self.log)

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(10)

    def length(self):
        return os.path.getsize(self.record) // SAMPLE_BYTES

    def heard_from(self, begin):
        """The left channel from this sample on, without the silence before its first sound."""
        with open(self.record, "rb") as file:
            file.seek(begin * SAMPLE_BYTES)
            data = file.read((self.length() - begin) * SAMPLE_BYTES)
        left = array.array("f", data)[::2]
        first = next((i for i, value in enumerate(left) if abs(value) > FAINTEST), len(left))
        return left[first:]

    def wait_for_silence(self):
        """Returns the sample from which on there is silence."""
        begin, quiet = self.length(), RATE // 4
        wait("the record goes on", lambda: self.length() > begin + quiet)
        wait("the sound stops", lambda: len(self.heard_from(self.length() - quiet)) == 0)
        return self.length()

    def expect_silence(self):
        """Plays a clip without sound."""
        begin = self.wait_for_silence()
        press("space")
        stays("a clip without a recording is heard", lambda: len(self.heard_from(begin)) == 0, LISTEN)
        press("space")

    def listen(self):
        """Plays for a moment. Returns the recording that is heard, and the second of it with which the sound begins."""
        begin = self.wait_for_silence()
        press("space")
        wait("something is heard", lambda: len(self.heard_from(begin)) > LISTEN * RATE)
        press("space")
        return self.place_of(self.heard_from(begin))

    def place_of(self, heard):
        pieces = signs(heard)
        places = collections.Counter()
        for at in range(0, len(pieces) - PIECE, PIECE):
            piece = pieces[at : at + PIECE]
            found = [(name, known.find(piece) - at) for name, known in self.signs.items() if piece in known]
            if len(found) != 1:
                continue  # the claps of all recordings are the same
            places[found[0]] += 1
            if places[found[0]] == ENOUGH:
                return found[0][0], found[0][1] / RATE
        raise Failure("what is heard is in none of the recordings")
