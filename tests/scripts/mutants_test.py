"""Checks which changes scripts/mutants.py finds in a source, and that the source with all changes compiles and runs."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
sys.dont_write_bytecode = True

import mutant_sources
import mutants

# A function body and the changes found in it. A number may be increased or decreased by one.
CASES = (
    ("return a - b - c < 5;", "a - b -> a + b", "a - b - c -> a - b + c", "a - b - c < 5 -> a - b - c <= 5",
     "5 -> 5±1"),
    ("if (a && !b) c = a | b;", "a && !b -> !(a && !b)", "a && !b -> a || !b", "!b -> static_cast<bool>(b)",
     "c = a | b; ->", "a | b -> a & b"),
    ("if (a == b) return;  // a < b", "a == b -> a != b", "return; ->"),
    ("std::vector<std::array<int, 4>> list; f(list[a * b]);", "f(list[a * b]); ->", "a * b -> a + b"),
    ("constexpr int most = 4 + 5; static_assert(a < b); enum { x = 1 };",),
    ("switch (a) { case 3: f(); break; default: ++b; }", "f(); ->", "break; ->", "++b; ->", "++b -> --b"),
    ("for (int x = 0; x > a; x += b) c -= 2;", "0 -> 1", "x > a -> !(x > a)", "x > a -> x >= a", "x += b -> x -= b",
     "c -= 2; ->", "c -= 2 -> c += 2", "2 -> 2±1"),
    ("int x = a ? 0xFF : 1.5; throw x;", "a -> !(a)", "0xFF -> 0xFF±1", "1.5 -> 1.875"),
    ("x = std::max<int>(a, b) << c;", "x = std::max<int>(a, b) << c; ->", "std::max<int>(a, b) -> std::min<int>(a, b)",
     "std::max<int>(a, b) << c -> std::max<int>(a, b) >> c"),
    ("auto text = \"a < b\" + name; char x = 'y';", "'y' -> decltype('y')('y' + 1)"),
)
RUNNABLE = """int f(int a, int b) {
    int c = 0;
    if (a < b && b > 0) c = a * b;
    for (int x = 0; x < 3; ++x)
        c += x;
    return c;
}
constexpr bool isSmall(int a) { return a < 4; }
int main() { static_assert(isSmall(3)); return !(f(2, 5) == 13 && isSmall(3) && !isSmall(4)); }
"""


def found_in(text):
    return mutant_sources.find_mutants("a.cpp", text, 1)


class MutantsTest(unittest.TestCase):
    def test_finds_changes_in_function_body(self):
        for body, *expected in CASES:
            with self.subTest(body):
                found = set()
                for mutant in found_in(f"void function() {{\n    {body}\n}}\n"):
                    self.assertEqual(mutant.line, 2)
                    new = mutant.changed
                    if mutant.kind == "constant" and f"{mutant.original} -> {mutant.original}±1" in expected:
                        self.assertEqual(abs(int(new, 0) - int(mutant.original, 0)), 1)
                        new = f"{mutant.original}±1"
                    found.add(f"{mutant.original} -> {new}".strip())
                self.assertEqual(found, set(expected))

    @unittest.skipUnless(shutil.which("c++"), "there is no compiler")
    def test_switches_changes_at_run_time(self):
        changes = found_in(RUNNABLE)
        for number, mutant in enumerate(changes, 1):
            mutant.number = number
        with tempfile.TemporaryDirectory() as folder:
            rendered = mutant_sources.render(RUNNABLE, changes)
            pathlib.Path(folder, "a.cpp").write_text(rendered)
            pathlib.Path(folder, "zeb_mutant.h").write_text(mutants.HEADER)
            subprocess.run(["c++", "-std=c++20", "-w", "a.cpp", "-o", "a"], cwd=folder, check=True)
            codes = [subprocess.run(["timeout", "2", f"{folder}/a"], env={"ZEB_MUTANT": str(number)}).returncode
                     for number in range(len(changes) + 1)]
        self.assertEqual(codes[0], 0)
        unnoticed = [changes[number - 1] for number in range(1, len(codes)) if codes[number] == 0]
        self.assertEqual([f"{mutant.original} -> {mutant.changed}" for mutant in unnoticed], [
            "0 -> 1", "a < b -> a <= b", "a < b && b > 0 -> a < b || b > 0", "b > 0 -> b >= 0", "0 -> 1", "0 -> 1",
            "f(2, 5) == 13 && isSmall(3) -> f(2, 5) == 13 || isSmall(3)",
            "f(2, 5) == 13 && isSmall(3) && !isSmall(4) -> f(2, 5) == 13 && isSmall(3) || !isSmall(4)", "4 -> 5"])
        lines = rendered.split("\n")[2:]
        line = next(number for number, text in enumerate(lines) if "a + b" in text)
        blamed = mutant_sources.owners(rendered, line + 1, lines[line].index("a + b") + 1)
        self.assertEqual([changes[number - 1].changed for number in blamed], ["a + b"])


if __name__ == "__main__":
    unittest.main()
