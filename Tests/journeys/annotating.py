#!/usr/bin/python3
"""Marks are drawn with each tool, chosen, moved and deleted."""
from journey import check, equal, travel
from screen import open_film

# Where each is drawn, in parts of the picture: from, to.
MARKS = {
    "Flèche": ("arrow", (0.2, 0.2), (0.5, 0.4)),
    "Ligne": ("line", (0.2, 0.8), (0.8, 0.8)),
    "Cercle": ("circle", (0.6, 0.2), (0.9, 0.6)),
}
NEAR = 0.01  # a pixel or two of a small picture


def near(actual, expected, what):
    check(all(abs(a - b) <= NEAR for a, b in zip(actual, expected)), f"{what}: {actual}, not {expected}")


def journey(person):
    screen = open_film(person)
    screen.capture(1)
    canvas = screen.the(name="Annotations")
    remove = screen.button("Supprimer l'annotation sélectionnée (⌫)")
    check(not remove.has("enabled"), "nothing to delete before a mark is drawn")
    person.look("nothing-drawn")
    for tool, (_, start, end) in MARKS.items():
        person.click(screen.the("radio button", tool))
        person.drag(canvas.place(*start), canvas.place(*end))
        person.wait_until(remove, "enabled")
    person.look("three-marks")
    path = person.folder / "marques.stillwick"
    marks = marks_of(screen.save_as(path))
    equal([mark["kind"] for mark in marks], [kind for kind, _, _ in MARKS.values()], "kinds")
    for mark, (kind, start, end) in zip(marks, MARKS.values()):
        near(mark["start"], start, f"{kind}'s start")
        near(mark["end"], end, f"{kind}'s end")
        equal((mark["r"], mark["g"], mark["b"], mark["a"]), (1, 0, 0, 1), f"{kind}'s colour")
        equal(mark["lineWidth"], 0.006, f"{kind}'s width")

    # Another colour and width for what is drawn from now on.
    person.click(screen.button("Couleur de l'annotation"))
    person.look("colours")
    code = screen.the("text", "Code de la couleur")
    person.type_into(code, "#00A0FF80", replacing=True)
    person.press("Escape")
    person.wait_gone(screen.window, "text", "Code de la couleur")
    width = screen.the("slider", "Épaisseur")
    person.click(width, 0.98)
    person.wait_for(lambda: width.value > 0.015, "a broad line")
    person.click(screen.the("radio button", "Ligne"))
    person.drag(canvas.place(0.1, 0.9), canvas.place(0.9, 0.95))
    mark = marks_of(screen.save(path))[-1]
    near((mark["r"], mark["g"], mark["b"], mark["a"]), (0, 160 / 255, 1, 128 / 255), "the colour typed")
    check(0.015 < mark["lineWidth"] <= 0.02, f"a broad line: {mark['lineWidth']}")

    # The straight line is taken in its middle and moved up by a fifth.
    person.click(screen.the("radio button", "Sélection"))
    person.drag(canvas.place(0.5, 0.8), canvas.place(0.55, 0.6))
    person.look("moved")
    marks = marks_of(screen.save(path))
    equal(len(marks), 4, "marks after moving one")
    near(marks[1]["start"], (0.25, 0.6), "the moved line's start")
    near(marks[1]["end"], (0.85, 0.6), "the moved line's end")
    # What is selected is deleted, and nothing else.
    person.click(remove)
    person.wait_for(lambda: not remove.has("enabled"), "nothing selected")
    equal([mark["kind"] for mark in marks_of(screen.save(path))], ["arrow", "circle", "line"], "what is left")
    # Beside all marks nothing is taken, and what was taken is let go.
    person.drag(canvas.place(0.2, 0.2), canvas.place(0.2, 0.22))
    person.wait_until(remove, "enabled")
    person.drag(canvas.place(0.05, 0.5), canvas.place(0.3, 0.55))
    person.wait_for(lambda: not remove.has("enabled"), "nothing selected again")
    person.look("one-deleted")


def marks_of(project):
    return project["groups"][0]["frames"][0]["annotations"]


if __name__ == "__main__":
    travel(journey)
