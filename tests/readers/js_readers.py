"""Readers from the npm registry, for the matrix: pdf.js and PDFium, both run by Node."""

import re
import shutil
from pathlib import Path

from readers import Reader, rendered, run

# What npm installs into the build directory: names and versions that were tried.
PACKAGES = ("pdfjs-dist@5.4.149", "@hyzyla/pdfium@2.1.13")


class NodeReader(Reader):
    programs = ("node", "npm")
    renders = True
    script = ""

    def __init__(self, packages):
        self.packages = packages

    def missing(self):
        absent = super().missing()
        return absent or ([] if (self.packages / "node_modules").is_dir() else ["npm packages"])

    def render(self, pdf, folder):
        script = Path(__file__).parent / self.script
        _, complaints = run(["node", script, self.packages, pdf, folder])
        return rendered(folder), complaints


class PdfJs(NodeReader):
    name = "pdf.js"
    script = "render_pdfjs.mjs"


class Pdfium(NodeReader):
    name = "PDFium"
    script = "render_pdfium.mjs"


def install(packages):
    """Installs the packages once; gives what went wrong, or nothing."""
    packages.mkdir(parents=True, exist_ok=True)
    wanted = "\n".join(PACKAGES)
    stamp = packages / "installed.txt"
    if stamp.exists() and stamp.read_text() == wanted:
        return ""
    if not shutil.which("npm"):
        return "npm is not installed"
    _, complaints = run(
        ["npm", "install", "--no-save", "--no-audit", "--no-fund", "--loglevel=error"]
        + ["--prefix", packages, *PACKAGES]
    )
    failed = [line for line in complaints if re.search(r"error|ERR|exit status", line)]
    if failed:
        return failed[0]
    stamp.write_text(wanted)
    return ""
