#!/usr/bin/python3
"""The cut-out that is seen is dragged to another program, in full size, with its style and its marks."""
import subprocess

from courier import Taker
from journey import check, equal, travel
from screen import open_film


def pixels_of(file):
    """(width, height, bytes R, G, B, A row by row) of a picture, by ffmpeg."""
    size = subprocess.run(
        ["ffprobe", "-v", "error", "-show_entries", "stream=width,height", "-of", "csv=p=0", str(file)],
        check=True, capture_output=True, text=True,
    ).stdout
    width, height = map(int, size.strip().split(","))
    content = subprocess.run(
        ["ffmpeg", "-nostdin", "-v", "error", "-i", str(file), "-f", "rawvideo", "-pix_fmt", "rgba", "-"],
        check=True, capture_output=True,
    ).stdout
    return width, height, content


def journey(person):
    screen = open_film(person)
    person.press("shift+Right")
    screen.wait_for_time(1)
    screen.capture(1)
    canvas = screen.the(name="Annotations")
    person.click(screen.the("radio button", "Ligne"))
    person.drag(canvas.place(0.1, 0.05), canvas.place(0.9, 0.05))
    person.click(screen.the("radio button", "Sélection"))

    taker = Taker(person, person.folder / "reçu")
    person.drag(canvas.place(0.05, 0.9), taker.window.place(), steps=30,
                before_drop=lambda: person.look("over-another-program"))
    formats = taker.formats
    check("image/png" in formats, f"a PNG among the formats: {formats}")
    address = taker.bytes_of("text/uri-list").decode().strip()
    check(address.startswith("file:///") and address.endswith("/balles_00-00-01-000.png"), f"a file: {address}")
    (person.folder / "reçu.png").write_bytes(taker.bytes_of("image/png"))
    width, height, content = pixels_of(person.folder / "reçu.png")
    equal((width, height), (1280, 720), "the picture's size")
    # Two balls with radii of 135 and 105 pixels, and the line, of 0.006 × 1280 by 0.8 × 1280 pixels.
    covered = sum(1 for alpha in content[3::4] if alpha > 127)
    check(abs(covered - (57256 + 34636 + 7864)) < 3500, f"pixels of two balls and a line: {covered}")
    middle = 4 * (round(0.05 * height) * width + width // 2)
    equal(tuple(content[middle:middle + 4]), (255, 0, 0, 255), "the line's colour")
    person.look("dropped")


if __name__ == "__main__":
    travel(journey)
