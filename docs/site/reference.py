"""A page of the reference, made of a header: reStructuredText for Sphinx's domains of C and C++."""

import re
import textwrap
from typing import Dict, List, Optional

from headers import Item

WORD = re.compile(r"(?<![\w/])(?:/[A-Z]\w*)+|\b[A-Za-z_][\w:]*\w(?:\(\))?")
SPECIAL = re.compile(r"([\\*`|_<>])")
BLOCKS = ("class", "struct", "enum", "namespace")


def name_of(item: Item) -> str:
    """The name that is declared; nothing for an enumeration without one."""
    if item.kind == "function":
        pattern = r"(operator[^(]+|~?\w+)\("
    elif item.kind in BLOCKS or item.code.startswith("using"):
        pattern = r"(?:typedef struct|enum class|enum|class|struct|namespace|using) (\w+)"
    else:
        pattern = r"\(\*(\w+)\)" if "(*" in item.code else r"(\w+)(?: = .*)?$"
    found = re.search(pattern, item.code)
    return found[1] if found else ""


def links(items: List[Item], domain: str, scope: str = "") -> Dict[str, str]:
    """How each declared name that a text may mention is linked."""
    role = "cpp:any" if domain == "cpp" else "c:type"
    found: Dict[str, str] = {}
    for item in items:
        name = name_of(item)
        if domain == "cpp" or item.kind != "struct":  # a field's name is a word like any other
            is_scope = item.kind in ("namespace", "class", "struct")
            found.update(links(item.members, domain, f"{scope}{name}::" if is_scope else scope))
        if not name or item.kind in ("namespace", "section", "remark") or not name[0].isalpha() or (
                name.startswith("operator")):
            continue
        if item.kind == "function":
            found[f"{name}()"] = f":{role}:`{name}() <{scope}{name}>`"
        if domain == "c" or not name.islower():
            found[name] = f":{role}:`{name} <{scope}{name}>`"
    return {name: link for name, link in found.items() if not (domain == "c" and name.islower())}


def _is_empty(items: List[Item]) -> bool:
    """Whether the section that the items follow has nothing of the interface."""
    for item in items:
        if item.kind == "section":
            return True
        if item.kind != "namespace" or item.members:
            return False
    return True


class Page:
    def __init__(self, domain: str, known: Dict[str, str]) -> None:
        self.domain = domain
        self.known = known
        self.lines: List[str] = []

    def add(self, text: str, depth: int) -> None:
        self.lines += [*textwrap.indent(text, "   " * depth).split("\n"), ""]

    def heading(self, title: str, mark: str) -> None:
        self.add(f"{title}\n{mark * len(title)}", 0)

    def header(self, name: str, items: List[Item]) -> None:
        """The header's own text under its name, and all that it declares."""
        text = re.sub(r"^\S+ - (.)", lambda match: match[1].upper(), items[0].text)
        self.heading(name, "=")
        self.add(self._prose(text), 0)
        self._items(items[1:], 0)

    def _items(self, items: List[Item], depth: int, inside: Optional[Item] = None) -> None:
        for at, item in enumerate(items):
            if item.kind == "section" and _is_empty(items[at + 1:]):
                continue
            joins = item.shares and not item.members and items[at - 1].kind == item.kind
            if item.kind == "section":
                self.heading(item.code, "-") if depth == 0 else self.add(f".. rubric:: {item.code}", depth)
            elif item.kind == "namespace":
                self.add(f".. cpp:namespace-push:: {name_of(item)}", depth)
                self._items(item.members, depth)
                self.add(".. cpp:namespace-pop::", depth)
            elif item.kind != "remark" and not joins:
                same = [item]
                for other in items[at + 1:]:
                    if not other.shares or other.kind != item.kind or other.members:
                        break
                    same.append(other)
                self._declarations(same, depth, inside)
            if item.text and item.kind in ("section", "remark"):
                self.add(self._prose(item.text), depth)

    def _declarations(self, same: List[Item], depth: int, inside: Optional[Item]) -> None:
        item = same[0]
        kind = item.kind
        if kind == "variable":
            kind = "var" if inside is None else "enumerator" if inside.kind == "enum" else "member"
        elif item.code.startswith("enum class"):
            kind = "enum-class"
        codes = [re.sub(r"^(typedef struct \w+ (?=\w+$)|typedef (struct )?|using |enum (class )?)|"
                        r"\b(?:class|struct) (?=\w+( : |$))", "", other.code) for other in same]
        directive = f".. {self.domain}:{kind}:: "
        self.add(directive + ("\n" + " " * len(directive)).join(codes), depth)
        if item.text:
            self.add(self._prose(item.text), depth + 1)
        self._items(item.members, depth + 1, item)

    def _prose(self, text: str) -> str:
        """The words of a comment: paragraphs, numbered points, and code, which is indented."""
        out: List[str] = []
        for block in re.split(r"\n\s*\n", text):
            if block.startswith("    "):
                code = textwrap.indent(textwrap.dedent(block), "   ")
                begun = bool(out) and out[-1].startswith((".. code-block", "   "))
                out.append(code if begun else f".. code-block:: {self.domain}\n\n{code}")
            elif block == "Conventions":
                out.append(".. rubric:: Conventions")
            else:
                out.append("\n".join(self._line(point) for point in re.split(r"\n(?=\d+\. )", block)))
        return "\n\n".join(out)

    def _line(self, text: str) -> str:
        text = " ".join(text.split())
        out, at = "", 0
        for match in WORD.finditer(text):
            out += SPECIAL.sub(r"\\\1", text[at:match.start()]) + self._word(match[0])
            at = match.end()
        return out + SPECIAL.sub(r"\\\1", text[at:])

    def _word(self, word: str) -> str:
        if word in self.known:
            return rf"\ {self.known[word]}\ "
        if "(" in word or "/" in word or word.startswith("std::") or word == "NULL":
            return rf"\ ``{word}``\ "
        return SPECIAL.sub(r"\\\1", word)
