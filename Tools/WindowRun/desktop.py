"""The window from outside: keys and clicks come from the X server, and the contents are read as by a screen reader."""

import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 15  # seconds to wait for an expected result


class Failure(Exception):
    """An expected result did not occur."""


def wait(what, condition, seconds=PATIENCE):
    """Returns the first true value of `condition`."""
    last = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > last:
            raise Failure(f"{what}: not within {seconds} s")
        time.sleep(0.02)


def stays(what, condition, seconds=0.5):
    last = time.monotonic() + seconds
    while time.monotonic() < last:
        if not condition():
            raise Failure(what)
        time.sleep(0.05)


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


def press(*keys):
    for key in keys:
        xdotool("key", key)


def type_text(text):
    xdotool("type", "--delay", 15, text)


def hold(key, seconds):
    xdotool("keydown", key)
    time.sleep(seconds)  # how long the key is held
    xdotool("keyup", key)


def drag(start, end):
    """In small steps, like a hand; points of the screen."""
    xdotool("mousemove", *start, "mousedown", 1)
    for i in range(1, 9):
        xdotool("mousemove", *(start[k] + (end[k] - start[k]) * i // 8 for k in (0, 1)))
    xdotool("mouseup", 1)


def click(box):
    x, y, width, height = box
    xdotool("mousemove", x + width // 2, y + height // 2, "click", 1)


def picture_of(box):
    """Rows of (red, green, blue) of a part of the screen."""
    x, y, width, height = box
    command = ["import", "-silent", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", "-depth", "8", "rgb:-"]
    data = subprocess.run(command, check=True, capture_output=True).stdout
    pixels = list(zip(data[0::3], data[1::3], data[2::3]))
    return [pixels[row * width : (row + 1) * width] for row in range(height)]


def save_screen(path):
    subprocess.run(["import", "-silent", "-window", "root", path], check=False)


def is_in(each, state):
    return each.get_state_set().contains(state)


def fills_screen():
    """Whether the window with the keyboard focus is as large as the screen."""
    asked = ["xdotool", "getdisplaygeometry", "getactivewindow", "getwindowgeometry"]
    said = subprocess.run(asked, capture_output=True, text=True).stdout
    width, height = said.split()[:2]
    return f"Geometry: {width}x{height}" in said


class Window:
    """One program as the accessibility bus describes it."""

    def __init__(self, name, process):
        self.name, self.process = name, process
        wait("the window comes up", self.application, 60)

    def application(self):
        if self.process.poll() is not None:
            raise Failure(f"the program has ended with status {self.process.returncode}")
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child is not None and child.get_name() == self.name:
                return child
        return None

    def find(self, name, role=None):
        """The first visible object whose name begins with `name`."""
        return next((each for each in self.all() if self._is(each, name, role)), None)

    def box(self, name, role=None, seconds=PATIENCE):
        found = wait(f"“{name}” is shown", lambda: self.find(name, role), seconds)
        place = found.get_extents(Atspi.CoordType.SCREEN)
        return place.x, place.y, place.width, place.height

    def shows(self, name, role=None):
        return self.find(name, role) is not None

    def focused(self):
        """The name of the object with the keyboard focus, or an empty text."""
        windows = [each for each in self.all() if is_in(each, Atspi.StateType.ACTIVE)]
        having = [each for each in self.all(windows) if is_in(each, Atspi.StateType.FOCUSED)]
        return having[-1].get_name().strip() if having else ""

    def tab_to(self, name, most=60):
        """Moves the focus with the Tab key alone. Every object on the way must have a name."""
        for _ in range(most):
            press("Tab")
            now = wait("the stop of Tab has a name", self.focused, 3)
            if now.startswith(name):
                return
        raise Failure(f"Tab does not come to “{name}”")

    def text_of(self, name):
        found = wait(f"“{name}” is shown", lambda: self.find(name, "text"))
        return Atspi.Text.get_text(found, 0, -1)

    @staticmethod
    def _is(each, name, role):
        try:
            return (role is None or each.get_role_name() == role) and each.get_name().strip().startswith(name)
        except GLib.Error:
            return False  # it was destroyed meanwhile

    def all(self, within=None):
        """All visible objects; an object within a hidden one is hidden too."""
        waiting = [self.application()] if within is None else list(within)
        while waiting:
            each = waiting.pop(0)
            try:
                if each is None or not (each.get_role() == Atspi.Role.APPLICATION or is_in(each, Atspi.StateType.SHOWING)):
                    continue
                yield each
                waiting.extend(each.get_child_at_index(i) for i in range(each.get_child_count()))
            except GLib.Error:
                continue

    def is_checked(self, name):
        found = self.find(name)
        return found is not None and is_in(found, Atspi.StateType.CHECKED)

    def is_selected(self, role, words):
        """Whether the item of a list with these words in its name is the selected one."""
        items = (each for each in self.all() if each.get_role_name() == role and words in each.get_name())
        return any(is_in(each, Atspi.StateType.SELECTED) for each in items)
