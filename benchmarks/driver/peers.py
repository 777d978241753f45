"""What else lists repositories: libraries and a program that Debian, or npm, has."""

import os
import pathlib
import resource
import shutil
import subprocess

from figures import compare
from rounds import column, interleaved, run, say

PAGES = 40

SOURCES = pathlib.Path(__file__).resolve().parent.parent / "peers"


def _gh(programs, folder):
    """gh has no loop to warm up: what forty pages cost more than five is the cost of 35."""
    base = f"https://localhost:{programs.origin.port}/api/v3"
    environment = {
        **os.environ,
        "SSL_CERT_FILE": str(programs.origin.authorities),
        "GH_ENTERPRISE_TOKEN": "benchmark",
        "GH_CONFIG_DIR": str(folder),
        "GH_NO_UPDATE_NOTIFIER": "1",
    }

    def processor(first_page):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        first = f"{base}/user/repos?per_page=100&page={first_page}"
        subprocess.run(
            ["gh", "api", "--hostname", "localhost", "--paginate", "-q", ".[].full_name", first],
            stdout=subprocess.DEVNULL,
            check=True,
            env=environment,
        )
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime) * 1e6

    pages = 35
    return lambda: {"cpu_us": (processor(261) - processor(296)) / pages * PAGES}


def _command(words, programs, folder, environment):
    base = f"https://localhost:{programs.origin.port}"
    given = [f"base={base}", f"ca={programs.origin.authorities}", "warm=20", f"pages={PAGES}"]
    return lambda: run([*words, *given], environment)


def _go_program(folder):
    """go-github's own Debian package, compiled as Debian compiles what uses it."""
    program = folder / "go_github"
    environment = {
        **os.environ,
        "GO111MODULE": "off",
        "GOPATH": "/usr/share/gocode",
        "GOCACHE": str(folder / "go-cache"),
        "GOFLAGS": "",
    }
    subprocess.run(
        ["go", "build", "-o", program, SOURCES / "go_github.go"],
        check=True,
        capture_output=True,
        env=environment,
    )
    return program


def _node_folder(folder):
    """The Node peers beside the packages that they import, which npm puts into the build folder."""
    for file in SOURCES.glob("*.mjs"):
        shutil.copy(file, folder)
    shutil.copy(SOURCES / "package.json", folder)
    if not (folder / "node_modules").exists():
        subprocess.run(
            ["npm", "install", "--no-audit", "--no-fund", "--ignore-scripts"],
            cwd=folder,
            check=True,
            capture_output=True,
            timeout=120,
        )
    return folder


def _python(module, source, programs, folder):
    python = "/usr/bin/python3"  # the one that Debian's packages are for
    subprocess.run([python, "-c", f"import {module}"], check=True, capture_output=True)
    return _command([python, SOURCES / source], programs, folder, {})


def _node(source, programs, folder):
    place = _node_folder(folder)
    trust = {"NODE_EXTRA_CA_CERTS": str(programs.origin.authorities)}
    return _command(["node", place / source], programs, folder, trust)


def _go(programs, folder):
    trust = {"SSL_CERT_FILE": str(programs.origin.authorities)}
    return _command([_go_program(folder)], programs, folder, trust)


def _gh_if_installed(programs, folder):
    subprocess.run(["gh", "--version"], check=True, capture_output=True)
    return _gh(programs, folder)


PEERS = {
    "go-github": ("GitHub", 1 / 12, _go),
    "octokit": ("GitHub", 1 / 25, lambda *given: _node("octokit.mjs", *given)),
    "PyGithub": ("GitHub", 1 / 25, lambda *given: _python("github", "pygithub.py", *given)),
    "gitbeaker": ("GitLab", 1 / 10, lambda *given: _node("gitbeaker.mjs", *given)),
    "python-gitlab": ("GitLab", 1 / 45, lambda *given: _python("gitlab", "pygitlab.py", *given)),
    "gh": ("GitHub", 1 / 10, _gh_if_installed),
}


def _present(programs, folder):
    runners = {}
    missing = []
    for name, (_, _, make) in PEERS.items():
        try:
            runner = make(programs, folder)
            runner()
            runners[name] = runner
        except (OSError, subprocess.SubprocessError, RuntimeError) as reason:
            say(f"{name} is not present: {reason}")
            missing.append(name)
    return runners, missing


def measure_all(programs, folder):
    """The figures, and the names of those that could not be measured."""
    folder.mkdir(parents=True, exist_ok=True)
    runners, missing = _present(programs, folder)
    for service in ("GitHub", "GitLab"):
        runners[service] = lambda service=service: programs.pages(
            "bench-Pages", PAGES * 2, warm=60, service=service
        )
    say("Peers")
    results = interleaved(runners, min(5, programs.rounds))
    figures = []
    for name, (service, goal, _) in PEERS.items():
        if name in missing:
            continue
        ours = column(results[service], "cpu_us", PAGES * 2)
        theirs = column(results[name], "cpu_us", PAGES)
        title = f"CPU per page of {service}, warm"
        figures.append(compare(title, "µs", ours, name, theirs, goal))
    return figures, missing
