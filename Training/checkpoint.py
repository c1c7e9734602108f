"""Training on disk: the full state to go on from, and the small one that is kept with the recipe.

The small one is a NumPy archive: the averaged weights in half precision (the running figures of
normalisation in single), and the figures so far as JSON. It needs no torch to read.
"""
import json
import os

import numpy
import torch


def write_aside(path, write):
    """Writes a file under another name and then puts it in its place, so that it is never half."""
    path.parent.mkdir(parents=True, exist_ok=True)
    aside = path.with_name(path.name + ".part")
    with open(aside, "wb") as file:
        write(file)
    os.replace(aside, path)


def stored(name, tensor):
    """A weight as an array of half the size; running figures may leave that range, and stay."""
    array = tensor.detach().cpu().numpy()
    halve = tensor.is_floating_point() and "running" not in name
    return array.astype(numpy.float16) if halve else array


def save_small(path, network, figures):
    """Writes weights and figures: {"heads": […], "minutes": …, …}, whatever JSON can hold."""
    arrays = {name: stored(name, tensor) for name, tensor in network.state_dict().items()}
    figures = {**figures, "heads": list(network.heads)}
    arrays["figures"] = numpy.frombuffer(json.dumps(figures).encode(), numpy.uint8)
    write_aside(path, lambda file: numpy.savez(file, **arrays))


def load_small(path):
    """Returns the weights as {name: tensor of single precision} and the figures."""
    with numpy.load(path) as archive:
        figures = json.loads(archive["figures"].tobytes())
        weights = {name: torch.from_numpy(archive[name]) for name in archive.files
                   if name != "figures"}
    return {name: tensor.float() if tensor.is_floating_point() else tensor
            for name, tensor in weights.items()}, figures


def save_full(path, state):
    write_aside(path, lambda file: torch.save(state, file))


def load_full(path, device):
    return torch.load(path, map_location=device)


def random_state():
    """The state of torch's random numbers, of the CPU's and of the GPU's where there is one."""
    state = {"cpu": torch.get_rng_state()}
    if torch.cuda.is_available():
        state["cuda"] = torch.cuda.get_rng_state()
    return state


def restore_random_state(state):
    torch.set_rng_state(state["cpu"].cpu())
    if "cuda" in state and torch.cuda.is_available():
        torch.cuda.set_rng_state(state["cuda"].cpu())
