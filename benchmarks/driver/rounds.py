"""Runs programs in turn, round after round, so that what else the machine does hits all alike."""

import json
import os
import statistics
import subprocess
import sys


def run(command, environment=None):
    """The figures that a measured program prints."""
    finished = subprocess.run(
        [str(word) for word in command],
        capture_output=True,
        text=True,
        timeout=300,
        env={**os.environ, **(environment or {})},
    )
    if finished.returncode != 0:
        raise RuntimeError(f"{command[0]} failed: {finished.stderr.strip()[-500:]}")
    return json.loads(finished.stdout.strip().splitlines()[-1])


def interleaved(runners, rounds):
    """Calls each runner once a round; gives the list of its figures by its name."""
    results = {name: [] for name in runners}
    for _ in range(rounds):
        for name, runner in runners.items():
            results[name].append(runner())
    return results


def say(text):
    print(text, file=sys.stderr, flush=True)


class Spread:
    """Samples of one quantity: the median is quoted, the extremes tell how noisy it was."""

    def __init__(self, samples):
        self.samples = list(samples)
        self.median = statistics.median(self.samples)
        self.low = min(self.samples)
        self.high = max(self.samples)

    def as_json(self):
        return {"median": self.median, "min": self.low, "max": self.high}


def column(results, name, each=1.0):
    return Spread(result[name] / each for result in results)


def ratio(ours, theirs):
    """Round by round, since both sides of a round met the same machine."""
    return Spread(a / b for a, b in zip(ours.samples, theirs.samples, strict=True))
