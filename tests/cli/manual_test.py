#!/usr/bin/env python3
"""Checks the manual page and the completions against the program that they describe.

    manual_test.py ZEB ZEB_MANUAL

The expected options come from the program's help, so the test does not depend on the generator. The bash completion
is called as bash calls it. Other shells and groff check the syntax of their files if they are installed.
"""

import functools
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

ZEB, GENERATOR = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
TEMPORARY = tempfile.TemporaryDirectory()
FOLDER = pathlib.Path(TEMPORARY.name)


def run(*words, **options):
    return subprocess.run(words, capture_output=True, text=True, timeout=60, **options)


@functools.cache
def options_of(*command):
    help_text = run(ZEB, *command, "--help").stdout
    return set(re.findall(r"^ +(?:-\w,)?(--[\w-]+)", help_text, re.MULTILINE))


@functools.cache
def commands():
    return re.findall(r"^  (\w+) ", run(ZEB, "--help").stdout.split("Subcommands:")[1].split("\n\n")[0],
                      re.MULTILINE)


def completions(folder, *words):
    """Returns the completions that bash offers for the last of `words`."""
    script = """source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zeb
                ((${#COMPREPLY[@]} == 0)) || printf '%s\\n' "${COMPREPLY[@]}" """
    result = run("bash", "--norc", "-c", script, "bash", FOLDER / "zeb.bash", "zeb", *words, cwd=folder)
    assert result.returncode == 0 and not result.stderr, result
    return set(result.stdout.splitlines())


class ManualTest(unittest.TestCase):
    def test_every_option_is_documented_everywhere(self):
        manual = (FOLDER / "zeb.1").read_text().replace("\\-", "-")
        bash, zsh, fish = ((FOLDER / name).read_text() for name in ("zeb.bash", "_zeb", "zeb.fish"))
        self.assertIn("encode", commands())
        for command in commands():
            options = options_of(command)
            self.assertGreater(len(options), 0)
            page = manual.split(f".SS {command}\n")[1].split("\n.S")[0]
            zsh_part = zsh.split(f" {command})\n")[1].split(";;")[0]
            bash_part = bash.split(f"'{command}') echo '")[1].split("'")[0].split()
            for option in options:
                with self.subTest(command=command, option=option):
                    self.assertIn(f"\\fB{option}\\fR", page)
                    self.assertRegex(zsh_part, rf"\){option}=?\[")
                    self.assertIn(option, bash_part)
                    self.assertRegex(fish, rf"from {command}'.* -l {option[2:]} ")

    def test_bash_completes_commands_options_files(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "films").mkdir()
            for file in ("a.zeb", "B.ZEB", "clip one.mp4", "-odd.mp4"):
                (folder / file).touch()
            movies, files = {"a.zeb", "B.ZEB", "films"}, {"a.zeb", "B.ZEB", "films", "clip one.mp4", "-odd.mp4"}
            table = (
                (("",), {*commands(), *options_of(), "-h"}),
                (("encode", "--st"), {"--stretch"}),
                (("encode", "--mode", ""), {"32", "4"}),
                (("encode", "--mode", "=", "3"), {"32"}),
                (("encode", "--mode", "="), {"32", "4"}),
                (("encode", "--fps", ""), set()),
                (("encode", "--title", "--mode", ""), files),  # the title is "--mode"
                (("encode", "a.zeb", "--output", "f"), {"films"}),
                (("encode", "cl"), {"clip one.mp4"}),
                (("encode", "--", "-"), {"-odd.mp4"}),
                (("info", ""), movies),
                (("info", "--mode", ""), movies),  # no option of this command
                (("unknown", ""), set()),
            )
            for words, expected in table:
                with self.subTest(words=words):
                    self.assertEqual(completions(folder, *words), expected)

    def test_program_accepts_every_example(self):
        page = (FOLDER / "zeb.1").read_text().replace("\\-", "-")
        examples = re.findall(r"^\.EX\nzeb (.*)$", page.split(".SH EXAMPLES")[1], re.MULTILINE)
        self.assertGreaterEqual(len(examples), len(commands()))
        with tempfile.TemporaryDirectory() as folder:
            for example in examples:
                with self.subTest(example=example):
                    # The files do not exist. The program reports this only after parsing all options.
                    result = run(ZEB, *shlex.split(example), cwd=folder)
                    self.assertEqual(result.returncode, 3, result.stderr)

    def test_argument_descriptions_are_whole_lines(self):
        manual, zsh = (FOLDER / "zeb.1").read_text(), (FOLDER / "_zeb").read_text()
        for lines in (
            "\\fBzeb\\fR \\fBencode\\fR [\\fIoption\\fR ...] \\fIINPUT\\fR ...\n",
            "\\fBzeb\\fR \\fBexport\\fR [\\fIoption\\fR ...] \\fB\\-o\\fR \\fIOUT\\fR \\fIFILE\\fR\n",
            ".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nPrint this help and exit.\n",
            ".TP\n\\fIINPUT\\fR ...\nVideo files; ",
            "\n\\fIN\\fR is a whole number from 1 to 65535.\n",
            "\nNot together with \\fB\\-\\-frame\\fR, \\fB\\-\\-at\\fR.\n",
        ):
            self.assertIn(lines, manual)
        self.assertNotIn("--", manual)
        self.assertEqual(set(re.findall(r"^\\fI[A-Z]+\\fR is (a \w+|.*)", manual, re.MULTILINE)), 
                         {"a whole", "a time", "a number", "none, auto or WxH+X+Y.",
                          "square, ql or W:H with numbers from 1 to 100."})
        # Sentences end with one full stop. Paragraphs and tables are not empty and are closed.
        self.assertIsNone(re.search(r"[^.]\.\.\n|\n\.PP\n\.(PP|SS|SH|TP)", manual))
        self.assertEqual(re.findall(r"^\.E[EX]$", manual, re.MULTILINE),
                         [".EX", ".EE"] * manual.count("\n.EX\n"))
        for line in ("'1: :->command'", "'*:: :->arguments'", "'*:INPUT:_files'", "'1:INPUT:_files ",
                     "'2:OUTPUT:_files'"):
            self.assertIn(line, zsh)
        self.assertEqual(len(re.findall(r"^ +'[*\d]:[A-Z]+:", zsh, re.MULTILINE)), len(commands()) + 2)

    def test_page_and_completions_are_complete(self):
        manual, zsh = (FOLDER / "zeb.1").read_text(), (FOLDER / "_zeb").read_text()
        self.assertEqual(re.findall(r"^\.SH (.*)$", manual, re.MULTILINE),
                         ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "EXIT STATUS", "ENVIRONMENT", "EXAMPLES"])
        help_text = run(ZEB, "--help").stdout
        summary = help_text.splitlines()[0]
        self.assertIn(f".SH NAME\nzeb \\- {summary[0].lower()}{summary[1:].rstrip('.')}\n", manual)
        self.assertIn(f".SH DESCRIPTION\n{summary}\n", manual)
        codes = re.findall(r"^  (\d+) +(.*)$", help_text.split("Exit codes:\n")[1], re.MULTILINE)
        self.assertEqual(re.findall(r"^\.TP\n\\fB(\d+)\\fR\n(.*)\.$", manual, re.MULTILINE),
                         [(code, text[0].upper() + text[1:]) for code, text in codes])
        # Each example appears once, with its description.
        examples = re.findall(r"^\.PP\n(.*)\n\.PP\n\.RS 4\n\.EX\n(.*)$", manual, re.MULTILINE)
        self.assertEqual(len(examples), len(dict(examples)))
        self.assertEqual(len(examples), 10)
        offered = re.findall(r"^ {8}'(\w+):(.*)'$", zsh.split("commands=(")[1].split("\n    )")[0], re.MULTILINE)
        self.assertEqual(offered, re.findall(r"^  (\w+) +(.*)$", help_text.split("Subcommands:\n")[1].split("\n\n")[0],
                                             re.MULTILINE))
        for line in ("--output=[The movie, or", "-o+[The movie, or", "the input'\\''s name"):
            self.assertIn(line, zsh)

    def test_shells_and_groff_accept_syntax(self):
        checks = ((("bash", "-n"), "zeb.bash"), (("zsh", "-n"), "_zeb"), (("fish", "--no-execute"), "zeb.fish"),
                  (("groff", "-man", "-Tutf8", "-ww"), "zeb.1"))
        for words, file in checks:
            if shutil.which(words[0]):
                with self.subTest(file=file):
                    result = run(*words, FOLDER / file)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    subprocess.run([GENERATOR, FOLDER], check=True)
    unittest.main(argv=sys.argv[:1])
