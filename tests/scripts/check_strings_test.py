"""Feeds the check of the string tables small trees with one fault each: it must find every one."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check_strings.py"

ENGLISH = '// A comment\n"size" = "%lld × %@, 100 %%";\n"hello \\"you\\"" = "x";\n'
GERMAN = '"size" = "%2$@ mal %1$lld";\n"hello \\"you\\"" = "y";\n'
CODE = 'auto text = localizedText(\n    "size", {1, name});\n'


class StringCheck(unittest.TestCase):
    def check(self, german=GERMAN, code=CODE, qml="Label { text: localizedText(\"size\") }\n"):
        with tempfile.TemporaryDirectory() as folder:
            files = {"resources/strings/en.strings": ENGLISH, "resources/strings/de.strings": german,
                     "ui/Window.cpp": code, "ui/qml/Window.qml": qml}
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, "utf-8")
            run = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
            return run.returncode, run.stdout

    def test_good(self):
        self.assertEqual(self.check()[0], 0, self.check()[1])

    def test_faults(self):
        for expected, arguments in {
            'de: no text for "size"': {"german": '"hello \\"you\\"" = "y";\n'},
            'en: no text for "more", which de has': {"german": GERMAN + '"more" = "";\n'},
            'de: "size" takes': {"german": GERMAN.replace("%1$lld", "%1$f")},
            'ui/Window.cpp:2: no table has "sizes"': {"code": '\nlocalizedText("sizes")'},
            'ui/qml/Window.qml:1: no table has "colour"': {"qml": 'text: localizedText("colour", [1])'},
        }.items():
            code, output = self.check(**arguments)
            self.assertEqual(code, 1, expected)
            self.assertTrue(output.startswith(expected), output)


if __name__ == "__main__":
    unittest.main()
