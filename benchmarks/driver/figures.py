"""The figures: what is measured, against what, and what it should come to."""

import dataclasses
import pathlib
import shutil
import subprocess
import tempfile

import relay
from rounds import Spread, column, interleaved, ratio, run, say

PAGES = 200


@dataclasses.dataclass
class Figure:
    name: str
    unit: str
    ours: Spread
    goal: float | None = None
    """Of the ratio where there is something to compare with, else of the figure itself."""
    against: str = ""
    theirs: Spread | None = None
    at_least: bool = False
    """The goal is a lower bound."""
    ratio: Spread | None = None
    note: str = ""

    @property
    def judged(self):
        return (self.ratio or self.ours).median

    @property
    def met(self):
        if self.goal is None:
            return None
        return self.judged >= self.goal if self.at_least else self.judged <= self.goal


def compare(name, unit, ours, against, theirs, goal, **more):
    return Figure(name, unit, ours, goal, against, theirs, ratio=ratio(ours, theirs), **more)


class Programs:
    """The measured programs with the arguments that most of them need."""

    def __init__(self, folder, origin, rounds):
        self.folder = pathlib.Path(folder)
        self.origin = origin
        self.rounds = rounds

    def __call__(self, program, **arguments):
        origin = f"127.0.0.1:{self.origin.port}"
        given = {"origin": origin, "gitlab-origin": origin, "ca": self.origin.authorities}
        given.update({name.replace("_", "-"): value for name, value in arguments.items()})
        words = [f"{name}={value}" for name, value in given.items()]
        return run([self.folder / program, *words])

    def pages(self, program, pages, at_once=1, warm=20, per_page=100, service="GitHub", **more):
        return self(
            program,
            pages=pages,
            at_once=at_once,
            warm=warm,
            per_page=per_page,
            **{"service": service, "warm_service": service, **more},
        )


def whole_path(programs):
    figures = []
    for at_once, name in ((1, "one after another"), (30, "30 at a time")):
        say(f"Pages, {name}")
        results = interleaved(
            {
                "library": lambda: programs.pages("bench-Pages", PAGES, at_once, warm=60),
                "floor": lambda: programs.pages("floor-Pages", PAGES, at_once, warm=60),
                "discard": lambda: programs.pages("floor-Discard", PAGES, at_once, warm=60),
            },
            programs.rounds,
        )
        ours, floor, discard = (
            column(results[side], "cpu_us", PAGES) for side in ("library", "floor", "discard")
        )
        title = f"CPU per page, whole path, warm, {name}"
        figures.append(
            compare(title, "µs", ours, "curl_multi, libdeflate, simdjson, bare struct", floor, 1.15)
        )
        figures.append(
            compare(title, "µs", ours, "libcurl that discards the body", discard, 1.0)
        )
    return figures


def memory(programs):
    say("Memory")
    results = interleaved(
        {
            "library": lambda: programs.pages("bench-Pages", 30, 30, warm=0),
            "floor": lambda: programs.pages("floor-Pages", 30, 30, warm=0),
        },
        programs.rounds,
    )
    ours, floor = (column(results[side], "peak_kb", 1024) for side in ("library", "floor"))
    return [
        compare("Peak resident memory, 30 pages at once", "MiB", ours, "the same floor", floor, 1.2)
    ]


def small_requests(programs):
    figures = []
    for in_flight, requests in ((1, 3000), (100, 15000), (2000, 20000)):
        say(f"Small requests, {in_flight} in flight")
        given = {
            "requests": requests,
            "in_flight": in_flight,
            "path": "/small",
            "warm": max(200, 2 * in_flight),
        }
        results = interleaved(
            {
                "library": lambda given=given: programs("bench-Loads", **given),
                "floor": lambda given=given: programs("floor-Small", **given),
            },
            programs.rounds,
        )
        ours, floor = (
            Spread(requests / (result["wall_us"] / 1e6) for result in results[side])
            for side in ("library", "floor")
        )
        figures.append(
            compare(
                f"Small requests per second, {in_flight:,} in flight",
                "/s",
                ours,
                "bare curl_multi",
                floor,
                0.9,
                at_least=True,
            )
        )
    return figures


def idle_services(programs):
    say("Idle services")
    results = [programs("bench-Idle", services=10_000) for _ in range(programs.rounds)]
    return [
        Figure("10,000 idle services: heap of each", "bytes", column(results, "bytes_each"), 2048),
        Figure(
            "10,000 idle services: CPU of making each",
            "µs",
            column(results, "cpu_us", 10_000),
            2,
        ),
        Figure("10,000 idle services: threads in the process", "", column(results, "threads"), 4),
    ]


def first_request(programs):
    say("First requests")
    given = {
        "ca": programs.origin.bundle,
        "ports": ",".join(str(port) for port in programs.origin.ports),
        "path": "/small",
    }
    results = interleaved(
        {
            "library": lambda: programs("bench-FirstRequests", **given),
            "floor": lambda: programs("floor-Handshake", **given),
        },
        programs.rounds,
    )
    ours, floor = (column(results[side], "wall_us") for side in ("library", "floor"))
    return [
        compare(
            "First request to a new origin, system CA bundle",
            "µs",
            ours,
            "bare OpenSSL, store loaded once",
            floor,
            1.3,
        )
    ]


def cancelling(programs):
    say("Cancelling")
    results = interleaved(
        {
            "library": lambda: programs("bench-Cancel", in_flight=200),
            "floor": lambda: programs("floor-Strand", samples=200),
        },
        programs.rounds,
    )
    title = "Cancel to handler, 200 in flight"
    hop = column(results["floor"], "median_us").median
    return [
        Figure(
            f"{title}: median",
            "µs",
            column(results["library"], "median_us"),
            100,
            note=f"a bare strand takes {hop:.1f} µs",
        ),
        Figure(f"{title}: 99th percentile", "µs", column(results["library"], "p99_us"), 2000),
    ]


def latency(programs):
    say("Latency")
    round_trip = 0.05
    with (
        relay.running(programs.origin.port, round_trip) as port,
        relay.echoing() as near,
        relay.running(near, round_trip) as echo,
    ):
        far = {"origin": f"127.0.0.1:{port}"}
        other = {"warm_service": "GitLab", "gitlab_origin": f"127.0.0.1:{programs.origin.ports[1]}"}
        results = interleaved(
            {
                "library": lambda: programs.pages("bench-Pages", 30, 30, warm=30, **other, **far),
                "floor": lambda: programs.pages("floor-Pages", 30, 30, warm=0, **far),
                "bytes": lambda: {"seconds": relay.round_trip_through(echo)},
            },
            programs.rounds,
        )
    ours = column(results["library"], "wall_us", 1000)
    floor = column(results["floor"], "wall_us", 1000).median
    trips = Spread(2000 * seconds for seconds in column(results["bytes"], "seconds").samples)
    return [
        compare(
            "30 pages at 50 ms latency, at once, a new connection in a process that listed elsewhere",
            "ms",
            ours,
            "two round trips of a byte",
            trips,
            1.3,
            note=f"the floor of the whole path takes {floor:.0f} ms",
        )
    ]


def allocations(programs):
    say("Allocations")
    results = {
        side: programs.pages(f"allocations-{side}", 50) for side in ("library", "floors")
    }
    ours, floor = (
        Spread([result["allocations"] / result["records"]]) for result in results.values()
    )
    return [
        compare(
            "Allocations per repository record, whole path",
            "",
            ours,
            "the floor of the whole path",
            floor,
            None,
        )
    ]


def _stripped_size(library):
    with tempfile.NamedTemporaryFile() as stripped:
        shutil.copyfile(library, stripped.name)
        subprocess.run(["strip", "--strip-all", stripped.name], check=True)
        return pathlib.Path(stripped.name).stat().st_size


def library_file(programs, library):
    say("Library file")
    plug_in = library.parent / "libbench-load-plug-in.so"
    given = {"plug_in": plug_in}
    results = interleaved(
        {
            "own": lambda: programs("bench-Load", dependencies_first=1, **given),
            "all": lambda: programs("bench-Load", dependencies_first=0, **given),
        },
        programs.rounds,
    )
    for result in results["own"] + results["all"]:
        if result["types"] != 8:
            raise RuntimeError("the library does not have eight types")
    everything = column(results["all"], "wall_us", 1000).median
    return [
        Figure("Library file, stripped", "KiB", Spread([_stripped_size(library) / 1024]), 1024),
        Figure(
            "From load to eight registered types",
            "µs",
            column(results["own"], "wall_us"),
            1000,
            note=f"{everything:.1f} ms with the libraries that it uses, when nobody has loaded them",
        ),
    ]


def measure_all(programs, library):
    return [
        *whole_path(programs),
        *memory(programs),
        *small_requests(programs),
        *idle_services(programs),
        *first_request(programs),
        *cancelling(programs),
        *latency(programs),
        *allocations(programs),
        *library_file(programs, library),
    ]
