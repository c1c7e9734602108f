"""What the network is to get right, as one number to be made small."""
import torch
from torch.nn import functional

# The coarse answers count for less the coarser they are: strides 4, 8, 16 and 32.
COARSE_WEIGHTS = (0.6, 0.4, 0.3, 0.3)
# A pixel beside an edge counts up to this much more than one far from any.
EDGE_EMPHASIS = 4.0
EDGE_WEIGHT = 0.3
# Edges are rare; without this the network would find none to be the best answer.
EDGE_RARITY = 4.0


def emphasis(masks):
    """How much each pixel counts: 1 far from edges, more the nearer. Shape: as the masks."""
    window = min(8, masks.shape[-1])
    smooth = functional.interpolate(functional.avg_pool2d(masks, window), size=masks.shape[-2:],
                                    mode="bilinear", align_corners=False)
    return 1 + EDGE_EMPHASIS * (masks - smooth).abs()


def overlap(logits, masks):
    """One minus the soft intersection over union, as the mean of the batch."""
    odds = logits.sigmoid()
    shared = (odds * masks).sum((1, 2, 3))
    either = (odds + masks).sum((1, 2, 3)) - shared
    return 1 - ((shared + 1) / (either + 1)).mean()


def mask_loss(logits, masks):
    """Cross-entropy that heeds edges, and overlap. Shape: (n, 1, h, w) both."""
    weight = emphasis(masks)
    entropy = functional.binary_cross_entropy_with_logits(logits, masks, weight)
    return entropy / weight.mean() + overlap(logits, masks)


def edges(masks):
    """1 on the pixels at either side of an edge, else 0. Shape: as the masks."""
    inside = masks >= 0.5
    found = torch.zeros_like(inside)
    across = inside[..., 1:] != inside[..., :-1]
    down = inside[..., 1:, :] != inside[..., :-1, :]
    found[..., 1:] |= across
    found[..., :-1] |= across
    found[..., 1:, :] |= down
    found[..., :-1, :] |= down
    return found.float()


def edge_loss(logits, masks):
    rarity = torch.tensor(EDGE_RARITY, device=logits.device)
    return functional.binary_cross_entropy_with_logits(logits, edges(masks), pos_weight=rarity)


def total_loss(answers, batch):
    """The loss of all heads and stages. `answers` is what the network gives in training."""
    masks = batch.masks
    loss = mask_loss(answers["mask"].float(), masks)
    if "edge" in answers:
        loss = loss + EDGE_WEIGHT * edge_loss(answers["edge"].float(), masks)
    for logits, weight in zip(answers["coarse"], COARSE_WEIGHTS):
        small = functional.avg_pool2d(masks, masks.shape[-1] // logits.shape[-1])
        loss = loss + weight * mask_loss(logits.float(), small)
    return loss
