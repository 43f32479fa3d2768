"""The public headers as Doxygen wants them: their plain comments become its own.

A comment before a declaration documents it, and every declaration that follows without an empty line
or another comment. A comment behind a declaration documents that one. Lines keep their numbers.

    /* Returns ... */        ->  /** Returns ... */
    double left;  // ...     ->  double left;  ///< ...
    /* ---- Title --- */     ->  the head of a section
"""

import re
from typing import Dict, List, Set

SECTION = re.compile(r"^ ?-{2,4} (.*?)(?: -+)?$")

TYPE = re.compile(r"\s*(typedef )?(struct|enum|class|namespace|extern)\b")


def _indent(line: str) -> str:
    return line[:len(line) - len(line.lstrip())]


def _is_code(line: str) -> bool:
    text = line.strip()
    return bool(text) and not text.startswith(("//", "/*", "#"))


def _ends_declaration(line: str) -> bool:
    code = re.sub(r"/[/*].*$", "", line).rstrip()
    return code.endswith((";", "}"))


def _depth(line: str) -> int:
    code = re.sub(r"/[/*].*$", "", line)
    return sum(code.count(c) for c in "{(") - sum(code.count(c) for c in "})")


def _share(lines: List[str], after: int, comment: str) -> None:
    """Puts the comment before each further declaration of the paragraph that begins at `after`."""
    depth, row, complete = 0, after, False
    while row < len(lines) and _is_code(lines[row]):
        line = lines[row]
        if complete:
            lines[row] = f"{_indent(line)}/** {comment} */ {line.lstrip()}"
        depth += _depth(line)
        if depth < 0 or (row == after and depth > 0 and TYPE.match(line)):
            return
        complete = depth == 0 and _ends_declaration(line)
        row += 1


def _trailing(lines: List[str]) -> None:
    for row, line in enumerate(lines):
        if line.lstrip().startswith(("#", "//", "/*", "*", "}")):
            continue
        if re.search(r"[;,\w{] +//[^/]", line):
            code, comment = line.split("//", 1)
            lines[row] = (f"/** {comment.strip().capitalize()}. */ {code}" if code.rstrip().endswith("{")
                          else f"{code}///<{comment}")
        elif re.search(r"[;,\w] +/\*[^*]", line):
            lines[row] = line.replace("/*", "/**<", 1)


def _close(lines: List[str], row: int, is_open: bool) -> None:
    if is_open:
        lines[row] = "/** @} */ " + lines[row]


def c_header(text: str) -> str:
    lines = text.replace("\n * Conventions\n", "\n * **Conventions**\n").split("\n")
    _trailing(lines)
    # A class that is only declared has no page, and the handle deserves one.
    for row, line in enumerate(lines):
        if line.startswith("#define JTPDF_STATIC_ASSERT"):
            lines[row] = ""
        if line == "class JTPDFDocument;":
            lines[row] = "class JTPDFDocument {};"
    row, is_open = 0, False
    while row < len(lines):
        if not re.match(r"\s*/\*[^*]", lines[row]):
            if is_open and lines[row] == '} /* extern "C" */':
                _close(lines, row - 1, is_open)
                is_open = False
            row += 1
            continue
        last = row
        while "*/" not in lines[last]:
            last += 1
        block = lines[row:last + 1]
        body = " ".join(re.sub(r"^\s*(/\*|\*(?!/))?|\*/\s*$", "", part).strip() for part in block)
        section = SECTION.match(re.sub(r"^/\*|\s*\*/$", "", block[0]))
        if row == 0:
            lines[0] = re.sub(r"/\* (\S+) - (\w)",
                              lambda m: f"/** @file {m[1]}\n@brief {m[2].upper()}", lines[0])
        elif section:
            lines[row] = f"{'/** @} */ ' if is_open else ''}/** @name {section[1]}"
            if len(block) == 1:
                lines[row] += " */"
            lines[last] += " /** @{ */"
            is_open = True
        elif lines[last + 1] and not lines[last + 1].startswith("JTPDF_STATIC_ASSERT"):
            # The others are remarks, and would describe whatever is declared next.
            lines[row] = lines[row].replace("/*", "/**", 1)
            _share(lines, last + 1, body)
        row = last + 1
    return "\n".join(lines)


def _called_by_members(lines: List[str], functions: Set[str]) -> Dict[int, str]:
    """The C function behind each member function of Document, by the row of its declaration."""
    first = next(row for row, line in enumerate(lines) if "]] Document {" in line)
    end = lines.index(" private:", first)
    calls: Dict[int, str] = {}
    paragraph = 0
    for row in range(first, end):
        if not lines[row].startswith("  ") or lines[row].lstrip().startswith("//"):
            continue
        if re.match(r"  \w.*\(", lines[row]) and not re.match(r"  (return|if)\b", lines[row]):
            paragraph = row
        called = [name for name in re.findall(r"\w+", lines[row]) if name in functions]
        if called and paragraph:
            calls[paragraph] = called[0]
            paragraph = 0
    return calls


def cpp_header(text: str, functions: Set[str]) -> str:
    """`functions` are the names of the C interface."""
    lines = text.split("\n")
    calls = _called_by_members(lines, functions)
    # A specialisation for the standard library, which is not part of the interface.
    for row, line in enumerate(lines):
        if "std::is_error_code_enum" in line:
            lines[row - 1] = lines[row] = ""
    _trailing(lines)
    row, is_open = 0, False
    while row < len(lines):
        if is_open and lines[row].strip() == "private:":
            _close(lines, row - 1, True)
            is_open = False
        if not re.match(r"\s*//(?!/)", lines[row]):
            row += 1
            continue
        last = row
        while last + 1 < len(lines) and re.match(r"\s*//", lines[last + 1]):
            last += 1
        words = [re.sub(r"^\s*// ?", "", line) for line in lines[row:last + 1]]
        section = SECTION.match(words[0])
        if row == 0:
            name, summary = re.match(r"(\S+) - (.*)", words[0]).groups()
            words[0] = f"@file {name}\n/// @brief {summary[0].upper()}{summary[1:]}"
            lines[row:last + 1] = [f"/// {word}" for word in words]
        elif section:
            if words[0].startswith("----"):
                lines[row] = ""
            else:
                lines[row] = f"{'/** @} */ ' if is_open else ''}/** @name {section[1]} */ /** @{{ */"
                is_open = True
        elif not words[0].startswith("clang-format"):
            for at, word in zip(range(row, last + 1), words):
                lines[at] = f"{_indent(lines[at])}/// {word}"
            if words[-1].startswith("clang-format"):
                lines[last] = ""
            if not _indent(lines[row]):  # the members of a class have comments of their own
                _share(lines, last + 1, " ".join(word for word in words if not
                                                 word.startswith("clang-format")))
        row = last + 1
    for row, name in calls.items():
        lines[row] = f"  /** Calls {name}(). */ {lines[row].lstrip()}"
    return "\n".join(lines)
