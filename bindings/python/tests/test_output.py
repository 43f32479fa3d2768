"""Documents handed to an object with write; how large documents may be; memory that runs out."""

import array
import contextlib
import ctypes
import errno
import gc
import gzip
import hashlib
import io
import mmap
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import textwrap
import threading
import unittest
import warnings
from typing import Any, Callable, Iterator, List, Optional

import jtpdf
from jtpdf import Compression, Document, ImageData

LARGE = bytes(range(256)) * 400  # more than a piece that is gathered
MOST_OF_AN_IMAGE = 2**32 - 1


def write_some(doc: Document) -> None:
    image = doc.write_image(ImageData(LARGE, Compression.NONE, 400, 256,
                                      color_space=jtpdf.ColorSpace.GRAY), name="large")
    for _ in range(200):
        doc.add_image_page(image, (0, 0, 400, 256))


def in_memory() -> bytes:
    with Document(creator="me") as doc:
        write_some(doc)
    return bytes(doc.data)


def written_to(file: Any) -> None:
    with Document(file, creator="me") as doc:
        write_some(doc)


class Pieces:
    """Keeps what it is given, and does with each piece what is wanted."""

    def __init__(self, write: Callable[[memoryview], object] = len) -> None:
        self.kept: List[memoryview] = []
        self._write = write

    def write(self, data: memoryview) -> object:
        self.kept.append(data)
        return self._write(data)


class Counter:
    """Counts bytes and keeps none."""

    def __init__(self) -> None:
        self.count = 0

    def write(self, data: memoryview) -> None:
        self.count += len(data)


class Short(io.RawIOBase):
    """A raw file that takes at most 1000 bytes at once."""

    def __init__(self) -> None:
        self.data = bytearray()

    def writable(self) -> bool:
        return True

    def write(self, data: Any) -> int:
        self.data += bytes(data[:1000])
        return min(1000, len(data))


class Files(unittest.TestCase):
    def setUp(self) -> None:
        self.expected = in_memory()

    def test_in_memory(self) -> None:
        file = io.BytesIO()
        written_to(file)
        self.assertEqual(file.getvalue(), self.expected)
        self.assertFalse(file.closed)

    def test_on_disk_buffered_and_raw(self) -> None:
        for buffering in (-1, 0):
            with tempfile.TemporaryFile(buffering=buffering) as file:
                written_to(file)
                self.assertEqual(os.pread(file.fileno(), 10**6, 0), self.expected, "flushed")

    def test_that_write_short(self) -> None:
        file = Short()
        written_to(file)
        self.assertEqual(file.data, self.expected)

    def test_of_sockets(self) -> None:
        here, there = socket.socketpair()
        received = bytearray()

        def receive() -> None:
            while data := there.recv(65536):
                received.extend(data)

        thread = threading.Thread(target=receive)
        thread.start()
        with here, here.makefile("wb") as file:
            written_to(file)
        thread.join()
        there.close()
        self.assertEqual(received, self.expected)

    def test_that_compress(self) -> None:
        result = io.BytesIO()
        with gzip.open(result, "wb") as file:
            written_to(file)
        self.assertEqual(gzip.decompress(result.getvalue()), self.expected)

    def test_on_standard_output(self) -> None:
        program = "import jtpdf, sys\nwith jtpdf.Document(sys.stdout.buffer) as d: d.add_page((0, 0, 1, 1))"
        output = subprocess.run([sys.executable, "-c", program], check=True,
                                stdout=subprocess.PIPE).stdout
        self.assertTrue(output.startswith(b"%PDF-1.5") and output.endswith(b"%%EOF\r\n"))

    def test_that_say_nothing_took_all(self) -> None:
        digest = hashlib.sha256()
        written_to(Pieces(digest.update))
        self.assertEqual(digest.digest(), hashlib.sha256(self.expected).digest())

    def test_may_keep_what_they_are_given(self) -> None:
        file = Pieces()
        written_to(file)
        gc.collect()
        self.assertEqual(b"".join(file.kept), self.expected)
        self.assertTrue(all(piece.readonly for piece in file.kept))

    def test_get_large_data_without_a_copy(self) -> None:
        data = bytearray(LARGE)
        here = ctypes.addressof(ctypes.c_char.from_buffer(data))
        seen = []

        def look(piece: memoryview) -> None:
            # As large as the data: the piece is a memoryview of nothing else.
            if len(piece) == len(data):
                seen.append(piece.obj is data)

        file = Pieces(look)
        with Document(file) as doc:
            doc.write_image(ImageData(data, Compression.FLATE, 1, 1))
            doc.write_icc_profile(memoryview(data)[1:])
        self.assertEqual(seen, [True])
        self.assertEqual([len(piece) for piece in file.kept if piece.obj is data],
                         [len(data), len(data) - 1])
        self.assertTrue(here)
        with self.assertRaises(BufferError):  # who keeps the piece keeps the data
            data.append(0)

    def test_get_large_data_of_every_kind(self) -> None:
        arrays: List[Any] = [(ctypes.c_ubyte * len(LARGE))(*LARGE), array.array("B", LARGE),
                             memoryview(LARGE).cast("B", (256, 400))]
        for data in arrays:
            file = io.BytesIO()
            with Document(file) as doc:
                doc.write_image(ImageData(data, Compression.FLATE, 1, 1))
            self.assertIn(LARGE, file.getvalue(), type(data))

    def test_of_text_are_refused(self) -> None:
        with self.assertRaisesRegex(TypeError, "takes text: open it with 'wb'"):
            Document(io.StringIO())  # type: ignore[arg-type]
        with self.assertRaisesRegex(TypeError, "path is 7, neither a path nor"):
            Document(7)  # type: ignore[arg-type]

    def test_have_no_data_and_a_name(self) -> None:
        file = io.BytesIO()
        with Document(file) as doc:
            self.assertEqual(repr(doc), f"<jtpdf.Document to {file!r}>")
        with self.assertRaisesRegex(ValueError, "no bytes"):
            doc.data


class Own(Exception):
    pass


class Exceptions(unittest.TestCase):
    def test_come_out_of_the_call_that_caused_them(self) -> None:
        k = 0
        while True:
            k += 1
            calls = 0
            own: BaseException = Own(k) if k % 2 else KeyboardInterrupt()

            def fail(_: memoryview) -> None:
                nonlocal calls
                calls += 1
                if calls == k:
                    raise own

            doc = Document(Pieces(fail))
            try:
                write_some(doc)
                doc.finish()
                break
            except (Own, KeyboardInterrupt) as caught:
                self.assertIs(caught, own)
                self.assertIsNone(caught.__context__)
            with self.assertRaises(jtpdf.Error):
                doc.finish()
            self.assertEqual(calls, k, "it is not called again")
        self.assertGreater(k, 3)

    def test_of_a_full_disk_and_a_closed_pipe_are_the_files_own(self) -> None:
        for buffering in (0, 100, 10**6):  # by write, or by the flush in the end
            with contextlib.suppress(OSError), open("/dev/full", "wb", buffering) as file:
                with self.assertRaises(OSError) as caught:
                    written_to(file)
                self.assertEqual(caught.exception.errno, errno.ENOSPC)
                self.assertNotIsInstance(caught.exception, jtpdf.Error)
        source, sink = os.pipe()
        os.close(source)
        with open(sink, "wb", 0) as pipe, self.assertRaises(BrokenPipeError):
            written_to(pipe)

    def test_say_that_nothing_is_taken(self) -> None:
        source, sink = os.pipe()
        os.set_blocking(sink, False)
        with open(source, "rb"), open(sink, "wb", 0) as pipe:
            with self.assertRaisesRegex(BlockingIOError, "takes no bytes"):
                written_to(pipe)
        with self.assertRaisesRegex(OSError, "takes no bytes$"):
            written_to(Pieces(lambda _: 0))

    def test_are_told_once(self) -> None:
        def fail(_: memoryview) -> None:
            raise Own

        with warnings.catch_warnings():
            warnings.simplefilter("error")
            doc = Document(Pieces(fail))
            with self.assertRaises(Own):
                write_some(doc)
            del doc
            gc.collect()
        with self.assertWarnsRegex(ResourceWarning, "Pieces.*without finish"):
            Document(Pieces())
            gc.collect()

    def test_of_signals_lose_no_bytes(self) -> None:
        """Wherever a handler's exception comes up, it is raised or the bytes are whole."""
        def interrupt(*_: object) -> None:
            raise Own

        stop = threading.Event()

        def work() -> None:  # so that calls wait for the interpreter at their entry
            while not stop.is_set():
                sum(range(2000))

        expected = in_memory()
        raised = 0
        before = signal.signal(signal.SIGALRM, interrupt)
        threads = [threading.Thread(target=work) for _ in range(2)]
        try:
            for thread in threads:
                thread.start()
            for trial in range(60):
                file = Pieces()
                try:
                    try:
                        doc = Document(file, creator="me")
                        signal.setitimer(signal.ITIMER_REAL, 0.0005 + trial % 20 * 0.0007)
                        write_some(doc)
                        doc.finish()
                        self.assertEqual(b"".join(file.kept), expected)
                    finally:
                        signal.setitimer(signal.ITIMER_REAL, 0)
                except Own:
                    raised += 1
                    doc.discard()
        finally:
            stop.set()
            for thread in threads:
                thread.join()
            signal.signal(signal.SIGALRM, before)
        self.assertGreater(raised, 0)

    def test_at_the_entry_of_the_callback_are_raised(self) -> None:
        """As a signal's that arrives while the library runs: ctypes cannot raise it."""
        doc = Document(Pieces())
        output = doc._output
        assert output is not None
        code = output._take_code

        def at_entry(frame: Any, event: str, _: object) -> Optional[Any]:
            if frame.f_code is code:
                raise Own
            return None

        before = sys.unraisablehook
        sys.settrace(at_entry)
        try:
            with self.assertRaises(Own):
                doc.finish()
        finally:
            sys.settrace(None)
        self.assertIs(sys.unraisablehook, before)
        with self.assertRaises(jtpdf.Error):
            doc.write_canvas()
            doc.finish()


@contextlib.contextmanager
def sparse(size: int) -> Iterator[mmap.mmap]:
    """So many bytes that take no memory as long as nobody reads them."""
    with tempfile.TemporaryFile() as file:
        file.truncate(size)
        with mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
            yield mapped


class Size(unittest.TestCase):
    def test_of_an_image_is_bounded(self) -> None:
        doc = Document()
        small = ImageData(b"small", Compression.JPEG, 1, 1)
        with sparse(MOST_OF_AN_IMAGE + 1) as mapped:
            huge = ImageData(mapped, Compression.JPEG, 1, 1)
            calls: List[Callable[[], object]] = [
                lambda: doc.write_image(huge),
                lambda: doc.write_image_with_alpha(huge, small),
                lambda: doc.write_image_with_alpha(small, huge),
                lambda: doc.write_jpeg2000_image(huge),
                lambda: doc.write_icc_profile(mapped),
            ]
            for call in calls:
                with self.assertRaisesRegex(
                        ValueError, r"4294967296 bytes of data are more than 2\^32 - 1"):
                    call()
        self.assertEqual(doc.write_image(small).number, 2, "nothing was written before")

    def third_is_refused(self, doc: Document) -> None:
        with sparse(MOST_OF_AN_IMAGE) as mapped:
            large = ImageData(mapped, Compression.FLATE, 1, 1)
            doc.write_image(large)
            doc.write_image(large)
            calls: List[Callable[[], object]] = [
                lambda: doc.write_image(large), lambda: doc.write_icc_profile(mapped)]
            for call in calls:
                with self.assertRaisesRegex(jtpdf.Error, r"more than 10\^10 bytes") as caught:
                    call()
                self.assertEqual(caught.exception.errno, errno.EFBIG)
        doc.finish()

    def test_of_a_document_is_bounded(self) -> None:
        self.third_is_refused(Document("/dev/null"))
        self.third_is_refused(Document(Counter()))

    def test_of_a_file_is_asked_before_its_end(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "a.pdf")
            doc = Document(path)
            doc.add_page((0, 0, 1, 1))
            os.truncate(path, 10**10 - 10**6)
            with self.assertRaisesRegex(jtpdf.Error, r"more than 10\^10 bytes"):
                doc.finish()
            doc.discard()


class MemoryThatRunsOut(unittest.TestCase):
    def run_with_little(self, program: str) -> str:
        """What the program prints that has 60 MB more than it takes to start."""
        head = """
            import jtpdf, mmap, resource
            from jtpdf import Compression, Document, ImageData
            with open("/proc/self/statm") as statm:
                used = int(statm.read().split()[0]) * mmap.PAGESIZE
            resource.setrlimit(resource.RLIMIT_AS, (used + 60_000_000,) * 2)
        """
        text = textwrap.dedent(head) + textwrap.dedent(program)
        done = subprocess.run([sys.executable, "-c", text], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, encoding="utf-8")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_while_an_image_is_written_is_a_memory_error(self) -> None:
        self.assertEqual(self.run_with_little("""
            image = ImageData(bytes(10_000_000), Compression.FLATE, 1, 1)
            for _ in range(20):
                doc = Document()
                try:
                    while True:
                        doc.write_image(image)
                except MemoryError as error:
                    assert isinstance(error, jtpdf.Error) and error.function == "WritePdfImage"
            with Document() as doc:
                doc.add_page((0, 0, 1, 1))
            print("alive", len(doc.data) > 1000)
        """), "alive True\n")

    def test_while_drawing_is_told_by_the_next_writer(self) -> None:
        self.assertEqual(self.run_with_little("""
            doc, hog = Document(), bytes(45_000_000)
            for _ in range(150_000):
                doc.fill_rectangle((1, 2, 3, 4, 5), (1, 2, 3))
            try:
                doc.write_canvas()
            except MemoryError as error:
                print(error.function)
        """), "WritePdfCanvas\n")

    def test_for_documents_themselves_is_a_memory_error(self) -> None:
        self.assertEqual(self.run_with_little("""
            documents = []
            try:
                while len(documents) < 10**6:
                    documents.append(Document())
            except MemoryError as error:
                several = len(documents) > 100
                documents.clear()
                print(several)
        """), "True\n")


if __name__ == "__main__":
    unittest.main()
