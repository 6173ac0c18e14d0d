"""Runs the check scripts on small trees with one fault each. They must report each fault, and none in a good tree."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"

GOOD = {
    "platform/base/Picture.h": "#include <cstdint>\n",
    "media/ffmpeg/Handles.h": "extern \"C\" {\n#include <libavcodec/avcodec.h>\n}\n",
    "media/Library.h": "#include \"platform/base/Picture.h\"\n",
    "media/reading/Library.cpp": "#include \"media/ffmpeg/Handles.h\"\n#include <zimg.h>\n",
    "platform/desktop/Painter.cpp": "#include <QPainter>\n#include <QtGui/QImage>\n",
    "codec/Sprite.h": "#include <vector>\n\n#include \"platform/base/Picture.h\"\n",
    "format/Writer.h": "#include \"codec/Sprite.h\"\n",
    "conversion/Run.h": "#include \"format/Writer.h\"\n",
    "cli/Program.cpp": "#include <CLI/App.hpp>\n#include <unistd.h>\n#include \"media/Library.h\"\n",
    "player/Player.h": "",  # included by bad files, like Handles.h
    "platform/settings/UserDefaults.h": "#include \"platform/tasks/MainActor.h\"\n",
    "platform/tasks/MainActor.h": "",
    "conversion/comparison/Comparison.h": "#include \"conversion/Run.h\"\n#include \"format/Writer.h\"\n",
    "cli/commands/Compare.cpp": "#include \"conversion/comparison/Comparison.h\"\n",
    "conversion/model/Model.h": "#include \"platform/settings/UserDefaults.h\"\n#include \"conversion/Run.h\"\n",
    "ui/model/Content.h": "#include \"conversion/model/Model.h\"\n",
    "media/reading/Wrapped.h": "#include \"media/ffmpeg/Handles.h\"\n",
    "tests/Clip.h": "#include \"media/ffmpeg/Handles.h\"\n",
    "tests/codec/SpriteTest.cpp": "#include <gtest/gtest.h>\n#include \"../Clip.h\"\n#include \"conversion/Run.h\"\n",
}

# File, text (added to the good tree), and a part of the expected message.
BAD = (
    ("platform/tasks/Clock.cpp", "#include \"codec/Sprite.h\"\n", "platform/tasks/ may not include codec/Sprite.h"),
    ("codec/Codec.cpp", "#include \"format/Writer.h\"\n", "codec/ may not include format/Writer.h"),
    ("codec/Codec.cpp", "  #  include   <format/Writer.h>\n", "codec/ may not include format/Writer.h"),
    ("cli/Play.cpp", "#include \"player/Player.h\"\n", "cli/ may not include player/Player.h"),
    ("platform/Loose.h", "", "no row of ROOMS covers its folder"),
    ("platform/base/Error.h", "#include \"platform/tasks/MainActor.h\"\n", "platform/base/ may not include"),
    ("media/Media.h", "#include \"platform/settings/UserDefaults.h\"\n", "media/ may not include platform/settings/"),
    ("conversion/plan/Plan.h", "#include \"conversion/model/Model.h\"\n", "conversion/ may not include conversion/model/"),
    ("conversion/run/Run.h", "#include \"conversion/comparison/Comparison.h\"\n",
     "conversion/ may not include conversion/comparison/"),
    ("ui/model/Score.h", "#include \"conversion/comparison/Comparison.h\"\n", "ui/ may not include conversion/comparison/"),
    ("cli/encode/Job.h", "#include \"conversion/model/Model.h\"\n", "cli/ may not include conversion/model/Model.h"),
    ("player/Sound.h", "#include \"media/Library.h\"\n", "player/ may not include media/Library.h"),
    ("media/Media.h", "#include <libavutil/rational.h>\n", "FFmpeg may be used in"),
    ("conversion/Job.cpp", "#include \"media/ffmpeg/Handles.h\"\n", "brings FFmpeg along"),
    ("cli/Job.cpp", "#include \"media/reading/Wrapped.h\"\n", "brings FFmpeg along"),
    ("conversion/Scale.cpp", "#include <zimg++.hpp>\n", "zimg may be used in"),
    ("media/Media.cpp", "#include <QtCore/QString>\n", "Qt may be used in"),
    ("codec/Codec.cpp", "#include <unistd.h>\n", "the operating system may be used in"),
    ("format/Writer.cpp", "#include \"Writer.h\"\n", "must be written as a path from the root"),
    ("format/Writer.cpp", "#include \"../codec/Sprite.h\"\n", "must be written as a path from the root"),
    ("tests/codec/RLE2Test.cpp", "#include \"Missing.h\"\n", "Missing.h is neither"),
    ("cli/main.cpp", "#include <CLI/App.hpp>\n", "CLI11 may be used in cli/Program.cpp only"),
    ("format/Writer.cpp", "#include <boost/endian.hpp>\n", "boost/endian.hpp is neither"),
)

ENGLISH = '// A comment\n"size" = "%lld × %@, 100 %%";\n"hello \\"you\\"" = "x";\n'
GERMAN = '"size" = "%2$@ mal %1$lld";\n"hello \\"you\\"" = "y";\n'
CODE = 'auto text = localizedText(\n    "size", {1, name});\n'


def check(script, files):
    """Runs a check on a folder with these files. Returns its exit code and lines."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, "utf-8")
        run = subprocess.run([sys.executable, SCRIPTS / script, folder], capture_output=True, text=True, check=False)
        return run.returncode, (run.stdout + run.stderr).splitlines()


def check_strings(english=ENGLISH, german=GERMAN, code=CODE, qml="Label { text: localizedText(\"size\") }\n"):
    return check("check_strings.py", {"resources/strings/en.strings": english, "resources/strings/de.strings": german,
                                      "ui/Window.cpp": code, "ui/qml/Window.qml": qml})


class Checks(unittest.TestCase):
    def test_good_trees_pass(self):
        for files in (GOOD, {**GOOD, "codec/A.cpp": "// #include \"cli/x.h\"\n/*\n#include <QString>\n*/\n"}):
            self.assertEqual(check("check_includes.py", files)[0], 0)
        self.assertEqual(check("check_includes.py", {"README.md": ""})[0], 2, "nothing to check is no success")
        self.assertEqual(check_strings()[0], 0)

    def test_reports_each_wrong_include_alone(self):
        for name, text, complaint in BAD:
            with self.subTest(file=name, text=text):
                code, lines = check("check_includes.py", {**GOOD, name: text})
                self.assertEqual((code, len(lines)), (1, 1), lines)
                self.assertTrue(lines[0].startswith(f"{name}:1: "), lines[0])
                self.assertIn(complaint, lines[0])

    def test_reports_every_wrong_string(self):
        for expected, arguments in {
            'de: no text for "size"': {"german": '"hello \\"you\\"" = "y";\n'},
            'en: no text for "more", which de has': {"german": GERMAN + '"more" = "";\n'},
            'de: "size" takes': {"german": GERMAN.replace("%1$lld", "%1$f")},
            'ui/Window.cpp:2: no table has "sizes"': {"code": '\nlocalizedText("sizes")'},
            'ui/Window.cpp:1: no table has "error_lost"': {"code": 'throw Error(2, {"error_lost"});'},
            'ui/Window.cpp:1: no table has "warning_x_format"': {"code": 'const char* key = "warning_x_format";'},
            'en: nothing names "error_gone"': {"english": ENGLISH + '"error_gone" = "";\n',
                                               "german": GERMAN + '"error_gone" = "";\n'},
            'ui/qml/Window.qml:1: no table has "colour"': {"qml": 'text: localizedText("colour", [1])'},
        }.items():
            code, lines = check_strings(**arguments)
            self.assertEqual(code, 1, expected)
            self.assertTrue(lines[0].startswith(expected), lines)


if __name__ == "__main__":
    unittest.main()
