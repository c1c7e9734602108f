#!/usr/bin/env python3
"""page.py PAGE FIGURES… [--load L] [--short]: writes the figures of benchmarks into a page in Markdown.

FIGURES are lists of {"benchmark", "case", "figure", "value", "unit"} in JSON, as the benchmarks write them. A benchmark
that is measured gets its section of the page anew, with what it measures, beside whom, on which machine, of which
commit, and when; the sections of others stay to the byte. Exit status 1 where a figure to compare is missing.
"""
import argparse
import json
import math
import re
import sys
from dataclasses import dataclass
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "scripts"))
import provenance  # noqa: E402


@dataclass(frozen=True)
class Row:
    """One measure: the figure that is ours, those of others by their names, and the least that is possible."""
    measure: str
    ours: str
    others: tuple = ()  # of (name, figure)
    floor: str | None = None
    floor_case: str | None = None  # where the floor is a case of its own


@dataclass(frozen=True)
class Benchmark:
    name: str
    measures: str
    peers: tuple = ()  # of names in VERSIONS
    floor: str = ""
    rows: tuple = ()


VERSIONS = {
    "FFMS2": ("pkg-config", "--modversion", "ffms2"),
    "FFmpeg": ("ffmpeg", "-version"),
    "OpenCV": ("/usr/bin/python3", "-c", "import cv2; print(cv2.__version__)"),
    "Qt": ("pkg-config", "--modversion", "Qt6Core"),
    "mpv": ("mpv", "--version"),
}

FLOOR = "floor (libavcodec alone): "
# Ours may come below what is a floor for others, and a busy machine stops either. This far below, nothing was done.
IMPOSSIBLE = 0.1
COPY = "floor: a copy of the picture"


def step_row(measure, floor=None, others=("mpv",)):
    return [Row(measure + end, f"{measure}, ours{suffix}", tuple((who, f"{measure}, {who}{suffix}") for who in names),
                floor if not suffix else None)
            for end, suffix, names in (("", "", others), (", 95th percentile", ", 95th", ("mpv",)))]


BENCHMARKS = (
    Benchmark(
        "grab",
        "The time from asking for the picture at a random time of a film to its bitmap, the same times for everybody.",
        ("FFMS2", "FFmpeg"),
        "libavcodec alone, open, from the key picture on without what no other picture refers to, the packets in memory "
        "and nothing converted.",
        tuple(Row(f"{how}, {which}", f"ours, {how}: {which}",
                  ((("FFMS2, its index made before", f"FFMS2 without its index, {how}: {which}"),)
                   + ((("FFMS2, its index made each time", f"FFMS2 with its index, first picture: {which}"),
                       ("ffmpeg -ss", f"ffmpeg -ss: {which}")) if how == "opened each time" else ())),
                  FLOOR + which)
              for how in ("opened each time", "kept open") for which in ("median", "95th percentile"))),
    Benchmark(
        "stepping",
        "The time from a step or a seek to the picture that is ready for painting, in a player that is open.",
        ("mpv", "FFMS2"),
        "Of an exact seek: libavcodec alone at the same places, as for grab (ours may find the picture decoded already, "
        "and come below). A step back is a look-up in what is decoded ahead; it has none.",
        tuple(step_row("step back", others=("mpv", "FFMS2")) + step_row("step back after a jump") + step_row("step on")
              + step_row("exact seek", "exact seek, floor (libavcodec alone)"))),
    Benchmark(
        "cutout",
        "How near the cut-outs come to masks made by hand, and what one of a 1080p still takes in time and memory.",
        ("OpenCV",),
        "None of quality; the program without its network stands beside it."),
    Benchmark(
        "edges",
        "What drawing in, softening and outlining the border of a 1080p cut-out costs on one thread.",
        ("OpenCV",),
        "A copy of the picture: whatever is done, another as large is written. OpenCV's filters work on the opacity "
        "alone, a quarter of the bytes.",
        (Row("shrink 20", "shrink 20", (("cv::erode", "cv::erode, ellipse of 41, opacity alone"),), COPY),
         Row("shrink 2.4", "shrink 2.4", (), COPY),
         Row("outline 20", "outline 20", (("cv::erode", "cv::erode, ellipse of 41, opacity alone"),), COPY),
         Row("feather 10", "feather 10", (("cv::GaussianBlur", "cv::GaussianBlur, 10, opacity alone"),), COPY))),
    Benchmark(
        "styles",
        "What each style of a cut-out of half a 1080p picture takes.",
        ("OpenCV",),
        "A copy of the picture.",
        tuple(Row(style, style, (("cv::bilateralFilter", "peer: bilateral filter, d = 9"),), COPY)
              for style in ("sketch", "comic", "poster"))),
    Benchmark(
        "export",
        "What a capture costs from the film to its file, step by step, in an export of captures one second apart.",
        ("FFmpeg", "Qt"),
        "Of a file: the same bytes, written and synchronised. Beside decoding stands FFmpeg's linear decode of the whole "
        "stretch.",
        (Row("decoding, a capture", "of that decoding", (("ffmpeg, linear", "linear decode by ffmpeg, a capture"),)),
         Row("a PNG in memory", "PNG, ours", (("Qt's writer", "PNG, Qt's writer"),)),
         Row("a PNG and its file", "PNG and its file, ours", (),
             "PNG and its file, floor: the same bytes written and synchronised"))),
    Benchmark(
        "project",
        "Saving and opening large projects.",
        ("Qt",),
        "The same bytes, written and synchronised, or read; nothing made of them. Qt's JSON leaves a tree, which is "
        "not yet a project.",
        (Row("encode", "encode", (("Qt's JSON", "encode, Qt's tree"),)),
         Row("decode", "decode", (("Qt's JSON", "decode, Qt's tree"),)),
         Row("save", "save, synchronised", (), "save, floor: the same bytes written and synchronised"),
         Row("load", "load", (), "load, floor: the same bytes read"))),
    Benchmark(
        "scale",
        "What very many captures of one film take: memory, opening, saving, looking at one far away.",
        (),
        "Of memory: the film open and no capture. Of opening a project: opening its film alone.",
        (Row("resident", "resident, all", (), "resident before any"),
         Row("opening", "opening", (), "opening, floor: the film alone"))),
    Benchmark(
        "window",
        "How soon the window is painted, how long its event loop is held up, how soon previews follow.",
        ("Qt",),
        "Of a start: a bare window of the toolkit. Of waits: those of the same window while nothing is done.",
        (Row("start, median", "ours, median", (), "a bare window, median"),
         Row("longest wait", "longest wait for the loop", (), "longest wait for the loop", "doing nothing"),
         Row("99 of 100 waits", "99 of 100 waits below", (), "99 of 100 waits below", "doing nothing"))),
)

HEAD = """\
# Figures

What `./bench` measured. Each section is written by `./bench --page docs/figures.md NAME` and says itself when, where
and of which commit; nothing here is written by hand. [Benchmarks/README.md](../Benchmarks/README.md) tells what is
compared with what. In ratios ours stands above: below 1, ours is the quicker or the smaller. Machines are noisy: read
the ratio rather than the time, and no digit more than two.
"""


def shown(value):
    """Three digits that count, and no exponent."""
    if value == 0 or abs(value) >= 100:
        return f"{value:.0f}"
    decimals = 2 - math.floor(math.log10(abs(value)))
    return f"{value:.{min(decimals, 6)}f}"


def cell(figure):
    unit = "" if figure["unit"] in ("", "ratio") else f" {'×' if figure['unit'] == 'x' else figure['unit']}"
    return shown(figure["value"]) + unit


def table(heads, rows):
    escaped = [[str(text).replace("|", "\\|") for text in row] for row in (heads, *rows)]
    ruler = ["---"] + ["---:"] * (len(heads) - 1)
    return "\n".join("| " + " | ".join(row) + " |" for row in (escaped[0], ruler, *escaped[1:])) + "\n"


class Figures:
    """What one benchmark measured, by case and figure, in the order measured."""

    def __init__(self, name, figures):
        self.name = name
        self.by_place = {}
        for figure in figures:
            if figure["benchmark"] != name:
                raise ValueError(f"{name}: a figure of {figure['benchmark']} among those")
            if not isinstance(figure["value"], (int, float)) or not math.isfinite(figure["value"]):
                raise ValueError(f"{name}: {figure['case']}, {figure['figure']} has no value")
            self.by_place[figure["case"], figure["figure"]] = figure
        self.cases = list(dict.fromkeys(case for case, _ in self.by_place))

    def of(self, case):
        return [name for place, name in self.by_place if place == case]

    def get(self, case, name):
        return self.by_place.get((case, name))


def comparison(benchmark, figures, is_short):
    """Ours beside each other, and beside the floor. A short form may leave a measure out, but not what it is
    compared with."""
    rows = []
    for row in benchmark.rows:
        cases = [case for case in figures.cases if figures.get(case, row.ours)]
        if is_short and not cases:
            continue
        for name in (row.ours, *(figure for _, figure in row.others), *([row.floor] if row.floor else [])):
            if not any(figures.get(case, name) for case in cases):
                raise ValueError(f"{benchmark.name}: no figure '{name}'")
        if row.floor_case and row.floor_case not in cases:
            raise ValueError(f"{benchmark.name}: no case '{row.floor_case}'")
        for case in cases:
            if case == row.floor_case:
                continue
            ours, floor = figures.get(case, row.ours), row.floor and figures.get(row.floor_case or case, row.floor)
            if floor and ours["value"] < IMPOSSIBLE * floor["value"]:
                raise ValueError(f"{benchmark.name}: '{row.ours}' ({case}) is far below its floor, and was not done")
            to_floor = [cell(floor), ratio(ours, floor)] if floor else ["", ""]
            beside = [(name, figures.get(case, figure)) for name, figure in row.others]
            for name, other in [pair for pair in beside if pair[1]] or [("", None)]:
                told = [f"{name}: {cell(other)}", ratio(ours, other)] if other else ["", ""]
                if other or floor:
                    rows.append([f"{row.measure} ({case})", cell(ours), *told, *to_floor])
    return table(["", "ours", "another", "ours / another", "floor", "ours / floor"], rows) if rows else ""


def ratio(ours, other):
    if ours["unit"] != other["unit"]:
        raise ValueError(f"{ours['figure']} and {other['figure']} differ in unit")
    return shown(ours["value"] / other["value"]) if other["value"] else ""


def all_figures(figures):
    """One table for all cases that have the same figures."""
    groups = {}
    for case in figures.cases:
        groups.setdefault(tuple(figures.of(case)), []).append(case)
    return "\n".join(table(["", *cases], [[name, *(cell(figures.get(case, name)) for case in cases)] for name in names])
                     for names, cases in groups.items())


def section(benchmark, figures, load, is_short):
    measured = [f"Measured {provenance.today()}, program of commit {provenance.commit()}, on {provenance.machine()}"]
    if load:
        measured.append(f"load {load} before")
    if is_short:
        measured.append("**the short form: few samples, not to go by**")
    peers = ", ".join(f"{name} {provenance.version(*VERSIONS[name])}" for name in benchmark.peers)
    lines = [f"## {benchmark.name}", "", benchmark.measures, "", "; ".join(measured) + ".", ""]
    if peers:
        lines += [f"*Beside:* {peers}.", ""]
    if benchmark.floor:
        lines += [f"*Floor:* {benchmark.floor}", ""]
    compared = comparison(benchmark, figures, is_short)
    if compared:
        lines += [compared, "All figures:", ""]
    return "\n".join(lines) + "\n" + all_figures(figures)


def sections_of(page):
    """What the page says below each heading, heading and all."""
    parts = re.split(r"^(?=## )", page, flags=re.M)[1:]
    return {part.splitlines()[0][3:].strip(): part.rstrip("\n") + "\n" for part in parts}


def updated(page, measured, load="", is_short=False):
    """The page with the sections of what was measured anew. `measured`: lists of figures by benchmark's name."""
    sections = sections_of(page)
    for benchmark in BENCHMARKS:
        if measured.get(benchmark.name):
            sections[benchmark.name] = section(benchmark, Figures(benchmark.name, measured[benchmark.name]), load,
                                               is_short)
    return "\n".join([HEAD, *(sections[each.name] for each in BENCHMARKS if each.name in sections)])


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("page", type=Path)
    parser.add_argument("figures", type=Path, nargs="+")
    parser.add_argument("--load", default="", help="the machine's load before")
    parser.add_argument("--short", action="store_true", help="few samples were taken")
    options = parser.parse_args(arguments)
    measured = {}
    for path in options.figures:
        for figure in json.loads(path.read_text()):
            measured.setdefault(figure["benchmark"], []).append(figure)
    unknown = set(measured) - {benchmark.name for benchmark in BENCHMARKS}
    try:
        if unknown:
            raise ValueError(f"no benchmark is called {', '.join(sorted(unknown))}")
        old = options.page.read_text() if options.page.exists() else ""
        new = updated(old, measured, options.load, options.short)
    except ValueError as error:
        print(f"page.py: {error}", file=sys.stderr)
        return 1
    options.page.write_text(new)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
