"""Where the PDF goes, and what is left of it when something fails."""
import atexit
import faulthandler
import functools
import hashlib
import os
import resource
import shutil
import signal
import socket
import stat
import subprocess
import tempfile
import time
import unittest

from support import JTPDF, JtpdfTest, blocks, jpeg_bytes, noise, page_boxes, run

faulthandler.dump_traceback_later(300, exit=True)  # a hang is a failure that says where


@functools.cache
def preloadable(path):
    """The library under a name of its own: the loader takes blanks and colons for separators."""
    folder = tempfile.mkdtemp(prefix="jtpdf-faults-")
    atexit.register(shutil.rmtree, folder)
    return shutil.copy(path, os.path.join(folder, "faults.so"))


def with_faults(words, log=""):
    """An environment in which the system fails; see system_faults.c."""
    if not words and not log:
        return None
    if "SYSTEM_FAULTS" not in os.environ:
        raise unittest.SkipTest("the system's failures are for Linux")
    return {**os.environ, "LD_PRELOAD": preloadable(os.environ["SYSTEM_FAULTS"]), "FAULTS": words,
            "FAULTS_LOG": log, "ASAN_OPTIONS": "verify_asan_link_order=0"}


class OutputTest(JtpdfTest):
    def assertNoLitter(self, *expected):
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(expected))


class Output(OutputTest):

    def test_a_file_is_replaced_whole_or_not_at_all(self):
        self.save(blocks(), "a.png")
        self.put(b"%PDF-1.5 truth", "out.pdf")
        self.put(self.get("a.png")[:-40], "bad.png")
        good, bad, out = self.path("a.png"), self.path("bad.png"), self.path("out.pdf")
        self.assertFails(1, r"bad\.png: ends before.*cut off", good, bad, "-o", out)
        self.assertEqual(self.get("out.pdf"), b"%PDF-1.5 truth")
        self.assertNoLitter("a.png", "bad.png", "out.pdf")
        self.assertEqual(run(good, "-o", out)[0], 0)
        self.assertTrue(self.get("out.pdf").startswith(b"%PDF-1.5"))
        self.assertNoLitter("a.png", "bad.png", "out.pdf")

    def test_a_picture_that_fails_while_it_is_decoded_leaves_nothing(self):
        self.save(blocks(40, 40, mode="RGBA"), "a.png")
        data = bytearray(self.get("a.png"))
        at = data.index(b"IDAT") + 10
        data[at] ^= 0xFF  # found by nobody who reads the header only
        bad = self.put(bytes(data), "bad.png")
        good = self.path("a.png")
        out = self.path("out.pdf")
        for jobs in "1", "3":
            self.assertFails(1, r"bad\.png: is damaged: the checksum of its chunk IDAT is wrong; copy",
                             good, bad, good, "-j", jobs, "-o", out)
            self.assertNoLitter("a.png", "bad.png")

    def test_skip_bad_leaves_out_reports_and_counts(self):
        good = self.save(blocks(), "a.png")
        bad = self.put(b"not a picture", "bad.txt")
        self.put(self.get("a.png")[:60], "cut.png")
        out = self.path("out.pdf")
        error = self.assertFails(1, "2 of 4 inputs failed", good, bad, self.path("cut.png"), good,
                                 "--skip-bad", "-o", out)
        self.assertRegex(error, r"bad\.txt: is no picture of a known kind; convert it")
        self.assertEqual(len(page_boxes(out)), 2)
        self.assertFails(1, "nothing was written", bad, "--skip-bad", "-o", self.path("none.pdf"))
        # What fails late: its header is sound, and its pixels are not.
        self.save(blocks(mode="RGBA"), "late.png")
        data = bytearray(self.get("late.png"))
        data[data.index(b"IDAT") + 6] ^= 0xFF
        late = self.put(bytes(data), "late.png")
        self.assertFails(1, "no input is left", late, "--skip-bad", "-o", self.path("none.pdf"))
        self.assertFalse(os.path.exists(self.path("none.pdf")))

    def test_new_files_get_the_usual_mode_and_old_ones_keep_theirs(self):
        path = self.save(blocks(), "a.png")
        old = os.umask(0o027)
        try:
            pdf = self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o640)
            os.chmod(pdf, 0o604)
            self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o604)
            os.chmod(pdf, 0o6755)  # a program's, not a document's
            self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o755)
            os.chmod(pdf, 0o400)
            self.convert(path)
            self.assertEqual(stat.S_IMODE(os.stat(pdf).st_mode), 0o400)
        finally:
            os.umask(old)

    def test_names_as_long_as_names_can_be(self):
        path = self.save(blocks(), "a.png")
        name = "n" * 251 + ".pdf"
        for faults in "", "no-tmpfile":
            for _ in range(2):  # a new file, and one that is replaced
                done = subprocess.run([JTPDF, path, "-o", self.path(name)], capture_output=True,
                                      env=with_faults(faults))
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                self.assertNoLitter("a.png", name)
            os.remove(self.path(name))
        self.assertFails(1, "cannot be written: File name too long", path, "-o",
                         self.path("n" + name))

    def test_links_stay_links(self):
        path = self.save(blocks(), "a.png")
        os.mkdir(self.path("real"))
        self.put(b"old", "real/doc.pdf")
        os.symlink("real/doc.pdf", self.path("link.pdf"))
        self.assertEqual(run(path, "-o", self.path("link.pdf"))[0], 0)
        self.assertTrue(os.path.islink(self.path("link.pdf")))
        self.assertTrue(self.get("real/doc.pdf").startswith(b"%PDF"))
        self.assertEqual(os.listdir(self.path("real")), ["doc.pdf"])

    def test_a_link_to_nothing_is_written_through(self):
        path = self.save(blocks(), "a.png")
        os.mkdir(self.path("real"))
        os.symlink("real/second", self.path("first"))
        os.symlink(self.path("real/doc.pdf"), self.path("real/second"))
        self.assertEqual(run(path, "-o", "first", folder=self.folder)[0], 0)
        self.assertTrue(os.path.islink(self.path("first")))
        self.assertTrue(os.path.islink(self.path("real/second")))
        self.assertTrue(self.get("real/doc.pdf").startswith(b"%PDF"))
        self.assertEqual(sorted(os.listdir(self.path("real"))), ["doc.pdf", "second"])
        os.symlink("nowhere/doc.pdf", self.path("lost"))
        self.assertFails(1, "lost: cannot be written: No such file.*make its folder", path, "-o",
                         self.path("lost"))
        os.symlink("round", self.path("round"))
        self.assertFails(1, "round: cannot be written: Too many levels of symbolic links", path,
                         "-o", self.path("round"))

    def test_an_input_is_never_replaced(self):
        path = self.save(blocks(), "a.png")
        before = self.get("a.png")
        os.link(path, self.path("other.png"))
        for name in (path, self.path("other.png")):
            self.assertFails(2, "is an input and would be replaced", path, "-o", name)
        self.assertEqual(self.get("a.png"), before)

    def test_any_name_can_be_written_and_read(self):
        for name in ("größe.pdf", "a b\nc.pdf", "[x]", "Ω" * 100 + ".pdf", b"\xff\xfe.pdf"):
            with self.subTest(name=name):
                folder = os.fsencode(self.folder)
                source = self.save(blocks(), "a.png")
                target = os.path.join(folder, os.fsencode(name))
                for locale in "C", "C.UTF-8":
                    done = subprocess.run([JTPDF, source, "-o", target], capture_output=True,
                                          env={**os.environ, "LC_ALL": locale})
                    self.assertEqual(done.returncode, 0, done.stderr)
                    with open(target, "rb") as file:
                        self.assertTrue(file.read().rstrip().endswith(b"%%EOF"))
        subprocess.run(["cp", source, self.path("[y]")])
        self.convert(self.path("[y]"))

    def test_standard_output_is_the_same_pdf(self):
        paths = [self.save(blocks(seed=n), f"{n}.png") for n in range(3)]
        expected = open(self.convert(*paths), "rb")
        self.addCleanup(expected.close)
        pdf = expected.read()
        for arguments in ([], ["-o", "-"]):
            self.assertEqual(run(*paths, *arguments), (0, pdf, ""))
        with open(self.path("file"), "wb") as file:  # in the middle of a file
            file.write(b"before")
            file.flush()
            subprocess.run([JTPDF, *paths], stdout=file, check=True)
            file.write(b"after")
        self.assertEqual(self.get("file"), b"before" + pdf + b"after")
        with open(self.path("file"), "ab") as file:
            subprocess.run([JTPDF, *paths], stdout=file, check=True)
        self.assertTrue(self.get("file").endswith(b"after" + pdf))

    def test_standard_output_that_is_a_socket(self):
        ours, theirs = socket.socketpair()
        path = self.save(blocks(), "a.png")
        child = subprocess.Popen([JTPDF, path], stdout=theirs)
        theirs.close()
        data = b""
        while part := ours.recv(65536):
            data += part
        ours.close()
        self.assertEqual(child.wait(), 0)
        self.assertEqual(data, open(self.convert(path), "rb").read())

    def test_never_to_a_terminal(self):
        path = self.save(blocks(), "a.png")
        master, slave = self.open_terminal()
        done = subprocess.run([JTPDF, path], stdout=slave, stderr=subprocess.PIPE)
        os.close(slave)
        os.close(master)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"not written to a terminal; name a file with -o", done.stderr)

    def test_a_fifo_and_a_device_are_written_directly(self):
        path = self.save(blocks(), "a.png")
        os.mkfifo(self.path("fifo"))
        reader = subprocess.Popen(["timeout", "30", "cat", self.path("fifo")],
                                  stdout=subprocess.PIPE)
        self.assertEqual(run(path, "-o", self.path("fifo"))[0], 0)
        self.assertEqual(reader.communicate()[0], open(self.convert(path), "rb").read())

    def test_full_disks_are_reported(self):
        path = self.save(noise(200, 200), "a.png")
        for arguments in (["-o", "/dev/full"],):
            self.assertFails(1, r"/dev/full: cannot be written: No space left on device; make room",
                             path, *arguments)
        with open("/dev/full", "wb") as full:
            done = subprocess.run([JTPDF, path], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"standard output: cannot be written: No space left", done.stderr)

    def test_a_full_file_system_leaves_no_litter(self):
        path = self.save(noise(400, 400), "a.png")
        small = self.path("small")
        os.mkdir(small)
        mount = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", small],
                               capture_output=True)
        if mount.returncode != 0:
            self.skipTest("a small tmpfs cannot be mounted here (needs root)")
        try:
            out = os.path.join(small, "out.pdf")
            self.assertFails(1, r"out\.pdf: cannot be written: No space left", path, "-o", out)
            self.assertEqual(os.listdir(small), [])
        finally:
            subprocess.run(["umount", small], check=True)

    def test_a_file_size_limit_is_reported(self):
        path = self.save(noise(400, 400), "a.png")
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        done = subprocess.run([JTPDF, path, "-o", self.path("out.pdf")], capture_output=True,
                              preexec_fn=limit)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn(b"cannot be written: File too large; raise the limit (ulimit -f)",
                      done.stderr)
        self.assertNoLitter("a.png")

    def test_a_closed_pipe_is_an_error_not_a_crash(self):
        path = self.save(noise(600, 600), "a.png")
        child = subprocess.Popen([JTPDF, path], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        child.stdout.read(10)
        child.stdout.close()
        error = child.stderr.read()
        child.stderr.close()
        self.assertEqual(child.wait(), 1)
        self.assertIn(b"standard output: cannot be written: Broken pipe", error)

    def test_closed_standard_streams_are_nobodys_output(self):
        # Each says that it was decoded: three notes for whoever got descriptor 2.
        for n in range(3):
            jpeg = jpeg_bytes(noise(120, 120, n).convert("CMYK"))
            at = jpeg.index(b"\xff\xee")
            self.put(jpeg[:at] + jpeg[at + 16:], f"{n}.jpg")
        names = [f"{n}.jpg" for n in range(3)]
        for closed in ((2,), (1, 2), (0, 1, 2), (0,)):
            for jobs in "1", "2":
                with self.subTest(closed=closed, jobs=jobs):
                    redirections = " ".join(f"{number}>&-" for number in closed)
                    done = subprocess.run(
                        ["bash", "-c", f'"$0" "$@" {redirections}', JTPDF, *names, "-j", jobs,
                         "-o", "o.pdf"], cwd=self.folder, capture_output=True)
                    self.assertEqual(done.returncode, 0, done.stderr)
                    check = subprocess.run(["qpdf", "--check", self.path("o.pdf")],
                                           capture_output=True, text=True)
                    self.assertEqual(check.returncode, 0, check.stdout + check.stderr)

    def test_closed_standard_output_and_input_are_errors(self):
        path = self.save(blocks(), "a.png")
        for redirection, arguments, message in (
                (">&-", [path], b"standard output: cannot be written: Bad file descriptor"),
                (">&-", [path, "--dry-run"], b"standard output: cannot be written"),
                (">&-", ["--version"], b"standard output: cannot be written"),
                ("<&-", ["-", "-o", "o.pdf"],
                 b"standard input: cannot be read: Bad file descriptor")):
            with self.subTest(redirection + " ".join(arguments)):
                done = subprocess.run(["bash", "-c", f'"$0" "$@" {redirection}', JTPDF, *arguments],
                                      cwd=self.folder, capture_output=True)
                self.assertEqual(done.returncode, 1)
                self.assertIn(message, done.stderr)

    def test_an_empty_name_is_no_output(self):
        path = self.save(blocks(), "a.png")
        self.assertFails(2, "--from-file: the name is empty", path, "--from-file", "")
        for option in (["-o", ""], ["--output", ""]):
            self.assertFails(2, r"-o: the name is empty; name a file, or - for standard output",
                             path, *option)

    def test_places_that_cannot_be_written(self):
        path = self.save(blocks(), "a.png")
        self.assertFails(1, r"nowhere/out\.pdf: cannot be written: No such file.*make its folder",
                         path, "-o", self.path("nowhere/out.pdf"))
        self.assertFails(1, "cannot be written: Is a directory", path, "-o", self.folder)

    def test_a_descriptor_that_does_not_wait_is_waited_for(self):
        path = self.save(noise(600, 600), "a.png")
        ours, theirs = os.pipe()
        os.set_blocking(theirs, False)
        child = subprocess.Popen([JTPDF, path], stdout=theirs, stderr=subprocess.PIPE)
        os.close(theirs)
        time.sleep(0.3)
        with open(ours, "rb") as file:
            data = file.read()
        self.assertEqual(child.communicate(), (None, b""))
        self.assertEqual(child.returncode, 0)
        with open(self.convert(path), "rb") as file:
            self.assertEqual(data, file.read())

    def much_work(self, side, count):
        return [self.save(noise(side, side, n, "RGBA"), f"{n}.png", compress_level=1)
                for n in range(count)]

    def busy(self, paths, **options):
        """The command at work on these, when it has begun to write; and the files there."""
        names = sorted(os.listdir(self.folder))
        child = subprocess.Popen([JTPDF, "--compression", "12", *paths, "-o",
                                  self.path("out.pdf")], **options)
        def is_writing():
            descriptors = f"/proc/{child.pid}/fd/"
            for number in os.listdir(descriptors):
                try:
                    target = os.readlink(descriptors + number)
                except FileNotFoundError:  # closed meanwhile
                    continue
                if target.startswith(self.folder) and os.path.basename(target) not in names:
                    return True
            return False
        while child.poll() is None and not is_writing():
            time.sleep(0.002)
        self.assertIsNone(child.poll())
        return child, names

    SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGABRT,
               signal.SIGALRM, signal.SIGVTALRM, signal.SIGPROF, signal.SIGXCPU, signal.SIGUSR1,
               signal.SIGUSR2]
    if os.environ.get("SANITIZED") == "thread":
        # Its runtime takes an abort for one of the thread it finds, be that one not set up yet.
        SIGNALS.remove(signal.SIGABRT)

    def test_signals_leave_no_litter(self):
        paths = self.much_work(1500, 6)
        for faults, numbers in (("", [*self.SIGNALS, signal.SIGKILL]),
                                ("no-tmpfile", self.SIGNALS)):
            for number in numbers:
                with self.subTest(number, faults=faults):
                    child, names = self.busy(paths, env=with_faults(faults))
                    self.assertEqual(len(os.listdir(self.folder)) - len(names), bool(faults))
                    child.send_signal(number)
                    self.assertEqual(child.wait(), -number)  # the shell must know what ended it
                    self.assertNoLitter(*names)

    def test_signals_that_the_parent_ignores_stay_ignored(self):
        paths = self.much_work(600, 2)
        for number in signal.SIGHUP, signal.SIGINT:
            child, _ = self.busy(paths, preexec_fn=lambda: signal.signal(number, signal.SIG_IGN))
            child.send_signal(number)
            self.assertEqual(child.wait(), 0)
            os.remove(self.path("out.pdf"))

    def test_output_is_the_same_whatever_the_jobs_and_the_locale(self):
        paths = []
        for n in range(12):
            paths.append(self.save(blocks(20 + n, 9, seed=n), f"{n}.png"))
            paths.append(self.save(blocks(20 + n, 9, seed=n), f"{n}.jpg"))
        hashes = set()
        for jobs in "1", "2", "7":
            for locale in "C", "de_DE.UTF-8":
                status, data, _ = run(*paths, "-j", jobs, "--title", "Ä",
                                      environment={"LC_ALL": locale, "TZ": "Asia/Tokyo"})
                self.assertEqual(status, 0)
                hashes.add(hashlib.sha256(data).hexdigest())
        self.assertEqual(len(hashes), 1)
        self.assertNotIn(b"Date", data)


class Faults(OutputTest):
    """A system that fails where systems seldom do."""

    def begin(self, faults, *options, old=False):
        """Runs the command in such a system, to out.pdf unless told otherwise."""
        picture = self.save(noise(200, 200), "a.png")
        if old:
            self.put(b"old", "out.pdf")
        return subprocess.run([JTPDF, picture, *(options or ("-o", "out.pdf"))],
                              cwd=self.folder, capture_output=True,
                              env=with_faults(faults, self.path("log")))

    def expected(self):
        return run(self.path("a.png"))[1]

    def test_a_write_may_take_a_part_or_be_interrupted(self):
        for faults in "short-writes", "interrupts", "short-writes interrupts":
            for options in (), ("-o", "-"):
                with self.subTest(faults=faults, options=options):
                    done = self.begin(faults, *options)
                    self.assertEqual((done.returncode, done.stderr), (0, b""))
                    pdf = done.stdout if options else self.get("out.pdf")
                    self.assertEqual(pdf, self.expected())

    def test_a_read_may_be_interrupted_or_fail(self):
        with open(self.save(noise(200, 200), "a.png"), "rb") as file:
            for name, arguments in (("standard input", ["-"]), ("b.png", ["b.png"])):
                self.save(blocks(), "b.png")
                for faults, status in ("interrupts", 0), ("read-fails", 1):
                    with self.subTest(faults=faults, name=name):
                        file.seek(0)
                        done = subprocess.run([JTPDF, *arguments, "-o", "o.pdf"], stdin=file,
                                              cwd=self.folder, capture_output=True,
                                              env=with_faults(faults))
                        self.assertEqual(done.returncode, status, done.stderr)
                        if status:
                            self.assertIn(name.encode() + b": cannot be read: Input/output error",
                                          done.stderr)

    def test_bytes_reach_the_disk_before_an_old_file_goes(self):
        for faults in "", "no-tmpfile":
            self.assertEqual(self.begin(faults, old=True).returncode, 0)
            self.assertEqual(self.get("log"), b"fsync\nrename\n")
            os.remove(self.path("log"))

    def test_what_fails_at_the_end_leaves_the_old_file(self):
        for faults, message in (("fsync-fails", b"Input/output error"),
                                ("close-fails", b"Disk quota exceeded; make room"),
                                ("rename-fails", b"Input/output error"),
                                ("no-link", b"Operation not permitted")):
            for named in "", " no-tmpfile":
                if faults == "no-link" and named:
                    continue
                with self.subTest(faults=faults + named):
                    done = self.begin(faults + named, old=True)
                    self.assertEqual(done.returncode, 1)
                    self.assertIn(b"out.pdf: cannot be written: " + message, done.stderr)
                    self.assertEqual(self.get("out.pdf"), b"old")
                    self.assertEqual({*os.listdir(self.folder)} - {"log"}, {"a.png", "out.pdf"})
        done = self.begin("close-fails", "-o", "-")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"standard output: cannot be written: Disk quota", done.stderr)

    def test_without_files_without_names_hidden_ones_do(self):
        for faults in "no-tmpfile no-link", "no-proc no-link":
            for old in False, True:
                with self.subTest(faults=faults, old=old):
                    done = self.begin(faults, old=old)
                    self.assertEqual((done.returncode, done.stderr), (0, b""))
                    self.assertEqual(self.get("out.pdf"), self.expected())
                    self.assertEqual({*os.listdir(self.folder)} - {"log"}, {"a.png", "out.pdf"})

    def test_a_name_that_somebody_takes_over_is_not_written_to(self):
        victim = self.put(b"precious", "victim")
        self.begin("no-tmpfile swap")
        with open(victim, "rb") as file:
            self.assertEqual(file.read(), b"precious")


if __name__ == "__main__":
    unittest.main()
