"""Trains the foreground network for some minutes, from where the last piece of training stopped."""
import argparse
import csv
import signal
import time
from pathlib import Path

import torch

import checkpoint
import composites
import data
import validation
from network import DEFAULT_HEADS, ForegroundNetwork, parameter_count
from trainer import Trainer

HERE = Path(__file__).resolve().parent
BUILD = HERE.parent / "build" / "training"
TARS = HERE.parents[1] / "shared" / "data" / "training"
SMALL = HERE / "checkpoints" / "foreground.npz"
CURVE = HERE / "curve.csv"
COLUMNS = ("minutes", "pictures", "loss", "max_f", "mae", "iou", "people_iou", "rate",
           "pictures_per_second", "side", "device")
# Side and number of the pictures of a step, and side of the cache.
SIZES = {"cpu": (160, 24, 192), "cuda": (320, 128, 288)}


def options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--minutes", type=float, default=20, help="of the clock, all included")
    parser.add_argument("--cooldown", type=float, default=0, metavar="MINUTES",
                        help="let the rate fall over the last minutes of this piece")
    parser.add_argument("--validate", type=float, default=4, metavar="MINUTES",
                        help="between two measurements")
    parser.add_argument("--data", type=Path, default=TARS, help="folder of the tars")
    parser.add_argument("--build", type=Path, default=BUILD, help="folder of cache and full state")
    parser.add_argument("--small", type=Path, default=SMALL, help="the small checkpoint")
    parser.add_argument("--curve", type=Path, default=CURVE, help="the file of figures")
    parser.add_argument("--size", type=int, help="side of the network's pictures, times 32")
    parser.add_argument("--batch", type=int, help="pictures in a step")
    parser.add_argument("--mixed", action=argparse.BooleanOptionalAction, default=None,
                        help="bfloat16 where it does no harm (default: where it is faster)")
    parser.add_argument("--compile", action="store_true", help="torch.compile, where torch has it")
    parser.add_argument("--light", action=argparse.BooleanOptionalAction, default=None,
                        help="fewer changes to the pictures (default: on a CPU)")
    parser.add_argument("--fresh", action="store_true", help="begin anew")
    parser.add_argument("--prepare", action="store_true", help="decode the pictures, no more")
    return parser.parse_args()


def halves_fast(device):
    """Whether this device multiplies in bfloat16 faster than in single precision."""
    flags = Path("/proc/cpuinfo")
    return device.type == "cuda" or (flags.exists() and "avx512_bf16" in flags.read_text())


class Clock:
    """When this piece of training ends: after its minutes, or as soon as it is told to stop."""

    def __init__(self, minutes, cooldown):
        self.start = time.monotonic()
        self.seconds = minutes * 60
        self.cooldown = cooldown * 60
        # What the last measurement and the saving take; measured as they happen.
        self.reserve = 10.0
        self.stopped = False

    def heed_signals(self):
        """From here on a signal to end lets what was learnt be saved first."""
        for number in (signal.SIGTERM, signal.SIGINT):
            signal.signal(number, self.stop)

    def stop(self, *_):
        self.stopped = True

    def left(self):
        return self.seconds - self.reserve - (time.monotonic() - self.start)

    def over(self):
        return self.stopped or self.left() <= 0

    def cooled(self):
        """How far the cool-down has come, 0 to 1."""
        return min(1.0, max(0.0, 1 - self.left() / self.cooldown)) if self.cooldown else 0.0


def begin(trainer, order, paths):
    """Restores the last state there is: the full one, else the small one, else nothing."""
    small = checkpoint.load_small(paths.small) if paths.small.exists() else None
    full_path = paths.build / "full.pt"
    if paths.fresh:
        return "from nothing"
    if full_path.exists():
        state = checkpoint.load_full(full_path, trainer.device)
        if small is None or state["trainer"]["seen"] >= small[1]["pictures"]:
            trainer.restore(state["trainer"])
            if state["count"] == order.count:
                order.restore(state["order"])
            return "from the full state"
    if small is not None:
        trainer.start_from(*small)
        order.restore((trainer.seen // order.count + 1, 0))
        return "from the small checkpoint"
    return "from nothing"


class Journal:
    """Measures the averaged network now and then, writes it down, and saves."""

    def __init__(self, trainer, order, galleries, paths):
        self.trainer, self.order, self.galleries, self.paths = trainer, order, galleries, paths
        self.losses = []
        self.last = (time.monotonic(), trainer.seen)

    def measured(self):
        """One row of the curve."""
        trainer = self.trainer
        seconds, seen = time.monotonic() - self.last[0], trainer.seen - self.last[1]
        trainer.minutes += seconds / 60
        measure = lambda gallery: validation.measure(trainer.averaged, gallery, trainer.side,
                                                     trainer.device, trainer.mixed)
        salient, people = (measure(gallery) for gallery in self.galleries)
        loss = float(torch.stack(self.losses).mean()) if self.losses else float("nan")
        figures = {"minutes": round(trainer.minutes, 2), "pictures": trainer.seen,
                   "loss": loss, **salient, "people_iou": people["iou"],
                   "rate": trainer.optimiser.param_groups[0]["lr"],
                   "pictures_per_second": seen / max(1e-9, seconds),
                   "side": trainer.side, "device": trainer.device.type}
        return {name: float(f"{value:.5g}") if isinstance(value, float) else value
                for name, value in figures.items()}

    def write(self):
        """Measures, adds a row to the curve, saves both checkpoints; returns the seconds taken."""
        start = time.monotonic()
        row = self.measured()
        is_new = not self.paths.curve.exists()
        with open(self.paths.curve, "a", newline="") as file:
            writer = csv.DictWriter(file, COLUMNS, lineterminator="\n")
            if is_new:
                writer.writeheader()
            writer.writerow(row)
        checkpoint.save_small(self.paths.small, self.trainer.averaged, row)
        checkpoint.save_full(self.paths.build / "full.pt", {
            "trainer": self.trainer.state(), "order": self.order.state(),
            "count": self.order.count})
        print(" ".join(f"{name} {value}" for name, value in row.items()), flush=True)
        self.losses, self.last = [], (time.monotonic(), self.trainer.seen)
        return time.monotonic() - start


def train(trainer, order, gallery, journal, clock, batch, interval):
    """Steps until the clock says that it is enough."""
    clock.heed_signals()
    next_row = time.monotonic() + interval
    while not clock.over():
        cooled = clock.cooled()
        journal.losses.append(trainer.step(gallery.take(order.next(batch)), cooled))
        if len(journal.losses) % 50 == 0:
            recent = float(torch.stack(journal.losses[-50:]).mean())
            print(f"{trainer.seen} pictures, loss {recent:.4f}", flush=True)
        if time.monotonic() > next_row and clock.left() > interval / 4:
            clock.reserve = 1.2 * journal.write()
            next_row = time.monotonic() + interval
    if clock.cooldown:
        # What goes on after a cool-down begins with a warm-up.
        trainer.since = 0
    journal.write()


def galleries(paths, side):
    """The pictures to learn from, and those kept apart as a list of salient ones and people."""
    cache = paths.build / "cache"
    gallery = data.open_gallery(cache, side, kept_apart=False)
    apart = [data.open_gallery(cache, side, True, [name]) for name in ("salient", "people")]
    if not len(gallery) or not all(map(len, apart)):
        raise SystemExit(f"too few pictures in {paths.data}: both sets are needed")
    return gallery, apart


def new_trainer(paths, device, side):
    """An untrained network and all that trains it, as the options and the device suggest."""
    light = paths.light if paths.light is not None else device.type == "cpu"
    mixed = paths.mixed if paths.mixed is not None else halves_fast(device)
    torch.manual_seed(0)
    trainer = Trainer(ForegroundNetwork(DEFAULT_HEADS), device, side,
                      composites.LIGHT if light else composites.FULL, mixed)
    if paths.compile:
        trainer.forward = torch.compile(trainer.network)
    return trainer


def main():
    paths = options()
    clock = Clock(paths.minutes, paths.cooldown)
    device = torch.device("cuda" if torch.cuda.is_available() else "cpu")
    side, batch, cache_side = SIZES[device.type]
    data.prepare(paths.data, cache_side, paths.build / "cache")
    if paths.prepare:
        return
    gallery, apart = galleries(paths, cache_side)
    if device.type == "cuda":
        torch.backends.cudnn.benchmark = True
        gallery.hold(device)
    trainer = new_trainer(paths, device, paths.size or side)
    order = data.Order(len(gallery))
    origin = begin(trainer, order, paths)
    print(f"{parameter_count(trainer.network)} parameters {origin}, {len(gallery)} pictures, "
          f"{[len(each) for each in apart]} kept apart, {device}", flush=True)
    journal = Journal(trainer, order, apart, paths)
    train(trainer, order, gallery, journal, clock, paths.batch or batch, paths.validate * 60)


if __name__ == "__main__":
    main()
