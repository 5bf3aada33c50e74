"""Finds the places of a C++ source that can be mutated, and puts a switch around each.

Reads tokens, not the language: it relies on the layout of .clang-format, and what it takes for
something else does not compile and is left out by tools/mutate."""

import re
from dataclasses import dataclass

_TOKEN = re.compile(r"""
    (?P<blank>\s+ | //[^\n]* | /\*.*?\*/ | ^[ ]*\#[^\n]*(?:\\\n[^\n]*)*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^(]*)\(.*?\)(?P=mark)")
  | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])*')
  | (?P<number>\d(?:'?[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><=>|<<=|<<|<=|>=|==|!=|[-+*/%&|^]=|->|\+\+|--|&&|\|\||::|.)
""", re.VERBOSE | re.MULTILINE | re.DOTALL)
_CLOSING = {"(": ")", "[": "]", "{": "}"}
_COMPARISONS = {"<": "Less", "<=": "LessOrEqual", ">": "Greater", ">=": "GreaterOrEqual"}
_BOOLEAN = {"<", "<=", ">", ">=", "==", "!=", "&&", "||"}
_NO_STATEMENT = {"using", "static", "const", "constexpr", "auto", "struct", "class", "enum", "throw",
                 "try", "static_assert", "case", "default", "typedef", "else", "do", "public",
                 "private", "protected", "template", "friend", "new", "delete", "goto", "bool", "int"}
_EFFECTS = {"(", ".", "->", "[", "=", "++", "--"}


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    partner: int = -1   # of a bracket, the index of the other one
    inside: int = -1    # the index of the innermost open bracket


@dataclass
class Point:
    kind: str
    start: int          # in the source
    end: int
    before: str         # what stands around the place, with {} for the point's number
    after: str
    change: str         # for the report
    comma: tuple = ()   # of a comparison, the operator's place; it becomes a comma


class Source:
    def __init__(self, text):
        self.text = text
        self.points = []
        self.tokens = list(_tokens(text))
        _pair(self.tokens)
        self.blocks = {i for i, token in enumerate(self.tokens)
                       if token.text == "{" and self._opens_block(i)}
        for index in range(len(self.tokens)):
            self._look_at(index)

    def _at(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def _opens_block(self, index):
        before = self._at(index - 1)
        if before in (")", "else", "do", "try", "const", "override", "noexcept", "mutable", "]"):
            return True
        outer = self.tokens[index].inside
        if before in (";", "{", "}", ":"):
            return outer in getattr(self, "blocks", ()) or before == ":" or self._in_block(index)
        start = index
        while self._at(start - 1) not in (";", "{", "}", ""):
            start -= 1
        words = [self._at(i) for i in range(start, index)]
        return "->" in words and not {"class", "struct", "enum", "namespace", "="} & set(words)

    def _in_block(self, index):
        """Whether a function's braces are around this."""
        index = self.tokens[index].inside
        while index >= 0:
            if self._at(index) == "{" and self._at(index - 1) in (")", "const", "override", "noexcept"):
                return True
            index = self.tokens[index].inside
        return False

    def _begins_statement(self, index):
        outer = self.tokens[index].inside
        if outer not in self.blocks:
            return False
        before = self._at(index - 1)
        if before in (";", "else", "do") or index - 1 == outer:
            return True
        if before == "}":
            return self.tokens[index - 1].partner in self.blocks
        if before == ":":
            return self._line_begin(index - 1) in ("case", "default")
        opening = self.tokens[index - 1].partner
        return before == ")" and self._at(opening - 1) in ("if", "while", "for", "switch")

    def _line_begin(self, index):
        while self._at(index - 1) not in (";", "{", "}", ":", ""):
            index -= 1
            if self._at(index) == "::":
                index -= 1
        return self._at(index)

    def _end_of_statement(self, index):
        while index < len(self.tokens) and self._at(index) != ";":
            partner = self.tokens[index].partner
            index = partner + 1 if partner > index else index + 1
        return index

    def _look_at(self, index):
        token = self.tokens[index]
        if self._begins_statement(index):
            self._take_statement(index)
        elif self._in_block(index) and token.kind in ("number", "character", "string", "name"):
            self._take_constant(index)
        elif token.text == "?" and self._in_block(index):
            self._take_choice(index)

    def _take_statement(self, index):
        first = self._at(index)
        if first in ("if", "while", "for", "switch"):
            if self._at(index + 1) == "(":
                self._take_control(first, index + 2, self.tokens[index + 1].partner)
            return
        end = self._end_of_statement(index)
        if first == "return":
            if end == index + 1:
                self._delete(index, end)
            elif any(text in _BOOLEAN for text in self._top(index + 1, end)) or (
                    self._at(index + 1) in ("!", "true", "false")):
                self._take_condition(index + 1, end)
        elif first in ("break", "continue"):
            self._delete(index, end)
        elif self._is_effect(index, end):
            self._delete(index, end)
            self._take_constant(index)
        elif "bool" in (first, self._at(index + 1)) and "=" in self._top(index, end) and (
                "constexpr" not in (first, self._at(index + 1))):
            begin = next(i for i in range(index, end) if self._at(i) == "=") + 1
            self._take_condition(begin, end)

    def _take_control(self, keyword, begin, end):
        parts = self._split(begin, end, ";")
        if keyword == "for":
            if len(parts) != 3:
                return
            begin, end = parts[1]
        else:
            begin, end = parts[-1]
        if begin == end or "=" in self._top(begin, end) or keyword == "switch":
            return
        if keyword == "if":
            self._wrap("never", begin, end, "Never", "taken for false")
        self._take_condition(begin, end)

    def _take_choice(self, index):
        begin = index
        while True:
            before = self._at(begin - 1)
            if before in ("return", "=", "+=", "(", "[", "{", ",", ";", "?", ":", "", "<<"):
                break
            partner = self.tokens[begin - 1].partner
            begin = partner if 0 <= partner < begin - 1 else begin - 1
        self._take_condition(begin, index)

    def _take_condition(self, begin, end):
        """A condition, what it is joined of, and the bounds that it compares with."""
        if any(text in ("?", "<=>") for text in self._top(begin, end)):
            return
        self._wrap("turn", begin, end, "Turned", "turned")
        for joint, neutral in (("||", "false"), ("&&", "true")):
            parts = self._split(begin, end, joint)
            if len(parts) > 1:
                for part in parts:
                    self._leave_out(*part, neutral)
                    self._take_parts(*part)
                return
        self._take_bound(begin, end)

    def _take_parts(self, begin, end):
        parts = self._split(begin, end, "&&")
        if len(parts) > 1:
            for part in parts:
                self._leave_out(*part, "true")
                self._take_bound(*part)
        else:
            self._take_bound(begin, end)

    def _leave_out(self, begin, end, neutral):
        start, stop = self._span(begin, end)
        self._add("operand", start, stop, f"(mutant::Alive({{}}) ? {neutral} : static_cast<bool>(",
                  "))", f"`{self.text[start:stop]}` left out")

    def _take_bound(self, begin, end):
        signs = [i for i in range(begin, end) if self._at(i) in _COMPARISONS and (
            self.tokens[i].inside == self.tokens[begin].inside) and (
            self.text[self.tokens[i].start - 1].isspace())]
        others = {"==", "!=", "&&", "||", "!", "?"} & set(self._top(begin, end))
        if len(signs) != 1 or others or signs[0] in (begin, end - 1):
            return
        sign = self.tokens[signs[0]]
        start, stop = self._span(begin, end)
        self._add("bound", start, stop, f"mutant::{_COMPARISONS[sign.text]}({{}}, ", ")",
                  f"`{sign.text}` with the other bound", (sign.start, sign.end))

    def _take_constant(self, index):
        token = self.tokens[index]
        before, after = self._at(index - 1), self._at(index + 1)
        if self._line_begin(index) in ("case", "static") or before == "case" or (
                "constexpr" in self._statement_words(index)) or after == "::":
            return
        if token.kind == "string":
            neighbours = {t.kind for t in self.tokens[max(index - 1, 0):index + 2] if t is not token}
            if " " in token.text or re.search(r'^\w*""', token.text) or "string" in neighbours or (
                    self.text[token.end].isalnum()) or "\\0" in token.text:
                return
            self._wrap("text", index, index + 1, "Text", "without its first character")
        elif token.kind in ("number", "character"):
            if token.kind == "character" or re.fullmatch(r"(0[xX][\da-fA-F']+|[\d']+)[uUlLzZ]*",
                                                         token.text):
                self._wrap("constant", index, index + 1, "Constant", "plus one")
        elif re.match(r"k[A-Z]", token.text) and before not in ("::", ".", "->", "<") and (
                after not in ("(", "{")):
            self._wrap("constant", index, index + 1, "Constant", "plus one, or cut by one")

    def _statement_words(self, index):
        words = []
        while self._at(index - 1) not in (";", "}", ""):
            index -= 1
            words.append(self._at(index))
            if index in self.blocks:
                break
        return words

    def _is_effect(self, index, end):
        """Whether a statement does something and declares nothing."""
        if self._at(index) in _NO_STATEMENT or end >= len(self.tokens):
            return False
        at = index
        while self._at(at) in ("*", "++", "--"):
            at += 1
        if at > index and self._at(index) != "*":
            return True
        if self._at(at) == "static_cast":
            return True
        while self.tokens[at].kind == "name" and self._at(at + 1) == "::":
            at += 2
        if self.tokens[at].kind != "name" and self._at(at) != "(":
            return False
        after = self._at(at + 1) if self._at(at) != "(" else "("
        return after in _EFFECTS or re.fullmatch(r"[-+*/%&|^]=|<<=?", after) is not None

    def _top(self, begin, end):
        """The tokens of a range that lie in none of its brackets."""
        while begin < end:
            if self._at(begin) in ("<", ">") and not self.text[self.tokens[begin].start - 1].isspace():
                begin += 1  # a template's
                continue
            yield self._at(begin)
            partner = self.tokens[begin].partner
            begin = partner + 1 if partner > begin else begin + 1

    def _split(self, begin, end, separator):
        parts, start, at = [], begin, begin
        while at < end:
            if self._at(at) == separator:
                parts.append((start, at))
                start = at + 1
            partner = self.tokens[at].partner
            at = partner + 1 if partner > at else at + 1
        return parts + [(start, end)]

    def _span(self, begin, end):
        return self.tokens[begin].start, self.tokens[end - 1].end

    def _delete(self, index, end):
        start, stop = self._span(index, end + 1)
        self._add("delete", start, stop, "{{ if (!mutant::Alive({})) ", " }}", "left out")

    def _wrap(self, kind, begin, end, function, change):
        start, stop = self._span(begin, end)
        self._add(kind, start, stop, f"mutant::{function}({{}}, ", ")",
                  f"`{self.text[start:stop]}` {change}")

    def _add(self, kind, start, end, before, after, change, comma=()):
        self.points.append(Point(kind, start, end, before, after, " ".join(change.split()), comma))


def _tokens(text):
    for match in _TOKEN.finditer(text):
        if match.lastgroup != "blank":
            kind = match.lastgroup if match.group("raw") is None else "raw"
            yield Token(kind, match.group(), match.start(), match.end())


def _pair(tokens):
    stack = []
    for index, token in enumerate(tokens):
        if stack and token.text == _CLOSING[tokens[stack[-1]].text]:
            token.partner = stack.pop()
            tokens[token.partner].partner = index
        token.inside = stack[-1] if stack else -1
        if token.kind == "sign" and token.text in _CLOSING:
            stack.append(index)


def instrumented(text, numbered_points):
    """The source with the switches of these (number, Point) pairs; its lines stay where they are."""
    edits = []
    for order, (number, point) in enumerate(numbered_points):
        size = point.end - point.start
        edits.append((point.end, 0, size, -order, 0, point.after.format()))
        edits.append((point.start, 2, -size, order, 0, point.before.format(number)))
        if point.comma:
            start, end = point.comma
            edits.append((start, 1, 0, 0, end - start, ","))
    result, copied = [], 0
    for place, _, _, _, replaced, new in sorted(edits):
        result.append(text[copied:place] + new)
        copied = place + replaced
    return "".join(result) + text[copied:]
