"""Where the shared libraries are, and the types of their functions."""

from __future__ import annotations

import ctypes
import ctypes.util
import os
import pathlib
import sys
from typing import Any, Mapping

_FOLDER = pathlib.Path(__file__).parent


def load(file_name: str, variable: str, package: str,
         prototypes: Mapping[str, tuple[Any, ...]], needs: str = "") -> ctypes.CDLL:
    """Loads the library that an environment variable names, the one in the wheel, or the system's.

    A prototype is the type of the result, and those of the arguments behind it. What the library
    in the wheel needs is in the wheel's folder of that name.
    """
    packaged = _FOLDER / file_name
    name = os.environ.get(variable) or (
        str(packaged) if packaged.exists() else _installed(file_name))
    if needs and name == str(packaged):
        _load_all(sorted((_FOLDER / needs).glob("*.so*")))
    try:
        library = ctypes.CDLL(name, use_errno=True)
    except OSError as problem:
        way = "put its folder into PATH" if sys.platform == "win32" else f"install {package}"
        raise ImportError(f"the shared library {name} cannot be loaded ({problem}); {way}, or let "
                          f"{variable} name the library") from problem
    for function, (result, *arguments) in prototypes.items():
        try:
            prototype = getattr(library, function)
        except AttributeError as problem:
            raise ImportError(f"{name} is no library for this package: {problem}") from problem
        prototype.restype = result
        prototype.argtypes = arguments
    return library


def _installed(file_name: str) -> str:
    """The name by which the system finds the library."""
    if sys.platform == "win32":
        # Not by a bare name: PATH is not looked through for it. What the DLL itself takes is the
        # system's, so that os.add_dll_directory need not name a folder.
        return ctypes.util.find_library(file_name) or file_name
    return file_name


def _load_all(files: list[pathlib.Path]) -> None:
    """Loads libraries, each after those that it needs itself."""
    while files:
        left = [file for file in files if not _loads(file)]
        if len(left) == len(files):
            return  # what needs them will say what is missing
        files = left


def _loads(file: pathlib.Path) -> bool:
    try:
        ctypes.CDLL(str(file))
    except OSError:
        return False
    return True
