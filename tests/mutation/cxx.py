"""C++ as far as planting mistakes needs it: tokens, and which of them belong to which definition.

No preprocessing and no types: a definition is a function, a variable with an initializer or a class,
at the scope of a namespace or a class, from its first token to its last.
"""

import re

TOKEN = re.compile(
    r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|(?m:^[ \t]*\#(?:\\\n|[^\n])*))
  | (?P<token>
      (?:u8|u|U|L)?R"(?P<fence>[^(]*)\(.*?\)(?P=fence)"
    | (?:u8|u|U|L)?"(?:\\.|[^"\\])*"
    | (?:u8|u|U|L)?'(?:\\.|[^'\\])+'
    | \.?\d(?:[eEpP][+-]|'(?=\w)|[\w.])*
    | [A-Za-z_]\w*
    | <<=|>>=|<=>|\.\.\.|->\*|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=
    | .)
    """,
    re.VERBOSE | re.DOTALL,
)
OPEN, CLOSE = "({[", ")}]"


class Token(str):
    """A token's text, with its place in the source."""

    def __new__(cls, text, begin):
        token = super().__new__(cls, text)
        token.begin, token.end = begin, begin + len(text)
        return token


def tokens_of(text):
    return [
        Token(match["token"], match.start())
        for match in TOKEN.finditer(text)
        if match["token"] is not None
    ]


def matching(tokens, at):
    """The place behind the bracket that closes the one at `at`."""
    depth = 0
    for i in range(at, len(tokens)):
        depth += (tokens[i] in OPEN) - (tokens[i] in CLOSE)
        if depth == 0:
            return i + 1
    raise ValueError(f"a bracket is never closed: {' '.join(tokens[at:at + 5])}")


def without_template(header):
    """The tokens of a declaration behind its template<...>."""
    depth = 0
    for i, token in enumerate(header):
        if i == 0 and token != "template":
            break
        depth += {"<": 1, ">": -1, ">>": -2}.get(token, 0)
        if i > 0 and depth == 0:
            return without_template(header[i + 1 :])
    return header


def function_name(header):
    """The name in front of the parameters, or None where there are none."""
    for i, token in enumerate(header):
        if token != "(" or i == 0:
            continue
        first = i - 1
        for back in (1, 2, 3):
            if i >= back and header[i - back] == "operator":
                return "".join(header[i - back : i])
        if not re.match(r"[A-Za-z_]", header[first]) or header[first] in ("decltype", "alignas"):
            continue
        if header[first - 1 : first] == ["~"]:
            first -= 1
        while header[first - 1 : first] == ["::"]:
            first -= 2
        return "".join(header[first:i])
    return None


def initialises_members(header):
    """Whether a constructor's list of members has begun: its braces are no body yet."""
    depth = 0
    for i, token in enumerate(header):
        depth += (token in OPEN) - (token in CLOSE)
        if depth == 0 and token == ":" and header[i - 1] in (")", "noexcept"):
            return True
    return False


def definitions(tokens):
    """(name, begin, end) of each, names qualified by classes."""
    found = []
    scopes = []  # (name or None, the place of its end)
    i = begin = 0
    while i < len(tokens):
        token = tokens[i]
        header = without_template(tokens[begin:i])
        if scopes and i == scopes[-1][1]:
            scopes.pop()
            begin = i = i + 1
        elif token == ";" or (token == ":" and header in (["public"], ["private"], ["protected"])):
            begin = i = i + 1
        elif token in "([":
            i = matching(tokens, i)
        elif token == "=" and header[-1:] != ["operator"]:
            end = i
            while tokens[end] != ";":
                end = matching(tokens, end) if tokens[end] in OPEN else end + 1
            found.append((named(scopes, variable_name(header)), begin, end + 1))
            begin = i = end + 1
        elif token == "{":
            end = matching(tokens, i)
            kind = next((word for word in header if word in KINDS), None)
            name = function_name(header)
            if kind == "namespace" or header == ["extern", '"C"']:
                scopes.append((None, end - 1))
                begin = i = i + 1
            elif kind is not None and (name is None or kind == "enum"):
                words = header[header.index(kind) + 1 :]
                name = next((w for w in words if w not in ("class", "struct", "final")), "")
                found.append((named(scopes, name), begin, end))
                if kind == "enum":
                    i = end
                    continue
                scopes.append((name, end - 1))
                begin = i = i + 1
            elif name is None:
                found.append((named(scopes, variable_name(header)), begin, end))
                i = end
            elif initialises_members(header) and header[-1] not in (")", "}"):
                i = end
            else:
                found.append((named(scopes, name), begin, end))
                begin = i = end
        else:
            i += 1
    return found


KINDS = ("namespace", "class", "struct", "union", "enum")


def variable_name(header):
    words = []
    for token in header:
        if token == "[":
            break
        if re.match(r"[A-Za-z_]", token):
            words.append(token)
    return words[-1] if words else ""


def named(scopes, name):
    return "::".join([scope for scope, _ in scopes if scope] + [name])


class Source:
    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.definitions = definitions(self.tokens)

    def places_in(self, name):
        """The indices of the tokens of every definition of that name, in order."""
        places = []
        for known, begin, end in self.definitions:
            if known == name or known.endswith("::" + name):
                places += [i for i in range(begin, end) if not places or i > places[-1]]
        return places

    def definition_at(self, index):
        """The name of the innermost definition around a token, or None."""
        around = [d for d in self.definitions if d[1] <= index < d[2]]
        return min(around, key=lambda d: d[2] - d[1])[0] if around else None

    def find(self, name, wanted):
        """The places where the sequence of tokens begins in the definitions of that name."""
        places = self.places_in(name)
        inside = set(places)
        return [
            i
            for i in places
            if self.tokens[i : i + len(wanted)] == wanted and i + len(wanted) - 1 in inside
        ]

    def statement_end(self, begin):
        """The place behind the statement that begins there."""
        token = self.tokens[begin]
        if token == "{":
            return matching(self.tokens, begin)
        if token in ("else", "do"):
            return self.statement_end(begin + 1)
        if token in ("if", "while", "for", "switch"):
            condition = self.tokens.index("(", begin)
            end = self.statement_end(matching(self.tokens, condition))
            return self.statement_end(end) if self.tokens[end : end + 1] == ["else"] else end
        while self.tokens[begin] != ";":
            begin = matching(self.tokens, begin) if self.tokens[begin] in OPEN else begin + 1
        return begin + 1

    def statement_at(self, index):
        """The tokens of the statement around one, with the if in front of it if there is one."""
        begin, depth = index, 0
        while True:
            before = self.tokens[begin - 1]
            if depth == 0 and before in ";{}":
                break
            depth += (before in ")]") - (before in "([")
            begin -= 1
        return begin, self.statement_end(begin)

    def replaced(self, begin, end, by):
        """The text with the tokens from begin to end replaced."""
        tokens = self.tokens
        return self.text[: tokens[begin].begin] + by + self.text[tokens[end - 1].end :]
