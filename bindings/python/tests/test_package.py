"""The installed package: complete, of the right version, and with the library it brought along."""

import importlib.metadata
import os
import pathlib
import unittest

import jtpdf


class Package(unittest.TestCase):
    def test_is_the_installed_one(self) -> None:
        folder = os.environ.get("JTPDF_VENV")
        if folder is None:
            self.skipTest("JTPDF_VENV does not name a virtual environment")
        self.assertTrue(pathlib.Path(jtpdf.__file__).is_relative_to(folder), jtpdf.__file__)
        self.assertEqual(importlib.metadata.version("jtpdf"), jtpdf.__version__)
        names = {pathlib.Path(file).name for file in importlib.metadata.files("jtpdf") or []}
        self.assertLessEqual({"py.typed", "libjtpdf.so.2", "__init__.py"}, names)
        tags = importlib.metadata.distribution("jtpdf").read_text("WHEEL") or ""
        self.assertRegex(tags, r"(?m)^Root-Is-Purelib: false$")
        self.assertRegex(tags, r"(?m)^Tag: py3-none-linux_\w+$")

    def test_uses_the_library_beside_it(self) -> None:
        if "JTPDF_LIBRARY" in os.environ:
            self.skipTest("JTPDF_LIBRARY names another library")
        library = pathlib.Path(jtpdf.__file__).with_name("libjtpdf.so.2")
        self.assertIn(f"{library}\n", pathlib.Path("/proc/self/maps").read_text())

    def test_has_the_projects_version(self) -> None:
        self.assertEqual(jtpdf.__version__, os.environ.get("JTPDF_VERSION", jtpdf.__version__))

    def test_has_the_librarys_version(self) -> None:
        self.assertEqual(jtpdf.library_version(), jtpdf.__version__)
        with jtpdf.Document() as doc:
            pass
        utf16 = "".join(f"\\000{c}" for c in f"JTPDF {jtpdf.__version__}")
        self.assertIn(f"/Producer (þÿ{utf16})".encode("latin-1"), bytes(doc.data))


if __name__ == "__main__":
    unittest.main()
