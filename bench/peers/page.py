#!/usr/bin/env python3
"""Writes what measure.py found into docs/speed.md, between its marks, and as bar charts.

    page.py FOLDER-OF-JSON DOCS-FOLDER
"""
import html
import json
import os
import re
import sys

TITLES = {"avx2": "AVX2", "avx512": "AVX-512"}


def best_peer(row):
    return max(row["peers"], key=lambda peer: peer["share"])


def percent(share):
    return f"{100 * share:.{0 if share >= 0.1 else 1}f} %"


def table(measured):
    lines = ["| Operation | Format | MP/s | of memcpy | fastest peer | its part of memcpy | ours / peer | what differs |",
             "|---|---|---:|---:|---|---:|---:|---|"]
    for row in measured["rows"]:
        peer = best_peer(row)
        ratio = row["ours"]["share"] / peer["share"]
        lines.append(f"| {row['name']} | {row['format']} | {row['ours']['mps']:,.0f} | {percent(row['ours']['share'])} | "
                     f"{peer['library']} ({peer['call']}) | {percent(peer['share'])} | {ratio:.2f} | {row['differs']} |")
    return "\n".join(lines)


def summary(measured):
    about, rows = measured["about"], measured["rows"]
    ahead = sum(row["ours"]["share"] >= best_peer(row)["share"] for row in rows)
    return (f"{about['processor']}, {about['compiler']}; {', '.join(about['libraries'])}. "
            f"At least as fast as the fastest peer in {ahead} of {len(rows)} rows.\n\n"
            f"![Bars: each operation on RGB pictures at {TITLES[about['level']]} as a part of a memcpy's speed, "
            f"beside the fastest other library](speed-{about['level']}-RGB.svg)\n\n[RGBA](speed-{about['level']}-RGBA.svg) and "
            f"[gray](speed-{about['level']}-gray.svg) as charts.")


# --- Charts -----------------------------------------------------------------------------------

NAMES, BARS, LINE, TOP = 330, 520, 26, 60  # pixels


def bar(x, y, width, color, text):
    return (f'<rect x="{x}" y="{y}" width="{max(width, 1):.1f}" height="9" fill="{color}"/>'
            f'<text x="{x + width + 4:.1f}" y="{y + 9}" class="v">{html.escape(text)}</text>')


def chart(measured, format):
    rows = [row for row in measured["rows"] if row["format"] == format]
    longest = max(max(row["ours"]["share"], best_peer(row)["share"]) for row in rows)
    scale = BARS / longest
    height = TOP + LINE * len(rows) + 10
    title = f"Part of a memcpy's speed, {format}, {TITLES[measured['about']['level']]}"
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{NAMES + BARS + 160}" height="{height}" '
             f'viewBox="0 0 {NAMES + BARS + 160} {height}">',
             "<style>text{font:12px sans-serif;fill:#333}.v{font-size:10px;fill:#666}.t{font-size:15px}</style>",
             '<rect width="100%" height="100%" fill="#fff"/>',
             f'<text x="10" y="22" class="t">{title}</text>',
             '<rect x="10" y="34" width="12" height="9" fill="#2a6f97"/><text x="27" y="43">PictureTQX</text>',
             '<rect x="120" y="34" width="12" height="9" fill="#c9ada7"/><text x="137" y="43">the fastest peer</text>']
    for i, row in enumerate(rows):
        y, peer = TOP + i * LINE, best_peer(row)
        parts.append(f'<text x="{NAMES - 8}" y="{y + 13}" text-anchor="end">{html.escape(row["name"])}</text>')
        parts.append(bar(NAMES, y, row["ours"]["share"] * scale, "#2a6f97", percent(row["ours"]["share"])))
        parts.append(bar(NAMES, y + 10, peer["share"] * scale, "#c9ada7", f'{percent(peer["share"])} {peer["library"]}'))
    whole = NAMES + scale
    parts.append(f'<line x1="{whole:.1f}" y1="{TOP - 6}" x2="{whole:.1f}" y2="{height - 10}" stroke="#999" '
                 'stroke-dasharray="3 3"/>')
    return "\n".join(parts + ["</svg>", ""])


# --- The page ---------------------------------------------------------------------------------


def replaced(page, mark, text):
    """The page with what stands between a mark and the next end mark replaced."""
    pattern = re.compile(rf"(<!-- {mark} -->\n).*?(<!-- end -->)", re.S)
    if not pattern.search(page):
        raise SystemExit(f"the page has no mark {mark}")
    return pattern.sub(lambda match: match.group(1) + text + "\n" + match.group(2), page)


def main():
    folder, docs = sys.argv[1:]
    with open(os.path.join(docs, "speed.md")) as file:
        page = file.read()
    for level in TITLES:
        path = os.path.join(folder, level + ".json")
        if not os.path.exists(path):
            continue
        with open(path) as file:
            measured = json.load(file)
        page = replaced(page, f"measured {level}", f"{summary(measured)}\n\n{table(measured)}")
        for format in ("RGB", "RGBA", "gray"):
            with open(os.path.join(docs, f"speed-{level}-{format}.svg"), "w") as file:
                file.write(chart(measured, format))
    with open(os.path.join(docs, "speed.md"), "w") as file:
        file.write(page)


main()
