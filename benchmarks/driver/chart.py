"""Charts as SVG, readable on a light and on a dark page."""

import math
from xml.sax.saxutils import escape

_STYLE = """<style>
text { font: 12px sans-serif; fill: #57606a; }
.title { font-weight: bold; }
.met { fill: #2da44e; } .missed { fill: #cf222e; } .open { fill: #6e7781; }
.goal { stroke: #57606a; stroke-dasharray: 3 3; }
.axis { stroke: #8c959f; } .line { stroke: #0969da; fill: none; stroke-width: 2; }
.linear { stroke: #8c959f; fill: none; stroke-dasharray: 4 4; } .point { fill: #0969da; }
@media (prefers-color-scheme: dark) { text { fill: #9198a1; } }
</style>"""


def _svg(width, height, parts):
    inside = "\n".join(parts)
    head = f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}">'
    return f"{head}\n{_STYLE}\n{inside}\n</svg>\n"


def _text(x, y, text, anchor="start", kind=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" class="{kind}">{escape(text)}</text>'


def _line(x1, y1, x2, y2, kind):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{kind}"/>'


def results(figures):
    """A bar for each figure with a goal: how much of what the goal allows is used, on a logarithmic
    scale."""
    judged = [figure for figure in figures if figure.goal is not None]
    width, left, right, row = 900, 470, 70, 22
    room = width - left - right
    decades = 2

    def place(share):
        return left + room * (math.log10(min(max(share, 0.02), 2)) - math.log10(0.02)) / decades

    parts = [_text(left, 18, "used of what the goal allows (shorter is better)", kind="title")]
    for index, figure in enumerate(judged):
        y = 34 + index * row
        share = figure.goal / figure.judged if figure.at_least else figure.judged / figure.goal
        name = figure.name + (f" / {figure.against}" if figure.against else "")
        name = name if len(name) < 72 else name[:69] + "…"
        kind = "met" if figure.met else "missed"
        bar = f'<rect x="{left}" y="{y}" width="{place(share) - left:.1f}" height="14" class="{kind}"/>'
        parts += [_text(left - 8, y + 12, name, "end"), bar]
        parts.append(_text(place(share) + 6, y + 12, f"{share * 100:.0f} %"))
    bottom = 34 + len(judged) * row
    parts.append(_line(place(1), 26, place(1), bottom, "goal"))
    return _svg(width, bottom + 10, parts)


def _panel(curve, x, y, width, height):
    points = [(amount, cost.median) for amount, cost in curve.points]
    logs = [(math.log10(a), math.log10(max(b, 1e-9))) for a, b in points]
    low_x, high_x = logs[0][0], logs[-1][0]
    # The straight line of linear growth through the last point belongs to the picture.
    linear = [(low_x, logs[-1][1] - (high_x - low_x)), logs[-1]]
    low_y = min(value for _, value in logs)
    high_y = max(value for _, value in logs)

    def place(log_x, log_y):
        return (
            x + width * (log_x - low_x) / (high_x - low_x),
            y + height - height * (max(log_y, low_y) - low_y) / ((high_y - low_y) or 1),
        )

    start = max(low_x, high_x - (high_y - low_y))
    ends = [place(start, max(linear[0][1], low_y)), place(*linear[1])]
    path = " ".join(f"{a:.1f},{b:.1f}" for a, b in (place(*point) for point in logs))
    return [
        _text(x, y - 24, curve.title, kind="title"),
        _text(x, y - 9, f"slope {curve.slope:.2f}, at the end {curve.slope_at_end:.2f}"),
        _line(x, y + height, x + width, y + height, "axis"),
        _line(x, y, x, y + height, "axis"),
        _line(*ends[0], *ends[1], "linear"),
        f'<polyline points="{path}" class="line"/>',
        *(
            f'<circle cx="{a:.1f}" cy="{b:.1f}" r="3" class="point"/>'
            for a, b in (place(*point) for point in logs)
        ),
        _text(x, y + height + 16, f"{points[0][0]:,}"),
        _text(x + width, y + height + 16, f"{points[-1][0]:,} {curve.quantity}", "end"),
        _text(x + 6, y + 10, f"{points[-1][1]:,.0f} {curve.unit}"),
        _text(x + 6, y + height - 6, f"{points[0][1]:,.0f} {curve.unit}"),
    ]


def growth(curves):
    """Each curve on two logarithmic axes; a dashed line is linear growth."""
    width, height, columns = 270, 150, 3
    parts = []
    for index, curve in enumerate(curves):
        x = 30 + (index % columns) * (width + 30)
        y = 50 + (index // columns) * (height + 80)
        parts += _panel(curve, x, y, width, height)
    rows = (len(curves) + columns - 1) // columns
    return _svg(30 + columns * (width + 30), 20 + rows * (height + 80), parts)
