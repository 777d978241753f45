"""Writes what was measured: a table for people, JSON for programs, two charts."""

import datetime
import json
import os
import pathlib
import platform
import shutil
import subprocess

import chart

PACKAGES = [
    "g++",
    "libcurl4-openssl-dev",
    "libssl-dev",
    "libsimdjson-dev",
    "libdeflate-dev",
    "nginx",
    "python3-github",
    "python3-gitlab",
    "gh",
    "golang-github-google-go-github-dev",
    "golang-go",
    "nodejs",
]


def _processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def _version_of(package):
    found = subprocess.run(
        ["dpkg-query", "-W", "-f=${db:Status-Status} ${Version}", package],
        capture_output=True,
        text=True,
    ).stdout.split()
    return found[1] if found[:1] == ["installed"] else None


def _versions(npm_folder):
    versions = {package: version for package in PACKAGES if (version := _version_of(package))}
    if "nodejs" not in versions and shutil.which("node"):
        versions["nodejs"] = subprocess.run(
            ["node", "--version"], capture_output=True, text=True
        ).stdout.strip()
    for package in ("@octokit/rest", "@gitbeaker/rest"):
        described = npm_folder / "node_modules" / package / "package.json"
        if described.exists():
            versions[package] = json.loads(described.read_text())["version"]
    return versions


def machine(npm_folder, load_before):
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / (1 << 30)
    return {
        "date": datetime.date.today().isoformat(),
        "processor": _processor(),
        "processors": os.cpu_count(),
        "memory_gib": round(memory),
        "system": f"Linux {platform.release().split('-')[0]}",
        "load_before": round(load_before, 2),
        "versions": _versions(npm_folder),
    }


def _number(value):
    if value >= 1000:
        return f"{value:,.0f}"
    return f"{value:.3g}"


def _spread(spread, digits=_number):
    if spread.low == spread.high:
        return digits(spread.median)
    return f"{digits(spread.median)} ({digits(spread.low)} … {digits(spread.high)})"


def _goal(figure):
    if figure.goal is None:
        return ""
    sign = "≥" if figure.at_least else "≤"
    if figure.ratio and figure.goal < 0.5:
        return f"{sign} 1/{round(1 / figure.goal)}"
    return f"{sign} {figure.goal:g}"


def _row(figure):
    verdict = {True: "yes", False: "**no**", None: ""}[figure.met]
    name = figure.name + (f" ({figure.unit})" if figure.unit else "")
    if figure.note:
        name += f"; {figure.note}"
    theirs = f"{figure.against}: {_number(figure.theirs.median)}" if figure.theirs else ""
    ratio = _spread(figure.ratio, lambda value: f"{value:.3g}") if figure.ratio else ""
    cells = [name, _spread(figure.ours), theirs, ratio, _goal(figure), verdict]
    return "| " + " | ".join(cells) + " |"


_TEXT = """# What the library costs

Written by `./run bench`, which repeats all of it in a few minutes. Every program that is measured
is in `benchmarks/`; the floors are what a user could write by hand for one service on the same libraries,
without what the library promises beyond (types checked, every error told, cancellation, any service).

{machine}

Each number is the median of its rounds, with the smallest and the largest in brackets. In every round all sides ran
once, one after another, each as a process of its own; a ratio is the median of the rounds' ratios. CPU is the
client's, user and system. The origin is nginx over TLS and HTTP/2 on the loopback interface, with gzip files of
generated repositories, {page:,} bytes of JSON to a page of 100.

| figure | library | against | ratio | goal | met |
|---|---|---|---|---|---|
{rows}

{missing}![How much of what the goals allow is used](results.svg)

## Growth

The slope is that of a straight line through the points on two logarithmic axes: 1 is linear, less is better.
Fixed costs flatten the beginning, so the slope of the last three points stands beside it. Bodies above 32 MiB, glibc's
largest threshold, get fresh pages from the kernel each time, which shows as a step there.

| cost | from … to | slope | at the end | cost there |
|---|---|---|---|---|
{curves}

![Growth](growth.svg)
"""


def _machine_text(facts):
    versions = ", ".join(f"{name} {version}" for name, version in facts["versions"].items())
    return (
        f"{facts['date']}; {facts['processors']} × {facts['processor']}, {facts['memory_gib']} GiB, "
        f"{facts['system']}; load average before the start {facts['load_before']}.\n\n{versions}."
    )


def _curve_row(curve):
    first, last = curve.points[0][0], curve.points[-1][0]
    cost = f"{_number(curve.points[-1][1].median)} {curve.unit}"
    cells = [
        curve.title,
        f"{first:,} … {last:,} {curve.quantity}",
        f"{curve.slope:.2f}",
        f"{curve.slope_at_end:.2f}",
        cost,
    ]
    return "| " + " | ".join(cells) + " |"


def _as_json(facts, figures, missing, curves):
    return {
        "machine": facts,
        "figures": [
            {
                "name": figure.name,
                "unit": figure.unit,
                "library": figure.ours.as_json(),
                "against": figure.against or None,
                "other": figure.theirs.as_json() if figure.theirs else None,
                "ratio": figure.ratio.as_json() if figure.ratio else None,
                "goal": figure.goal,
                "goal_is_lower_bound": figure.at_least,
                "met": figure.met,
            }
            for figure in figures
        ],
        "not_present": missing,
        "growth": [
            {
                "cost": curve.title,
                "of": curve.quantity,
                "unit": curve.unit,
                "points": [[amount, cost.as_json()] for amount, cost in curve.points],
                "slope": curve.slope,
                "slope_at_end": curve.slope_at_end,
            }
            for curve in curves
        ],
    }


def write(folder, facts, page_size, figures, missing, curves):
    folder.mkdir(parents=True, exist_ok=True)
    absent = f"Not present, so not measured: {', '.join(missing)}.\n\n" if missing else ""
    text = _TEXT.format(
        machine=_machine_text(facts),
        page=page_size,
        rows="\n".join(_row(figure) for figure in figures),
        missing=absent,
        curves="\n".join(_curve_row(curve) for curve in curves),
    )
    folder.joinpath("results.md").write_text(text)
    found = _as_json(facts, figures, missing, curves)
    folder.joinpath("results.json").write_text(json.dumps(found, indent=1, ensure_ascii=False) + "\n")
    folder.joinpath("results.svg").write_text(chart.results(figures))
    folder.joinpath("growth.svg").write_text(chart.growth(curves))
