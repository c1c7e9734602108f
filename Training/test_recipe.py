#!/usr/bin/python3
"""Tests of learning, keeping, measuring and exporting; need torch.

Run: python3 -m unittest discover -s Training
"""
import os
import tempfile
import unittest
from pathlib import Path

# Sums over pixels come out the same, to the bit, on one thread.
os.environ.setdefault("OMP_NUM_THREADS", "1")

import torch

import checkpoint
import composites
import exporting
import losses
import validation
from network import HEADS, ForegroundNetwork, parameter_count
from test_pictures import SIDE, shapes
from trainer import Trainer, rate_share


def trainer_of(seed=0):
    torch.manual_seed(seed)
    return Trainer(ForegroundNetwork(), torch.device("cpu"), SIDE)


class Learning(unittest.TestCase):
    def test_the_network_learns_one_batch(self):
        trainer = trainer_of()
        trainer.since = 10_000
        batch = composites.plain(shapes(8).float() / 255)
        values = [float(trainer.learn(batch)) for _ in range(25)]
        self.assertLess(values[-1], values[0] / 2)

    def test_a_checkpoint_continues_to_the_same_loss(self):
        def steps(trainer, seeds):
            return [float(trainer.step(shapes(4, seed=seed))) for seed in seeds]

        whole = trainer_of()
        steps(whole, (1, 2))
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "full.pt"
            checkpoint.save_full(path, whole.state())
            expected = steps(whole, (3, 4))
            resumed = trainer_of(seed=7)
            resumed.restore(checkpoint.load_full(path, "cpu"))
            self.assertEqual(steps(resumed, (3, 4)), expected)
        self.assertEqual(resumed.seen, 16)

    def test_a_small_checkpoint_keeps_the_answer(self):
        trainer = trainer_of()
        trainer.step(shapes(4))
        pictures = shapes(2, seed=5)[:, :3].float() / 255
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "small.npz"
            checkpoint.save_small(path, trainer.averaged, {"pictures": 4, "minutes": 0.5})
            self.assertLess(path.stat().st_size, 8_000_000)
            network = exporting.restored(path)
            other = trainer_of(seed=3)
            other.start_from(*checkpoint.load_small(path))
        expected = trainer.averaged(pictures)["mask"]
        self.assertLess((network(pictures)["mask"] - expected).abs().max(), 0.02)
        self.assertEqual((other.seen, other.minutes), (4, 0.5))

    def test_every_head_has_its_channels_at_full_size(self):
        network = ForegroundNetwork(HEADS).eval()
        answers = network(torch.zeros(1, 3, 64, 96))
        self.assertEqual({head: tuple(answers[head].shape) for head in HEADS},
                         {head: (1, count, 64, 96) for head, count in HEADS.items()})
        self.assertTrue(2e6 < parameter_count(network) < 4e6)

    def test_the_rate_warms_up_and_cools_down(self):
        self.assertLess(rate_share(0, 0), 0.1)
        self.assertEqual(rate_share(1_000_000, 0), 1)
        self.assertAlmostEqual(rate_share(1_000_000, 1), 0.01)


class Figures(unittest.TestCase):
    def test_a_perfect_answer_has_perfect_figures(self):
        truth = shapes(3)[:, 3:] >= 128
        sums = validation.figures_of(truth.float(), truth)
        self.assertEqual(float(sums["mae"]), 0)
        self.assertEqual(float(sums["iou"]), 3)
        self.assertEqual(float(sums["precision"][255]), 3)
        self.assertEqual(float(sums["recall"][1]), 3)

    def test_half_of_a_subject_is_half_an_overlap(self):
        truth = torch.zeros(1, 1, 8, 8, dtype=torch.bool)
        truth[..., :4] = True
        odds = torch.zeros(1, 1, 8, 8)
        odds[..., :2] = 1
        sums = validation.figures_of(odds, truth)
        self.assertAlmostEqual(float(sums["iou"]), 0.5)
        self.assertAlmostEqual(float(sums["mae"]), 0.25)
        self.assertAlmostEqual(float(sums["recall"][128]), 0.5)

    def test_edges_are_the_pixels_at_either_side(self):
        masks = torch.zeros(1, 1, 4, 4)
        masks[..., 1:3, 2:] = 1
        self.assertEqual(losses.edges(masks)[0, 0].tolist(),
                         [[0, 0, 1, 1], [0, 1, 1, 1], [0, 1, 1, 1], [0, 0, 1, 1]])

    def test_a_right_answer_costs_less_than_a_wrong_one(self):
        masks = (shapes(2)[:, 3:] >= 128).float()
        right, wrong = (losses.mask_loss((2 * m - 1) * 8, masks) for m in (masks, 1 - masks))
        self.assertLess(float(right), 0.1)
        self.assertGreater(float(wrong), 5)


class Export(unittest.TestCase):
    def test_opencv_computes_the_same(self):
        try:
            import cv2  # noqa: F401
        except ImportError:
            self.skipTest("there is no OpenCV for Python here")
        trainer = trainer_of()
        # Until it has learnt something, layers share weights, and the exporter says so in a way
        # that OpenCV cannot read.
        trainer.step(shapes(4))
        network = trainer.averaged
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / "network.onnx"
            exporting.write(network, file, SIDE)
            self.assertLess(exporting.difference(network, file, SIDE), exporting.TOLERANCE)


if __name__ == "__main__":
    unittest.main()
