#!/usr/bin/python3
"""Scores the cut-outs against hand-made masks, beside the same program without its network and beside
GrabCut from an inset rectangle.

All methods see the same pictures, decoded once, in the same run; the pictures' own score.py judges
all. Prints one table, then what subjects apart gain over the connected components of the same
foreground, then time and memory of a 1080p still. With --json writes the figures as well. Needs
python3-opencv, python3-scipy.
"""
import argparse
import importlib.util
import json
import multiprocessing
import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

DATA = Path(__file__).resolve().parents[1].parent / "shared" / "data" / "cutout"
SETS = ("salient", "instances")
# The rectangle leaves this part of the picture out on each side.
INSET = 0.1
ITERATIONS = 5
OURS = "Stillwick"
CLASSICAL = "Stillwick without its network"
COMPONENTS = "connected components of Stillwick's foreground"
GRABCUT = "GrabCut, inset rectangle"

# Debian's own interpreter, for which its OpenCV and SciPy are packaged.
PYTHON = "/usr/bin/python3"

FIGURES = (
    # set, path in score.py's answer, name, unit
    ("salient", ("foreground", "maxF"), "max F", "ratio"),
    ("salient", ("foreground", "MAE"), "MAE", "ratio"),
    ("salient", ("foreground", "IoU"), "IoU", "ratio"),
    ("salient", ("foreground", "Sm"), "S-measure", "ratio"),
    ("salient", ("foreground", "bF"), "boundary F", "ratio"),
    ("instances", ("instances", "AP50"), "AP50", "ratio"),
    ("instances", ("instances", "matchedIoU"), "matched IoU", "ratio"),
    ("instances", ("instances", "matchedIoU_multi"), "matched IoU, several", "ratio"),
)


def decode(source, target):
    """Writes each picture as PNG, so that every method reads the same pixels."""
    import cv2

    target.mkdir(parents=True)
    for path in sorted(source.iterdir()):
        picture = cv2.imread(str(path), cv2.IMREAD_COLOR)
        if picture is None:
            sys.exit(f"{path}: not a picture")
        cv2.imwrite(str(target / f"{path.stem}.png"), picture, [cv2.IMWRITE_PNG_COMPRESSION, 1])


def pieces(mask):
    """The connected pieces of a mask as numbers, the largest 254, none below 0.3 % of the picture."""
    import cv2
    import numpy as np

    count, labels, stats, _ = cv2.connectedComponentsWithStats(mask, connectivity=8)
    numbers = np.zeros(mask.shape, np.uint8)
    order = sorted(range(1, count), key=lambda i: -stats[i, cv2.CC_STAT_AREA])
    kept = [i for i in order if stats[i, cv2.CC_STAT_AREA] >= 0.003 * mask.size][:254]
    for number, i in enumerate(kept, 1):
        numbers[labels == i] = number
    return numbers


def grabcut(job):
    """Cuts one picture out by GrabCut and returns the seconds it took."""
    import cv2
    import numpy as np

    source, out = job
    cv2.setNumThreads(1)
    cv2.setRNGSeed(0)
    picture = cv2.imread(str(source))
    height, width = picture.shape[:2]
    left, top = round(width * INSET), round(height * INSET)
    labels = np.zeros((height, width), np.uint8)
    models = np.zeros((1, 65)), np.zeros((1, 65))
    start = time.perf_counter()
    cv2.grabCut(picture, labels, (left, top, width - 2 * left, height - 2 * top), *models,
                ITERATIONS, cv2.GC_INIT_WITH_RECT)
    seconds = time.perf_counter() - start
    mask = np.where((labels & 1) == 1, 255, 0).astype(np.uint8)
    cv2.imwrite(str(out / f"{source.stem}.png"), mask)
    cv2.imwrite(str(out / f"{source.stem}.inst.png"), pieces(mask))
    return seconds


def run_grabcut(pictures, out):
    out.mkdir(parents=True)
    jobs = [(path, out) for path in sorted(pictures.iterdir())]
    with multiprocessing.Pool() as pool:
        seconds = pool.map(grabcut, jobs, chunksize=4)
    return sum(seconds) / len(seconds)


def run_ours(program, options, pictures, out):
    done = subprocess.run([program, *options, pictures, out], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{program} failed:\n{done.stdout}{done.stderr}")
    return float(re.search(r"([\d.]+) seconds per picture", done.stdout).group(1))


def scored(which, out):
    done = subprocess.run([PYTHON, DATA / "score.py", which, out],
                          capture_output=True, text=True, check=True)
    return json.loads(done.stdout)


def measure(program, scratch):
    """Returns {method: {figure: value}}; the components have two figures only."""
    runs = {
        GRABCUT: run_grabcut,
        CLASSICAL: lambda pictures, out: run_ours(program, ["--classical"], pictures, out),
        OURS: lambda pictures, out: run_ours(program, [], pictures, out),
    }
    results = {method: {} for method in runs}
    seconds = {method: [] for method in runs}
    for which in SETS:
        pictures = scratch / which / "pictures"
        decode(DATA / which / "im", pictures)
        count = sum(1 for _ in pictures.iterdir())
        for method, run in runs.items():
            out = scratch / which / method
            seconds[method].append((count, run(pictures, out)))
            answer = scored(which, out)
            for figure_set, path, name, _ in FIGURES:
                if figure_set == which:
                    results[method][name] = answer[path[0]].get(path[1], 0.0)
    parts = answer["connected_components"]
    results[COMPONENTS] = {"AP50": parts["AP50"],
                           "matched IoU, several": parts["matchedIoU_multi"]}
    for method, each in seconds.items():
        total = sum(count for count, _ in each)
        results[method]["seconds per picture"] = sum(n * time for n, time in each) / total
    return results


def print_table(results):
    names = [name for _, _, name, _ in FIGURES] + ["seconds per picture"]
    heads = [f"{name} ({which})" for which, _, name, _ in FIGURES] + ["s/picture"]
    print("| method | " + " | ".join(heads) + " |")
    print("|---|" + "---:|" * len(heads))
    for method, figures in results.items():
        cells = (f"{figures[name]:.3f}" if name in figures else "" for name in names)
        print(f"| {method} | " + " | ".join(cells) + " |")
    for name, value in results[COMPONENTS].items():
        print(f"\n{name}: {results[OURS][name] / max(value, 1e-9):.2f} times that of the {COMPONENTS}")


def records(results):
    units = {name: unit for _, _, name, unit in FIGURES} | {"seconds per picture": "s"}
    return [{"benchmark": "cutout", "case": method, "figure": name, "value": value,
             "unit": units[name]}
            for method, figures in results.items() for name, value in figures.items()]


def built(folder, name):
    """The program of that name in a build folder."""
    program = next((path for path in sorted(folder.rglob(name)) if path.is_file()), None)
    if program is None:
        sys.exit(f"{name} is not built in {folder}")
    return program


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=Path, required=True, help="the build folder")
    parser.add_argument("--json", type=Path, help="file for the figures")
    options = parser.parse_args()
    if not (DATA / "score.py").exists():
        print(f"cutout: no pictures to score on ({DATA} is missing); nothing measured")
        if options.json:
            options.json.write_text("[]\n")
        return
    if importlib.util.find_spec("cv2") is None and sys.executable != PYTHON:
        os.execv(PYTHON, [PYTHON, *sys.argv])
    with tempfile.TemporaryDirectory(prefix="stillwick-cutout-") as scratch:
        results = measure(built(options.programs, "cutout-masks"), Path(scratch))
    print_table(results)
    print(flush=True)
    still = sorted((DATA / "salient" / "im").iterdir())[0]
    with tempfile.NamedTemporaryFile(suffix=".json") as timed:
        subprocess.run([built(options.programs, "bench-cutout"), still, "--json", timed.name], check=True)
        figures = records(results) + json.loads(Path(timed.name).read_text())
    if options.json:
        options.json.write_text(json.dumps(figures, indent=1) + "\n")


if __name__ == "__main__":
    main()
