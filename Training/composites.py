"""Batches to learn from: pictures in new crops, some with subjects of other pictures put on top."""
from typing import NamedTuple

import torch
from torch.nn import functional

import augmentation
from augmentation import length, mirrors, placements, some, uniform, warp

# A subject that takes more of its picture's rim than this is cut off there and is not pasted.
MOST_RIM = 0.02
MOST_LAYERS = 3


class Shares(NamedTuple):
    """Which share of a batch each change is made to."""
    composites: float = 0.4
    recolour: float = 0.7
    shallow: float = 0.1
    defocus: float = 0.15
    movement: float = 0.1
    noise: float = 0.25
    compression: float = 0.25


# For a budget of few rounds, where the plain pictures are not learnt yet.
LIGHT = Shares(composites=0.15, recolour=0.5, shallow=0.05, defocus=0.08, movement=0.05,
               noise=0.12, compression=0.12)
FULL = Shares()


class Batch(NamedTuple):
    """What one step learns from.

    `pictures` (n, 3, h, w) and `masks` (n, 1, h, w), 0 to 1; `labels` (n, 1, h, w), bytes: 0 where
    the mask is below one half, 1 on what the picture itself shows, 2 and up on pasted subjects.
    """
    pictures: torch.Tensor
    masks: torch.Tensor
    labels: torch.Tensor


def plain(planes):
    """A batch of warped pictures as they are. Shape: (n, 4, h, w), 0 to 1."""
    masks = planes[:, 3:].contiguous()
    return Batch(planes[:, :3].contiguous(), masks, (masks >= 0.5).byte())


def middles(masks):
    """The middle of each mask, -1 to 1, across first; 0 where it is empty. Shape: (n, 2)."""
    across, down = masks.mean(2), masks.mean(3)
    steps = torch.linspace(-1, 1, masks.shape[-1], device=masks.device)
    weight = across.sum(2) + 1e-6
    return torch.cat([(across * steps).sum(2) / weight, (down * steps).sum(2) / weight], 1)


def rims(masks):
    """How much of its picture's rim each mask takes. Shape: (n, 1, 1, 1)."""
    sides = torch.cat([masks[..., 0, :], masks[..., -1, :], masks[..., 0], masks[..., -1]], 2)
    return sides.mean(2)[..., None, None]


def layers(raw, side):
    """Subjects on nothing, at new places and sizes.

    Shape: (n, 4, s, s) bytes to (n, 4, side, side): colour and coverage, which is 0 everywhere
    where the subject is cut off by its picture's rim.
    """
    count, device = len(raw), raw.device
    masks = functional.avg_pool2d(raw[:, 3:].float() / 255, 4)
    scale = uniform(count, 0.9, 2.0, device).view(count, 1)
    aspect = uniform(count, -0.15, 0.15, device).exp().view(count, 1)
    scales = torch.cat([scale * aspect, scale / aspect], 1) * mirrors(count, device)
    angles = torch.randn(count, device=device) * 0.1
    aims = torch.empty(count, 2, device=device).uniform_(-0.75, 0.75)
    planes = warp(raw, placements(scales, angles, middles(masks), aims), side, "zeros")
    planes[:, 3:] *= rims(raw[:, 3:].float() / 255) <= MOST_RIM
    return planes


def pasted(batch, planes, label):
    """A batch with one layer more on top of it."""
    colours, coverage = planes[:, :3], planes[:, 3:]
    labels = torch.where(coverage >= 0.5, torch.full_like(batch.labels, label), batch.labels)
    return Batch(torch.lerp(batch.pictures, colours, coverage),
                 torch.maximum(batch.masks, coverage), labels)


def composed(batch, raw):
    """A batch with one to three subjects of its neighbours pasted onto every picture."""
    side = batch.pictures.shape[-1]
    for layer in range(MOST_LAYERS):
        # Each layer after the first comes to fewer pictures: one to three in all.
        number = max(1, len(raw) // 2**layer)
        planes = layers(raw.roll(layer + 1, 0)[:number], side)
        changed = pasted(Batch(*(part[:number] for part in batch)), planes, layer + 2)
        batch = Batch(*(torch.cat([new, old[number:]]) for new, old in zip(changed, batch)))
    return batch


def learnable(raw, side, shares=FULL):
    """Everything that happens to a batch before the network sees it.

    Shape: (n, 4, s, s) bytes to a Batch of (n, …, side, side). *Units*: 0 to 1.
    """
    count = len(raw)
    batch = plain(warp(raw, augmentation.crops(count, raw.device), side))
    part = some(count, shares.composites)
    if length(part) > 1:
        changed = composed(Batch(*(whole[part] for whole in batch)), raw[part])
        for whole, new in zip(batch, changed):
            whole[part] = new
    part = some(count, shares.recolour)
    batch.pictures[part] = augmentation.recoloured(batch.pictures[part])
    augmentation.damaged(batch.pictures, batch.masks, shares)
    return batch
