"""Changes to pictures and masks, as functions on whole batches, for the CPU and the GPU alike.

Pictures are (n, 3, h, w) and masks (n, 1, h, w), both floating point, 0 to 1. Random numbers come
from torch's own generator of the device, which a checkpoint holds. A change that not every picture
undergoes is made to a run of neighbours in the batch (`some`): the batch is in random order, and a
GPU need not wait to learn which they are.
"""
import math

import torch
from torch.nn import functional

# Blur kernels reach this far to each side, in pixels per 160 pixels of the picture.
REACH = 4

# Steps of rounding, of 255: the finest, and what each order of a wave adds across and downwards.
# A plane near the table for brightness in annex K.1 of ITU-T T.81 (1992).
FINEST_STEP, STEP_SLOPE = 10.0, 7.0


def uniform(count, low, high, device):
    """Shape: (count, 1, 1, 1)."""
    return torch.empty(count, 1, 1, 1, device=device).uniform_(low, high)


def some(count, share):
    """A run of places in a batch that makes up this share of it."""
    number = round(count * share)
    start = int(torch.randint(count - number + 1, (1,)))
    return slice(start, start + number)


def length(part):
    return part.stop - part.start


def warp(raw, placement, side, padding="reflection"):
    """Takes pictures with masks to new places. Shape: (n, 4, s, s) bytes to (n, 4, side, side)."""
    grid = functional.affine_grid(placement, [len(raw), 4, side, side], align_corners=False)
    return functional.grid_sample(raw.float() / 255, grid, padding_mode=padding,
                                  align_corners=False)


def placements(scales, angles, centres, aims):
    """Affine maps from the result's square, -1 to 1, to the source's.

    `scales` (n, 2): how much of the source a side of the result shows, negative where mirrored;
    `angles` (n,) in radians; the source's point `centres` (n, 2) lands on the result's `aims`.
    """
    cosine, sine = angles.cos(), angles.sin()
    turn = torch.stack([cosine, -sine, sine, cosine], 1).view(-1, 2, 2) * scales[:, :, None]
    shift = centres[:, :, None] - turn @ aims[:, :, None]
    return torch.cat([turn, shift], 2)


def mirrors(count, device):
    """Shape: (count, 2): -1 or 1 across, always 1 downwards."""
    across = torch.randint(2, (count,), device=device).float() * 2 - 1
    return torch.stack([across, torch.ones_like(across)], 1)


def crops(count, device, closest=0.6):
    """Placements that show from `closest` to all of a side, mirrored or not, a little turned."""
    scale = uniform(count, closest, 1.0, device).view(count, 1)
    aspect = uniform(count, -0.12, 0.12, device).exp().view(count, 1)
    scales = torch.cat([scale * aspect, scale / aspect], 1).clamp(max=1.0)
    room = (1 - scales) * torch.empty(count, 2, device=device).uniform_(-1, 1)
    angles = torch.randn(count, device=device) * 0.05
    return placements(scales * mirrors(count, device), angles, room, torch.zeros_like(room))


def grey(pictures):
    """Shape: (n, 1, h, w). Source: the weights of ITU-R BT.601."""
    weights = torch.tensor([0.299, 0.587, 0.114], device=pictures.device).view(1, 3, 1, 1)
    return (pictures * weights).sum(1, keepdim=True)


def recoloured(pictures):
    """Other light: brightness, contrast, saturation and a cast of each colour."""
    count, device = len(pictures), pictures.device
    saturation = uniform(count, 0.0, 1.5, device)
    pictures = torch.lerp(grey(pictures).expand_as(pictures), pictures, saturation)
    middle = pictures.mean((2, 3), keepdim=True)
    contrast = uniform(count, 0.6, 1.4, device)
    cast = torch.empty(count, 3, 1, 1, device=device).uniform_(0.85, 1.15)
    brightness = uniform(count, 0.65, 1.3, device)
    return (((pictures - middle) * contrast + middle) * (cast * brightness)).clamp(0, 1)


def kernel_grid(side, device):
    """Offsets across and downwards of a blur kernel. Shape: (1, k, k) each."""
    reach = max(1, round(REACH * side / 160))
    steps = torch.arange(-reach, reach + 1, device=device, dtype=torch.float32)
    down, across = torch.meshgrid(steps, steps, indexing="ij")
    return across[None], down[None], reach


def disks(count, side, device):
    """Kernels of a lens out of focus. Shape: (count, k, k), each of sum 1."""
    across, down, reach = kernel_grid(side, device)
    radius = uniform(count, 0.5, reach, device).view(count, 1, 1)
    kernels = ((radius - (across**2 + down**2).sqrt()) * 3).sigmoid()
    return kernels / kernels.sum((1, 2), keepdim=True)


def streaks(count, side, device):
    """Kernels of something that moves past. Shape: (count, k, k), each of sum 1."""
    across, down, reach = kernel_grid(side, device)
    angle = uniform(count, 0, math.pi, device).view(count, 1, 1)
    length = uniform(count, 0.3, reach, device).view(count, 1, 1)
    along = across * angle.cos() + down * angle.sin()
    beside = down * angle.cos() - across * angle.sin()
    kernels = ((length - along.abs()) * 3).sigmoid() * (-2 * beside**2).exp()
    return kernels / kernels.sum((1, 2), keepdim=True)


def blurred(pictures, kernels):
    """Each picture by its own kernel."""
    count, channels, height, width = pictures.shape
    reach = kernels.shape[-1] // 2
    padded = functional.pad(pictures, [reach] * 4, mode="replicate")
    answer = functional.conv2d(padded.view(1, -1, height + 2 * reach, width + 2 * reach),
                               kernels.repeat_interleave(channels, 0)[:, None],
                               groups=count * channels)
    return answer.view(count, channels, height, width)


def shallow(pictures, masks):
    """A background out of focus behind a sharp subject."""
    soft = blurred(pictures, disks(len(pictures), pictures.shape[-1], pictures.device))
    return torch.lerp(soft, pictures, masks)


def noisy(pictures):
    """Grain of up to 0.08, coarse in half of the channels' sum and fine in each."""
    strength = uniform(len(pictures), 0, 0.08, pictures.device)
    shared = torch.randn_like(pictures[:, :1])
    return (pictures + strength * (0.7 * shared + 0.5 * torch.randn_like(pictures))).clamp(0, 1)


def cosines(device):
    """The orthonormal cosine transform of eight values. Shape: (8, 8)."""
    steps = torch.arange(8, device=device, dtype=torch.float32)
    rows = (math.pi / 8 * (steps[None] + 0.5) * steps[:, None]).cos() * 0.5
    rows[0] *= math.sqrt(0.5)
    return rows


def compressed(pictures):
    """Damage of a picture or film stored in few bits: 8x8 blocks of coarsely rounded cosines.

    Colour differences lose twice as much as brightness. Width and height are multiples of 8.
    """
    count, channels, height, width = pictures.shape
    light = grey(pictures)
    planes = torch.cat([light, (pictures - light)[:, [0, 2]]], 1)
    transform = cosines(pictures.device)
    blocks = planes.view(count, 3, height // 8, 8, width // 8, 8).transpose(3, 4)
    waves = transform @ blocks @ transform.T
    order = torch.arange(8, device=pictures.device, dtype=torch.float32)
    steps = FINEST_STEP + STEP_SLOPE * (order[:, None] + order)
    coarseness = uniform(count, -1.5, 1.3, pictures.device).exp().view(count, 1, 1, 1, 1, 1) / 255
    loss = torch.tensor([1.0, 2.0, 2.0], device=pictures.device).view(1, 3, 1, 1, 1, 1)
    steps = steps * coarseness * loss
    blocks = transform.T @ ((waves / steps).round() * steps) @ transform
    light, red, blue = blocks.transpose(3, 4).reshape(count, 3, height, width).split(1, 1)
    green = -(0.299 * red + 0.114 * blue) / 0.587
    return (light + torch.cat([red, green, blue], 1)).clamp(0, 1)


def damaged(pictures, masks, shares):
    """Lens, movement, grain and compression, each on its share of the batch; changes in place."""
    side, device = pictures.shape[-1], pictures.device
    changes = (
        (shares.shallow, lambda part: shallow(pictures[part], masks[part])),
        (shares.defocus, lambda part: blurred(pictures[part], disks(length(part), side, device))),
        (shares.movement,
         lambda part: blurred(pictures[part], streaks(length(part), side, device))),
        (shares.noise, lambda part: noisy(pictures[part])),
        (shares.compression, lambda part: compressed(pictures[part])),
    )
    for share, change in changes:
        part = some(len(pictures), share)
        if length(part):
            pictures[part] = change(part)
    return pictures
