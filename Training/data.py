"""The pictures and masks that the network learns from, and which of them are kept apart.

A tar holds im/NAME.webp and mask/NAME.webp. Each is decoded once into a cache: NAME-SIDE.npy of
(n, 4, SIDE, SIDE) bytes, red, green, blue and mask, every picture stretched to the square; and
NAME-SIDE.txt with the pictures' names, one to a line. A cache without its tar serves as well.
"""
import hashlib
import re
import tarfile
from multiprocessing.pool import ThreadPool
from pathlib import Path

import numpy
import torch

# The share of each set that is kept apart for validation: some 320 pictures and some 60 people.
KEPT_APART = {"salient": 0.03, "people": 0.06}


def set_of(stem):
    """The set that a tar or cache belongs to: "salient" for "salient-2"."""
    return re.sub(r"-\d+$", "", stem)


def is_kept_apart(set_name, name):
    """Whether a picture is for validation only. Depends on nothing but its set and name."""
    digest = hashlib.sha256(f"{set_name}/{name}".encode()).digest()
    return int.from_bytes(digest[:4], "big") / 2**32 < KEPT_APART.get(set_name, 0.03)


def decoded(job):
    """(4, side, side) bytes from a picture's and a mask's files."""
    import cv2

    picture_file, mask_file, side = job
    picture = cv2.imdecode(numpy.frombuffer(picture_file, numpy.uint8), cv2.IMREAD_COLOR)
    mask = cv2.imdecode(numpy.frombuffer(mask_file, numpy.uint8), cv2.IMREAD_GRAYSCALE)
    square = [cv2.resize(plane, (side, side), interpolation=cv2.INTER_AREA)
              for plane in (picture[:, :, ::-1], mask)]
    return numpy.concatenate([square[0].transpose(2, 0, 1), square[1][None]])


def jobs_in(tar, members, names, side):
    """What `decoded` takes, one picture after the other."""
    for name in names:
        picture, mask = (tar.extractfile(members[f"{folder}/{name}.webp"]).read()
                         for folder in ("im", "mask"))
        yield picture, mask, side


def write_cache(tar_path, side, folder):
    """Decodes a tar into its cache; a cache that is there already stays."""
    target = folder / f"{tar_path.stem}-{side}.npy"
    if target.exists():
        return
    folder.mkdir(parents=True, exist_ok=True)
    part = target.with_suffix(".part")
    with tarfile.open(tar_path) as tar, ThreadPool() as pool:
        members = {member.name: member for member in tar if member.isfile()}
        names = sorted(Path(name).stem for name in members if name.startswith("im/"))
        rows = numpy.lib.format.open_memmap(part, "w+", numpy.uint8, (len(names), 4, side, side))
        jobs = jobs_in(tar, members, names, side)
        for row, planes in enumerate(pool.imap(decoded, jobs)):
            rows[row] = planes
    rows.flush()
    target.with_suffix(".txt").write_text("\n".join(names) + "\n")
    part.rename(target)


def prepare(tars, side, folder):
    """Decodes every tar of a folder that has no cache yet."""
    for tar_path in sorted(tars.glob("*.tar")) if tars.is_dir() else []:
        write_cache(tar_path, side, folder)


class Gallery:
    """Pictures from several caches behind one running number.

    Holds them on the device where that is a GPU, and leaves them in their files otherwise.
    """

    def __init__(self, arrays, places, names):
        self.arrays = arrays
        self.places = places
        self.names = names
        self.resident = None

    def __len__(self):
        return len(self.places)

    def take(self, numbers):
        """Shape: (n, 4, side, side) bytes for n numbers, on the device where they are held."""
        if self.resident is not None:
            return self.resident[numbers.to(self.resident.device)]
        rows = [self.arrays[part][row] for part, row in (self.places[int(i)] for i in numbers)]
        return torch.from_numpy(numpy.stack(rows))

    def hold(self, device):
        """Moves all pictures to a device, in portions that need little memory beside."""
        everything = torch.arange(len(self))
        self.resident = torch.cat([self.take(numbers).to(device)
                                   for numbers in everything.split(512)])


def open_gallery(folder, side, kept_apart, sets=("salient", "people")):
    """The pictures of these sets that are, or are not, kept apart for validation."""
    arrays, places, names = [], [], []
    for path in sorted(folder.glob(f"*-{side}.npy")):
        stem = path.stem[: -len(f"-{side}")]
        if set_of(stem) not in sets:
            continue
        for row, name in enumerate(path.with_suffix(".txt").read_text().split()):
            if is_kept_apart(set_of(stem), name) == kept_apart:
                places.append((len(arrays), row))
                names.append(f"{set_of(stem)}/{name}")
        arrays.append(numpy.load(path, mmap_mode="r"))
    return Gallery(arrays, places, names)


class Order:
    """Which pictures come next: each once in a round, shuffled as the round's number decides."""

    def __init__(self, count):
        self.count = count
        self.round = 0
        self.position = 0
        self.shuffled = None

    def next(self, batch):
        """The next numbers. Shape: (batch,)."""
        if self.position + batch > self.count:
            self.restore((self.round + 1, 0))
        if self.shuffled is None:
            generator = torch.Generator().manual_seed(self.round)
            self.shuffled = torch.randperm(self.count, generator=generator)
        self.position += batch
        return self.shuffled[self.position - batch:self.position]

    def state(self):
        return (self.round, self.position)

    def restore(self, state):
        self.round, self.position = state
        self.shuffled = None
