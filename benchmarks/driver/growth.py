"""How cost grows with what is asked for, and the slopes of it."""

import dataclasses
import math

from rounds import Spread, say

@dataclasses.dataclass
class Curve:
    title: str
    quantity: str
    unit: str
    points: list
    """Pairs of how much was asked for and what it cost, a Spread."""

    @property
    def slope(self):
        """Of the straight line through the points on two logarithmic axes: 1 is linear growth."""
        return _slope([(x, cost.median) for x, cost in self.points])

    @property
    def slope_at_end(self):
        """Of the last three points, where fixed costs hide the least."""
        return _slope([(x, cost.median) for x, cost in self.points[-3:]])


def _slope(points):
    xs = [math.log(x) for x, _ in points]
    ys = [math.log(max(y, 1e-9)) for _, y in points]
    middle_x, middle_y = sum(xs) / len(xs), sum(ys) / len(ys)
    over = sum((x - middle_x) * (y - middle_y) for x, y in zip(xs, ys, strict=True))
    return over / sum((x - middle_x) ** 2 for x in xs)


def _curve(rounds, title, quantity, unit, amounts, cost):
    say(f"Growth: {title}")
    samples = {amount: [] for amount in amounts}
    for _ in range(rounds):
        for amount in amounts:
            samples[amount].append(cost(amount))
    return Curve(title, quantity, unit, [(x, Spread(found)) for x, found in samples.items()])


def measure_all(programs):
    def pages(amount):
        return programs.pages("bench-Pages", amount)["cpu_us"]

    def repositories(amount):
        return programs.pages("bench-Pages", 20, per_page=amount)["cpu_us"] / 20

    def services(amount):
        return programs("bench-Idle", services=amount)["cpu_us"]

    def in_flight(amount):
        times = max(1, 2000 // amount)
        given = {"path": "/small", "warm": 2 * amount, "in_flight": amount}
        return programs("bench-Loads", requests=amount * times, **given)["cpu_us"] / times

    def body(amount):
        times = max(1, min(200, (1 << 25) // amount))
        given = {"path": f"/body/{amount}.json", "warm": 2, "in_flight": 1}
        return programs("bench-Loads", requests=times, **given)["cpu_us"] / times

    rounds = min(7, programs.rounds)
    sizes = [1 << shift for shift in (10, 13, 16, 19, 22, 25, 26)]
    return [
        _curve(rounds, "CPU of listing pages", "pages", "µs", [1, 3, 10, 30, 100, 300], pages),
        _curve(
            rounds,
            "CPU of a page", "repositories in the page", "µs", [10, 30, 100, 300, 1000], repositories
        ),
        _curve(rounds, "CPU of making services", "services", "µs", [1, 10, 100, 1000, 10_000], services),
        _curve(
            rounds,
            "CPU of small requests, all at once", "requests", "µs", [1, 10, 100, 500, 2000], in_flight
        ),
        _curve(rounds, "CPU of loading a body", "bytes", "µs", sizes, body),
    ]
