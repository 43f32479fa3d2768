"""Reads a public header: its sections, comments and declarations, in their order.

A comment before a declaration describes it, and the declarations that follow without an empty line
or another comment; a comment behind a declaration describes that one; a comment before an empty
line stands for itself. What is private, or in a namespace detail, is no part of the interface.
clang-format lays the headers out, so these few rules are enough.
"""

import dataclasses
import re
from typing import Iterator, List, Optional

COMMENT = r"/\*.*?\*/|//[^\n]*(?:\n *//[^\n]*)*"
TOKEN = re.compile(rf"(?P<space>\s+)|(?P<comment>{COMMENT})|(?P<mark>[{{}};])|"
                   rf"(?P<code>(?:(?!{COMMENT})[^{{}};])*(?:(?!{COMMENT})[^{{}};\s]))", re.DOTALL)
SECTION = re.compile(r"-{2,4} (.*?)(?: -+)?$")
BLOCK = re.compile(r"(?:typedef |template <.*> |inline )*(class|struct|enum|namespace|extern)\b[^()=]*$")
DROPPED = re.compile(r"\b(?:JTPDF_EXPORT|inline|extern)\b|\[\[\w+\]\]|\bfinal\b")


# Braces inside parentheses, which open no block, for a while.
INNER, OUTER = str.maketrans("{}", "\1\2"), str.maketrans("\1\2", "{}")


@dataclasses.dataclass
class Item:
    """A heading (kind "section"), a text ("remark"), or a declaration and what it declares inside."""

    kind: str
    code: str = ""
    text: str = ""
    shares: bool = False  # the text of the declaration before
    members: "List[Item]" = dataclasses.field(default_factory=list)


# What is for the compiler alone, and what it says about that.
ASSERTED = re.compile(r"(?:/\*(?:(?!\*/).)*\*/\n)?^JTPDF_STATIC_ASSERT\(.*?\);$", re.DOTALL | re.MULTILINE)


def _branches(text: str, is_cpp: bool) -> str:
    """The text as the preprocessor would leave it for a compiler of the language."""
    conditions = {"#ifdef __cplusplus": is_cpp, "#if __cplusplus < 201703L": False}
    kept, taken = [], [True]
    for line in re.sub(r"\\\n", "", text).split("\n"):
        if line.startswith("#if"):
            taken.append(conditions.get(line, True))
        elif line.startswith("#else"):
            taken[-1] = not taken[-1]
        elif line.startswith("#endif"):
            taken.pop()
        elif all(taken) and not re.match(r"#|\s*// clang-format", line):
            kept.append(line)
    return "\n".join(kept)


def _without_bodies(text: str) -> str:
    """The text with a semicolon in place of a function's body, a value in braces and the like."""
    out, declared, parentheses, hidden, in_enum = "", "", 0, 0, False
    for piece in re.split(rf"({COMMENT}|[{{}}();,])", text, flags=re.DOTALL):
        if re.match(COMMENT, piece, re.DOTALL):
            out += "" if hidden else piece
            continue
        parentheses += (piece == "(") - (piece == ")")
        if piece == "{" and not parentheses:
            block = BLOCK.match(" ".join(declared.split()))
            if hidden or not block or declared.split()[-1] == "detail":
                hidden += 1
            else:
                in_enum = block[1] == "enum"
        if not hidden:
            out += (";" if piece == "," and in_enum else piece) if not parentheses else \
                piece.translate(INNER)
            declared = "" if piece in ("{", "}", ";") else declared + piece
            in_enum = in_enum and piece != "}"
        elif piece == "}" and not parentheses:
            hidden -= 1
            out, declared = (out, declared) if hidden else (out + ";", "")
    return out


def _text(comment: str) -> str:
    """The words of a comment."""
    lines = [re.sub(r"^ *(?:/\*|//|\*(?!/)) ?", "", re.sub(r"\s*\*/$", "", line)).rstrip()
             for line in comment.split("\n")]
    return "\n".join(lines).strip()


def _item(code: str, text: str, shares: bool) -> Item:
    """The declaration without what is only for the compiler."""
    code = " ".join(DROPPED.sub("", code.translate(OUTER)).split())
    code = re.sub(r" =$", "", code)  # of a value in braces
    code = re.sub(r"(\)[\w &]*) : .*$", r"\1", code)  # how a constructor initialises members
    block = BLOCK.match(code)
    if block:
        return Item(block[1], code, text, shares)
    if code.startswith(("typedef", "using")):
        return Item("type", code, text, shares)
    return Item("function" if "(" in code else "variable", code, text, shares)


def _is_repeated(item: Item, found: List[Item]) -> bool:
    """Whether it is the name of a record behind its fields, or a member's value behind its class."""
    name = re.sub(r" = .*", "", item.code).split()[-1:]
    return item.code.startswith("template <> ") or item.kind == "variable" and (
        "::" in name[0] or bool(found) and found[-1].code == f"typedef struct {item.code}")


class _Reader:
    """Reads a header's tokens; for what is inside of a block, another one goes on with them."""

    def __init__(self, tokens: "Iterator[re.Match[str]]") -> None:
        self.tokens = tokens
        self.found: List[Item] = []
        self.code = self.comment = ""
        self.near: Optional[bool] = False  # behind a declaration; nothing behind a namespace
        self.is_described = False  # the last declaration, by a text behind it
        self.new_line = True
        self.is_private = False

    def items(self) -> List[Item]:
        for token in self.tokens:
            if token["space"]:
                self._space(token["space"])
            elif token["comment"]:
                self._comment(_text(token["comment"]))
            elif token["code"]:
                label = re.match(r"(public|private):\s*", token["code"])
                self.is_private = label[1] == "private" if label else self.is_private
                self.code = token["code"][label.end():] if label else token["code"]
            elif token["mark"] == "{":
                self._declare(_Reader(self.tokens).items())
            else:
                self._declare([])
                if token["mark"] == "}":
                    break
        return self.found

    def _space(self, space: str) -> None:
        self.new_line = "\n" in space
        if space.count("\n") > 1:
            if self.comment and not self.is_private:
                self.found.append(Item("remark", text=self.comment))
            self.comment, self.near = "", False

    def _comment(self, text: str) -> None:
        title, _, rest = text.partition("\n")
        section = SECTION.match(title)
        if self.is_private or self.near is None and not self.new_line:
            return  # behind the end of a namespace
        if not (self.new_line or self.found or self.code):  # behind the begin of a block
            self.found.append(Item("remark", text=text))
        elif self.code or self.near and not self.new_line:
            self._describe_last(text)
        elif section:
            self.found.append(Item("section", section[1], rest.strip()))
        else:
            self.comment = text

    def _describe_last(self, text: str) -> None:
        """The text stands behind a declaration, perhaps behind one that no mark ends."""
        if self.code:
            self._declare([])
        last = self.found[-1]
        if last.text:  # it was before several declarations, then
            self.found.insert(-1, Item("remark", text=last.text))
        last.text, last.shares = text, False
        self.is_described = True

    def _declare(self, members: List[Item]) -> None:
        shares = bool(self.near) and not self.comment and not self.is_described
        item = _item(self.code, self.comment, shares)
        if self.code and not self.is_private and not _is_repeated(item, self.found):
            item.members = members
            self.found.append(item)
        self.code = self.comment = ""
        self.near = None if item.kind == "namespace" else True
        self.is_described = False


def read(text: str, is_cpp: bool) -> List[Item]:
    """What the header declares for a compiler of C, or of C++."""
    text = _branches(text, is_cpp)
    text = re.sub(r"typedef int32_t (\w+);\nenum \{", r"enum \1 {", text)  # what C has for a fixed type
    return _Reader(TOKEN.finditer(_without_bodies(ASSERTED.sub("", text)))).items()
