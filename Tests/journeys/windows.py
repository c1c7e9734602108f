#!/usr/bin/python3
"""Each of two windows has its own state; keys and menus go to the active one."""
from journey import check, equal, travel
from person import Key
from screen import Screen, make_film, open_film


def journey(person):
    winter, summer = (
        make_film(person.folder / name, "-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=60",
                  "-pix_fmt", "yuv420p", "-preset", "ultrafast")
        for name in ("hiver.mp4", "été.mp4")
    )
    one = open_film(person, winter)
    program = one.program
    person.move(one.window, 20, 40)
    person.press("ctrl+n")
    window = person.wait_for(
        lambda: [each for each in program.windows if each.name == "Stillwick" and each.has("active")],
        "another window",
    )[0]
    two = Screen(person, program, window)
    person.move(window, 220, 140)
    person.look("second-window")

    # The new window has no film: what is asked of it is refused there, and the other is left alone.
    person.press(Key.RIGHT, "c")
    alert = person.dialog(program, "Erreur")
    person.the(alert, "label", "Aucune vidéo chargée.")
    person.press(Key.ENTER)
    person.wait_for(lambda: alert not in program.windows, "the alert's end")
    check(not one.is_playing, "the other window's film rests")
    equal((one.seconds, one.rows), (0.0, []), "the other window")

    person.click(two.the("push button", "Ouvrir une vidéo"))
    person.answer_file_dialog(person.dialog(program, "Ouvrir une vidéo"), summer)
    two.wait_for_film("été")
    person.press(Key.SPACE)
    two.wait_until_playing(True)
    check(not one.is_playing, "the other window's film rests still")
    person.bring_forward(one.window)
    check(two.is_playing, "a film plays on when its window is left")
    person.press(Key.RIGHT, Key.RIGHT)
    one.wait_for_time(2 / 25)
    check(two.is_playing, "a step in one window leaves the other's film playing")
    one.capture(1)
    equal(two.rows, [], "captures of the other window")
    person.look("first-window-in-front")
    person.bring_forward(window)
    person.press(Key.SPACE)
    two.wait_until_playing(False)
    check(not one.is_playing, "the first window's film")

    # Closed, its state is gone; the other goes on, and the program ends with the last window.
    person.press("ctrl+w")
    person.wait_for(lambda: len(program.windows) == 1, "one window")
    person.wait_until(one.window, "active")
    person.press(Key.SPACE)
    one.wait_until_playing(True)
    person.press(Key.SPACE, "ctrl+w")
    person.wait_for(lambda: not program.is_running, "the program's end")
    equal(program.process.wait(), 0, "the program's status")


if __name__ == "__main__":
    travel(journey)
