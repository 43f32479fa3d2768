"""The wheel holds a shared library: it fits every Python 3, but only one kind of machine."""

import pathlib

from setuptools import setup
from wheel.bdist_wheel import bdist_wheel

LIBRARY = pathlib.Path(__file__).parent / "src" / "jtpdf" / "libjtpdf.so.2"


class PlatformWheel(bdist_wheel):
    def finalize_options(self):
        super().finalize_options()
        if not LIBRARY.exists():
            raise SystemExit(f"{LIBRARY} is missing: build_wheel.sh puts the shared library there")
        self.root_is_pure = False

    def get_tag(self):
        _, _, platform = super().get_tag()
        return "py3", "none", platform


setup(cmdclass={"bdist_wheel": PlatformWheel})
