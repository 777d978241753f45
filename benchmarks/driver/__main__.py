"""Measures the library and writes the results.

Usage: driver BUILD-FOLDER RESULTS-FOLDER [ROUNDS]

Fifteen rounds, unless said otherwise; fewer than five are for trying only. On a virtual machine whose
speed changes from one second to the next the median of seven is still uncertain by a tenth.
"""

import os
import pathlib
import signal
import sys
import tempfile

import figures
import growth
import inside
import origin
import peers
import report


def main(build, results, rounds):
    programs_folder = build / "bin"
    library = next(build.glob("lib*/libKorvoGitService.so")).resolve()
    npm_folder = build / "peers"
    load = os.getloadavg()[0]
    with tempfile.TemporaryDirectory() as folder:
        with origin.running(programs_folder, folder) as running:
            programs = figures.Programs(programs_folder, running, rounds)
            page_size = running.page.stat().st_size
            found = figures.measure_all(programs, library) + inside.measure_all(programs)
            of_peers, missing = peers.measure_all(programs, npm_folder)
            curves = growth.measure_all(programs)
    found += of_peers
    facts = report.machine(npm_folder, load)
    report.write(results, facts, page_size, found, missing, curves)
    missed = [figure.name for figure in found if figure.met is False]
    print(f"{len(found)} figures, {len(missed)} of them beside their goals:", *missed, sep="\n  ")


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the origin is ended
    given = sys.argv[1:]
    main(
        pathlib.Path(given[0]).resolve(),
        pathlib.Path(given[1]).resolve(),
        int(given[2]) if len(given) > 2 else 15,
    )
