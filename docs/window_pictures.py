"""What docs/window-pictures shows: a film, two groups of captures, a finished cut-out."""
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "Tests" / "journeys"))

from journey import options, travel
from screen import open_film

TIMES = (0.4, 0.9, 1.5, 2.2)


def go_to(screen, seconds):
    """Sets the position as a reader would, for an exact time has no place under the pointer."""
    slider = screen.the("slider", "Position dans la vidéo")
    slider.accessible.get_value_iface().set_current_value(seconds)
    screen.person.wait_for(lambda: abs(screen.seconds - seconds) < 0.01, f"{seconds} s")


def cut(whole, widget, file, highest):
    """The widget's part of a picture of the screen."""
    left, top, width, height = widget.bounds
    subprocess.run(["ffmpeg", "-nostdin", "-y", "-v", "error", "-i", whole, "-vf",
                    f"crop={width}:{min(height, highest)}:{left}:{top}", file], check=True)


def journey(person):
    screen = open_film(person, chosen.film)
    for count, seconds in enumerate(TIMES, 1):
        if count == 3:
            person.click(screen.button("Nouveau groupe"))
            person.wait_for(lambda: len(screen.find("text", "Nom du groupe")) == 2, "a second group")
            person.type_into(screen.find("text", "Nom du groupe")[1], "Jonglage", replacing=True)
            person.type_into(screen.find("text", "Nom du groupe")[0], "Préparation", replacing=True)
            person.click(screen.the(name="Aperçu du détourage"))
        go_to(screen, seconds)
        screen.capture(count)
    person.type_into(screen.the("text", "Note de l'extrait"), "Le ballon monte du genou, les bras tiennent l'équilibre.")
    person.click(screen.button("Contours"))
    screen.click_in_panel("check box", "Contour sticker")
    person.click(screen.the(name="Aperçu du détourage"))
    person.point(screen.the("slider", "Position dans la vidéo"), 0.5, 0)
    person.wait_for(lambda: screen.find(name="Annotations"), "a picture")
    folder = pathlib.Path(person.pictures)
    whole = person.look(chosen.look).rename(folder / f"{chosen.look}.png")
    cut(whole, screen.the("list"), folder / f"{chosen.look}-list.png", 280)
    cut(whole, screen.panel, folder / f"{chosen.look}-finish.png", 600)


parser = options()
parser.add_argument("--film", required=True, type=pathlib.Path)
chosen = parser.parse_args()
travel(journey, chosen)
