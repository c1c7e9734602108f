"""How good a network is on the pictures that are kept apart."""
import torch
from torch.nn import functional

BETA_SQUARED = 0.3
LEVELS = 256


def predicted(network, raw, side, mixed=False):
    """The odds of subject. Shape: (n, 4, s, s) bytes to (n, 1, s, s), 0 to 1."""
    pictures = raw[:, :3].float() / 255
    pictures = functional.interpolate(pictures, size=(side, side), mode="bilinear",
                                      align_corners=False)
    with torch.no_grad(), torch.autocast(raw.device.type, torch.bfloat16, enabled=mixed):
        logits = network(pictures)["mask"].float()
    return functional.interpolate(logits, size=raw.shape[-2:], mode="bilinear",
                                  align_corners=False).sigmoid()


def counts(values, chosen):
    """How many chosen pixels each picture has at each level or above. Shape: (n, 256)."""
    count = len(values)
    index = values + LEVELS * torch.arange(count, device=values.device).view(-1, 1, 1, 1)
    bins = torch.bincount(index.flatten(), chosen.flatten().float(), count * LEVELS)
    return bins.view(count, LEVELS).flip(1).cumsum(1).flip(1)


def figures_of(odds, truth):
    """Sums over a batch of odds (n, 1, s, s), 0 to 1, and of truth, booleans of the same shape."""
    values = (odds * 255).round().long()
    hits, misses = counts(values, truth), counts(values, ~truth)
    found = odds >= 0.5
    either = (found | truth).sum((1, 2, 3))
    shared = (found & truth).sum((1, 2, 3))
    return {
        "precision": (hits / (hits + misses).clamp(min=1)).sum(0),
        "recall": (hits / truth.sum((1, 2, 3)).clamp(min=1)[:, None]).sum(0),
        "mae": (odds - truth.float()).abs().mean((1, 2, 3)).sum(),
        "iou": torch.where(either > 0, shared / either.clamp(min=1), 1.0).sum(),
    }


def measure(network, gallery, side, device, mixed=False, batch=32):
    """Returns {"max_f", "mae", "iou"}, each a mean over the gallery's pictures.

    max_f is the largest F over all thresholds, of precision and recall averaged over the pictures.
    """
    network.eval()
    sums = {}
    for numbers in torch.arange(len(gallery)).split(batch):
        raw = gallery.take(numbers).to(device)
        odds = predicted(network, raw, side, mixed)
        for name, value in figures_of(odds, raw[:, 3:] >= 128).items():
            sums[name] = sums.get(name, 0) + value
    precision, recall = (sums[name].double() / len(gallery) for name in ("precision", "recall"))
    scores = (1 + BETA_SQUARED) * precision * recall / (
        BETA_SQUARED * precision + recall).clamp(min=1e-9)
    return {"max_f": float(scores.max()), "mae": float(sums["mae"]) / len(gallery),
            "iou": float(sums["iou"]) / len(gallery)}
