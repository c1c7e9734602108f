#!/usr/bin/python3
"""A film opens by drop and by dialog; what is no film is refused."""
from courier import Courier
from journey import equal, travel
from person import Key
from screen import SAMPLE, Screen, make_film


def journey(person):
    text = person.folder / "à lire.txt"
    text.write_text("Rien à voir.\n")
    summer = make_film(person.folder / "colonne d'été.mp4", "-f", "lavfi", "-i",
                       "testsrc2=s=320x180:r=25:d=2", "-pix_fmt", "yuv420p")
    screen = Screen(person, person.start())
    equal(screen.window.name, "Stillwick", "the title without a film")
    screen.the("label", "Aucune vidéo")
    screen.the("label", "Aucune image")
    screen.the("label", "Aucun aperçu")
    place = screen.window.place(0.25, 0.3)
    person.look("nothing-open")

    courier = Courier(person, text)
    equal(courier.drag_to(place), "refused", "a text file dropped")
    equal(screen.window.name, "Stillwick", "the title after a text file")
    courier.leave()
    courier = Courier(person, text, SAMPLE)
    equal(courier.drag_to(place, lambda: person.look("film-over-the-window")), "copied", "a film dropped")
    screen.wait_for_film("balles")
    courier.leave()
    equal(screen.length, 4.0, "the film's length in seconds")
    person.look("film-dropped")

    person.bring_forward(screen.window)
    person.click(screen.button("Ouvrir une vidéo"))
    dialog = person.dialog(screen.program, "Ouvrir une vidéo")
    person.look("dialog")
    person.press(Key.ESCAPE)
    person.wait_for(lambda: dialog not in screen.program.windows, "the dialog's end")
    equal(screen.window.name, "balles", "the title after a dialog that was left")
    person.click(screen.button("Ouvrir une vidéo"))
    person.answer_file_dialog(person.dialog(screen.program, "Ouvrir une vidéo"), summer)
    screen.wait_for_film("colonne d'été")
    person.wait_for(lambda: screen.length == 2.0, "a length of 2 s")
    screen.the("label", "colonne d'été")  # in the toolbar
    person.look("film-chosen")

    broken = person.folder / "cassé.mp4"
    broken.write_bytes(b"no film at all" * 100)
    person.click(screen.button("Ouvrir une vidéo"))
    person.answer_file_dialog(person.dialog(screen.program, "Ouvrir une vidéo"), broken)
    alert = person.dialog(screen.program, "Erreur")
    person.the(alert, "label", where=lambda each: each.name.startswith("Échec de l'extraction de l'image : "))
    person.look("broken-film")
    person.click(person.the(alert, "push button", "OK"))
    person.wait_for(lambda: alert not in screen.program.windows, "the alert's end")


if __name__ == "__main__":
    travel(journey)
