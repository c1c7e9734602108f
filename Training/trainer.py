"""One training: the network, the mean of its weights, the optimiser, and the schedule."""
import copy
import math

import torch

import checkpoint
import composites
import losses

LARGEST_RATE = 2e-3
DECAY = 1e-2
# The rate rises to its largest over this many pictures, after every fresh optimiser.
WARM_UP_PICTURES = 6000
LOWEST_SHARE = 0.01
# The mean of the weights reaches back over this share of all pictures seen, up to this many.
AVERAGED_SHARE, MOST_AVERAGED = 0.1, 200_000
LARGEST_GRADIENT = 5.0


def rate_share(pictures_since_start, cooled):
    """The part of the largest rate: warm-up, then constant; `cooled` 0 to 1 along the cool-down."""
    warm = min(1.0, (pictures_since_start + 100) / WARM_UP_PICTURES)
    fall = 0.5 * (1 + math.cos(math.pi * min(1.0, max(0.0, cooled))))
    return warm * (LOWEST_SHARE + (1 - LOWEST_SHARE) * fall)


def averaged_into(averaged, network, share):
    """Moves the averaged weights, and the figures of normalisation, by this share to the newest."""
    newest = network.state_dict()
    with torch.no_grad():
        for name, value in averaged.state_dict().items():
            if value.is_floating_point():
                value.lerp_(newest[name], share)
            else:
                value.copy_(newest[name])


def optimiser_for(network):
    """AdamW; what scales or shifts is not pulled towards 0."""
    plain = [value for value in network.parameters() if value.ndim < 2]
    weights = [value for value in network.parameters() if value.ndim >= 2]
    return torch.optim.AdamW([{"params": weights, "weight_decay": DECAY},
                              {"params": plain, "weight_decay": 0.0}], lr=LARGEST_RATE)


class Trainer:
    """Steps on batches of raw pictures. Thread: its own alone.

    `seen` counts the pictures of all pieces of training, `since` those since the last warm-up
    began; `minutes` is the time that all pieces took, measurements left out.
    """

    def __init__(self, network, device, side, shares=composites.FULL, mixed=False):
        self.network = network.to(device, memory_format=torch.channels_last)
        self.averaged = copy.deepcopy(self.network).eval().requires_grad_(False)
        self.optimiser = optimiser_for(self.network)
        self.device, self.side, self.shares, self.mixed = device, side, shares, mixed
        self.seen = self.since = 0
        self.minutes = 0.0
        self.forward = self.network

    def step(self, raw, cooled=0.0):
        """Learns from (n, 4, s, s) bytes once; returns the loss as a tensor on the device."""
        raw = raw.to(self.device, non_blocking=True)
        return self.learn(composites.learnable(raw, self.side, self.shares), cooled)

    def learn(self, batch, cooled=0.0):
        """Learns from one Batch; returns the loss."""
        self.network.train()
        for group in self.optimiser.param_groups:
            group["lr"] = LARGEST_RATE * rate_share(self.since, cooled)
        pictures = batch.pictures.contiguous(memory_format=torch.channels_last)
        with torch.autocast(self.device.type, torch.bfloat16, enabled=self.mixed):
            answers = self.forward(pictures)
        loss = losses.total_loss(answers, batch)
        self.optimiser.zero_grad(set_to_none=True)
        loss.backward()
        torch.nn.utils.clip_grad_norm_(self.network.parameters(), LARGEST_GRADIENT)
        self.optimiser.step()
        self.seen += len(pictures)
        self.since += len(pictures)
        reach = min(MOST_AVERAGED, self.seen * AVERAGED_SHARE)
        averaged_into(self.averaged, self.network, min(1.0, len(pictures) / reach))
        return loss.detach()

    def state(self):
        """Everything that the next piece needs; `restore` takes it back."""
        return {"network": self.network.state_dict(), "averaged": self.averaged.state_dict(),
                "optimiser": self.optimiser.state_dict(), "random": checkpoint.random_state(),
                "seen": self.seen, "since": self.since, "minutes": self.minutes}

    def restore(self, state):
        self.network.load_state_dict(state["network"])
        self.averaged.load_state_dict(state["averaged"])
        self.optimiser.load_state_dict(state["optimiser"])
        checkpoint.restore_random_state(state["random"])
        self.seen, self.since, self.minutes = state["seen"], state["since"], state["minutes"]

    def start_from(self, weights, figures):
        """Goes on from a small checkpoint: its weights, and the rate from a new warm-up.

        Heads that the checkpoint lacks begin untrained.
        """
        for network in (self.network, self.averaged):
            missing, unknown = network.load_state_dict(weights, strict=False)
            if unknown or any(not name.startswith("finest.") for name in missing):
                raise ValueError(f"the checkpoint is of another network: {missing} {unknown}")
        self.seen, self.minutes = figures["pictures"], figures["minutes"]
