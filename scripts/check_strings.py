#!/usr/bin/env python3
"""Checks the string tables in resources/strings/ against each other and against the code.

    check_strings.py [ROOT]

Prints one line per error; exits with 1 if there is one, with 2 if there is nothing to check:

- a key that is missing in one of the languages;
- a text whose specifiers require other arguments than the text of the first language (en);
- a key that code or QML uses (`localizedText("key"...`) or passes on ("error_..." and "warning_..." anywhere)
  and that is in no table;
- a key "error_..." or "warning_..." of the first language that is not used.
"""

import pathlib
import re
import sys

ENTRY = re.compile(r'^"((?:[^"\\]|\\.)*)"\s*=\s*"((?:[^"\\]|\\.)*)";', re.MULTILINE)
SPECIFIER = re.compile(r"%(?:(%)|(?:(\d+)\$)?(?:\.\d+)?(lld|f|@))")
USE = re.compile(r'\blocalizedText\(\s*"((?:[^"\\]|\\.)*)"')
HANDED_ON = re.compile(r'"((?:error|warning)_[a-z0-9_]+)"')
ROOMS = ("platform", "media", "codec", "format", "conversion", "player", "ui", "app", "cli")
FIRST = "en"


def specifiers(text):
    """Returns the type that a text requires for each argument, by position; an error text if it is inconsistent."""
    wanted, following = {}, 1
    for percent, position, kind in SPECIFIER.findall(text):
        if percent:
            continue
        if position:
            index = int(position)
        else:
            index, following = following, following + 1
        if wanted.setdefault(index, kind) != kind:
            return f"argument {index} as two types"
    return wanted


def faults(root):
    tables = {path.stem: dict(ENTRY.findall(path.read_text("utf-8")))
              for path in sorted((root / "resources/strings").glob("*.strings"))}
    if FIRST not in tables or not tables[FIRST]:
        sys.exit(2)
    first = tables[FIRST]
    for language, table in tables.items():
        for key in sorted(first.keys() - table.keys()):
            yield f"{language}: no text for \"{key}\""
        for key in sorted(table.keys() - first.keys()):
            yield f"{FIRST}: no text for \"{key}\", which {language} has"
        for key, text in table.items():
            wanted = specifiers(text)
            if key in first and wanted != specifiers(first[key]):
                yield f"{language}: \"{key}\" takes {wanted or 'nothing'}, in {FIRST} {specifiers(first[key]) or 'nothing'}"
    named = set()
    for room in ROOMS:
        for path in sorted((root / room).rglob("*")):
            if path.suffix not in (".cpp", ".h", ".qml"):
                continue
            source = path.read_text("utf-8")
            # By the position of the key: both patterns may match the same use.
            uses = {use.start(1): use.group(1) for kind in (USE, HANDED_ON) for use in kind.finditer(source)}
            named.update(uses.values())
            for place, key in sorted(uses.items()):
                if key not in first:
                    line = source.count("\n", 0, place) + 1
                    yield f"{path.relative_to(root)}:{line}: no table has \"{key}\""
    for key in sorted(first.keys() - named):
        if HANDED_ON.fullmatch(f'"{key}"'):
            yield f"{FIRST}: nothing names \"{key}\""


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent
    found = list(faults(root))
    print("\n".join(found) if found else "every text in every language")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
