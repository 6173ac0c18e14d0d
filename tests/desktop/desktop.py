"""Drives the application on a private display with key and mouse events.

A Desktop is a private X server, window manager, session bus and accessibility bus. Its end stops all of them.
An Application is one start of zebmaker there. Tests find controls by role and name in the accessibility tree and
use them with mouse and keyboard. Tests wait for conditions, not for fixed times. A complaint about QML on standard
error fails the test.
"""

import contextlib
import os
import re
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

import dragging

# Timeout in seconds. It is long because other tests run at the same time. Waiting ends when the condition is met.
PATIENCE = 20
SCREEN = (1400, 1000)
QML_COMPLAINT = re.compile(r"\.qml:\d+|[Bb]inding loop|TypeError|ReferenceError|QML \w+:")


def await_value(get, accept=bool, what="", patience=PATIENCE):
    """Waits until get() returns an accepted value, and returns it."""
    end = time.monotonic() + patience
    while True:
        value = get()
        if accept(value):
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain for {what or accept}: still {repr(value)[:300]}")
        time.sleep(0.02)


def await_equal(get, expected, what=""):
    return await_value(get, lambda value: value == expected, f"{what} {expected!r}")


def end(process):
    """Terminates a process, and kills it if it does not end."""
    process.terminate()
    try:
        process.wait(5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


class Control:
    """One object of the accessibility tree in its current state."""

    def __init__(self, desktop, node):
        self.desktop, self.node = desktop, node
        self.role, self.name = node.get_role_name(), node.get_name() or ""

    def __repr__(self):
        return f"{self.role} “{self.name}”"

    def _state(self, state):
        self.node.clear_cache()
        return self.node.get_state_set().contains(getattr(self.desktop.atspi.StateType, state))

    showing = property(lambda self: self._state("SHOWING"))
    checked = property(lambda self: self._state("CHECKED"))
    focused = property(lambda self: self._state("FOCUSED"))

    @property
    def text(self):
        """The text of a field."""
        return self.desktop.atspi.Text.get_text(self.node, 0, -1)

    @property
    def selection(self):
        """The selected text of a field."""
        place = self.desktop.atspi.Text.get_selection(self.node, 0)
        return self.desktop.atspi.Text.get_text(self.node, place.start_offset, place.end_offset)

    @property
    def extents(self):
        """x, y, width, height on the screen."""
        place = self.node.get_extents(self.desktop.atspi.CoordType.SCREEN)
        return place.x, place.y, place.width, place.height

    def at(self, across=0.5, down=0.5):
        x, y, width, height = self.extents
        return int(x + width * across), int(y + height * down)

    def click(self, across=0.5, down=0.5, times=1):
        x, y = self.at(across, down)
        self.desktop.xdotool("mousemove", x, y, *(["click", 1] * times))


class Application:
    """One running instance of zebmaker."""

    def __init__(self, desktop, *arguments, language="en_GB.UTF-8"):
        self.desktop = desktop
        self.errors = tempfile.TemporaryFile(mode="w+", encoding="utf-8", errors="replace")
        environment = desktop.environment | {"LC_ALL": "C.UTF-8", "LANG": language, "LANGUAGE": language[:2]}
        if language[:2] != "en":
            environment["LC_ALL"] = language
        self.process = subprocess.Popen([desktop.program, *map(str, arguments)], env=environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=self.errors)

    def node(self):
        desktop = self.desktop.atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            with contextlib.suppress(self.desktop.GError):
                if child and child.get_process_id() == self.process.pid:
                    return child
        return None

    def controls(self, window=None):
        """All visible controls in the order of the tree."""
        found = []

        def visit(node, depth):
            if node is None:
                return
            with contextlib.suppress(self.desktop.GError):
                control = Control(self.desktop, node)
                if depth == 1 and window is not None and control.name != window:
                    return
                if depth and not control.showing:
                    return
                if depth:
                    found.append(control)
                for index in range(node.get_child_count()):
                    visit(node.get_child_at_index(index), depth + 1)

        visit(self.node(), 0)
        return found

    def all(self, role=None, name=None, window=None):
        matches = (lambda text: True) if name is None else getattr(name, "search", lambda text: text == name)
        return [control for control in self.controls(window)
                if (role is None or control.role == role) and matches(control.name)]

    def find(self, role, name=None, window=None, index=0):
        """Waits for the visible control of this role and name (a text or a pattern)."""
        return await_value(lambda: self.all(role, name, window)[index:index + 1], bool, f"{role} {name}")[0]

    def await_gone(self, role, name):
        await_value(lambda: self.all(role, name), lambda found: not found, f"{role} {name} to go")

    def pick(self, box, entry):
        """Selects an entry of a combo box."""
        self.find("combo box", box).click()
        self.find("menu item", entry).click()
        self.await_gone("menu item", entry)

    def await_end(self):
        """Waits for the end of the program and returns its exit code."""
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired as timeout:
            raise AssertionError(f"still running, with the windows {self.desktop.titles(self.process.pid)}") from timeout

    def activate(self, title):
        """Activates the window of this title."""
        self.desktop.activate(self.process.pid, title)

    def drop(self, title, *paths):
        """Drops files into the middle of the window of this title. Returns True if it accepted them."""
        return self.desktop.drop(self.process.pid, title, [path.as_uri() for path in paths])

    def complaints(self):
        """Complaints about QML on standard error. Call once, at the end."""
        self.errors.seek(0)
        with self.errors:
            return [line.rstrip() for line in self.errors if QML_COMPLAINT.search(line)]

    def stop(self):
        if self.process.poll() is None:
            end(self.process)


class Desktop:
    """A private display with the services of a desktop session."""

    def __init__(self, program):
        self.program = str(program)
        self.folder = Path(tempfile.mkdtemp(prefix="zeb-desktop-"))
        self.processes = []
        try:
            self._start()
        except BaseException:
            self.stop()
            raise

    def _start(self):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS")}
        for name in ("CONFIG_HOME", "DATA_HOME", "CACHE_HOME", "RUNTIME_DIR"):
            path = self.folder / name.lower()
            path.mkdir(mode=0o700)
            environment["XDG_" + name] = str(path)
        environment |= {"HOME": str(self.folder), "QT_QPA_PLATFORM": "xcb", "QT_QUICK_BACKEND": "software",
                        "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "SDL_AUDIODRIVER": "dummy",
                        "NO_AT_BRIDGE": "0", "XDG_CURRENT_DESKTOP": "openbox"}
        self.environment = environment
        # -noreset: otherwise the server resets when its first client leaves.
        environment["DISPLAY"] = ":" + self._start_and_read(
            lambda end: ["Xvfb", "-displayfd", end, "-screen", "0", f"{SCREEN[0]}x{SCREEN[1]}x24", "-noreset",
                         "-nolisten", "tcp"])
        environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_and_read(
            lambda end: ["dbus-daemon", "--session", "--nofork", f"--print-address={end}"])
        self._spawn(["openbox", "--sm-disable"])
        self._spawn(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        # The window manager is ready when it reports its desktops.
        await_value(lambda: self.xdotool("get_num_desktops").strip(), lambda count: count not in ("", "0"), "openbox")
        # The accessibility library reads these variables when it is loaded.
        os.environ.update(environment)
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        self.atspi, self.GError = Atspi, GLib.Error
        await_value(lambda: self.run("dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
                                     "org.a11y.Bus.GetAddress"), what="accessibility bus")
        Atspi.init()

    def _spawn(self, command, **options):
        process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
        self.processes.append(process)
        return process

    def _start_and_read(self, command):
        """Starts a server with the number of a file descriptor and returns the first line that it writes there."""
        reading, writing = os.pipe()
        self._spawn(command(str(writing)), pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            return answer.readline().strip()

    def run(self, *command):
        return subprocess.run([str(word) for word in command], env=self.environment, capture_output=True, text=True,
                              check=False, timeout=PATIENCE).stdout

    def xdotool(self, *words):
        return self.run("xdotool", *words)

    def keys(self, *names):
        """Presses keys one after the other, such as "space" or "ctrl+o"."""
        self.xdotool("key", "--clearmodifiers", "--delay", 30, *names)

    def type(self, text):
        self.xdotool("type", "--clearmodifiers", "--delay", 15, "--", text)

    def titles(self, pid):
        """Titles of the visible windows."""
        return [self.xdotool("getwindowname", window).strip() for window in self._windows(pid)]

    def _windows(self, pid):
        return self.xdotool("search", "--onlyvisible", "--all", "--pid", pid, "--name", ".").split()

    def active_title(self):
        return self.xdotool("getactivewindow", "getwindowname").strip()

    def activate(self, pid, title):
        def attempt():
            for window in self._windows(pid):
                if self.xdotool("getwindowname", window).strip() == title:
                    self.xdotool("windowactivate", "--sync", window)
                    return self.active_title() == title
            return False
        await_value(attempt, what=f"window {title}")

    def drop(self, pid, title, uris):
        window = next(window for window in self._windows(pid)
                      if self.xdotool("getwindowname", window).strip() == title)
        place = dict(line.split("=") for line in self.xdotool("getwindowgeometry", "--shell", window).split())
        middle = (int(place["X"]) + int(place["WIDTH"]) // 2, int(place["Y"]) + int(place["HEIGHT"]) // 2)
        return dragging.drop(self.environment["DISPLAY"], int(window), middle, uris)

    def picture(self, x, y, width, height):
        """Pixels of a part of the screen as red, green, blue, row by row."""
        shot = subprocess.run(["import", "-silent", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}",
                               "-depth", "8", "rgb:-"], env=self.environment, capture_output=True, check=True).stdout
        assert len(shot) == width * height * 3, (len(shot), width, height)
        return shot

    def save_window(self, path):
        """Stores a picture of the active window."""
        subprocess.run(["import", "-silent", "-window", self.xdotool("getactivewindow").strip(), str(path)],
                       env=self.environment, check=True)

    def stop(self):
        for process in reversed(self.processes):
            end(process)
        shutil.rmtree(self.folder, ignore_errors=True)


class DesktopTest(unittest.TestCase):
    """Each test starts with empty user folders. Its applications are ended and must not have complained."""

    desktop = None

    @classmethod
    def setUpClass(cls):
        if DesktopTest.desktop is None:
            DesktopTest.desktop = Desktop(os.environ["ZEBMAKER"])
            unittest.addModuleCleanup(DesktopTest.desktop.stop)

    def setUp(self):
        self.applications = []
        self.folder = Path(tempfile.mkdtemp(prefix="zeb-desktop-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        for name in ("config_home", "data_home", "cache_home"):
            path = self.desktop.folder / name
            shutil.rmtree(path, ignore_errors=True)
            path.mkdir(mode=0o700)
        self.addCleanup(self._end_applications)

    def _end_applications(self):
        for application in self.applications:
            application.stop()
        complaints = [line for application in self.applications for line in application.complaints()]
        self.assertEqual(complaints, [])

    def start(self, *arguments, **options):
        application = Application(self.desktop, *arguments, **options)
        self.applications.append(application)
        return application

    def zeb(self, *arguments):
        """Runs zeb and returns its output. The exit code must be 0."""
        done = subprocess.run([os.environ["ZEB"], *map(str, arguments)], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout
