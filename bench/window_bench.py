#!/usr/bin/python3
"""How soon the converter's window answers while it converts a 4K film: bench/window_bench.py [BUILD-FOLDER]

Asks for a button's place through the accessibility bus, which the window's thread answers, again and again: before a
conversion and during one.
"""

import re
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))
sys.dont_write_bytecode = True

from desktop import Application, Desktop  # noqa: E402


def answers(button, seconds):
    """How long the answers took that came in so many seconds, in milliseconds."""
    times = []
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        start = time.monotonic()
        button.node.clear_cache()
        assert button.extents[2] > 0
        times.append(1000 * (time.monotonic() - start))
        time.sleep(0.01)
    times.sort()
    return (f"{len(times)} answers, median {times[len(times) // 2]:.1f} ms, p99 {times[len(times) * 99 // 100]:.1f} ms, "
            f"most {times[-1]:.1f} ms")


def main():
    build = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "release").resolve()
    desktop = Desktop(build / "app" / "zebmaker")
    try:
        film = desktop.folder / "film.mp4"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=3840x2160:rate=30:duration=30",
                        "-f", "lavfi", "-i", "sine=duration=30", "-c:v", "libx264", "-preset", "ultrafast", "-c:a", "aac",
                        film], check=True)
        application = Application(desktop, film)
        application.find("push button", "Close the welcome picture").click()
        application.find("label", re.compile("^Size of the movie"))
        button = application.find("push button", "Convert")
        print("at rest:   ", answers(button, 5))
        button.click()
        application.find("label", re.compile("^Second [1-9]"))
        print("converting:", answers(button, 20))
        application.find("push button", "Converting…")
    finally:
        desktop.stop()


if __name__ == "__main__":
    main()
