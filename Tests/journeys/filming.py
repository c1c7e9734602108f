#!/usr/bin/python3
"""Real films, as phones and cameras make them, open upright and give cut-outs in their own size."""
import struct
import subprocess

from journey import check, equal, skip, travel
from person import Key
from screen import Screen

FILMS = ("phone_portrait.mov", "juggle.mp4", "dog.mp4")


def upright_size(film):
    """The size of the film's first picture, turned as the film says, by ffmpeg."""
    png = subprocess.run(
        ["ffmpeg", "-nostdin", "-v", "error", "-i", str(film), "-frames:v", "1", "-c:v", "png", "-f", "rawvideo", "-"],
        check=True, capture_output=True,
    ).stdout
    return struct.unpack(">II", png[16:24])


def journey(person):
    films = [person.films / name for name in FILMS] if person.films else []
    if not films or not all(film.exists() for film in films):
        skip("the real films are not here")
    folder = person.folder / "images"
    folder.mkdir()
    screen = Screen(person, person.start())
    screen.click_in_panel("push button", "Dossier…")
    dialog = person.dialog(screen.program, "Sélectionnez le dossier de sortie des PNG")
    person.answer_file_dialog(dialog, folder)
    screen.the("label", "images")
    found = 0
    for film in films:
        person.click(screen.the("push button", "Ouvrir une vidéo"))
        person.answer_file_dialog(person.dialog(screen.program, "Ouvrir une vidéo"), film)
        screen.wait_for_film(film.stem)
        screen.wait_for_time(0)
        person.wait_for(lambda: not screen.rows, "an empty list for another film")
        person.press("shift+Right")
        person.wait_for(lambda: screen.seconds > 0.9, "a second into the film")
        screen.capture(1)
        person.look(film.stem)
        found += screen.rows[0].endswith("sujet détouré")
        person.press("ctrl+e")
        notice = person.dialog(screen.program, "Export terminé")
        person.press(Key.ESCAPE)
        person.wait_for(lambda: notice not in screen.program.windows, "the notice's end")
        files = list(folder.glob(f"{film.stem}_*.png"))
        equal(len(list(folder.iterdir())), found, "a file for each cut-out")
        for file in files:
            size = struct.unpack(">II", file.read_bytes()[16:24])
            equal(size, upright_size(film), f"{file.name}'s size")
    check(found >= 2, f"subjects found in {found} films of three")


if __name__ == "__main__":
    travel(journey)
