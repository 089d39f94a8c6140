"""Finds the mutants of C++ sources: small changes that each make a defect.

The sources are split into tokens, not parsed. So some of the changes do not compile; these do not
count. The layout must be clang-format's: a space on both sides of a binary operator, none before
the brackets of a template or after a type.
"""

import bisect
import hashlib
import re
import zlib
from collections import Counter, namedtuple

# start, end: the place in the source; before, after: its text and the replacement; id: the file and
# a hash of the code around the place, so that edits elsewhere in the file do not change it.
Mutant = namedtuple("Mutant", "id file line function kind start end before after")

KINDS = {
    "condition": "always true, always false or negated; one side of && or || left out",
    "boundary": "< for <=, and so on",
    "constant": "a number one higher or lower, true for false, another character",
    "text": "one character too many",
    "arithmetic": "- for +, and so on; a flag left out",
    "call": "a call left out; a call to the hub made twice",
    "assignment": "an assignment left out",
    "jump": "break, continue or return left out",
    "arguments": "two neighbouring arguments swapped",
    "return": "another value",
}

Token = namedtuple("Token", "kind text start end")

TOKEN = re.compile(
    r"""(?P<skip>\s+|//[^\n]*|/\*.*?\*/)
    |(?P<directive>(?<![^\n])[ \t]*\#(?:[^\n\\]|\\.)*)
    |(?P<string>R"(?P<raw>[^(]*)\(.*?\)(?P=raw)"|"(?:[^"\\\n]|\\.)*")
    |(?P<char>'(?:[^'\\\n]|\\.)+')
    |(?P<number>\d(?:[\w.]|'\w)*)
    |(?P<word>[A-Za-z_]\w*)
    |(?P<mark><=>|<<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)""",
    re.VERBOSE | re.DOTALL,
)

KEYWORDS = set(
    """alignas auto bool break case catch char class const constexpr continue default delete do
    double else enum explicit extern for friend if inline int namespace new noexcept operator
    private protected public return sizeof static static_assert static_cast reinterpret_cast
    const_cast struct switch template throw try typename union unsigned using virtual void
    while""".split()
)
SYMMETRIC = {"min", "max", "memcmp"}  # swapped arguments change nothing
# Calls that reach the hub.
REQUEST = re.compile("send|Hub_(?!Close|Use|Is|Find|Detect|Abandon|Pause|Begin|Last|Observe)")
HELP = {"app", "add_option", "add_flag", "add_subcommand"}  # calls that take a sentence of the help
PARAMETER = re.compile(r"(const )?\S+(<.*>)?[&*]* \w+")
OPENING = {"(": ")", "[": "]", "{": "}"}
OTHER_BINARY = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">",
    "==": "!=", "!=": "==",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "&": "|", "<<": ">>", ">>": "<<", "^": "|",
}  # fmt: skip
COMPARISONS = ("<", "<=", ">", ">=")
OTHER_STEP = {"++": "--", "--": "++", "+=": "-=", "-=": "+="}
# An operand of &&, ||, | or ? never goes beyond these, unless they are in inner brackets.
ENDS = {",", ";", "?", ":", "=", "+=", "|=", "return", "<<", "&&", "||", "else"}


def tokens_of(text):
    tokens = []
    for match in TOKEN.finditer(text):
        kind = match.lastgroup if match.lastgroup != "raw" else "string"
        if kind not in ("skip", "directive"):
            tokens.append(Token(kind, match.group(), match.start(), match.end()))
    return tokens


def _number(text, lower):
    """The number one higher or lower, in the same notation."""
    match = re.fullmatch(r"(0[xX])?([0-9A-Fa-f']+?)([uUlL]*|ms|s|us|h|min)", text)
    if not match:
        return []
    prefix, digits, suffix = match.groups()
    octal = not prefix and len(digits) > 1 and digits[0] == "0"
    value = int(digits.replace("'", ""), 16 if prefix else 8 if octal else 10)
    shape = ("0x%X" if prefix else "0%o" if octal else "%d") + suffix.replace("%", "")
    return [shape % (value - 1 if lower and value > 0 else value + 1)]


def _string(text):
    """The text with one more character, not inside an escape or a conversion of printf."""
    if text.startswith("R"):
        return []
    places = [at for at in range(2, len(text)) if re.fullmatch(r"[A-Za-z ][A-Za-z]", text[at - 1 : at + 1])]
    places = [at for at in places if not re.search(r"[\\%]\w*$", text[:at])]
    at = places[len(places) // 2] if places else len(text) - 1
    return [] if text == '""' else [text[:at] + "~" + text[at:]]


def _character(text):
    if len(text) > 3:
        return ["'~'"]
    return ["'" + chr(ord(text[1]) + 1).replace("'", "(").replace("\\", "]") + "'"]


class _Source:
    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = tokens_of(text)
        self.match = self._brackets()
        self.found = []
        self.lines = [0] + [match.end() for match in re.finditer("\n", text)]
        self.functions = self._functions()
        self.left_out = self._left_out()

    def _brackets(self):
        match, open_ones = {}, []
        for index, token in enumerate(self.tokens):
            if token.text in OPENING and token.kind == "mark":
                open_ones.append(index)
            elif token.text in OPENING.values() and token.kind == "mark":
                begin = open_ones.pop()
                match[begin] = index
                match[index] = begin
        return match

    def _functions(self):
        """The start and the name of each definition that is not indented."""
        found = [(0, "")]
        for line in re.finditer(r"^(?!namespace\b)[A-Za-z_].*$", self.text, re.MULTILINE):
            code = line.group()
            names = re.findall(r"~?(\w+)(?=\()", code) or re.findall(r"(\w+)(?=\s*(?:=|\{|$))", code)
            found.append((line.start(), names[0] if names else ""))
        return found

    def _left_out(self):
        """Tokens that matter only to the compiler, and sentences of the help. Mutants there show nothing about
        the tests."""
        out = set()
        for index, token in enumerate(self.tokens):
            if token.text in ("static_assert", "using", "template"):
                end = index
                stop = ";" if token.text != "template" else ">"
                while self.tokens[end].text != stop:
                    end += 1
                out.update(range(index, end + 1))
            elif token.text in HELP and index + 1 in self.match:
                words = range(index, self.match[index + 1])
                out.update(at for at in words if self.tokens[at].kind == "string" and " " in self.tokens[at].text)
        return out

    def add(self, kind, first, last, after):
        """Adds a mutant that replaces the tokens first to last with `after`."""
        if any(index in self.left_out for index in (first, last)):
            return
        start, end = self.tokens[first].start, self.tokens[last].end
        near = [token.text for token in self.tokens[max(0, first - 6) : last + 7]]
        place = bisect.bisect_right(self.functions, (start, "\uffff")) - 1
        line = bisect.bisect_right(self.lines, start)
        function, before = self.functions[place][1], self.text[start:end]
        self.found.append((near, Mutant("", self.file, line, function, kind, start, end, before, after)))

    def part(self, first, last):
        return self.text[self.tokens[first].start : self.tokens[last].end]

    def binary(self, index):
        token = self.tokens[index]
        return (
            token.kind == "mark"
            and self.text[token.start - 1].isspace()
            and self.text[token.end].isspace()
            and index > 0
            and self.tokens[index - 1].text not in ("return", "(", ",", "=", "operator")
        )

    def in_chain(self, index):
        """Whether a comparison is one side of && or ||."""
        for step in (-1, 1):
            last = self.operand(index, step, ENDS)
            beyond = None if last is None else last + step
            if beyond is None or not 0 <= beyond < len(self.tokens):
                continue
            if self.tokens[beyond].text in ("&&", "||"):
                return True
        return False

    def is_condition(self, index):
        """Whether a comparison is the whole condition of an `if` or a `?`."""
        first, last = self.operand(index, -1, ENDS), self.operand(index, 1, ENDS)
        if first is None or last is None:
            return False
        before, beyond = self.tokens[first - 1].text, self.tokens[last + 1].text
        return beyond == "?" or (before == "(" and beyond == ")" and self.tokens[first - 2].text == "if")

    def operand(self, index, step, ends):
        """The far token of the operand beside `index`: its last if step is 1, its first if -1."""
        at = index + step
        if self.tokens[at].text in OPENING.values() and step > 0 or at < 0:
            return None
        last = None
        while 0 <= at < len(self.tokens):
            token = self.tokens[at]
            if token.kind in ("mark", "word") and token.text in ends:
                break
            if at in self.match:
                if (self.match[at] > at) != (step > 0):  # would leave the enclosing brackets
                    break
                at = self.match[at]
            last = at
            at += step
        return last

    def statement(self, index):
        """The semicolon that ends the statement which begins at `index`; None for a block."""
        at = index
        while at < len(self.tokens):
            text = self.tokens[at].text
            if text == ";":
                return at
            if text in OPENING.values():
                return None
            if text in OPENING:
                at = self.match[at]
            at += 1
        return None

    def begins_statement(self, index):
        if index == 0:
            return False
        before = self.tokens[index - 1].text
        if before in (";", "{", "}", "else"):
            return True
        if before == ")":
            return self.tokens[self.match[index - 1] - 1].text in ("if", "for", "while")
        return before == ":" and self.tokens[index - 2].text not in (")", "public", "private", "protected")

    def scan(self):
        for index, token in enumerate(self.tokens):
            self.constants(index, token)
            if token.kind == "mark":
                self.operators(index, token)
                if token.text in ("(", "{"):
                    self.arguments(index)
            elif token.kind == "word":
                self.conditions(index, token)
                if token.text == "return":
                    self.returned(index)
            if self.begins_statement(index):
                self.statements(index)

    def constants(self, index, token):
        others = []
        before = [near.text for near in self.tokens[max(0, index - 3) : index]]
        if token.text == "0" and before[-1] == "=" and before[-2] in (")", "const"):
            return  # a pure virtual function
        if token.kind == "number" and self.tokens[index - 1].text in COMPARISONS:
            return  # the boundary mutant does the same
        if before[-2:] == ["char", ","] or (before[-1:] == ["["] and before[:1] == ["char"]):
            return  # the size of a buffer for text, which is larger than needed
        if token.kind == "number":
            around = "".join(near.text for near in self.tokens[max(0, index - 4) : index + 5])
            others = _number(token.text, zlib.crc32(around.encode()) & 1)
        elif token.kind == "char":
            others = _character(token.text)
        elif token.text in ("true", "false"):
            others = ["false" if token.text == "true" else "true"]
        elif token.kind == "string":
            for other in _string(token.text):
                self.add("text", index, index, other)
        for other in others:
            self.add("constant", index, index, other)

    def is_stream(self, index):
        """Whether an operator << writes to a stream."""
        first = index
        while first > 0 and self.tokens[first - 1].text not in (";", "{", "}", ")", "=", "return", "("):
            first -= 1
        chain = [token.text for token in self.tokens[first : index + 1]]
        head = chain[: chain.index("<<")]
        return all(re.fullmatch(r"[\w.]+|::", text) for text in head) and "<<" in chain

    def operators(self, index, token):
        if token.text in OTHER_STEP:
            self.add("arithmetic", index, index, OTHER_STEP[token.text])
        previous = self.tokens[index - 1].text
        complement = token.text == "~" and self.text[token.end] != " "
        if complement and previous in ("(", "return", "=", "&", ","):
            self.add("arithmetic", index, index, "")
        if token.text == "!" and previous not in ("(", "return"):
            self.add("condition", index, index, "")
        if token.text == "?":
            first = self.operand(index, -1, ENDS - {"&&", "||"})
            if first is not None:
                self.add("condition", first, index - 1, "true")
                self.add("condition", first, index - 1, "false")
        if not self.binary(index):
            return
        if token.text in ("&&", "||", "|"):
            neutral = {"&&": "true", "||": "false", "|": "0"}[token.text]
            kind = "arithmetic" if token.text == "|" else "condition"
            ends = ENDS | {token.text}
            first, last = self.operand(index, -1, ends), self.operand(index, 1, ends)
            if token.text == "|" and previous == "O_RDONLY":
                first = None  # O_RDONLY is 0
            if first is not None and not (first > 0 and self.tokens[first - 1].text == token.text):
                self.add(kind, first, index - 1, neutral)
            if last is not None:
                self.add(kind, index + 1, last, neutral)
        if token.text in OTHER_BINARY:
            neighbours = (self.tokens[index - 1].kind, self.tokens[index + 1].kind)
            if token.text == "<<" and self.is_stream(index):
                return
            if token.text == "+" and ("string" in neighbours or "char" in neighbours):
                return
            kind = "arithmetic"
            if token.text in COMPARISONS:
                kind = "boundary"
            elif token.text in ("==", "!="):
                if self.in_chain(index) or self.is_condition(index):
                    return  # the mutants that replace the comparison tell more
                kind = "condition"
            self.add(kind, index, index, OTHER_BINARY[token.text])

    def conditions(self, index, token):
        if token.text not in ("if", "while", "for") or self.tokens[index + 1].text != "(":
            return
        first, last = index + 2, self.match[index + 1] - 1
        if token.text == "for":
            marks = [at for at in range(first, last + 1) if self.tokens[at].text == ";"]
            if len(marks) < 2 or marks[0] + 1 == marks[1]:
                return
            first, last = marks[0] + 1, marks[1] - 1
        inside = [one.text for one in self.tokens[first : last + 1]]
        if "=" in inside or ";" in inside:
            return
        if "&&" in inside or "||" in inside:
            return  # the mutants that leave one side out tell more
        if token.text == "if":
            self.add("condition", first, last, "true")
            self.add("condition", first, last, "false")
        else:
            self.add("condition", first, last, "!(" + self.part(first, last) + ")")

    def returned(self, index):
        end = self.statement(index)
        if end is None or end == index + 1:
            return
        first, last = index + 1, end - 1
        value = self.tokens[first]
        literal = value.kind == "number" or value.text in ("true", "false", "nullptr", "kExitSuccess")
        if value.text == "{" or (first == last and literal) or self.part(first, last) == "std::nullopt":
            return
        level, logical = first, False
        while level <= last:
            logical = logical or (self.tokens[level].text in ("&&", "||", "!") or
                                  (self.tokens[level].text in COMPARISONS and self.binary(level)))
            level = self.match.get(level, level) + 1
        if REQUEST.match(value.text) and self.match.get(first + 1) == last:
            self.add("call", first, last, f"{self.part(first, last)}, {self.part(first, last)}")
        if any(self.tokens[at].text == "?" for at in range(first, last)):
            return  # its condition has mutants
        self.add("return", first, last, "!(" + self.part(first, last) + ")" if logical else "{}")

    def ends_switch(self, index):
        """Whether this is the closing bracket of a switch."""
        opening = self.match.get(index, index)
        condition = self.match.get(opening - 1)
        return opening < index and condition is not None and self.tokens[condition - 1].text == "switch"

    def statements(self, index):
        token = self.tokens[index]
        end = self.statement(index)
        if end is None:
            return
        if token.text == "break" and self.ends_switch(end + 1):
            return
        if token.text in ("break", "continue") or (token.text == "return" and end == index + 1):
            self.add("jump", index, end, ";")
            return
        if token.text in KEYWORDS or (token.kind != "word" and token.text not in ("*", "(", "::")):
            return
        at = index + 1 if token.text == "*" else index
        access = (".", "->", "::")
        while at < end:  # skips the name of what is called or changed
            text, is_word = self.tokens[at].text, self.tokens[at].kind == "word"
            before = self.tokens[at - 1]
            if text in ("(", "["):
                at = self.match[at] + 1
            elif text in access or (is_word and (at in (index, index + 1) or before.text in access)):
                if is_word and at > index and before.kind == "word":
                    return  # a declaration
                at += 1
            else:
                break
        stop = self.tokens[at].text
        if at == end and self.tokens[at - 1].text == ")":
            self.add("call", index, end, ";")
            if REQUEST.match(token.text):
                self.add("call", index, end, f"{self.part(index, end)} {self.part(index, end)}")
        elif stop == "<<":
            self.add("call", index, end, ";")
        elif stop in ("=", "+=", "-=", "*=", "&=", "|=", "<<=", ">>="):
            if self.tokens[at + 1].text not in ("delete", "default"):
                self.add("assignment", index, end, ";")

    def arguments(self, index):
        opening, before = self.tokens[index], self.tokens[index - 1]
        if "enum" in [token.text for token in self.tokens[max(0, index - 7) : index]]:
            return
        closing = self.match[index]
        if opening.text == "(":
            if before.kind != "word" or before.text in KEYWORDS | SYMMETRIC or before.end != opening.start:
                return
            ahead = self.tokens[index - 2]
            if ahead.kind == "word" and ahead.text not in ("return", "else"):
                return  # a declaration
            if self.tokens[closing + 1].text in ("{", "const", "noexcept", "override"):
                if not (ahead.text in ("(", "!", "&&", "||")):
                    return
        parts, begin, at = [], index + 1, index + 1
        while at <= closing:
            text = self.tokens[at].text
            if at == closing or text == ",":
                if begin < at:
                    parts.append((begin, at - 1))
                begin = at + 1
            elif text == ";" or (opening.text == "{" and text == "{"):
                return  # a block, or a table whose rows are handled one by one
            elif at in self.match:
                at = self.match[at]
            at += 1
        for (first, last), (other, end) in zip(parts, parts[1:]):
            one, two = self.part(first, last), self.part(other, end)
            never_fit = (one.startswith('"') != two.startswith('"')) or "{" in one + two
            never_fit = never_fit or PARAMETER.fullmatch(one)  # of a declaration
            if one != two and not never_fit and not (one.endswith("begin()") and two.endswith("end()")):
                between = self.text[self.tokens[last].end : self.tokens[other].start]
                self.add("arguments", first, end, two + between + one)


def mutants_of(file, text):
    """All mutants of a source, ordered by place."""
    source = _Source(file, text)
    source.scan()
    seen = Counter()
    mutants = {}
    for near, mutant in source.found:
        content = "\0".join([mutant.kind, mutant.function, mutant.before, mutant.after, *near])
        seen[content] += 1
        digest = hashlib.sha256(f"{content}\0{seen[content]}".encode()).hexdigest()[:6]
        mutants.setdefault((mutant.start, mutant.end, mutant.after), mutant._replace(id=f"{file}#{digest}"))
    return sorted(mutants.values(), key=lambda mutant: (mutant.start, mutant.end))
