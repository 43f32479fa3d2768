"""What the package does on Windows: which DLL it loads, and whose errno it sets. Python itself is
played: no Python for Windows is at hand where the tests run."""

import contextlib
import ctypes
import ctypes.util
import importlib.util
import os
import pathlib
import sys
import tempfile
import types
import unittest
from typing import Any, Dict, Iterator, List, Optional
from unittest import mock

import jtpdf
from jtpdf import _library

DLL = "libjtpdf-2.dll"


class Function:
    """A function of a DLL: takes prototypes, remembers its calls, refuses."""

    def __init__(self) -> None:
        self.calls: List[Any] = []

    def __call__(self, *arguments: Any) -> int:
        self.calls.append(arguments)
        return -1


class Dll:
    def __init__(self, name: str, **_options: Any) -> None:
        if "broken" in name:
            raise OSError("[WinError 193] %1 is not a valid Win32 application")
        self.name = name

    def __getattr__(self, name: str) -> Function:
        function = Function()
        setattr(self, name, function)
        return function


class OnWindows(unittest.TestCase):
    def setUp(self) -> None:
        self.loaded: List[Dll] = []

    def load(self, name: str, **options: Any) -> Dll:
        self.loaded.append(Dll(name, **options))
        return self.loaded[-1]

    @contextlib.contextmanager
    def windows(self, library: str = "", found: Optional[str] = None) -> Iterator[None]:
        environment: Dict[str, str] = {"JTPDF_LIBRARY": library}
        with mock.patch.object(sys, "platform", "win32"), \
                mock.patch.object(ctypes, "CDLL", self.load), \
                mock.patch.object(ctypes.util, "find_library", lambda name: found), \
                mock.patch.dict(os.environ, environment):
            yield

    def load_module(self, name: str = "_native", folder: Optional[str] = None,
                    **options: Any) -> types.ModuleType:
        """The module anew, as if the package were in the folder."""
        source = pathlib.Path(jtpdf.__file__).with_name(f"{name}.py")
        spec = importlib.util.spec_from_file_location(f"jtpdf.{name}_on_windows", source)
        assert spec is not None and spec.loader is not None
        module = importlib.util.module_from_spec(spec)
        place = pathlib.Path(folder) if folder else source.parent
        with self.windows(**options), mock.patch.object(_library, "_FOLDER", place):
            spec.loader.exec_module(module)
        return module

    def test_loads_the_dll_beside_it_by_its_whole_path(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, DLL).touch()
            self.load_module(folder=folder, found="C:\\bin\\" + DLL)
            self.assertEqual([dll.name for dll in self.loaded], [str(pathlib.Path(folder, DLL)), "msvcrt"])

    def test_the_environment_comes_first(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, DLL).touch()
            self.load_module(folder=folder, library="D:\\mine.dll")
        self.assertEqual(self.loaded[0].name, "D:\\mine.dll")

    def test_looks_in_path_where_none_is_beside_it(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            self.load_module(folder=folder, found="C:\\bin\\" + DLL)
            self.load_module(folder=folder)
        names = [dll.name for dll in self.loaded if dll.name != "msvcrt"]
        self.assertEqual(names, ["C:\\bin\\" + DLL, DLL])

    def test_says_what_to_do_where_it_cannot_be_loaded(self) -> None:
        with self.assertRaisesRegex(ImportError, r"broken\.dll cannot be loaded .*PATH.*JTPDF_LIBRARY"):
            self.load_module(library="broken.dll")

    def test_forgets_older_failures_in_the_errno_of_the_dlls_runtime(self) -> None:
        native = self.load_module(library=DLL)
        with self.assertRaises(jtpdf.Error) as caught:
            native.call("InitPdfDoc", None)
        self.assertTrue(caught.exception.refused)
        runtime = self.loaded[1]
        self.assertEqual((runtime.name, runtime._set_errno.calls), ("msvcrt", [(0,)]))

    def test_has_no_library_of_pictures(self) -> None:
        module = self.load_module("_picture_library")
        with self.windows(), self.assertRaisesRegex(ImportError, "not there for Windows"):
            module.library()
        self.assertEqual(self.loaded, [])


if __name__ == "__main__":
    unittest.main()
