"""A file that takes its name when it is whole."""

from __future__ import annotations

import contextlib
import os
import secrets
from typing import Iterator


@contextlib.contextmanager
def whole_file(path: str) -> Iterator[str]:
    """Gives a path to write to; when the block ends, what is written there stands at the first path.

    Until then, and where something fails, what was there stays. A process that is killed leaves
    nothing where the file system knows unnamed files (NFS does not), and else a file ".part".
    """
    folder = os.path.dirname(path) or "."
    part = os.path.join(folder, f".jtpdf-{secrets.token_hex(8)}.part")
    written = part
    try:
        descriptor = _open_unnamed(folder)
        if descriptor is None:
            descriptor = os.open(part, os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o666)
        else:
            written = f"/proc/self/fd/{descriptor}"
        try:
            yield written
            if written != part:
                os.link(written, part, src_dir_fd=descriptor)  # without it links are not followed
            os.replace(part, path)
        except BaseException:
            with contextlib.suppress(FileNotFoundError):
                os.remove(part)
            raise
        finally:
            os.close(descriptor)
    except OSError as problem:
        if problem.filename in (part, written):
            problem.filename, problem.filename2 = path, None
        raise


def _open_unnamed(folder: str) -> int | None:
    """A descriptor, or none where there are no unnamed files that could be named by it."""
    if not hasattr(os, "O_TMPFILE") or not os.path.isdir("/proc/self/fd"):
        return None
    try:
        return os.open(folder, os.O_TMPFILE | os.O_WRONLY, 0o666)
    except OSError:
        return None
