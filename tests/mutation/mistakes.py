"""The mistakes of mistakes.txt: read, found in the sources, planted."""

import pathlib
import re

from cxx import Source, matching, tokens_of

LIST = pathlib.Path(__file__).resolve().parent / "mistakes.txt"
NOTHING = "(nothing)"
MISTAKE = re.compile(
    r"""(?P<definition>\S+):\ (?:
        (?P<condition>never|always)\ (?P<keyword>if|while)(?:\ \#(?P<number1>\d+))?
      | drop\ (?P<dropped>.+?)(?:\ \#(?P<number2>\d+))?
      | (?P<old>.+?)(?:\ \#(?P<number3>\d+))?\ =>\ (?P<new>.+))""",
    re.VERBOSE,
)


class Mistake:
    def __init__(self, file, suites, line):
        match = MISTAKE.fullmatch(line)
        if match is None:
            raise ValueError(f"{LIST.name}: not a mistake: {line!r}")
        self.file, self.suites, self.line, self.match = file, suites, line, match
        self.number = int(next((match[f"number{n}"] for n in "123" if match[f"number{n}"]), 1))
        self.wanted = tokens_of(match["keyword"] or match["dropped"] or match["old"])

    def __str__(self):
        return f"{self.file}: {self.line}"

    def plant(self, text):
        source = Source(text)
        places = source.find(self.match["definition"], self.wanted)
        if len(places) < self.number:
            raise ValueError(
                f"{LIST.name}: {self}: there are {len(places)} such places; mend or drop the mistake"
            )
        at = places[self.number - 1]
        if self.match["dropped"]:
            return source.replaced(*source.statement_at(at), ";")
        if self.match["condition"]:
            return self.with_condition(source, at + 1)
        new = "" if self.match["new"] == NOTHING else self.match["new"]
        return source.replaced(at, at + len(self.wanted), new)

    def with_condition(self, source, at):
        """The text with the condition in the brackets at `at` never or always true."""
        end = matching(source.tokens, at)
        condition = source.text[source.tokens[at].begin : source.tokens[end - 1].end]
        if ";" in source.tokens[at:end]:
            raise ValueError(f"{LIST.name}: {self}: its condition declares something")
        by = "(false && {})" if self.match["condition"] == "never" else "(true || {})"
        return source.replaced(at, end, by.format(condition))


def read_mistakes():
    """Sections of a file's name, maybe its suites of tests, and its mistakes, one in a line."""
    mistakes, file, suites = [], None, []
    for line in LIST.read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        if not line.startswith(" "):
            file, _, names = line.partition(": ")
            suites = names.split(", ") if names else []
        else:
            mistakes.append(Mistake(file, suites, line.strip()))
    return mistakes


def problems_of(mistakes, root):
    """What keeps mistakes from being planted, in words."""
    problems, seen = [], set()
    for mistake in mistakes:
        try:
            text = (root / mistake.file).read_text()
            planted = mistake.plant(text)
            if planted == text:
                problems.append(f"{LIST.name}: {mistake}: changes nothing")
            if (mistake.file, planted) in seen:
                problems.append(f"{LIST.name}: {mistake}: stands twice")
            seen.add((mistake.file, planted))
        except (OSError, ValueError) as error:
            problems.append(str(error))
        except IndexError:
            problems.append(f"{LIST.name}: {mistake}: is no statement")
    return problems
