#!/usr/bin/python3
"""Tests of the pictures that the network learns from; need torch.

Run: python3 -m unittest discover -s Training
"""
import io
import tarfile
import tempfile
import unittest
from pathlib import Path

import numpy
import torch

import augmentation
import composites
import data

SIDE = 64


def shapes(count, side=SIDE, seed=0):
    """Bright discs on dark noise, with their masks. Shape: (count, 4, side, side) bytes."""
    generator = torch.Generator().manual_seed(seed)
    steps = torch.arange(side)
    middle = torch.randint(side // 3, 2 * side // 3, (count, 2, 1, 1), generator=generator)
    distance = (steps[None, :, None] - middle[:, 0])**2 + (steps[None, None] - middle[:, 1])**2
    masks = (distance < (side // 5)**2)[:, None]
    noise = torch.randint(0, 90, (count, 3, side, side), generator=generator)
    return torch.cat([noise + 150 * masks, 255 * masks], 1).byte()


class Geometry(unittest.TestCase):
    def test_a_mirrored_picture_is_the_picture_read_backwards(self):
        raw = shapes(2)
        placement = torch.tensor([[-1.0, 0, 0], [0, 1, 0]]).expand(2, 2, 3)
        mirrored = augmentation.warp(raw, placement, SIDE)
        self.assertLess((mirrored * 255 - raw.flip(3).float()).abs().max(), 1e-2)

    def test_crops_keep_picture_and_mask_aligned(self):
        raw = shapes(8)
        raw[:, :3] = raw[:, 3:]
        warped = augmentation.warp(raw, augmentation.crops(8, raw.device), SIDE)
        self.assertTrue(torch.equal(warped[:, :3], warped[:, 3:].expand(-1, 3, -1, -1)))
        self.assertFalse(torch.equal(warped[:, 3:] * 255, raw[:, 3:].float()))

    def test_a_subject_lands_where_it_is_aimed(self):
        raw = shapes(4)
        middle = composites.middles(raw[:, 3:].float())
        aims = torch.full((4, 2), 0.25)
        placement = augmentation.placements(torch.ones(4, 2), torch.zeros(4), middle, aims)
        landed = composites.middles(augmentation.warp(raw, placement, SIDE, "zeros")[:, 3:])
        self.assertLess((landed - aims).abs().max(), 2 / SIDE)


class Damage(unittest.TestCase):
    def test_everything_stays_between_black_and_white(self):
        raw = shapes(8)
        every = composites.Shares(*[1.0] * len(composites.Shares._fields))
        batch = composites.learnable(raw, SIDE, every)
        for values in (batch.pictures, batch.masks):
            self.assertGreaterEqual(float(values.min()), 0)
            self.assertLessEqual(float(values.max()), 1 + 1e-5)

    def test_an_even_picture_survives_blur(self):
        even = torch.full((2, 3, SIDE, SIDE), 0.4)
        for kernels in (augmentation.disks, augmentation.streaks):
            soft = augmentation.blurred(even, kernels(2, SIDE, even.device))
            self.assertLess((soft - even).abs().max(), 1e-5)

    def test_the_cosine_transform_is_orthonormal(self):
        transform = augmentation.cosines(torch.device("cpu"))
        self.assertLess((transform @ transform.T - torch.eye(8)).abs().max(), 1e-6)

    def test_compression_changes_a_picture_a_little(self):
        pictures = shapes(4)[:, :3].float() / 255
        change = (augmentation.compressed(pictures) - pictures).abs().mean()
        self.assertTrue(0.001 < change < 0.15, change)


class Composites(unittest.TestCase):
    def test_labels_cover_exactly_the_mask(self):
        raw = shapes(12)
        batch = composites.composed(composites.plain(raw.float() / 255), raw)
        self.assertTrue(torch.equal(batch.labels > 0, batch.masks >= 0.5))
        self.assertGreater(len(batch.labels.unique()), 2)

    def test_a_later_layer_hides_an_earlier_one(self):
        batch = composites.plain(torch.ones(1, 4, 8, 8))
        layer = torch.zeros(1, 4, 8, 8)
        layer[..., :4] = torch.tensor([0.2, 0.3, 0.4, 1.0]).view(1, 4, 1, 1)
        batch = composites.pasted(batch, layer, 2)
        self.assertEqual(batch.labels[0, 0, 0].tolist(), [2] * 4 + [1] * 4)
        self.assertAlmostEqual(float(batch.pictures[0, 1, 0, 0]), 0.3, places=6)
        self.assertEqual(float(batch.masks.min()), 1)

    def test_a_subject_cut_off_by_the_rim_is_not_pasted(self):
        raw = shapes(2)
        raw[0, 3, SIDE // 4:, :] = 255
        coverage = composites.layers(raw, SIDE)[:, 3]
        self.assertEqual(float(coverage[0].max()), 0)
        self.assertGreater(float(coverage[1].max()), 0.9)


class KeptApart(unittest.TestCase):
    def test_the_choice_never_changes(self):
        chosen = [name for name in map(str, range(200)) if data.is_kept_apart("salient", name)]
        # SHA-256 of "salient/N", its first four bytes as a number, below 3 % of 2^32.
        self.assertEqual(chosen, ["1", "22", "130", "192", "199"])

    def test_validation_and_training_share_nothing_and_lose_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            folder = Path(folder)
            names = [f"n{i}" for i in range(60)]
            for stem in ("salient-0", "people"):
                numpy.save(folder / f"{stem}-8.npy", numpy.zeros((60, 4, 8, 8), numpy.uint8))
                (folder / f"{stem}-8.txt").write_text("\n".join(names))
            apart, rest = (set(data.open_gallery(folder, 8, which).names)
                           for which in (True, False))
        self.assertFalse(apart & rest)
        self.assertEqual(len(apart | rest), 120)
        self.assertTrue(apart)

    def test_a_round_shows_every_picture_once(self):
        order = data.Order(12)
        first = torch.cat([order.next(4) for _ in range(3)])
        self.assertEqual(sorted(first.tolist()), list(range(12)))
        self.assertNotEqual(first.tolist(), torch.cat([order.next(4) for _ in range(3)]).tolist())

    def test_an_order_goes_on_where_it_stopped(self):
        order, other = data.Order(12), data.Order(12)
        order.next(4)
        other.restore(order.state())
        self.assertEqual(order.next(4).tolist(), other.next(4).tolist())


class Caches(unittest.TestCase):
    def test_a_tar_comes_back_as_pictures_with_masks(self):
        import cv2

        colour = numpy.full((20, 40, 3), (200, 100, 50), numpy.uint8)
        mask = numpy.zeros((20, 40), numpy.uint8)
        mask[:, 20:] = 255
        with tempfile.TemporaryDirectory() as folder:
            folder = Path(folder)
            with tarfile.open(folder / "salient-0.tar", "w") as tar:
                for name, pixels in (("im/a", colour), ("mask/a", mask)):
                    encoded = cv2.imencode(".webp", pixels, [cv2.IMWRITE_WEBP_QUALITY, 101])[1]
                    entry = tarfile.TarInfo(f"{name}.webp")
                    entry.size = len(encoded)
                    tar.addfile(entry, io.BytesIO(encoded.tobytes()))
            data.prepare(folder, 16, folder)
            gallery = data.open_gallery(folder, 16, data.is_kept_apart("salient", "a"))
            planes = gallery.take(torch.tensor([0]))[0]
        # OpenCV's files are blue, green, red; ours are red, green, blue.
        self.assertLess((planes[:3, 8, 2].int() - torch.tensor([50, 100, 200])).abs().max(), 4)
        self.assertEqual(planes[3, 8, :].tolist(), [0] * 8 + [255] * 8)


if __name__ == "__main__":
    unittest.main()
