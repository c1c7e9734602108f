"""The foreground network: a residual U-Net of plain convolutions.

Every operator is one that OpenCV 4.6 reads from ONNX (opset 11): no clipped rectifiers, no expanded
tensors, no layer normalisation.
"""
import torch
from torch import nn
from torch.nn import functional

# Channels at strides 2, 4, 8, 16 and 32.
WIDTHS = (16, 32, 64, 128, 192)
# Residual blocks at the same strides.
DEPTHS = (1, 1, 2, 2, 0)
# Dilations of the context at stride 32.
DILATIONS = (1, 2, 4)
STRIDE = 32

# What the finest stage can be asked for, and how many channels that takes. "centre", "offset" and
# "boundary" tell instances apart; they have no loss yet, so that no network has them by default.
HEADS = {"mask": 1, "edge": 1, "centre": 1, "offset": 2, "boundary": 1}
DEFAULT_HEADS = ("mask", "edge")


def convolution(inputs, outputs, kernel=3, stride=1, dilation=1):
    """Convolution, batch normalisation, rectifier; the size stays but for the stride."""
    return nn.Sequential(
        nn.Conv2d(inputs, outputs, kernel, stride, dilation * (kernel // 2), dilation, bias=False),
        nn.BatchNorm2d(outputs), nn.ReLU(inplace=True))


class Residual(nn.Module):
    """Two 3x3 convolutions and a way around them. Shape: (n, channels, h, w) in and out."""

    def __init__(self, channels, dilation=1):
        super().__init__()
        self.first = convolution(channels, channels, dilation=dilation)
        self.second = nn.Conv2d(channels, channels, 3, 1, dilation, dilation, bias=False)
        self.norm = nn.BatchNorm2d(channels)

    def forward(self, features):
        return functional.relu(features + self.norm(self.second(self.first(features))))


class Context(nn.Module):
    """Looks around at stride 32: dilated blocks, then what the whole picture has in common."""

    def __init__(self, channels):
        super().__init__()
        self.blocks = nn.Sequential(*(Residual(channels, dilation) for dilation in DILATIONS[:-1]))
        self.wide = convolution(channels, channels, dilation=DILATIONS[-1])
        self.whole = nn.Conv2d(channels, channels, 1)

    def forward(self, features):
        features = self.blocks(features)
        whole = self.whole(functional.adaptive_avg_pool2d(features, 1))
        return functional.relu(features + self.wide(features) + whole)


class Upward(nn.Module):
    """One step back up: (n, coarse, h, w) and (n, skip, 2h, 2w) give (n, outputs, 2h, 2w)."""

    def __init__(self, coarse, skip, outputs):
        super().__init__()
        self.reduce = convolution(coarse, outputs, kernel=1)
        self.lateral = convolution(skip, outputs, kernel=1)
        self.merge = convolution(outputs, outputs)

    def forward(self, coarse, skip):
        coarse = functional.interpolate(self.reduce(coarse), scale_factor=2.0, mode="bilinear",
                                        align_corners=False)
        return self.merge(coarse + self.lateral(skip))


class ForegroundNetwork(nn.Module):
    """Tells subjects from background.

    In: (n, 3, h, w), red-green-blue, 0 to 1; h and w are multiples of 32.
    Out: a dictionary of logits. Each head by its name: (n, its channels, h, w). In training also
    "coarse": masks as a list of (n, 1, h/k, w/k) for k = 4, 8, 16, 32.
    """

    def __init__(self, heads=DEFAULT_HEADS):
        super().__init__()
        self.heads = tuple(heads)
        channels = (3, *WIDTHS)
        self.down = nn.ModuleList(
            nn.Sequential(convolution(channels[i], channels[i + 1], stride=2),
                          *(Residual(channels[i + 1]) for _ in range(DEPTHS[i])))
            for i in range(len(WIDTHS)))
        self.context = Context(WIDTHS[-1])
        self.up = nn.ModuleList(Upward(WIDTHS[i + 1], WIDTHS[i], WIDTHS[i])
                                for i in reversed(range(len(WIDTHS) - 1)))
        self.coarse = nn.ModuleList(nn.Conv2d(width, 1, 3, padding=1)
                                    for width in reversed(WIDTHS[1:]))
        # Stride 2 holds four values for each channel of a head, one for each pixel of its square.
        self.finest = nn.ModuleDict({head: nn.Conv2d(WIDTHS[0], 4 * HEADS[head], 3, padding=1)
                                     for head in self.heads})

    def forward(self, pictures):
        skips = []
        features = pictures - 0.5
        for down in self.down:
            features = down(features)
            skips.append(features)
        stages = [self.context(features)]
        for up, skip in zip(self.up, reversed(skips[:-1])):
            stages.append(up(stages[-1], skip))
        answers = {head: functional.pixel_shuffle(self.finest[head](stages[-1]), 2)
                   for head in self.heads}
        if self.training:
            coarse = [head(stage) for head, stage in zip(self.coarse, stages)]
            answers["coarse"] = coarse[::-1]
        return answers


def parameter_count(network):
    return sum(parameter.numel() for parameter in network.parameters())


class MaskOnly(nn.Module):
    """What is exported: (n, 3, h, w), 0 to 1, gives the odds of subject, (n, 1, h, w), 0 to 1."""

    def __init__(self, network):
        super().__init__()
        self.network = network

    def forward(self, pictures):
        return torch.sigmoid(self.network(pictures)["mask"])
