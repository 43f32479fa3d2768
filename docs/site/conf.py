"""Settings of Sphinx for the documentation site; build_site.py runs it.

Sphinx and its theme Furo took the place of a generator of our own, more than twice as long, on top of
Doxygen. Side by side, at 1280 and at 390 pixels, light and dark, they read as well, and gave a
search, a table of contents, the way from page to page and anchors for Python's methods, which ours
did not have. Breathe and Doxygen were tried for the headers, too: they wanted comments rewritten as
before, tore sections apart by kinds, and repeated a comment for each of its functions. So headers.py
reads our headers, and Sphinx's domains of C and C++ show them.
"""

import enum
import pathlib
import re
import sys

from sphinx.domains.c import CDomain
from sphinx.domains.cpp import CPPDomain

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bindings/python/src"))

project = "JTPDF"
version = re.search(r"^project\(jtpdf VERSION ([\d.]+)",
                    (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
extensions = ["myst_parser", "sphinx.ext.autodoc"]
myst_heading_anchors = 3
smartquotes = False
suppress_warnings = ["myst.header"]  # the pages of the command begin with a heading of the second level
# Types of the standard libraries, and what is behind the interface.
nitpick_ignore_regex = [("(c|cpp):identifier", ".*"), ("py:.*", ".*")]

autodoc_member_order = "bysource"
autodoc_preserve_defaults = True
add_module_names = False

html_theme = "furo"
html_title = f"JTPDF {version}"
html_static_path = ["jtpdf.css"]
html_css_files = ["jtpdf.css"]
html_show_sphinx = False
html_show_copyright = False
html_copy_source = False
pygments_style = "friendly"
pygments_dark_style = "native"


def plain_signature(app, what, name, obj, options, signature, returns):
    """An enumeration is not called; and no argument is shown with a name of the package's own."""
    if what == "class" and issubclass(obj, enum.Enum):
        return "", None
    return re.sub(r"= _[A-Z]\w*", "= {}", signature or ""), returns


def without_parameters(domain):
    """The domain, but that the search does not list each parameter of each function."""
    def get_objects(self):
        return (found for found in domain.get_objects(self) if found[2] != "functionParam")
    return type(domain.__name__, (domain,), {"get_objects": get_objects})


def mend_furo(app, failure):
    """Debian 12 builds Furo from its sources with other tools, and loses something.

    Its style sheet asks for a file of Debian's web servers and has no dark colours unless a button
    is pressed, and that button's script, being a module, is not run where there is no web server.
    """
    static = pathlib.Path(app.outdir) / "_static"
    sheet, script = static / "styles/furo.css", static / "scripts/furo.js"
    css, js = sheet.read_text("utf-8"), script.read_text("utf-8")
    foreign = "@import url(/javascript/normalize.css/normalize.css);"
    if foreign in css:
        normal = pathlib.Path("/usr/share/javascript/normalize.css/normalize.css").read_text("utf-8")
        dark = re.search(r'body\[data-theme="dark"\] (\{.*?\})', css, re.DOTALL)[1]
        sheet.write_text(css.replace(foreign, normal) + "@media screen and (prefers-color-scheme:"
                         f' dark) {{\nbody:not([data-theme="light"]) {dark}\n}}\n', "utf-8")
    if js.startswith("import Gumshoe"):
        gumshoe = (static / "scripts/gumshoe-patched.js").read_text("utf-8")
        script.write_text(gumshoe + js.partition("\n")[2], "utf-8")


def setup(app):
    for domain in (CDomain, CPPDomain):
        app.add_domain(without_parameters(domain), override=True)
    app.connect("autodoc-process-signature", plain_signature)
    app.connect("build-finished", mend_furo)
