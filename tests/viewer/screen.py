# SPDX-License-Identifier: BSD-3-Clause
"""The viewer on an X server: its keys, and what is to be seen of it.

Nothing is waited for by time alone: each wait is for a condition, and one that does not come within
PATIENCE ends with NotReached, which names it.

Areas are (x, y, width, height) in pixels of the window, which is in the screen's upper left corner.
"""
import os
import re
import signal
import subprocess
import time

PATIENCE = 30  # seconds
POLL = 0.05  # seconds between two looks
CHANGE = 3  # mean difference of a channel, of 255, that no area has by chance
STILL_LOOKS = 3  # in a row, each of which finds the same


class NotReached(Exception):
    """What was waited for."""


def wait_for(what, condition):
    """Returns what the condition returns once that is true."""
    end = time.monotonic() + PATIENCE
    while not (result := condition()):
        if time.monotonic() > end:
            raise NotReached(f"{what}: not within {PATIENCE} seconds")
        time.sleep(POLL)
    return result


def run(*command, **options):
    """What the command says."""
    words = [str(word) for word in command]
    try:
        return subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              timeout=PATIENCE, **options).stdout
    except subprocess.TimeoutExpired:
        raise NotReached(f"the end of {' '.join(words)}: not within {PATIENCE} seconds") from None


def ffmpeg(*arguments):
    return run("ffmpeg", "-v", "error", "-y", *arguments, check=True)


def difference(one, other):
    """The mean one of their bytes."""
    return sum(abs(a - b) for a, b in zip(one, other)) / len(one)


def xdotool(*arguments):
    """What it says; nothing where there is no such window."""
    return run("xdotool", *arguments, stderr=subprocess.DEVNULL, text=True, check=False).strip()


class Viewer:
    """One run of the program: `with Viewer(program, size, cameras) as viewer`."""

    def __init__(self, program, size, cameras, *arguments):
        self._size = size
        self._process = subprocess.Popen([program, *arguments],
                                         env=dict(os.environ, OCELLE_CAMERAS=cameras))
        self._window = None

    def __enter__(self):
        try:
            self._window = wait_for("the window", self._find_window)
            xdotool("windowmove", self._window, 0, 0, "windowsize", self._window, *self._size,
                    "windowfocus", self._window, "mousemove", 9999, 9999)
            wait_for("the window's size", self._has_size)
            wait_for("the focus", lambda: xdotool("getwindowfocus") == self._window)
        except BaseException:
            self._process.kill()
            self._process.wait()
            raise
        return self

    def __exit__(self, kind, *_):
        self._process.send_signal(signal.SIGTERM if kind is None else signal.SIGKILL)
        try:
            code = self._process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self._process.kill()
            raise NotReached("the end of the program") from None
        if kind is None and code != 0:
            raise NotReached(f"a good end of the program: its exit code is {code}")

    def _find_window(self):
        if self._process.poll() is not None:
            raise NotReached(f"the window: the program ended, with {self._process.returncode}")
        found = xdotool("search", "--onlyvisible", "--pid", self._process.pid, "--name", ".")
        return found.split("\n")[0]

    def _has_size(self):
        place = dict(re.findall(r"^(\w+)=(.*)$",
                                xdotool("getwindowgeometry", "--shell", self._window), re.M))
        wanted = {"X": 0, "Y": 0, "WIDTH": self._size[0], "HEIGHT": self._size[1]}
        return all(place.get(name) == str(value) for name, value in wanted.items())

    def grab(self, area=None):
        """The area's pixels, three bytes each."""
        return self._grab(area, "-f", "rawvideo", "-pix_fmt", "rgb24", "-")

    def save(self, path):
        # A palette makes it a quarter of the size.
        self._grab(None, "-vf",
                   "trim=end_frame=1,split[a][b];[a]palettegen[p];[b][p]paletteuse=dither=none",
                   "-update", 1, path)

    def _grab(self, area, *output):
        x, y, width, height = area or (0, 0, *self._size)
        return ffmpeg("-f", "x11grab", "-draw_mouse", 0, "-video_size", f"{width}x{height}",
                      "-i", f"{os.environ['DISPLAY']}+{x},{y}", "-frames:v", 1, *output)

    def press(self, key, area=None):
        """With an area, until that has become another one and stays as it is then."""
        before = self.grab(area) if area else None
        xdotool("key", key)
        if area:
            self.wait_changed(f"what {key} changes", area, before)
            self.wait_still(f"what {key} changes to be at rest", area)

    def wait_title(self, title):
        wait_for(f"the title \"{title}\"", lambda: xdotool("getwindowname", self._window) == title)

    def wait_changed(self, what, area, before):
        wait_for(what, lambda: difference(self.grab(area), before) > CHANGE)

    def wait_like(self, what, area, before):
        wait_for(what, lambda: difference(self.grab(area), before) < CHANGE)

    def wait_still(self, what, area):
        wait_for(what, lambda: len({self.grab(area) for _ in range(STILL_LOOKS)}) == 1)

    def wait_updates(self, what, area, count):
        """Until the area has been another one so many times."""
        last = self.grab(area)
        for number in range(1, count + 1):
            last = wait_for(f"{what}, update {number} of {count}",
                            lambda last=last: (now := self.grab(area)) != last and now)

    def wait_colour(self, what, point, colour):
        """Until the pixel has it, about."""
        wait_for(what, lambda: difference(self.grab((*point, 1, 1)), colour) < 16)
