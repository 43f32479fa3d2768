"""What a document's bytes are handed to: any object with a method write."""

from __future__ import annotations

import ctypes
import errno
import io
import sys
import threading
import weakref
from typing import TYPE_CHECKING, Any, Callable, Protocol

if TYPE_CHECKING:
    from ._native import Borrowed


class Writable(Protocol):
    """A file, or whatever else has its method write.

    What write returns is how many of the bytes it took, as files do; without a number it took all.
    It may keep the memoryview.
    """

    def write(self, data: memoryview, /) -> object: ...


#: JTPDFWriteFunction.
WriteFunction = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t)


class Output:
    """Hands a document's bytes to a file's write, and raises what that raises."""

    def __init__(self, file: Writable) -> None:
        if isinstance(file, io.TextIOBase):
            raise TypeError(f"{file!r} takes text: open it with 'wb', or pass its buffer")
        self.file = file
        self.size = 0
        self.failed = False
        self.lent: list[Borrowed] = []  # the caller's memory that the call at hand reads
        self._problem: BaseException | None = None
        # Must live as long as the document of the C interface. A strong reference would be a circle.
        this = weakref.ref(self)

        def take(_context: int | None, address: int, size: int) -> int:
            try:
                output = this()
                if output is None or output.failed:
                    return errno.EIO
                output._take(address, size)
                return 0
            except BaseException as problem:
                output = this()  # a signal may have kept the first one from being there
                return errno.EIO if output is None else output._fail(problem)

        self._take_code = take.__code__
        self.function = WriteFunction(take)

    def run(self, function: Callable[..., int], *arguments: Any) -> int:
        """Makes a call of the library and raises what write raised during it."""
        if threading.current_thread() is threading.main_thread():
            code = self._run_with_signals(function, *arguments)
        else:
            code = function(*arguments)
        self.raise_problem()
        return code

    def flush(self) -> None:
        """Makes sure that the bytes have arrived, of a file that can: it may have a buffer."""
        getattr(self.file, "flush", lambda: None)()

    def raise_problem(self) -> None:
        if self._problem is not None:
            problem, self._problem = self._problem, None
            raise problem

    def _run_with_signals(self, function: Callable[..., int], *arguments: Any) -> int:
        """The same where a signal's handler may raise an exception (KeyboardInterrupt above all).

        If it does so at the very entry of take, no code of take catches it: ctypes says that it is
        ignored, and bytes would be missing unnoticed.
        """
        before = sys.unraisablehook

        def notice(unraisable: Any) -> None:
            traceback, problem = unraisable.exc_traceback, unraisable.exc_value
            if traceback is not None and traceback.tb_frame.f_code is self._take_code:
                self._fail(problem)
            else:
                before(unraisable)

        sys.unraisablehook = notice
        try:
            return function(*arguments)
        finally:
            sys.unraisablehook = before

    def _fail(self, problem: BaseException) -> int:
        self.failed = True
        self._problem = problem
        return errno.EIO

    def _take(self, address: int, size: int) -> None:
        piece = self._piece(address, size)
        while piece:
            written = self.file.write(piece)
            if written is None and isinstance(self.file, io.RawIOBase):
                raise BlockingIOError(errno.EAGAIN, f"{self.file!r} takes no bytes at the moment")
            if not isinstance(written, int) or isinstance(written, bool):
                break
            if written <= 0:
                raise OSError(errno.EIO, f"{self.file!r} takes no bytes")
            piece = piece[written:]
        self.size += size

    def _piece(self, address: int, size: int) -> memoryview:
        """The bytes, which the file may keep: the caller's own where there are many, else a copy."""
        for memory in self.lent:
            begin = address - (memory.address or 0)
            if 0 <= begin and begin + size <= memory.size:
                view = memory.view()
                if view is not None:
                    return view[begin:begin + size]
        return memoryview(ctypes.string_at(address, size))
