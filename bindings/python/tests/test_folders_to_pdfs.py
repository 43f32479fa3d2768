"""The example that makes a PDF of each folder by a cluster: what it makes, keeps, says and survives."""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from typing import Dict, List, Tuple

IMAGES = pathlib.Path(os.environ["JTPDF_IMAGES"])
EXAMPLE = pathlib.Path(__file__).resolve().parents[1] / "examples" / "folders_to_pdfs.py"
QPDF = shutil.which("qpdf")


def worker_processes(parent: int) -> List[int]:
    found = []
    for tasks in pathlib.Path(f"/proc/{parent}/task").glob("*/children"):
        for child in map(int, tasks.read_text().split()):
            if b"spawn_main" in pathlib.Path(f"/proc/{child}/cmdline").read_bytes():
                found.append(child)
    return found


class Folders(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.scans = pathlib.Path(folder.name) / "scans"
        self.pdfs = pathlib.Path(folder.name) / "pdfs"
        self.scans.mkdir()

    def add(self, folder: str, *pictures: str) -> None:
        (self.scans / folder).mkdir(parents=True, exist_ok=True)
        for number, picture in enumerate(pictures, 1):
            source = IMAGES / picture
            shutil.copy(source, self.scans / folder / f"page{number}{source.suffix}")

    def add_many(self, count: int) -> None:
        for number in range(count):
            self.add(f"{number:02d}", "balloon-rgba.png", "coast-rgb.png")

    def start(self) -> "subprocess.Popen[str]":
        return subprocess.Popen(
            [sys.executable, str(EXAMPLE), "--workers", "2", str(self.scans), str(self.pdfs)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True,
            env={**os.environ, "DASK_TEMPORARY_DIRECTORY": str(self.scans.parent / "dask")})

    def run_example(self) -> Tuple[int, str, str]:
        process = self.start()
        said, complained = process.communicate()
        return process.returncode, said.splitlines()[-1], complained

    def start_and_wait_for_pdfs(self, count: int) -> "subprocess.Popen[str]":
        process = self.start()
        while len(list(self.pdfs.glob("*.pdf"))) < count:
            self.assertIsNone(process.poll())
            time.sleep(0.002)
        return process

    def pages(self) -> Dict[str, int]:
        """Of each file in the folder of PDFs, which has to be a sound one."""
        found = {}
        for path in sorted(path for path in self.pdfs.rglob("*") if path.is_file()):
            self.assertEqual(path.suffix, ".pdf")
            data = path.read_bytes()
            self.assertTrue(data.rstrip().endswith(b"%%EOF"), path)
            if QPDF is not None:
                subprocess.run([QPDF, "--check", path], check=True, stdout=subprocess.DEVNULL)
            found[str(path.relative_to(self.pdfs))] = data.count(b"/Type /Page\r\n")
        return found

    def test_make_what_is_missing_or_old(self) -> None:
        self.add("one", "coast.jpg")
        self.add("deep/two", "coast.jpg", "balloon-rgba.png", "forest-gray.png")
        self.add("no scans")
        (self.scans / "no scans" / "notes.txt").write_text("nothing")
        self.add("bad", "coast.jpg")
        (self.scans / "bad" / "page2.png").touch()
        status, total, complained = self.run_example()
        self.assertEqual((status, total), (1, "2 made, 0 there already, 1 failed"))
        self.assertRegex(complained, r"(?m)^/\S+/bad: /\S+/bad/page2.png: is empty")
        self.assertEqual(self.pages(), {"deep/two.pdf": 3, "one.pdf": 1})

        self.add("bad", "coast.jpg", "coast-rgb.png")  # mended
        (self.scans / "deep" / "two" / "page3.png").unlink()
        kept = (self.pdfs / "one.pdf").stat().st_ino
        self.assertEqual(self.run_example(), (0, "2 made, 1 there already, 0 failed", ""))
        self.assertEqual(self.pages(), {"bad.pdf": 2, "deep/two.pdf": 2, "one.pdf": 1})
        self.assertEqual((self.pdfs / "one.pdf").stat().st_ino, kept)

    def test_go_on_after_all_was_killed(self) -> None:
        self.add_many(24)
        process = self.start_and_wait_for_pdfs(2)
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        made = len(self.pages())
        self.assertLess(made, 24, "too fast to be interrupted")
        _, total, _ = self.run_example()
        self.assertEqual(total, f"{24 - made} made, {made} there already, 0 failed")
        self.assertEqual(set(self.pages().values()), {2})

    def test_go_on_without_a_worker_that_died(self) -> None:
        self.add_many(24)
        process = self.start_and_wait_for_pdfs(2)
        os.kill(worker_processes(process.pid)[0], signal.SIGKILL)
        said, _ = process.communicate()
        self.assertEqual(process.returncode, 0, said)
        self.assertEqual(list(self.pages().values()), [2] * 24)


if __name__ == "__main__":
    unittest.main()
