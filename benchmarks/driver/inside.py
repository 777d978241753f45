"""The library's inner work, measured by Google Benchmark with its repetitions interleaved."""

import json
import os
import subprocess

from figures import Figure
from rounds import Spread, ratio, say

NAMES = {
    "bytesToRecords": ("A page in memory to 100 records", "simdjson and a bare struct", 1.25),
    "inflating": ("Inflating a page", "libdeflate into the same room again", None),
    "URLValidity": ("A URL object from text", "a copy of the text", None),
    "queueHop": ("An operation through a serial queue", "a bare strand", None),
    "cloneAddress": ("A URL object from a clone address", None, None),
    "queryParameters": ("A dictionary from a query of four", None, None),
    "linkHeader": ("A result from a Link header of four", None, None),
}


def _samples(programs):
    say("Inner work")
    printed = subprocess.run(
        [
            programs.folder / "bench-inside",
            "--benchmark_format=json",
            f"--benchmark_repetitions={programs.rounds}",
            "--benchmark_min_time=0.15",
            "--benchmark_enable_random_interleaving=true",
        ],
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        check=True,
        env={**os.environ, "KORVOGIT_BENCHMARK_PAGE": str(programs.origin.page)},
    ).stdout
    microseconds = {"ns": 1e-3, "us": 1.0, "ms": 1e3}
    samples = {}
    for line in json.loads(printed)["benchmarks"]:
        if line["run_type"] == "iteration":
            time = line["cpu_time"] * microseconds[line["time_unit"]]
            samples.setdefault(line["run_name"].split("/")[0], []).append(time)
    return {name: Spread(times) for name, times in samples.items()}


def measure_all(programs):
    samples = _samples(programs)
    figures = []
    for name, (title, against, goal) in NAMES.items():
        figure = Figure(title, "µs", samples[name], goal)
        if against:
            figure.against = against
            figure.theirs = samples[name + "Floor"]
            figure.ratio = ratio(figure.ours, figure.theirs)
        figures.append(figure)
    return figures
