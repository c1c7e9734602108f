#!/usr/bin/python3
"""Edges and styles change what the preview shows, and what is saved."""
from journey import check, equal, travel
from screen import open_film

STYLES = {"Croquis": "sketch", "BD": "comic", "Postérisation": "poster", "Aucun": "none"}


def journey(person):
    screen = open_film(person)
    screen.capture(1)
    preview = screen.the(name="Aperçu du détourage")
    screen.the(name="Annotations")  # which lies over a picture
    plain = person.pixels(preview)
    person.look("style-none")
    path = person.folder / "styles.stillwick"
    screen.save_as(path)
    seen = [plain]
    for name, raw in STYLES.items():
        before = person.pixels(preview)
        person.click(screen.the("radio button", name))
        screen.the("label", f"Filtre : {name}")
        person.wait_for(lambda: person.pixels(preview) != before, f"another picture with {name}")
        person.look(f"style-{raw}")
        seen.append(person.pixels(preview))
        equal(screen.save(path)["filter"], raw, "the style saved")
    equal(seen[-1], plain, "without a style the first picture again")
    equal(len(set(seen)), 4, "styles that differ")

    check(not screen.find("slider", "Affiner les bords"), "edges are folded away at first")
    person.click(screen.button("Contours"))
    person.wait_until(screen.button("Contours"), "expanded")
    person.look("edges")
    changes = (
        ("shrink", lambda: set_slider(screen, "Affiner les bords", 0.8)),
        ("feather", lambda: set_slider(screen, "Adoucir", 0.4)),
        ("outline", lambda: screen.click_in_panel("check box", "Contour sticker")),
        ("outlineWidth", lambda: set_slider(screen, "Largeur", 0.9)),
        ("r", lambda: set_color(screen, "#FF8000")),
    )
    edge = screen.save(path)["edge"]
    equal((edge["shrink"], edge["feather"], edge["outline"]), (0, 0, False), "edges at first")
    for key, change in changes:
        before = person.pixels(preview)
        change()
        person.wait_for(lambda: person.pixels(preview) != before, f"another picture after {key}")
        person.look(f"edges-{key}")
        now = screen.save(path)["edge"]
        if key == "r":
            check(abs(now["r"] - 1) + abs(now["g"] - 128 / 255) + abs(now["b"]) < 0.01, f"orange: {now}")
        else:
            check(now[key] != edge[key], f"another {key}: {now}")
        edge = now
    check(7 < edge["shrink"] < 9, f"shrink where the slider was clicked: {edge['shrink']}")
    check(3 < edge["feather"] < 5, f"feather where the slider was clicked: {edge['feather']}")
    check(16 < edge["outlineWidth"] < 20, f"outline where the slider was clicked: {edge['outlineWidth']}")
    screen.click_in_panel("check box", "Contour sticker")
    person.wait_gone(screen.window, "slider", "Largeur")


def set_slider(screen, name, part):
    screen.person.show(screen.panel, screen.the("slider", name))
    screen.person.click(screen.the("slider", name), part)


def set_color(screen, code):
    screen.click_in_panel("push button", "Couleur")
    field = screen.the("text", "Code de la couleur")
    screen.person.type_into(field, code, replacing=True)
    screen.person.press("Escape")
    screen.person.wait_gone(screen.window, "text", "Code de la couleur")


if __name__ == "__main__":
    travel(journey)
