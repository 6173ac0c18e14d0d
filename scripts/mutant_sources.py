"""Finds small changes in C++ sources and writes sources in which each change can be enabled at run time.

The sources are read as tokens. Spaces distinguish binary operators from template brackets, so the sources must be
formatted by `.clang-format`. The caller drops changes that do not compile.
"""

import dataclasses
import random
import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
    |(?P<directive>\#(?:\\\n|[^\n])*)
    |(?P<string>R"(?P<mark>[^()\\\s]*)\(.*?\)(?P=mark)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
    |(?P<char>'(?:\\.|[^'\\\n])+')
    |(?P<number>\d(?:[eE][+-]|'?[\w.])*)
    |(?P<name>[A-Za-z_]\w*)
    |(?P<space>\s+)
    |(?P<sign><<=|>>=|<=>|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)""",
    re.VERBOSE | re.DOTALL,
)

PRECEDENCE = {
    "*": 13, "/": 13, "%": 13, "+": 12, "-": 12, "<<": 11, ">>": 11, "<": 9, ">": 9, "<=": 9, ">=": 9,
    "==": 8, "!=": 8, "&": 7, "^": 6, "|": 5, "&&": 4, "||": 3, "?": 2, ":": 2,
}
ASSIGNMENTS = ("=", "+=", "-=", "*=", "/=", "%=", "<<=", ">>=", "&=", "|=", "^=")
SWAPS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "+": "-", "-": "+", "*": "+", "/": "*",
    "%": "/", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "&", "&&": "||", "||": "&&",
    "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "<<=": ">>=", ">>=": "<<=", "&=": "|=", "|=": "&=",
    "++": "--", "--": "++", "min": "max", "max": "min",
}
OPENING, CLOSING = {"(": ")", "[": "]", "{": "}"}, (")", "]", "}")
# Words that end an operand to their right, and words that cannot begin a droppable statement.
STOPS = ("return", "throw", "case", "else", "do", "co_return", "new", "delete")
NO_STATEMENT = (
    "if", "for", "while", "switch", "case", "default", "else", "do", "try", "catch", "using", "typedef",
    "const", "constexpr", "static", "auto", "struct", "class", "enum", "template", "assert", "Q_ASSERT", "Q_UNUSED",
    "static_assert", "static_cast", "public", "private", "protected", "explicit", "friend", "extern", "union",
)
UNEVALUATED = ("static_assert", "sizeof", "decltype", "alignas", "noexcept", "assert", "Q_ASSERT")


@dataclasses.dataclass
class Mutant:
    """One change: the text from `start` to `end` becomes `changed`, which is empty for a dropped statement."""

    path: str
    kind: str
    line: int
    start: int
    end: int
    original: str
    changed: str
    in_constexpr: bool
    number: int = 0

    def switch(self):
        ask = f"zeb_mutant({self.number})"
        return f"(!std::is_constant_evaluated() && {ask})" if self.in_constexpr else ask


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    blank_before: bool
    blank_after: bool

    def is_binary(self):
        return self.blank_before and self.blank_after and self.text in PRECEDENCE


class Source:
    """The tokens and brackets of a file, and which of its parts are executable code."""

    def __init__(self, path, text):
        self.path, self.text = path, text
        self.tokens = []
        for match in TOKEN.finditer(text):
            if match.lastgroup in ("comment", "directive", "space"):
                continue
            start, end = match.span()
            kind = "string" if match.lastgroup == "mark" else match.lastgroup
            self.tokens.append(Token(kind, match[0], start, end, text[start - 1 : start].isspace(),
                                     text[end : end + 1].isspace()))
        self.partner, self.around = {}, {}
        # tokens that must not change, tokens of constexpr functions
        self.fixed, self.in_constexpr = set(), set()
        self._match_brackets()
        self._find_fixed()

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _match_brackets(self):
        opened = []
        for index, token in enumerate(self.tokens):
            if token.kind == "sign" and token.text in CLOSING and opened:
                first = opened.pop()
                self.partner[first], self.partner[index] = index, first
            self.around[index] = opened[-1] if opened else None
            if token.kind == "sign" and token.text in OPENING:
                opened.append(index)

    def _find_fixed(self):
        for index, token in enumerate(self.tokens):
            word = token.text
            if word in UNEVALUATED and self.word(index + 1) == "(":
                self._fix(index, self.partner[index + 1])
            elif word == "constexpr":
                self._find_fixed_by_constexpr(index)
            elif word in ("case", "using", "extern"):
                self._fix(index, self.end_of(index, (":", ";")))
            elif word == "enum" and (body := self.end_of(index, ("{", ";"))) in self.partner:
                self._fix(index, self.partner[body])
            elif word == "<" and not token.is_binary():
                self._fix(index, self.closing_angle(index))

    def _find_fixed_by_constexpr(self, index):
        if self.word(index - 1) == "if":
            self._fix(index, self.partner[index + 1])
            return
        end = self.end_of(index, ("=", ";", "{", "("))
        if self.word(end) == "(":
            end = self.end_of(self.partner[end] + 1, (";", "{"))
            if self.word(end) == "{":
                self.in_constexpr.update(range(end, self.partner[end]))
                return
        self._fix(index, self.end_of(index, (";",)))

    def _fix(self, first, last):
        self.fixed.update(range(first, last + 1))

    def end_of(self, index, ends):
        """Returns the next token of `ends` outside of nested brackets."""
        while index < len(self.tokens) and self.word(index) not in ends:
            index = self.partner.get(index, index) + 1 if self.word(index) in OPENING else index + 1
        return index

    def closing_angle(self, index):
        depth = 0
        for at in range(index, min(index + 60, len(self.tokens))):
            word = self.word(at)
            depth += {"<": 1, ">": -1, ">>": -2}.get(word, 0) if not self.tokens[at].is_binary() else 0
            if depth <= 0:
                return at
            if word in (";", "{", "}"):
                break
        return index

    def holds_code(self, brace):
        """Returns whether the brackets that open at `brace` contain statements."""
        if brace is None or self.word(brace) != "{":
            return False
        before, blank = self.word(brace - 1), self.tokens[brace].blank_before
        if before in (")", "]", "const", "noexcept", "override", "else", "do", "try", "mutable", ":"):
            return blank
        if before in (";", "{", "}"):
            return self.holds_code(self.around[brace]) or (before == "}" and blank)
        head = brace - 1
        while head > 0 and self.word(head) not in (";", "{", "}", "->"):
            head = self.partner[head] - 1 if self.word(head) in CLOSING else head - 1
        return blank and self.word(head) == "->"

    def closes_head(self, index):
        """Returns whether a bracket closes the head of a branch or loop."""
        return self.word(index) == ")" and self.word(self.partner[index] - 1) in ("if", "for", "while", "constexpr")

    def left_operand(self, index, precedence):
        """Returns the first token of the left operand of the operator at `index`."""
        at = index - 1
        while at >= 0:
            token = self.tokens[at]
            if token.text in CLOSING and token.kind == "sign":
                if token.text == "}" and self.tokens[self.partner[at]].blank_before or self.closes_head(at):
                    break
                at = self.partner[at] - 1
                continue
            if token.text in (*OPENING, ";", ",", *ASSIGNMENTS, *STOPS) or self._ends(at, precedence - 1):
                break
            at -= 1
        return at + 1

    def right_operand(self, index, precedence):
        """Returns the last token of the right operand of the operator at `index`."""
        at = index + 1
        while at < len(self.tokens):
            word = self.word(at)
            if word in OPENING and self.tokens[at].kind == "sign":
                if word == "{" and self.tokens[at].blank_before:
                    break
                at = self.partner[at] + 1
                continue
            if word in CLOSING or word in (";", ",", *ASSIGNMENTS) or self._ends(at, precedence):
                break
            at += 1
        return at - 1

    def _ends(self, at, precedence):
        token = self.tokens[at]
        if token.text == ":":
            return True
        return token.is_binary() and PRECEDENCE[token.text] <= precedence


def find_mutants(path, text, seed):
    """Returns all changes of a source in the order of their positions."""
    source = Source(path, text)
    found = []

    def add(kind, first, last, changed, place=None):
        start, end = source.tokens[first].start, source.tokens[last].end
        line = text.count("\n", 0, source.tokens[first if place is None else place].start) + 1
        if first <= last and (first if place is None else place) not in source.fixed:
            found.append(Mutant(path, kind, line, start, end, text[start:end], changed, first in source.in_constexpr))

    def piece(first, last):
        return text[source.tokens[first].start : source.tokens[last].end] if first <= last else ""

    def swapped(first, last, place, new):
        token = source.tokens[place]
        return text[source.tokens[first].start : token.start] + new + text[token.end : source.tokens[last].end]

    for index, token in enumerate(source.tokens):
        word = token.text
        if token.kind == "number":
            if changed := other_number(word, random.Random(f"{seed} {path} {token.start}")):
                add("constant", index, index, changed)
        elif token.kind == "char":
            add("constant", index, index, f"decltype({word})({word} + 1)")
        elif word in ("true", "false"):
            add("constant", index, index, "false" if word == "true" else "true")
        elif word in ("min", "max") and source.word(index - 1) == "::" and source.word(index - 2) == "std":
            at = index + 1
            if source.word(at) == "<":
                at = source.closing_angle(at) + 1
            if source.word(at) == "(":
                last = source.partner[at]
                add("operator", index - 2, last, swapped(index - 2, last, index, SWAPS[word]), index)
        elif word in SWAPS and token.is_binary():
            precedence = PRECEDENCE[word]
            first, last = source.left_operand(index, precedence), source.right_operand(index, precedence)
            if any(part.kind == "string" for part in source.tokens[first : last + 1]) and word in ("+", "<<"):
                continue  # string concatenation, not an addition
            add("operator", first, last, swapped(first, last, index, SWAPS[word]), index)
        elif word in SWAPS and word in ASSIGNMENTS:
            first, last = source.left_operand(index, 1), source.right_operand(index, 1)
            add("operator", first, last, swapped(first, last, index, SWAPS[word]), index)
        elif word in ("++", "--"):
            if source.tokens[index + 1].kind == "name" and not token.blank_after:
                last = postfix_end(source, index + 1)
                add("operator", index, last, swapped(index, last, index, SWAPS[word]), index)
            elif source.tokens[index - 1].kind == "name":
                add("operator", index - 1, index, swapped(index - 1, index, index, SWAPS[word]), index)
        elif word == "!" and not token.blank_after:
            last = postfix_end(source, index + 1)
            add("operator", index, last, f"static_cast<bool>({piece(index + 1, last)})", index)
        elif word == "?" and token.is_binary():
            add_condition(source, add, source.left_operand(index, 2), index - 1)
        elif word in ("if", "while") and source.word(index + 1) == "(":
            add_condition(source, add, index + 2, source.partner[index + 1] - 1)
        elif word == "for" and source.word(index + 1) == "(":
            first = source.end_of(index + 2, (";", ")"))
            if source.word(first) == ";":
                add_condition(source, add, first + 1, source.end_of(first + 1, (";", ")")) - 1)
        last = statement_end(source, index)
        if last is not None:
            add("statement", index, last, "")
    return found


def add_condition(source, add, first, last):
    """Negates a condition, unless changing its only operator has the same effect."""
    words = [source.word(at) for at in range(first, last + 1)]
    if not words or ";" in words or "=" in words:
        return
    binary = {source.word(at) for at in range(first, last + 1) if source.tokens[at].is_binary()}
    if words[0] == "!" and not binary & {"&&", "||"} or binary & {"==", "!="} and not binary & {"&&", "||", "?"}:
        return
    add("condition", first, last, f"!({source.text[source.tokens[first].start:source.tokens[last].end]})")


def postfix_end(source, index):
    """Returns the last token of the name, call or member at `index`."""
    at = index
    while at < len(source.tokens):
        word, token = source.word(at), source.tokens[at]
        if word in ("(", "["):
            at = source.partner[at] + 1
        elif word == "<" and not token.is_binary() and source.closing_angle(at) > at:
            at = source.closing_angle(at) + 1
        elif word in ("::", ".", "->") or token.kind in ("name", "number") or (word in "*!" and at == index):
            at += 1
        else:
            break
        if word in CLOSING or (at < len(source.tokens) and source.tokens[at].blank_before):
            break
    return at - 1


def statement_end(source, index):
    """Returns the last token of the statement that begins at `index`, if the statement can be dropped."""
    if not source.holds_code(source.around[index]) or source.word(index) in NO_STATEMENT:
        return None
    before = source.word(index - 1)
    if not (
        before in (";", "{", "else", "do")
        or before == "}" and source.tokens[source.partner[index - 1]].blank_before
        or source.closes_head(index - 1)
        or before == ":" and (source.word(index - 2) == "default" or index - 2 in source.fixed)
    ):
        return None
    token = source.tokens[index]
    end = source.end_of(index, (";", "}", ")"))
    if end >= len(source.tokens) or source.word(end) != ";" or end == index:
        return None
    if token.text == "return":
        return end if end == index + 1 else None
    if token.text == "throw":  # not the last statement: the function would not return a value
        return None if source.word(end + 1) == "}" and not closes_branch(source, end + 1) else end
    if token.text in ("break", "continue", "emit", "Q_EMIT"):
        return end
    if token.kind == "name":
        at = index
        while source.tokens[at].kind == "name" or source.word(at) == "::" or source.word(at) == "<":
            if source.word(at) == "<":
                if source.closing_angle(at) == at:
                    break
                at = source.closing_angle(at)
            at += 1
            if source.tokens[at].kind == "name" and source.word(at - 1) != "::":
                return None
        if source.word(at) in ("*", "&", "&&") and source.tokens[at].blank_before != source.tokens[at].blank_after:
            return None
        return end
    return end if token.text in ("++", "--", "*", "(", "::") else None


def closes_branch(source, brace):
    """Returns whether a closing brace ends a branch or loop rather than a function."""
    first = source.partner[brace]
    return source.closes_head(first - 1) or source.word(first - 1) in ("else", "do")


def other_number(word, choice):
    """Returns a nearby number in the same notation."""
    match = re.fullmatch(r"(0[xX][\da-fA-F']+|0[bB][01']+|\d[\d']*(?:\.\d*)?(?:[eE][+-]?\d+)?)(\w*)", word)
    if not match:
        return None
    digits, suffix = match[1].replace("'", ""), match[2]
    if digits[:2] in ("0x", "0X"):
        return f"0x{int(digits, 16) + choice.choice((1, -1) if int(digits, 16) else (1,)):X}{suffix}"
    if digits[:2] in ("0b", "0B"):
        return f"0b{int(digits, 2) + 1:b}{suffix}"
    if re.search(r"[.eE]", digits):
        value = float(digits)
        return f"{value + 1 if value == int(value) else value * 1.25!r}{suffix}"
    value = int(digits, 8 if digits[0] == "0" and len(digits) > 1 else 10)
    return f"{value + choice.choice((1, -1) if value else (1,))}{suffix}"


def render(text, mutants):
    """Returns the source in which each mutant can be enabled, between marks that `owners` uses."""
    return '#include "zeb_mutant.h"\n#line 1\n' + _render(text, 0, len(text), sorted(
        mutants, key=lambda mutant: (mutant.start, -mutant.end, mutant.kind != "statement", mutant.number)))


def _render(text, first, last, mutants):
    pieces, position = [], first
    while mutants:
        mutant, *others = mutants
        inner = [other for other in others if other.start < mutant.end]
        mutants = others[len(inner) :]
        pieces.append(text[position : mutant.start])
        body = _render(text, mutant.start, mutant.end, [other for other in inner if other.end <= mutant.end])
        ask, begin, end = mutant.switch(), f"/*M{mutant.number}*/", f"/*E{mutant.number}*/"
        if mutant.kind == "statement":
            pieces.append(f"{{ {begin}if (!{ask}){end} {body} }}")
        elif mutant.kind == "condition":
            pieces.append(f"{begin}({ask} != static_cast<bool>({end}{body}))")
        else:
            pieces.append(f"{begin}({ask} ? ({mutant.changed}) : {end}({body}))")
        position = mutant.end
    pieces.append(text[position:last])
    return "".join(pieces)


def owners(rendered, line, column):
    """Returns the numbers of the mutants that cause a compiler error at a position of a rendered source."""
    lines = rendered.split("\n")[2:]  # skip the lines before #line
    if not 0 < line <= len(lines):
        return set()
    place = sum(len(text) + 1 for text in lines[: line - 1]) + column - 1
    body = "\n".join(lines)
    marks = [(match.start(), match[1], int(match[2])) for match in re.finditer(r"/\*([ME])(\d+)\*/", body)]
    opened = []
    for start, mark, number in marks:
        if start > place:
            break
        opened.append(number) if mark == "M" else number in opened and opened.remove(number)
    if opened:
        return {opened[-1]}
    return {int(number) for number in re.findall(r"/\*M(\d+)\*/", lines[line - 1])}
