#!/usr/bin/env python3
"""Holds the library against the model, call sequence by call sequence.

    compare.py --player BUILD/tests/model/model_player --count 1000 [--seed N] [--hostile]
    compare.py --player ... sequences/*.txt

Each sequence is played by the player (the real library) and by the model; the two transcripts must
be the same, byte for byte. The first that differs is made as short as it goes and shown with both
transcripts. The exit status is 0 only if nothing differed.
"""

import argparse
import itertools
import os
import shlex
import subprocess
import sys
import tempfile

import generate
import model
import sequence as seq

BATCH = 200  # sequences that one player process plays
HANG = 600  # seconds after which it is taken to hang


class Player:
    def __init__(self, command):
        self.command = command

    def play(self, named):
        """The transcripts of [(name, sequence)], fewer if the player died, and why it died."""
        text = "".join(
            "sequence %s\n%s\nend\n" % (name, "\n".join(sequence)) for name, sequence in named
        )
        with tempfile.TemporaryDirectory() as scratch:
            try:
                result = subprocess.run(
                    self.command,
                    input=text.encode(),
                    capture_output=True,
                    env=dict(os.environ, TMPDIR=scratch),
                    timeout=HANG,
                    check=False,
                )
            except subprocess.TimeoutExpired as hung:
                result = subprocess.CompletedProcess(
                    self.command, -1, hung.stdout or b"", b"it hangs"
                )
        transcripts = []
        for line in result.stdout.decode("utf-8", "replace").splitlines():
            if line.startswith("sequence "):
                current = []
            elif line == "end":
                transcripts.append(current)
            else:
                current.append(line)
        death = ""
        if result.returncode != 0:
            death = "player: exit status %d\n%s" % (
                result.returncode,
                result.stderr.decode("utf-8", "replace"),
            )
        return transcripts, death


def predicted(sequence):
    """The model's transcript, or None where it makes no prediction."""
    try:
        return seq.predict(sequence)
    except (model.AmbiguousNaN, model.Unsupported):
        return None


def difference(player, sequence):
    """None if the two agree on the sequence, else (predicted lines, played lines)."""
    expected = predicted(sequence)
    if expected is None:
        return None
    transcripts, death = player.play([("alone", sequence)])
    actual = transcripts[0] if transcripts else []
    if death:
        actual = actual + death.splitlines()
    return None if expected == actual else (expected, actual)


def smallest(player, sequence):
    """Leaves out calls as long as the two still differ (delta debugging)."""
    pieces = 2
    while len(sequence) > 1:
        size = max(1, len(sequence) // pieces)
        for start in range(0, len(sequence), size):
            candidate = sequence[:start] + sequence[start + size :]
            if candidate and difference(player, candidate):
                sequence = candidate
                pieces = max(2, pieces - 1)
                break
        else:
            if size == 1:
                break
            pieces = min(len(sequence), pieces * 2)
    return sequence


def readable(line):
    """A transcript line with the hex of a whole document turned into escaped text lines."""
    words = line.split(" ")
    for i, word in enumerate(words):
        try:
            data = bytes.fromhex(word) if len(word) > 40 else b""
        except ValueError:
            continue
        if data:
            words[i] = "".join(
                "\n      | " + repr(part)[2:-1] for part in data.splitlines(keepends=True)
            )
    return " ".join(words)


def show(player, name, sequence):
    sequence = smallest(player, sequence)
    expected, actual = difference(player, sequence)
    print("DIFFERENCE in sequence %s, made smaller:" % name)
    for i, line in enumerate(sequence):
        print("  %d: %s" % (i, line))
    first = next(i for i, (a, b) in enumerate(itertools.zip_longest(expected, actual)) if a != b)
    for title, lines in (("the model says", expected), ("the library does", actual)):
        print("%s:" % title)
        for line in lines[first : first + 3] or ["(nothing)"]:
            print("  " + readable(line))
        if len(lines) > first + 3:
            print("  ...")


def compare_batch(player, named, tally):
    """Plays a batch; returns the [(name, sequence)] that differ."""
    expected = {}
    for name, sequence in named:
        transcript = predicted(sequence)
        if transcript is not None:
            expected[name] = transcript
    tally["unpredicted"] += len(named) - len(expected)
    named = [pair for pair in named if pair[0] in expected]
    differing = []
    while named:
        transcripts, death = player.play(named)
        for (name, sequence), actual in zip(named, transcripts):
            tally["compared"] += 1
            tally["calls"] += len(actual)
            if actual != expected[name]:
                differing.append((name, sequence))
        if not death:
            break
        if len(transcripts) == len(named):
            sys.exit("%s(after the last sequence)" % death)
        differing.append(named[len(transcripts)])  # it died of this one
        named = named[len(transcripts) + 1 :]
    return differing


def batches(arguments):
    if arguments.files:
        yield [(path, seq.read_sequence(path)) for path in arguments.files]
        return
    for start in range(arguments.seed, arguments.seed + arguments.count, BATCH):
        end = min(start + BATCH, arguments.seed + arguments.count)
        yield [(str(s), generate.generate(s, arguments.hostile)) for s in range(start, end)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--player", required=True, help="the command that plays sequences")
    parser.add_argument("--seed", type=int, default=1, help="of the first random sequence")
    parser.add_argument("--count", type=int, default=300, help="how many random sequences")
    parser.add_argument("--hostile", action="store_true", help="any value anywhere")
    parser.add_argument("--most", type=int, default=1, help="stop after so many differences")
    parser.add_argument("files", nargs="*", help="sequences to play instead of random ones")
    arguments = parser.parse_args()
    # A path may hold blanks; a command line has its words quoted.
    is_path = os.path.exists(arguments.player)
    player = Player([arguments.player] if is_path else shlex.split(arguments.player))
    tally = {"compared": 0, "calls": 0, "unpredicted": 0}
    shown = 0
    for batch in batches(arguments):
        for name, sequence in compare_batch(player, batch, tally):
            if difference(player, sequence) is None:
                print("DIFFERENCE in sequence %s, but only behind the ones before it" % name)
            else:
                show(player, name, sequence)
            shown += 1
            if shown == arguments.most:
                sys.exit(1)
    agree = tally["compared"] - shown
    print(
        "%d sequences agree, %d differ (%d transcript lines); "
        "%d left out, whose outcome is not fixed"
        % (agree, shown, tally["calls"], tally["unpredicted"])
    )
    sys.exit(1 if shown or tally["compared"] == 0 else 0)


if __name__ == "__main__":
    main()
