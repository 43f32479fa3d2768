"""Pages made of what is no Markdown: the manual page of the command, the Python package."""

import ast
import html
import pathlib
import re
from typing import Iterator, List, Optional, Tuple

# ---- The manual page ---------------------------------------------------------------------------

FONTS = {"B": "b", "I": "i", "R": ""}


def _words(text: str) -> List[str]:
    """The arguments of a macro."""
    return [quoted or plain for quoted, plain in re.findall(r'"([^"]*)"|(\S+)', text)]


def _styled(text: str, font: str) -> str:
    text = html.escape(text, quote=False)
    text = text.replace("\\-", "-").replace("\\(dq", '"').replace("\\(aq", "'")
    text = text.replace("\\fI", "<i>").replace("\\fR", "</i>")
    text = text.replace("--", "\\--")  # else Doxygen makes a dash of it
    tag = FONTS[font]
    return f"<{tag}>{text}</{tag}>" if tag and text else text


def _inline(line: str) -> str:
    """A line of text, or of a macro that only sets fonts."""
    if not line.startswith("."):
        return _styled(line, "R")
    name, _, rest = line[1:].partition(" ")
    words = _words(rest)
    if name in FONTS:
        return _styled(" ".join(words), name)
    return "".join(_styled(word, name[i % 2]) for i, word in enumerate(words))


def manual(text: str, name: str) -> str:
    """The manual page in the language of man(7), as far as ours uses it."""
    lines = [line for line in text.splitlines() if not line.startswith(('.\\"', ".TH"))]
    out = [f"# The command jtpdf {{#{name}}}", ""]
    in_list = False

    def end_list() -> None:
        nonlocal in_list
        if in_list:
            out.append("</dd></dl>")
        in_list = False

    row = 0
    while row < len(lines):
        line = lines[row]
        macro, _, rest = line.partition(" ")
        if macro in (".SH", ".SS"):
            end_list()
            title = rest.capitalize()
            slug = title.lower().replace(" ", "-")
            out += ["", f"{'##' if macro == '.SH' else '###'} {title} {{#{name}-{slug}}}", ""]
        elif macro == ".TP":
            out.append("</dd>" if in_list else "<dl>")
            row += 1
            out.append(f"<dt>{_inline(lines[row])}</dt><dd>")
            in_list = True
        elif macro in (".PP", ".P"):
            end_list()
            out.append("")
        else:
            out.append(_inline(line))
        row += 1
    end_list()
    return "\n".join(out) + "\n"


# ---- The Python package ------------------------------------------------------------------------

WIDTH = 76  # columns of code


def _docstring(text: Optional[str]) -> str:
    """The text with its examples as blocks of code."""
    out: List[str] = []
    in_code = False
    for line in (text or "").splitlines():
        if line.startswith(">>>") and not in_code:
            out += ["```{.py}"]
            in_code = True
        elif not line and in_code:
            out += ["```"]
            in_code = False
        out.append(line)
    if in_code:
        out.append("```")
    return "\n".join(out)


def _signature(function: ast.FunctionDef, owner: str) -> str:
    arguments = re.sub(r"^(self|cls)(, |$)", "", ast.unparse(function.args))
    arguments = re.sub(r"(?<=[\w\]])=", " = ", arguments)
    arguments = re.sub(r"= _[A-Z]\w*", "= ...", arguments)  # a default by a name of the package's own
    name = owner if function.name == "__init__" else function.name
    result = f" -> {ast.unparse(function.returns)}" if function.returns else ""
    result = "" if result == " -> None" else result
    if any(ast.unparse(mark).endswith("property") for mark in function.decorator_list):
        return name + (f": {ast.unparse(function.returns)}" if function.returns else "")
    signature = f"{name}({arguments}){result}"
    if len(signature) <= WIDTH:
        return signature
    lines: List[str] = []
    for argument in re.split(r", (?![^\[]*\])", arguments):  # not at the comma of Mapping[str, str]
        if lines and len(lines[-1]) + len(argument) < WIDTH - 6:
            lines[-1] += f", {argument}"
        else:
            lines.append(argument)
    return f"{name}(\n    " + ",\n    ".join(lines) + f"){result}"


def _members(body: List[ast.stmt], owner: str) -> Iterator[Tuple[str, str]]:
    """Signature and text of what a class offers."""
    for node in body:
        if isinstance(node, ast.FunctionDef):
            is_public = not node.name.startswith("_") or node.name == "__init__"
            marks = [ast.unparse(mark) for mark in node.decorator_list]
            if is_public and not any(mark.endswith("setter") for mark in marks):
                yield _signature(node, owner), _docstring(ast.get_docstring(node))
        elif isinstance(node, ast.AnnAssign) and not ast.unparse(node.target).startswith("_"):
            yield ast.unparse(node), ""
        elif isinstance(node, ast.Assign) and not ast.unparse(node.targets[0]).startswith("_"):
            yield ast.unparse(node), ""


def _public_names(package: ast.Module) -> List[str]:
    for node in package.body:
        if isinstance(node, ast.Assign) and ast.unparse(node.targets[0]) == "__all__":
            return sorted(ast.literal_eval(node.value), key=lambda name: name != "Document")
    raise ValueError("the package has no __all__")


def python(folder: pathlib.Path, name: str) -> str:
    """Everything in __all__ of the package, with its docstrings."""
    package = ast.parse((folder / "__init__.py").read_text(encoding="utf-8"))
    nodes = {}
    for file in sorted(folder.glob("*.py")):
        for node in ast.parse(file.read_text(encoding="utf-8")).body:
            if isinstance(node, (ast.ClassDef, ast.FunctionDef)):
                nodes[node.name] = node
            elif isinstance(node, ast.Assign):
                nodes[ast.unparse(node.targets[0])] = node
    out = [f"# The Python package jtpdf {{#{name}}}", "", _docstring(ast.get_docstring(package)), ""]
    rest = []
    for public in _public_names(package):
        node = nodes[public]
        if isinstance(node, ast.Assign):
            # Doxygen takes an apostrophe in code for the code's end.
            rest.append("- `" + ast.unparse(node).replace("'", '"') + "`")
            continue
        out += [f"## {public} {{#{name}-{public.lower()}}}", ""]
        if isinstance(node, ast.FunctionDef):
            out += ["```{.py}", _signature(node, ""), "```", ""]
        out += [_docstring(ast.get_docstring(node)), ""]
        members = list(_members(node.body, public)) if isinstance(node, ast.ClassDef) else []
        plain = [signature for signature, text in members if not text]
        if plain:
            out += ["```{.py}", *plain, "```", ""]
        for signature, text in members:
            if text:
                out += ["```{.py}", signature, "```", "", text, ""]
    return "\n".join(out + [f"## Constants and types {{#{name}-constants}}", "", *rest]) + "\n"
