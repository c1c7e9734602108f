"""Writes the network as ONNX from the small checkpoint, and checks it with OpenCV where that is."""
import argparse
import importlib.util
import inspect
from pathlib import Path

import torch

import checkpoint
from network import ForegroundNetwork, MaskOnly, STRIDE
from training import BUILD, SMALL

OPERATORS = 11
INPUT, OUTPUT = "picture", "foreground"
TOLERANCE = 1e-4


def options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("file", type=Path, nargs="?", default=BUILD / "foreground.onnx")
    parser.add_argument("--small", type=Path, default=SMALL, help="the small checkpoint")
    parser.add_argument("--side", type=int, default=320, help="of the square input, times 32")
    return parser.parse_args()


def restored(path):
    """The network of a small checkpoint, ready to be asked."""
    weights, figures = checkpoint.load_small(path)
    network = ForegroundNetwork(figures["heads"])
    network.load_state_dict(weights)
    return network.eval()


def write(network, file, side):
    """Single precision, opset 11, one picture of a fixed size: what OpenCV 4.6 reads."""
    file.parent.mkdir(parents=True, exist_ok=True)
    # Newer versions of torch have a second exporter, which writes no opset as old as this.
    names = inspect.signature(torch.onnx.export).parameters
    settings = {"dynamo": False} if "dynamo" in names else {}
    torch.onnx.export(MaskOnly(network).eval(), torch.zeros(1, 3, side, side), str(file),
                      opset_version=OPERATORS, input_names=[INPUT], output_names=[OUTPUT],
                      **settings)


def difference(network, file, side):
    """The largest difference between torch's and OpenCV's answer to a picture of noise."""
    import cv2

    picture = torch.rand(1, 3, side, side, generator=torch.Generator().manual_seed(1))
    with torch.no_grad():
        expected = MaskOnly(network).eval()(picture).numpy()
    reader = cv2.dnn.readNetFromONNX(str(file))
    reader.setInput(picture.numpy())
    return float(abs(reader.forward(OUTPUT) - expected).max())


def main():
    given = options()
    if given.side % STRIDE:
        raise SystemExit(f"--side must be a multiple of {STRIDE}")
    network = restored(given.small)
    write(network, given.file, given.side)
    print(f"{given.file}: {given.file.stat().st_size / 1e6:.1f} MB")
    if importlib.util.find_spec("cv2") is None:
        print("not checked: there is no OpenCV for Python here")
        return
    largest = difference(network, given.file, given.side)
    print(f"OpenCV differs from torch by at most {largest:.1e}")
    if largest > TOLERANCE:
        raise SystemExit(f"that is more than {TOLERANCE}")


if __name__ == "__main__":
    main()
