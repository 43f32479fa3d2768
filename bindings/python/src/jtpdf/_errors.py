"""Failures of the library."""

from __future__ import annotations

import errno
import functools
import os
from typing import Any

_REFUSED = "the document refused it: it is not open, is finished, or its output has failed"


class Error(OSError):
    """A call that failed, with the C function and its result code.

    ``errno`` is the system's error number, or -1 for a call that the document refuses in its
    present state. Where Python has a class of its own for a number, such as FileNotFoundError, the
    error is one of that class, too; of ENOMEM it is a MemoryError.

    >>> import jtpdf
    >>> try:
    ...     jtpdf.Document("no/such/folder/out.pdf")
    ... except FileNotFoundError as error:
    ...     print(error)
    [Errno 2] No such file or directory: 'no/such/folder/out.pdf'
    >>> doc = jtpdf.Document()
    >>> try:
    ...     doc.open()
    ... except jtpdf.Error as error:
    ...     print(error.function, error.errno)
    InitPdfDoc -1
    """

    function: str = ""

    @staticmethod
    def _of(function: str, code: int, path: str | None = None, reason: str = "") -> Error:
        if not reason:
            reason = os.strerror(code) if code > 0 else _REFUSED
        error = _class_for(code)(code, reason, path)
        error.function = function
        return error

    def __reduce__(self) -> Any:
        """How it is pickled: its class may be one that is made for its code."""
        if self.errno is None:
            return super().__reduce__()
        return Error._of, (self.function, self.errno, self.filename, self.strerror)

    @property
    def code(self) -> int:
        """The result code of the C function."""
        return self.errno

    @property
    def refused(self) -> bool:
        """Whether the document does not allow the call in its present state."""
        return self.code == -1


@functools.lru_cache(maxsize=None)
def _class_for(code: int) -> type[Error]:
    """Error, or a class made of it and the one that Python has for the code."""
    other: type[BaseException] = type(OSError(code, ""))
    if code == errno.ENOMEM:
        other = MemoryError
    return Error if other is OSError else type("Error", (Error, other), {"__module__": "jtpdf"})
