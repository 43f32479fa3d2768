#!/usr/bin/env python3
"""Runs the examples of all docstrings in an empty folder, and those of the files given (README.md).

Examples that import what is not installed here are left out, and it is said which.
"""

import doctest
import importlib
import importlib.util
import os
import pkgutil
import re
import sys
import tempfile

import jtpdf


def missing(test: doctest.DocTest) -> "list[str]":
    source = "".join(example.source for example in test.examples)
    names = re.findall(r"^(?:import|from) (\w+)", source, re.MULTILINE)
    return [name for name in names if importlib.util.find_spec(name) is None]


def main() -> int:
    finder, parser = doctest.DocTestFinder(), doctest.DocTestParser()
    tests = finder.find(jtpdf)
    for module in pkgutil.iter_modules(jtpdf.__path__, "jtpdf."):
        tests += finder.find(importlib.import_module(module.name))
    for name in sys.argv[1:]:
        with open(name, encoding="utf-8") as file:
            tests.append(parser.get_doctest(file.read(), {}, name, name, 0))

    runner = doctest.DocTestRunner()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for test in tests:
            if names := missing(test):
                print(f"{test.name}: left out, it needs {', '.join(names)}")
            else:
                runner.run(test)
        os.chdir("/")
    print(f"{runner.tries} examples, {runner.failures} failures")
    return 0 if runner.tries > 20 and runner.failures == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
