#!/usr/bin/python3
"""Takes the pictures of the windows in docs/, light and dark: scripts/screenshots.py [BUILD-FOLDER [light|dark]]

Every picture shows the application with the demo clip, on the display used by the tests.
"""

import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))
sys.dont_write_bytecode = True

from desktop import Application, Desktop, await_equal, await_value  # noqa: E402

CLIP = ROOT / "resources" / "demo" / "demo.mp4"
# The path is visible in the pictures.
FILMS = Path("/tmp/Films")
# A desktop setting that requests the dark style.
PORTAL = """
from gi.repository import Gio, GLib
node = Gio.DBusNodeInfo.new_for_xml('<node><interface name="org.freedesktop.portal.Settings"><method name="Read">'
    '<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>'
    '</interface></node>')
def answer(connection, sender, path, interface, method, arguments, invocation):
    invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", 1)),)))
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop", 0,
    lambda connection, name: connection.register_object("/org/freedesktop/portal/desktop", node.interfaces[0], answer),
    None, None)
GLib.MainLoop().run()
"""


class Photographer:
    def __init__(self, desktop, theme):
        self.desktop, self.theme = desktop, theme
        self.docs = ROOT / "docs"
        self.docs.mkdir(exist_ok=True)

    def take(self, application, title, name):
        """Takes a picture of the window once its content no longer changes."""
        application.activate(title)
        self.desktop.xdotool("mousemove", 1, 1)
        path, before = self.docs / f"{name}.png", None
        while True:
            self.desktop.save_window(path)
            subprocess.run(["mogrify", "-strip", "-define", "png:compression-level=9", path], check=True)
            if path.read_bytes() == before:
                break
            before = path.read_bytes()
            time.sleep(0.2)
        assert path.stat().st_size < 300_000, f"{path} is too large"

    def player(self, movie):
        application = Application(self.desktop, movie)
        application.find("slider")
        self.desktop.keys("End", "Left", "Left")
        self.take(application, movie.stem, f"player-{self.theme}")
        application.stop()

    def converter(self, clip, movie):
        application = Application(self.desktop, clip)
        application.find("push button", "Close the welcome picture").click()
        application.find("label", str(clip))
        await_equal(self.desktop.active_title, "ZEB Maker")
        self.desktop.keys("ctrl+s")
        await_equal(self.desktop.active_title, "Save the ZEB Movie")
        application.find("text", window="Save the ZEB Movie").click()
        self.desktop.keys("ctrl+a")
        self.desktop.type(movie)
        self.desktop.keys("Return")
        application.find("label", str(movie))
        application.find("push button", "Convert").click()
        application.find("label", "Finished")
        self.take(application, "ZEB Maker", f"converter-{self.theme}")
        for key, title, name in (("ctrl+comma", "Settings", "settings"), ("ctrl+question", "ZEB Maker Help", "help")):
            application.activate("ZEB Maker")
            self.desktop.keys(key)
            await_equal(self.desktop.active_title, title)
            self.take(application, title, f"{name}-{self.theme}")
        application.stop()

    def splash(self):
        """Takes the picture immediately: the welcome picture is animated and closes by itself."""
        application = Application(self.desktop)
        application.find("push button", "Close the welcome picture")
        application.activate("ZEB Maker")
        path = self.docs / f"splash-{self.theme}.png"
        self.desktop.save_window(path)
        subprocess.run(["mogrify", "-strip", "-dither", "None", "-colors", "256", path], check=True)
        application.stop()


def take_all(build, theme):
    desktop = Desktop(build / "app" / "zebmaker")
    try:
        if theme == "dark":
            desktop.processes.append(subprocess.Popen([sys.executable, "-c", PORTAL], env=desktop.environment))
            await_value(lambda: desktop.run(
                "dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.portal.Desktop",
                "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings.Read", "string:a", "string:b"))
        FILMS.mkdir()
        clip, movie = FILMS / "Demo.mp4", FILMS / "Demo.zeb"
        shutil.copy(CLIP, clip)
        subprocess.run([build / "cli" / "zeb", "encode", "--progress", "none", "-o", movie, clip], check=True,
                       stdout=subprocess.DEVNULL)
        photographer = Photographer(desktop, theme)
        photographer.player(movie)
        movie.unlink()
        photographer.converter(clip, movie)
        photographer.splash()
    finally:
        desktop.stop()
        shutil.rmtree(FILMS, ignore_errors=True)


def main():
    build = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "dev").resolve()
    if len(sys.argv) > 2:
        take_all(build, sys.argv[2])
        return
    # A process can connect to one accessibility bus only, and so to one desktop.
    for theme in ("light", "dark"):
        subprocess.run([sys.executable, __file__, build, theme], check=True)


if __name__ == "__main__":
    main()
