#!/usr/bin/env python3
"""ask_server.py PROGRAM PICTURE ANSWER.pdf: what the server answers to a picture, and to what is none."""

import http.client
import subprocess
import sys
from pathlib import Path
from typing import Optional, Tuple


def ask(port: int, method: str, body: Optional[bytes]) -> Tuple[int, bytes]:
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=30)
    connection.request(method, "/", body)
    answer = connection.getresponse()
    return answer.status, answer.read()


def check(server: "subprocess.Popen[str]", data: bytes, target: Path) -> None:
    assert server.stdout is not None
    first_line = server.stdout.readline()
    assert first_line.strip().isdigit(), first_line
    port = int(first_line)
    status, pdf = ask(port, "POST", data)
    assert status == 200 and pdf.startswith(b"%PDF-1.5") and data in pdf, (status, pdf[:200])
    target.write_bytes(pdf)
    for method, body, reason in (("POST", b"x" * 300000, b"is no picture of a known kind"),
                                 ("POST", data[:500], b"cut off"),
                                 ("GET", None, b"send a picture by POST")):
        status, text = ask(port, method, body)
        assert status == 422 and reason in text, (status, text)
    assert server.wait(30) == 0, server.returncode


def main() -> None:
    program, picture, target = sys.argv[1:]
    with subprocess.Popen([program, "0", "4"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True) as server:
        try:
            check(server, Path(picture).read_bytes(), Path(target))
        except BaseException:
            server.kill()  # it waits for what it will not be asked any more
            print("the server said:", server.communicate()[0], file=sys.stderr)
            raise


if __name__ == "__main__":
    main()
