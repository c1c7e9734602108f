#!/usr/bin/python3
"""The whole window goes from light to dark and back with the desktop, whatever it shows."""
from journey import check, travel
from screen import open_film

BRIGHT = 200  # of 255, in every channel
# Of a window without its film and its pictures, in the dark: texts, symbols, handles, fields' edges.
LEFT_BRIGHT = 0.06


def journey(person):
    person.set_look("light")
    screen = open_film(person)
    screen.capture(1)
    person.click(screen.button("Contours"))
    person.wait_until(screen.button("Contours"), "expanded")
    person.click(screen.the("radio button", "BD"))
    screen.the("label", "Filtre : BD")
    panels = (screen.the("list"), screen.panel)
    whole = person.wait_still(screen.window)
    person.look("light")
    for each in panels:
        check(bright_part(person.pixels(each)) > 0.5, f"{each} is light")

    person.set_look("dark")
    person.wait_for(lambda: all(bright_part(person.pixels(each)) < LEFT_BRIGHT for each in panels),
                    "dark panels")
    person.wait_still(screen.window)
    person.look("dark")

    # What opens now is dark from the first.
    person.press("ctrl+o")
    dialog = person.dialog(screen.program, "Ouvrir un projet")
    person.wait_still(dialog)
    person.look("dark-dialog")
    check(bright_part(person.pixels(dialog)) < LEFT_BRIGHT, "the dialog is dark")
    person.set_look("light")
    person.wait_for(lambda: bright_part(person.pixels(dialog)) > 0.5, "a light dialog")
    person.look("light-dialog")
    person.press("Escape")
    person.wait_for(lambda: dialog not in screen.program.windows, "the dialog's end")
    again = person.wait_still(screen.window)
    person.look("light-again")
    check(again == whole, "every pixel is what it was")


def bright_part(pixels):
    """The part of the pixels, by every fifth of them, that are nearly white."""
    chosen = range(0, len(pixels), 3 * 5)
    return sum(min(pixels[at : at + 3]) >= BRIGHT for at in chosen) / len(chosen)


if __name__ == "__main__":
    travel(journey)
