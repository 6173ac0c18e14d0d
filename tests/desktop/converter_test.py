"""Drives the converter with keys and mouse. The environment variables ZEBMAKER and ZEB name the programs."""

import os
import re
import subprocess
import sys
import time
import unittest
from urllib.parse import quote

import desktop
from desktop import DesktopTest, await_equal, await_value

SPLASH = "Close the welcome picture"
TAB_STOPS = ("push button", "check box", "combo box", "text", "spin button", "radio button")


class ConverterTest(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.clip = cls.desktop.folder / "clip.mkv"
        if not cls.clip.exists():
            # Two sound tracks, and noise, which takes long to convert.
            subprocess.run(
                ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=640x480:r=25:d=30,noise=alls=40:allf=t",
                 "-f", "lavfi", "-i", "sine=440:d=30", "-map", "0", "-map", "1", "-map", "1", "-c:v", "mpeg4", "-q:v", "5",
                 "-c:a", "pcm_s16le", cls.clip], check=True)

    def open(self, *arguments, splash=False, **options):
        application = self.start(*arguments, **options)
        if not splash:
            self.dismiss_splash(application)
        return application

    def dismiss_splash(self, application):
        application.find("push button").click()
        await_value(lambda: [c for c in application.controls() if c.role == "push button"],
                    lambda buttons: len(buttons) > 5, "the converter without the welcome picture")
        await_equal(self.desktop.active_title, "ZEB Maker")

    def choose(self, application, path, key="ctrl+o", title="Choose a Video"):
        self.desktop.keys(key)
        await_equal(self.desktop.active_title, title)
        self.fill(application.find("text", window=title), path)
        self.desktop.keys("Return")
        await_equal(self.desktop.active_title, "ZEB Maker")

    def fill(self, field, text):
        field.click()
        await_equal(lambda: field.focused, True, f"the keyboard in {field}:")
        self.desktop.keys("ctrl+a")
        self.desktop.type(str(text))

    def open_clip(self, **options):
        """Starts the converter with the clip as its input. Returns the application and the output path."""
        application = self.open(**options)
        self.choose(application, self.clip)
        application.find("label", re.compile(r"^Video: 640 × 480, 25 fps"))
        movie = self.folder / "no. 1.zeb"
        self.choose(application, movie.with_suffix(""), "ctrl+s", "Save the ZEB Movie")
        application.find("label", str(movie))
        return application, movie

    def small_movie(self):
        movie = self.folder / "small movie.zeb"
        self.zeb("encode", "--progress", "none", "--size", "64x64", "--fps", "1", "-o", movie, self.clip)
        return movie

    def set_number(self, application, key, number, window=None):
        field = application.find("spin button", re.compile(f"^{key}"), window)
        field.click(0.4)
        self.desktop.keys("ctrl+a")
        self.desktop.type(str(number))
        self.desktop.keys("Tab")
        application.find("spin button", f"{key}: {number}", window)

    def await_progress(self, application):
        """Waits until a second has been written."""
        application.find("label", re.compile("^Second [1-9]"))
        application.find("label", re.compile("^Remaining: .*Elapsed: "))

    def test_conversion_follows_every_setting(self):
        application, movie = self.open_clip()
        target = lambda: application.find("label", re.compile("^Video: .*Movie:")).name.split("Movie: ")[1]

        self.fill(application.find("text", "Title"), "A fine film")
        application.find("radio button", "Mode 4: four colours").click()
        await_value(target, lambda text: "Mode 4" in text)
        dither = application.find("check box", "Dithering (Mode 4)")
        dither.click()
        await_equal(lambda: dither.checked, True, "dithering")
        application.find("radio button", "Mode 32: high colour").click()
        await_value(target, lambda text: "Mode 32" in text)
        # In Mode 32 dithering has no effect: it was switched off and cannot be changed.
        dither.click()
        application.find("radio button", "Mode 4: four colours").click()
        await_value(target, lambda text: "Mode 4" in text)
        self.assertFalse(dither.checked)

        proportions = application.find("check box", "Keep proportions")
        if proportions.checked:
            proportions.click()
        self.set_number(application, "Width", 256)
        self.set_number(application, "Height", 128)
        width = application.find("spin button", "Width: 256")
        width.click(0.92)
        application.find("spin button", "Width: 264")
        width.click(0.75)
        application.find("spin button", "Width: 256")
        own_rate = application.find("check box", "From the video")
        if own_rate.checked:
            own_rate.click()
        await_equal(lambda: own_rate.checked, False)
        self.set_number(application, "Frames per second", 5)
        # A field without a number returns to its old number and shows it.
        field = application.find("spin button", "Height: 128")
        before = self.desktop.picture(*field.extents)
        for nonsense in ("", "abc", "-"):
            with self.subTest(nonsense):
                field.click(0.4)
                await_equal(lambda: field.focused, True)
                self.desktop.keys("ctrl+a", "BackSpace")
                self.desktop.type(nonsense)
                await_value(lambda: self.desktop.picture(*field.extents), lambda picture: picture != before)
                self.desktop.keys("Tab")
                await_value(lambda: self.desktop.picture(*field.extents), lambda picture: picture == before,
                            "the old number")
                application.find("spin button", "Height: 128")
        loop = application.find("check box", "Play in a loop")
        if not loop.checked:
            loop.click()
        application.pick("Track", re.compile("2"))
        application.find("radio button", "Mono").click()
        await_equal(target, "256 × 128, 5 fps, Mode 4, mono sound")
        application.find("label", re.compile("^Size of the movie"))

        application.find("push button", "Convert").click()
        application.find("push button", "Converting…")
        application.find("label", "Finished")
        self.zeb("verify", movie)
        info = self.zeb("info", movie)
        for fact in ("A fine film", "256", "128"):
            self.assertIn(fact, info)

        application.find("push button", "Play Movie …").click()
        application.find("slider", window=movie.stem)

    def test_run_continues_beside_other_windows(self):
        movie = self.small_movie()
        application, output = self.open_clip()
        idle = self.icon(application)
        self.desktop.keys("Return")
        self.await_progress(application)
        application.find("label", f"Converting “{self.clip.name}”")
        # The icon shows the progress.
        first = await_value(lambda: self.icon(application), lambda icon: icon != idle, "progress in the icon")
        await_value(lambda: self.icon(application), lambda icon: icon not in (idle, first), "more progress in the icon")
        # Closing the player of a movie opened by another program does not end the run.
        self.assertEqual(self.start(movie).await_end(), 0)
        application.find("slider", window=movie.stem)
        await_equal(lambda: self.desktop.titles(application.process.pid), [movie.stem])
        self.desktop.keys("Escape")
        await_equal(lambda: self.desktop.titles(application.process.pid), ["ZEB Maker"])
        application.find("push button", "Converting…")
        self.assertEqual(application.all("push button", "Go On"), [])
        # The end of the run closes a question about it.
        application.activate("ZEB Maker")
        self.desktop.keys("ctrl+w")
        application.find("push button", "Go On")
        application.find("label", "Finished")
        application.await_gone("push button", "Go On")
        await_equal(lambda: self.icon(application), idle, "icon")
        self.zeb("verify", output)

    def test_small_window_shows_run_and_selection(self):
        application, _ = self.open_clip()
        window = self.desktop.xdotool("getactivewindow").strip()
        self.desktop.xdotool("windowsize", "--sync", window, 560, 360)
        frame = application.find("frame", "ZEB Maker")
        await_value(lambda: frame.extents[3], lambda height: height <= 360, "a small window")
        bottom = lambda control: control.extents[1] + control.extents[3]
        application.find("text", "Title").click()
        self.desktop.keys("Return")
        await_value(lambda: application.all("progress bar"),
                    lambda bars: bars and bottom(bars[0]) < bottom(frame), "the progress in sight")
        self.await_progress(application)

        self.desktop.xdotool("windowsize", "--sync", window, 970, 695)
        await_value(lambda: frame.extents[3], lambda height: height > 600, "a large window")
        log = application.find("text", "Log")
        x, _, _, _ = log.extents
        # The last lines are visible. A double click selects a word.
        self.desktop.xdotool("mousemove", x + 20, bottom(log) - 40, "click", "--repeat", 2, "--delay", 60, 1)
        word = await_value(lambda: log.selection)
        second = application.find("label", re.compile("^Second ")).name
        application.await_gone("label", second)
        self.assertEqual(log.selection, word)

    def icon(self, application):
        window = self.desktop.xdotool("search", "--all", "--pid", application.process.pid, "--name", "^ZEB Maker$").split()[0]
        return self.desktop.run("xprop", "-id", window, "-len", 2000000, "_NET_WM_ICON")

    def test_movie_opens_beside_file_panel(self):
        movie = self.small_movie()
        application = self.open()
        self.desktop.keys("ctrl+o")
        await_equal(self.desktop.active_title, "Choose a Video")
        self.assertEqual(self.start(movie).await_end(), 0)
        application.find("slider", window=movie.stem)
        await_equal(self.desktop.active_title, movie.stem)
        self.desktop.keys("End")
        application.find("label", "30/30", window=movie.stem)
        # For one second after it was opened, a player raises itself again. The converter is raised by the answer.
        time.sleep(1)
        application.activate("Choose a Video")
        self.fill(application.find("text", window="Choose a Video"), self.clip)
        self.desktop.keys("Return")
        application.find("label", str(self.clip), window="ZEB Maker")

    def test_keyboard_reaches_menus_and_texts(self):
        for language, menu, entry, texts in (
                ("en_GB.UTF-8", "alt+f", "Quit ZEB Maker", ("Cut", "Copy", "Paste", "Select All")),
                ("de_DE.UTF-8", "alt+d", "ZEB Maker beenden", ("Ausschneiden", "Kopieren", "Einfügen", "Alles auswählen"))):
            with self.subTest(language):
                application = self.open(language=language)
                self.desktop.keys(menu)
                application.find("menu item", re.compile(f"^{entry}"))
                self.desktop.keys("Escape")
                application.await_gone("menu item", re.compile(f"^{entry}"))
                title = application.find("text", re.compile("^Tit(le|el)$"))
                self.fill(title, "A film")
                self.desktop.keys("Menu")
                application.find("menu item", texts[0])
                self.assertEqual(tuple(item.name for item in application.all("menu item")), texts)
                self.desktop.keys("Escape")
                for entry_of_text, result in ((texts[3], "A film"), (texts[0], ""), (texts[2], "A film")):
                    self.desktop.keys("Menu")
                    application.find("menu item", entry_of_text).click()
                    application.await_gone("menu item", entry_of_text)
                    await_equal(lambda: title.text, result)
                application.stop()

    def test_cancelled_movie_is_kept_or_deleted(self):
        application, movie = self.open_clip()
        self.set_number(application, "Width", 640)
        for answer in ("Keep", "Delete"):
            with self.subTest(answer):
                application.find("push button", "Convert").click()
                self.await_progress(application)
                application.find("push button", "Cancel").click()
                application.find("push button", answer).click()
                application.find("label", "Cancelled")
                await_equal(movie.exists, answer == "Keep")
                movie.unlink(missing_ok=True)

    def test_presets_are_edited_and_stored(self):
        application = self.open()
        self.desktop.keys("ctrl+comma")
        await_equal(self.desktop.active_title, "Settings")
        self.set_number(application, "Width", 704, "Settings")
        application.find("push button", "Add Preset", "Settings").click()
        application.find("menu item", "Empty preset").click()
        self.fill(application.find("text", "Name", "Settings"), "Mine")
        width, height = (application.all("spin button", re.compile(f"^{side}"), "Settings")[-1].name
                         for side in ("Width", "Height"))
        application.find("push button", "Save Changes", "Settings").click()
        self.desktop.keys("ctrl+w")
        await_equal(lambda: self.desktop.titles(application.process.pid), ["ZEB Maker"])

        application.activate("ZEB Maker")
        application.pick("Presets", "DVD")
        application.find("spin button", "Width: 704")
        application.find("menu bar", "Presets").click()
        application.find("menu item", "Mine").click()
        application.find("spin button", width)
        application.find("spin button", height)

        # The next start shows the stored presets in their order.
        application.stop()
        application = self.open()
        application.find("menu bar", "Presets").click()
        application.find("menu item", "Mine")
        # The names of other menu items end with their shortcuts.
        names = [item.name for item in application.all("menu item")]
        self.assertEqual(names[:4], ["DVD", "HD", "Full HD", "Mine"])
        self.assertTrue(names[4].startswith("Edit Presets"), names)

    def test_return_starts_and_asks_before_replacing(self):
        clip = self.folder / "here.mkv"
        clip.hardlink_to(self.clip)
        movie = clip.with_suffix(".zeb")
        movie.write_text("precious")
        application = self.open(clip)
        application.find("label", re.compile("^Video: 640 × 480"))
        application.find("check box", "From the video").click()
        application.find("spin button", re.compile("^Frames per second")).click(0.5)
        self.desktop.keys("ctrl+a")
        self.desktop.type("1")
        self.desktop.keys("Return")
        application.find("push button", "Replace")
        # An open question blocks other shortcuts.
        self.desktop.keys("ctrl+o", "Return")
        application.await_gone("push button", "Replace")
        self.assertEqual(self.desktop.active_title(), "ZEB Maker")
        self.assertEqual(movie.read_text(), "precious")
        # An empty field returns to its old number.
        application.find("spin button", "Width: 640").click(0.4)
        self.desktop.keys("ctrl+a", "BackSpace", "Return")
        application.find("push button", "Replace").click()
        application.find("label", "Finished")
        self.assertIn("640x480", self.zeb("info", movie))
        self.zeb("verify", movie)
        self.assertIn("1 frame per second", self.zeb("info", movie))

    def test_save_panel_completes_name_with_dot(self):
        application, movie = self.open_clip()
        precious = movie.with_name("no. 2.zeb")
        precious.write_text("precious")
        title = "Save the ZEB Movie"
        self.desktop.keys("ctrl+s")
        await_equal(self.desktop.active_title, title)
        self.fill(application.find("text", window=title), precious.with_suffix(""))
        self.desktop.keys("Return")
        # The panel opens again with the complete name.
        await_equal(lambda: application.find("text", window=title).text, precious.name)
        self.desktop.keys("Return")
        application.find("label", re.compile(f"{precious.name} already exists"))
        self.desktop.keys("Escape", "Escape")
        await_equal(self.desktop.active_title, "ZEB Maker")
        application.find("label", str(movie))
        self.assertEqual(precious.read_text(), "precious")

    def test_dropped_files_open_by_kind(self):
        movie = self.small_movie()
        other = self.folder / "übrig.mkv"
        other.hardlink_to(self.clip)
        application = self.open()
        self.assertTrue(application.drop("ZEB Maker", other, self.clip))
        application.find("label", "Only one video at a time: “clip.mkv” was opened, the others were ignored.")
        application.find("label", str(self.clip))
        application.find("label", re.compile("^Video: 640 × 480"))
        self.assertTrue(application.drop("ZEB Maker", other))
        application.find("label", str(other))
        application.find("label", str(other.with_suffix(".zeb")))
        self.assertTrue(application.drop("ZEB Maker", movie))
        application.find("slider", window=movie.stem)

    def test_shortcuts_open_and_close_windows(self):
        application = self.open()
        for key, title in (("ctrl+question", "ZEB Maker Help"), ("ctrl+comma", "Settings")):
            for _ in range(2):  # an open window is raised
                application.activate("ZEB Maker")
                self.desktop.keys(key)
                await_equal(self.desktop.active_title, title)
            self.assertEqual(self.desktop.titles(application.process.pid).count(title), 1)
        self.desktop.keys("ctrl+w")
        await_value(lambda: self.desktop.titles(application.process.pid), lambda titles: "Settings" not in titles)
        # Closing the last window ends the program.
        application.activate("ZEB Maker")
        self.desktop.keys("ctrl+w")
        await_equal(lambda: self.desktop.titles(application.process.pid), ["ZEB Maker Help"])
        application.activate("ZEB Maker Help")
        self.desktop.keys("Escape")
        self.assertEqual(application.await_end(), 0)

    def test_splash_disappears_by_itself(self):
        application = self.open(splash=True)
        application.find("push button", SPLASH)
        application.await_gone("push button", SPLASH)
        application.find("push button", "Choose Video …")
        self.desktop.keys("ctrl+q")
        self.assertEqual(application.await_end(), 0)

    def test_splash_accepts_dropped_files(self):
        application = self.open(splash=True)
        application.find("push button", SPLASH)
        self.assertTrue(application.drop("ZEB Maker", self.clip))
        application.find("label", str(self.clip))

    def test_remote_addresses_are_rejected(self):
        # The splash view does not hide the message.
        application = self.start(f"file://otherhost{self.folder}/a.zeb")
        application.find("label", re.compile("^Only files on this computer can be opened, not "))

    def test_maker_option_shows_converter_beside_movie(self):
        movie = self.small_movie()
        application = self.open()
        windows = lambda: sorted(self.desktop.titles(application.process.pid))
        # A request of another program hides the converter. A new converter window does not repeat it.
        self.assertEqual(self.start(f"zebmaker://play?url={quote(movie.as_uri(), safe='')}").await_end(), 0)
        await_equal(windows, [movie.stem])
        for arguments in (["--maker"], ["--maker", movie]):
            self.assertEqual(self.start(*arguments).await_end(), 0)
            await_equal(windows, ["ZEB Maker", movie.stem])
        application.activate("ZEB Maker")
        self.desktop.keys("ctrl+w")
        await_equal(windows, [movie.stem])
        self.assertEqual(self.start().await_end(), 0)
        await_equal(windows, ["ZEB Maker", movie.stem])
        # Longer than the time in which hiding is repeated.
        time.sleep(1.2)
        self.assertEqual(windows(), ["ZEB Maker", movie.stem])

    def test_requests_of_other_programs_work(self):
        movie = self.small_movie()
        play, encode = (f"zebmaker://{verb}?url={quote(path.as_uri(), safe='')}"
                        for verb, path in (("play", movie), ("encode", self.clip)))
        for running in (False, True):
            for request in (encode, play):
                with self.subTest(request=request, running=running):
                    application = self.open() if running else None
                    started = self.start(request)
                    if running:
                        self.assertEqual(started.await_end(), 0)
                    application = application or started
                    if request == play:
                        application.find("slider", window=movie.stem)
                    else:
                        application.find("label", str(self.clip))
                    application.stop()

    def test_tab_visits_controls_in_order(self):
        application, _ = self.open_clip()
        controls = application.controls()
        self.assertEqual([control for control in controls if control.role in (*TAB_STOPS, "slider", "progress bar")
                          and not control.name], [])
        # Tab visits all enabled controls from top to bottom and starts again at the top.
        unusable = ("Cancel", "Dithering (Mode 4)", "Frames per second: 25")
        expected = [control.name for control in controls if control.role in TAB_STOPS and control.name not in unusable
                    and (control.role != "radio button" or control.checked)]
        visited = []
        while len(visited) < len(expected):
            before = visited[-1] if visited else None
            self.desktop.keys("Tab")
            visited.append(await_value(
                lambda: next((c.name for c in application.controls() if c.role in TAB_STOPS and c.focused), before),
                lambda name, before=before: name != before, f"the focus to leave {before}"))
        first = expected.index(visited[0])
        self.assertEqual(visited, expected[first:] + expected[:first])

    def test_german_texts_fit_the_window(self):
        application = self.open(language="de_DE.UTF-8")
        controls = application.controls()
        self.assertIn("Datei", [control.name for control in controls if control.role == "menu bar"])
        # Longer words push no control out of the window or over another control.
        left, top, width, height = application.find("frame", "ZEB Maker").extents
        leaves = [control for control in controls if control.role in (*TAB_STOPS, "label") and control.name]
        for index, control in enumerate(leaves):
            x, y, wide, high = control.extents
            with self.subTest(control):
                self.assertTrue(left <= x and x + wide <= left + width and top <= y and y + high <= top + height)
                for other in leaves[index + 1:]:
                    other_x, other_y, other_wide, other_high = other.extents
                    self.assertFalse(x < other_x + other_wide and other_x < x + wide and
                                     y < other_y + other_high and other_y < y + high, other)


class SmallScreenTest(DesktopTest):
    """Opens windows on screens that are too small for them. Each screen needs a separate process."""

    def test_every_window_fits_small_screens(self):
        here = os.environ | {"PYTHONDONTWRITEBYTECODE": "1"}
        for width, height, scale in ((800, 600, 1), (1024, 600, 1), (1400, 1000, 2)):
            with self.subTest(screen=(width, height), scale=scale):
                done = subprocess.run([sys.executable, __file__, "--windows-on", str(width), str(height), str(scale)],
                                      env=here, capture_output=True, text=True, check=False)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


def check_windows(width, height, scale):
    """Opens every window on a screen of this size and checks that its frame is inside."""
    desktop.SCREEN = (width, height)
    screen = desktop.Desktop(os.environ["ZEBMAKER"])
    try:
        screen.environment["QT_SCALE_FACTOR"] = str(scale)
        application = desktop.Application(screen)
        application.find("push button", SPLASH).click()
        application.await_gone("push button", SPLASH)
        for key, title in ((None, "ZEB Maker"), ("ctrl+comma", "Settings"), ("ctrl+question", "ZEB Maker Help")):
            application.activate("ZEB Maker")
            if key:
                screen.keys(key)
            await_equal(screen.active_title, title)
            # The window manager sets this property after adding the frame.
            window = screen.xdotool("getactivewindow").strip()
            frame = await_value(lambda: re.findall(r"\d+", screen.run("xprop", "-id", window, "_NET_FRAME_EXTENTS")))
            left, right, top, bottom = map(int, frame)
            place = screen.run("xwininfo", "-id", window)
            x, y, wide, high = (int(re.search(f"{name}: +(-?\\d+)", place)[1])
                                for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
            inside = x >= left and y >= top and x + wide + right <= width and y + high + bottom <= height
            assert top > 0 and inside, (title, place, frame)
        application.stop()
        assert not application.complaints()
    finally:
        screen.stop()


if __name__ == "__main__":
    if "--windows-on" in sys.argv:
        check_windows(*map(int, sys.argv[2:]))
        sys.exit()
    unittest.main(verbosity=2)
