#!/usr/bin/env python3
"""same_as_example.py README.md hello.c: the C program that README shows whole is the example."""

import pathlib
import re
import sys

readme, example = (pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:])
shown = re.findall(r"^<!-- snippet: c -->\n```c\n(.*?)^```$", readme, re.MULTILINE | re.DOTALL)
if shown != [example]:
    sys.exit(f"{sys.argv[1]} does not show {sys.argv[2]} as it is: copy the file into the block "
             "behind <!-- snippet: c -->")
