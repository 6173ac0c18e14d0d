"""Feeds the include check small trees with one fault each: it must find every one, and nothing in a good tree."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check_includes.py"

GOOD = {
    "platform/Picture.h": "#include <cstdint>\n",
    "platform/ffmpeg/Handles.h": "extern \"C\" {\n#include <libavcodec/avcodec.h>\n}\n",
    "platform/ffmpeg/Library.h": "#include \"platform/Picture.h\"\n",
    "platform/ffmpeg/Library.cpp": "#include \"platform/ffmpeg/Handles.h\"\n#include <zimg.h>\n",
    "platform/qt/Painter.cpp": "#include <QPainter>\n#include <QtGui/QImage>\n",
    "codec/Sprite.h": "#include <vector>\n\n#include \"platform/Picture.h\"\n",
    "format/Writer.h": "#include \"codec/Sprite.h\"\n",
    "conversion/Run.h": "#include \"format/Writer.h\"\n",
    "cli/main.cpp": "#include <CLI/App.hpp>\n#include <unistd.h>\n#include \"platform/ffmpeg/Library.h\"\n",
    "player/Player.h": "",  # what bad files point at, as Handles.h
    "platform/ffmpeg/Wrapped.h": "#include \"platform/ffmpeg/Handles.h\"\n",
    "tests/Clip.h": "#include \"platform/ffmpeg/Handles.h\"\n",
    "tests/codec/SpriteTest.cpp": "#include <gtest/gtest.h>\n#include \"../Clip.h\"\n#include \"conversion/Run.h\"\n",
}

# File, its text (added to the good tree), and what the complaint has to name.
BAD = (
    ("platform/Clock.cpp", "#include \"codec/Sprite.h\"\n", "platform/ may not include codec/Sprite.h"),
    ("codec/Codec.cpp", "#include \"format/Writer.h\"\n", "codec/ may not include format/Writer.h"),
    ("codec/Codec.cpp", "  #  include   <format/Writer.h>\n", "codec/ may not include format/Writer.h"),
    ("cli/Play.cpp", "#include \"player/Player.h\"\n", "cli/ may not include player/Player.h"),
    ("platform/Media.h", "#include <libavutil/rational.h>\n", "FFmpeg may be used in"),
    ("conversion/Job.cpp", "#include \"platform/ffmpeg/Handles.h\"\n", "brings FFmpeg along"),
    ("cli/Job.cpp", "#include \"platform/ffmpeg/Wrapped.h\"\n", "brings FFmpeg along"),
    ("conversion/Scale.cpp", "#include <zimg++.hpp>\n", "zimg may be used in"),
    ("platform/Media.cpp", "#include <QtCore/QString>\n", "Qt may be used in"),
    ("codec/Codec.cpp", "#include <unistd.h>\n", "the operating system may be used in"),
    ("format/Writer.cpp", "#include \"Writer.h\"\n", "must be written as a path from the root"),
    ("format/Writer.cpp", "#include \"../codec/Sprite.h\"\n", "must be written as a path from the root"),
    ("tests/codec/RLE2Test.cpp", "#include \"Missing.h\"\n", "Missing.h is neither"),
    ("format/Writer.cpp", "#include <boost/endian.hpp>\n", "boost/endian.hpp is neither"),
)

def check(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, "utf-8")
        return subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True, check=False)


class CheckIncludes(unittest.TestCase):
    def testGoodTreePasses(self):
        outcome = check(GOOD)
        self.assertEqual((outcome.returncode, outcome.stderr), (0, ""), outcome.stdout)

    def testEveryFaultIsFoundAlone(self):
        for name, text, complaint in BAD:
            with self.subTest(file=name, text=text):
                outcome = check({**GOOD, name: text})
                self.assertEqual(outcome.returncode, 1, outcome.stdout)
                lines = outcome.stdout.splitlines()
                self.assertEqual(len(lines), 1, outcome.stdout)
                self.assertTrue(lines[0].startswith(f"{name}:1: "), lines[0])
                self.assertIn(complaint, lines[0])

    def testCommentedIncludesDoNotCount(self):
        outcome = check({**GOOD, "codec/A.cpp": "// #include \"cli/x.h\"\n/*\n#include <QString>\n*/\n"})
        self.assertEqual(outcome.returncode, 0, outcome.stdout)

    def testNothingToCheckIsNoSuccess(self):
        self.assertEqual(check({"README.md": ""}).returncode, 2)


if __name__ == "__main__":
    unittest.main()
