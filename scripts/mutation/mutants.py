"""Finds the mutants of a C++ source: small changes that a test ought to notice.

The text is cut into tokens, not parsed. What tells a comparison from a template's
bracket, or a product from a pointer, is how the code is laid out: operators of two
operands stand between blanks.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<blank>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<string>(?:u8|[uUL])?R"(?P<mark>[^()\\\s]*)\(.*?\)(?P=mark)"
      | (?:u8|[uUL])?"(?:\\.|[^"\\\n])*"
      | (?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:'?[\w.]|(?<=[eEpP])[+-])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark_of_more><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\|
      |[-+*/%&|^]=)
  | (?P<other>.)
    """,
    re.VERBOSE | re.DOTALL,
)
DIRECTIVE = re.compile(r"#(?:[^\n\\]|\\.)*", re.DOTALL)

# Those of two operands, which stand between blanks.
OPERATORS = {
    "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"], "==": ["!="], "!=": ["=="],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], ">>": ["<<"],
    "&&": ["||"], "||": ["&&"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "%=": ["*="],
    "&=": ["|="], "|=": ["&="], "^=": ["|="], "<<=": [">>="], ">>=": ["<<="],
}
STEPS = {"++": "--", "--": "++"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
OPENING = {"(": ")", "[": "]", "{": "}"}
LEAVING = {"return", "continue", "break", "throw", "delete", "goto"}
SCOPES = {"namespace", "class", "struct", "union", "enum", "extern"}
# What begins a statement that is none of calls and assignments.
OTHER_STATEMENTS = SCOPES | {
    "alignas", "auto", "bool", "case", "catch", "char", "const", "constexpr", "constinit",
    "consteval", "default", "do", "double", "else", "float", "for", "friend", "if", "inline",
    "int", "long", "mutable", "private", "protected", "public", "requires", "short", "signed",
    "static", "static_assert", "switch", "template", "thread_local", "try", "typedef",
    "typename", "unsigned", "using", "void", "volatile", "while",
}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    begin: int
    end: int


@dataclass(frozen=True)
class Mutant:
    begin: int
    end: int
    replacement: str
    change: str

    def applied_to(self, text):
        return text[: self.begin] + self.replacement + text[self.end :]


def tokens_of(text):
    """The tokens without blanks, comments and directives."""
    tokens = []
    at = 0
    while at < len(text):
        if text[at] == "#" and not text[text.rfind("\n", 0, at) + 1 : at].strip():
            at = DIRECTIVE.match(text, at).end()
            continue
        match = TOKEN.match(text, at)
        kind = match.lastgroup if match.lastgroup != "mark" else "string"
        if kind not in ("blank", "comment"):
            kind = "mark" if kind in ("mark_of_more", "other") else kind
            tokens.append(Token(kind, match.group(), match.start(), match.end()))
        at = match.end()
    return tokens


def partners(tokens):
    """The index of the closing bracket for each opening one, and the other way round."""
    pairs = {}
    open_brackets = []
    for i, token in enumerate(tokens):
        if token.kind != "mark":
            continue
        if token.text in OPENING:
            open_brackets.append(i)
        elif token.text in OPENING.values() and open_brackets:
            opening = open_brackets.pop()
            pairs[opening] = i
            pairs[i] = opening
    return pairs


class Source:
    """A text, and where code stands in it."""

    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.pairs = partners(self.tokens)

    def mutants(self):
        found = []
        for i, token in enumerate(self.tokens):
            if token.kind == "number":
                found += self.of_number(token)
            elif token.kind == "word":
                found += self.of_word(i)
            elif token.kind == "mark":
                found += self.of_mark(i)
        found += self.of_statements()
        return sorted(found, key=lambda mutant: (mutant.begin, mutant.end, mutant.replacement))

    def text_at(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def replaced(self, token, replacement):
        return Mutant(token.begin, token.end, replacement, f"{token.text} -> {replacement}")

    # ---- Numbers and words

    def of_number(self, token):
        match = re.fullmatch(r"(0[xX][\dA-Fa-f']+|0[bB][01']+|[\d']+)([uUlLzZ]*)", token.text)
        if match is None:
            return []
        digits, suffix = match.groups()
        plain = digits.replace("'", "")
        is_octal = len(plain) > 1 and plain.isdigit() and plain[0] == "0"
        value = int(plain, 8 if is_octal else 0)
        written = hex if plain[:2] in ("0x", "0X") else oct if is_octal else str
        values = [value + 1] + ([value - 1] if value > 0 else [])
        return [self.replaced(token, written(v).replace("0o", "0") + suffix) for v in values]

    def of_word(self, i):
        token = self.tokens[i]
        if token.text in ("true", "false"):
            return [self.replaced(token, "false" if token.text == "true" else "true")]
        if token.text in ("if", "while"):
            return self.of_condition(i + 2 if self.text_at(i + 1) == "constexpr" else i + 1)
        return []

    def of_condition(self, opening):
        if self.text_at(opening) != "(" or opening not in self.pairs:
            return []
        closing = self.pairs[opening]
        begin = self.tokens[opening].end
        for i in range(opening + 1, closing):  # behind what is declared in front of it
            if self.text_at(i) == ";":
                begin = self.tokens[i].end
        end = self.tokens[closing].begin
        condition = self.text[begin:end].strip()
        return [Mutant(begin, end, f" !({condition})", f"{condition} -> !({condition})")]

    # ---- Operators

    def is_between_blanks(self, token):
        before = self.text[token.begin - 1 : token.begin]
        behind = self.text[token.end : token.end + 1]
        return before.isspace() and behind.isspace()

    def of_mark(self, i):
        token = self.tokens[i]
        if token.text in OPERATORS and self.is_between_blanks(token):
            return [self.replaced(token, other) for other in OPERATORS[token.text]]
        if token.text in STEPS:
            return [self.replaced(token, STEPS[token.text])]
        if token.text == "!":
            return [Mutant(token.begin, token.end, "", f"! removed before {self.text_at(i + 1)}")]
        return []

    # ---- Statements

    def of_statements(self):
        found = []
        scopes = []
        for i, token in enumerate(self.tokens):
            if token.kind == "mark" and token.text == "{":
                scopes.append(self.is_code_block(i, scopes))
            elif token.kind == "mark" and token.text == "}" and scopes:
                scopes.pop()
            if scopes and scopes[-1] and self.begins_statement(i + 1):
                end = self.end_of_statement(i + 1)
                if end is not None:
                    found.append(self.removed(i + 1, end))
        return found

    def removed(self, first, end):
        begin = self.tokens[first].begin
        statement = " ".join(self.text[begin : self.tokens[end].end].split())
        return Mutant(begin, self.tokens[end].end, ";", f"removed: {statement}")

    def is_code_block(self, i, scopes):
        """Whether a brace opens a block of statements, neither a scope nor a list."""
        before = self.text_at(i - 1)
        if before in (")", "else", "do", "const", "noexcept", "override", "mutable", "try"):
            return True
        head = []
        for k in range(i - 1, -1, -1):
            if self.text_at(k) in (";", "{", "}"):
                break
            head.append(self.text_at(k))
        if SCOPES & set(head):
            return False
        if not head:  # a block of its own, or the body behind a list of members
            return bool(scopes and scopes[-1]) or before == "}"
        return "->" in head or head == [":"] or "case" in head

    def begins_statement(self, i):
        before = self.text_at(i - 1)
        if before in (";", "{", "}", "else", "do"):
            return True
        if before == ")" and i - 1 in self.pairs:
            opening = self.pairs[i - 1]
            head = self.text_at(opening - 1)
            if head == "constexpr":
                head = self.text_at(opening - 2)
            return head in ("if", "for", "while", "switch")
        return before == ":" and self.is_label(i - 1)

    def is_label(self, colon):
        for k in range(colon - 1, max(colon - 12, -1), -1):
            if self.text_at(k) in ("case", "default"):
                return True
            if self.text_at(k) in (";", "{", "}", "?"):
                return False
        return False

    def end_of_statement(self, i):
        """The semicolon behind a statement that can be taken out, else nothing."""
        first = self.text_at(i)
        if first in LEAVING:
            return self.next_semicolon(i)
        while self.text_at(i) in ("*", "++", "--"):
            i += 1
        steps_first = self.text_at(i - 1) in ("++", "--")
        end = self.end_of_chain(i)
        if end is None:
            return None
        behind = self.text_at(end)
        if behind == ";":
            return end if steps_first or self.text_at(end - 1) == ")" else None
        if behind in STEPS:
            end += 1
            behind = self.text_at(end)
            if behind == ";":
                return end
        return self.next_semicolon(end) if behind in ASSIGNMENTS else None

    def end_of_chain(self, i):
        """The token behind a name, its members, its calls and its subscripts."""
        if i >= len(self.tokens) or self.tokens[i].kind != "word":
            return None
        if self.text_at(i) in OTHER_STATEMENTS:
            return None
        i += 1
        while True:
            text = self.text_at(i)
            if text in ("::", ".", "->"):
                if i + 1 >= len(self.tokens) or self.tokens[i + 1].kind != "word":
                    return None
                i += 2
            elif text in ("(", "["):
                if i not in self.pairs:
                    return None
                i = self.pairs[i] + 1
            elif text == "<" and self.tokens[i - 1].end == self.tokens[i].begin:
                i = self.behind_template(i)
                if i is None:
                    return None
            else:
                return i

    def behind_template(self, i):
        depth = 0
        while i < len(self.tokens):
            text = self.text_at(i)
            depth += {"<": 1, ">": -1, ">>": -2}.get(text, 0)
            i += 1
            if depth <= 0:
                return i
            if text in (";", "{", "}"):
                return None
        return None

    def next_semicolon(self, i):
        while i < len(self.tokens):
            text = self.text_at(i)
            if text == ";":
                return i
            if text in ("}", ")", "]"):
                return None
            if text == "=" and self.text_at(i + 1) in ("default", "delete"):
                return None
            i = self.pairs.get(i, len(self.tokens)) + 1 if text in OPENING else i + 1
        return None


def mutants_of(text):
    return Source(text).mutants()
