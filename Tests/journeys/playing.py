#!/usr/bin/python3
"""Keys and buttons move the film; keys that are typed into a text do not."""
from journey import check, equal, travel
from person import Key
from screen import SAMPLE, make_film, open_film


def rests_where_it_is(screen):
    """One step on leads to the very next picture: so nothing has moved since."""
    pictures = round(screen.seconds * 30)
    screen.person.press(Key.RIGHT)
    screen.wait_for_time((pictures + 1) / 30)


def journey(person):
    # A minute, so that it does not end before a busy machine has looked.
    screen = open_film(person, make_film(
        person.folder / "une minute.mp4", "-stream_loop", 14, "-i", SAMPLE,
        "-vf", "fps=30,scale=640:-2", "-af", "aresample=async=1", "-t", 60, "-preset", "ultrafast",
    ))
    screen.wait_for_time(0)
    person.press(Key.RIGHT, Key.RIGHT, Key.RIGHT)
    screen.wait_for_time(3 / 30)
    person.press("shift+Right")
    screen.wait_for_time(33 / 30)
    person.press(Key.LEFT)
    screen.wait_for_time(32 / 30)
    person.press("shift+Left")
    screen.wait_for_time(2 / 30)
    for name, seconds in (
        ("Image suivante (→)", 3 / 30),
        ("Avancer d'un intervalle (⇧→)", 33 / 30),
        ("Image précédente (←)", 32 / 30),
        ("Reculer d'un intervalle (⇧←)", 2 / 30),
    ):
        person.click(screen.button(name))
        screen.wait_for_time(seconds)
    person.look("stepped")

    # The button pressed last has the focus: the space bar is the film's all the same.
    check(not screen.is_playing, "a film that rests at first")
    person.press(Key.SPACE)
    screen.wait_until_playing(True)
    person.wait_for(lambda: screen.seconds > 0.4, "a film that moves on")
    person.look("playing")
    person.press(Key.SPACE)
    screen.wait_until_playing(False)
    rests_where_it_is(screen)

    slider = screen.the("slider", "Position dans la vidéo")
    person.drag(slider.place(slider.value / screen.length), slider.place(0.75))
    person.wait_for(lambda: abs(screen.seconds - 45) < 2, "the film where the slider was let go")
    person.look("dragged")

    # Until the end, where it stops by itself.
    person.click(slider, 0.95)
    person.wait_for(lambda: screen.seconds > 55, "the film near its end")
    person.press(Key.SPACE)
    screen.wait_until_playing(True)
    screen.wait_until_playing(False)
    check(screen.seconds > 59.9, "the film stops at its end")
    person.press("shift+Left")
    person.wait_for(lambda: 58.9 < screen.seconds < 59.1, "a step back from the end")

    before = screen.seconds
    screen.capture(1)
    note = screen.the("text", "Note de l'extrait")
    person.type_into(note, "de face, à gauche : ça commence ici")
    person.press(Key.LEFT, Key.LEFT)
    field = screen.the("text", "Nom du groupe")
    person.type_into(field, "Plan d'ensemble, où ça va", replacing=True)
    check(not screen.is_playing, "a space in a text does not play")
    equal(len(screen.rows), 1, "captures after a C in a text")
    equal(screen.seconds, before, "the film after arrows in a text")
    person.look("typed")
    project = screen.save_as(person.folder / "notes.stillwick")
    equal(project["groups"][0]["name"], "Plan d'ensemble, où ça va", "the group's name")
    equal(project["groups"][0]["frames"][0]["notes"], "de face, à gauche : ça commence ici", "the note")


if __name__ == "__main__":
    travel(journey)
