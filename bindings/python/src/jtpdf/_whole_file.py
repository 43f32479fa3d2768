"""A file that takes its name when it is whole."""

from __future__ import annotations

import contextlib
import os
import secrets
from typing import Iterator


@contextlib.contextmanager
def whole_file(path: str) -> Iterator[str]:
    """Gives a path to write to; when the block ends, what is written there stands at the first path.

    Until then, and where something fails, what was there stays; the new file has the rights of the
    old one. A process that is killed leaves nothing where the file system knows unnamed files (NFS
    does not), and else a file ".part".
    """
    folder = os.path.dirname(path) or "."
    part = os.path.join(folder, f".jtpdf-{secrets.token_hex(8)}.part")
    written = part
    try:
        old = _mode(path)
        mode = 0o666 if old is None else 0o600
        descriptor = _open_unnamed(folder, mode)
        if descriptor is None:
            descriptor = os.open(part, os.O_CREAT | os.O_EXCL | os.O_WRONLY, mode)
        else:
            written = f"/proc/self/fd/{descriptor}"
        try:
            try:
                yield written
                if old is not None:
                    _make_ready(descriptor, old)
                if written != part:
                    os.link(written, part, src_dir_fd=descriptor)  # without it links are not followed
            finally:
                os.close(descriptor)  # Windows renames no open file
            os.replace(part, path)
        except BaseException:
            with contextlib.suppress(FileNotFoundError):
                os.remove(part)
            raise
    except OSError as problem:
        if problem.filename in (part, written):
            problem.filename, problem.filename2 = path, None
        raise


def _mode(path: str) -> int | None:
    """Who may do what with a file, if there is one; bits that lend its owner's rights are left out."""
    try:
        return os.stat(path).st_mode & 0o777
    except FileNotFoundError:
        return None


def _make_ready(descriptor: int, mode: int) -> None:
    """For the place of a file with that mode."""
    if hasattr(os, "fchmod"):
        with contextlib.suppress(PermissionError):  # file systems without rights
            os.fchmod(descriptor, mode)
    # A name may reach the disk before the bytes do, and the old file would be gone for a broken one.
    os.fsync(descriptor)


def _open_unnamed(folder: str, mode: int) -> int | None:
    """A descriptor, or none where there are no unnamed files that could be named by it."""
    if not hasattr(os, "O_TMPFILE") or not os.path.isdir("/proc/self/fd"):
        return None
    try:
        return os.open(folder, os.O_TMPFILE | os.O_WRONLY, mode)
    except OSError:
        return None
