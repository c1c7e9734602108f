"""What docs/window-pictures shows: a film, two groups of captures, a finished cut-out."""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "Tests" / "journeys"))

from person import options, travel
from screen import Key, open_film

TIMES = (0.4, 0.9, 1.5, 2.2)


def go_to(screen, seconds):
    """Sets the position as a reader would, for an exact time has no place under the pointer."""
    slider = screen.the("slider", "Position dans la vidéo")
    slider.accessible.get_value_iface().set_current_value(seconds)
    screen.person.wait_for(lambda: abs(screen.seconds - seconds) < 0.01, f"{seconds} s")


def cut(person, widget, file, around=8):
    left, top, width, height = widget.bounds
    picture = person._grab(f"{width + 2 * around}x{height + 2 * around}", f"+{left - around},{top - around}",
                           "-draw_mouse", "0", output=["-c:v", "png", "-f", "image2pipe", "-"])
    file.write_bytes(picture)


def journey(person):
    screen = open_film(person, chosen.film)
    for count, seconds in enumerate(TIMES, 1):
        if count == 3:
            person.click(screen.button("Nouveau groupe"))
            person.wait_for(lambda: len(screen.find("text", "Nom du groupe")) == 2, "a second group")
            person.type_into(screen.find("text", "Nom du groupe")[1], "Lancer", replacing=True)
            person.type_into(screen.find("text", "Nom du groupe")[0], "Préparation", replacing=True)
            person.click(screen.the(name="Aperçu du détourage"))
        go_to(screen, seconds)
        screen.capture(count)
    person.type_into(screen.the("text", "Note de l'extrait"), "La main gauche lâche la balle à hauteur d'épaule.")
    person.click(screen.button("Contours"))
    screen.click_in_panel("check box", "Contour sticker")
    person.click(screen.the(name="Aperçu du détourage"))
    person.point(screen.the("slider", "Position dans la vidéo"), 0.5, 0)
    person.wait_for(lambda: screen.find(name="Annotations"), "a picture")
    folder = pathlib.Path(person.pictures)
    person.look(chosen.look).rename(folder / f"{chosen.look}.png")
    cut(person, screen.the("list"), folder / f"{chosen.look}-list.png")
    cut(person, screen.panel, folder / f"{chosen.look}-finish.png")


parser = options()
parser.add_argument("--film", required=True, type=pathlib.Path)
chosen = parser.parse_args()
travel(journey, chosen)
