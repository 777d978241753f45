"""What the Python peers do alike: arguments as name=value, the measuring, one line of JSON."""

import json
import resource
import sys


def arguments():
    return dict(word.split("=", 1) for word in sys.argv[1:])


def _processor():
    usage = resource.getrusage(resource.RUSAGE_SELF)
    return (usage.ru_utime + usage.ru_stime) * 1e6


def measure(pages, warm, count):
    for _ in pages(warm):
        pass
    before = _processor()
    for _ in pages(count):
        pass
    after = _processor()
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    print(json.dumps({"cpu_us": after - before, "peak_kb": peak}))
