#!/usr/bin/python3
"""Projects are saved, saved elsewhere, opened, and opened where their film is gone."""
import json
import shutil

from journey import check, equal, travel
from person import Key
from screen import SAMPLE, Screen, frames_of


def journey(person):
    film = person.folder / "cinéma" / "balles.mp4"
    film.parent.mkdir()
    shutil.copy(SAMPLE, film)
    screen = Screen(person, person.start(film))
    screen.wait_for_film("balles")
    screen.capture(1)
    person.press("shift+Right")
    screen.wait_for_time(1)
    screen.capture(2)
    person.type_into(screen.the("text", "Note de l'extrait"), "la seconde")
    person.click(screen.row("00:00.000"))

    # The first time it asks for a name, and proposes the film's.
    person.press("ctrl+s")
    dialog = person.dialog(screen.program, "Enregistrer le projet")
    equal(person.the(dialog, "text").text, "balles.stillwick", "the name proposed")
    person.look("save-dialog")
    first = person.folder / "leçon un.stillwick"
    person.answer_file_dialog(dialog, person.folder / "leçon un")  # the ending is added
    person.wait_for(lambda: screen.window.name == "leçon un", "the project's name in the title")
    project = json.loads(first.read_text())
    equal((project["version"], project["videoName"]), (1, "balles"), "version and name")
    equal(frames_of(project)[0][0], 0, "the first time")
    equal([frame["notes"] for frame in project["groups"][0]["frames"]], ["", "la seconde"], "notes")

    # The second time it does not ask; under another name it does, and the first stays as it was.
    person.press("shift+Right")
    screen.wait_for_time(2)
    screen.capture(3)
    equal(len(screen.save(first)["groups"][0]["frames"]), 3, "captures saved")
    content = first.read_bytes()
    second = person.folder / "leçon deux.stillwick"
    person.click(screen.button("Nouveau groupe"))
    screen.header("Groupe 2")
    person.choose(screen.program, "Fichier", "Enregistrer sous…")
    person.answer_file_dialog(person.dialog(screen.program, "Enregistrer le projet"), second)
    person.wait_for(lambda: screen.window.name == "leçon deux", "the other project's name in the title")
    equal(first.read_bytes(), content, "the first project")
    equal(len(json.loads(second.read_text())["groups"]), 2, "groups of the second project")

    # Opened again: captures are made anew from the film.
    person.press("ctrl+o")
    dialog = person.dialog(screen.program, "Ouvrir un projet")
    person.look("open-dialog")
    person.answer_file_dialog(dialog, first)
    person.wait_for(lambda: screen.window.name == "leçon un", "the first project's name in the title")
    screen.wait_for_rows("00:00.000", "00:01.000", "00:02.000")
    check(all(row.endswith("sujet détouré") for row in screen.rows), f"cut-outs made anew: {screen.rows}")
    check(not screen.find("push button", "Supprimer le groupe"), "one group")
    person.click(screen.row("00:01.000"))
    person.wait_for(lambda: screen.the("text", "Note de l'extrait").text == "la seconde", "the note")
    person.look("opened")

    # What is no project is told, and changes nothing.
    broken = person.folder / "cassé.stillwick"
    broken.write_text('{"version": 1, "groups": ')
    person.press("ctrl+o")
    person.answer_file_dialog(person.dialog(screen.program, "Ouvrir un projet"), broken)
    alert = person.dialog(screen.program, "Erreur")
    person.the(alert, "label", where=lambda each: each.name.startswith("Échec de l'ouverture : "))
    person.look("no-project")
    person.press(Key.ENTER)
    person.wait_for(lambda: alert not in screen.program.windows, "the alert's end")
    equal(screen.window.name, "leçon un", "the title after a file that is no project")

    # Its film gone, a project opens with all but its pictures.
    film.rename(film.with_name("ailleurs.mp4"))
    program = person.start(second)
    alert = person.dialog(program, "Erreur")
    person.the(alert, "label", "Vidéo introuvable. Rouvrez-la via « Ouvrir une vidéo ».")
    person.look("film-gone")
    person.press(Key.ESCAPE)
    person.wait_for(lambda: alert not in program.windows, "the alert's end")
    other = Screen(person, program)
    equal([row.split(",")[0] for row in other.rows], ["00:00.000", "00:01.000", "00:02.000"], "captures")
    other.header("Groupe 2")
    other.the("label", "Aucune vidéo")
    person.look("film-gone-after")


if __name__ == "__main__":
    travel(journey)
