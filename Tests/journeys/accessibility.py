#!/usr/bin/python3
"""The tree that a screen reader walks is whole, and a film becomes pictures through it alone: without a pointer
and without a key."""
import collections
import struct

from journey import check, equal, travel
from screen import SAMPLE, Screen
from widgets import Atspi, Widget

# What somebody stands on with the keyboard is one of these, and not just a box.
FOCUSABLE_ROLES = {
    "check box", "editbar", "list", "list item", "menu", "menu bar", "menu item", "push button", "radio button",
    "image", "canvas", "slider", "split pane", "spin button", "text", "toggle button", "scroll pane", "separator", "splitter",
}


def act(widget, *names):
    """Does the first of these actions that the widget has."""
    interface = widget.accessible.get_action_iface()
    offered = [Atspi.Action.get_action_name(interface, i) for i in range(Atspi.Action.get_n_actions(interface))]
    for name in names:
        if name in offered:
            asked = f"{widget} does « {name} »"  # which may be the end of it
            check(Atspi.Action.do_action(interface, offered.index(name)), asked)
            return
    check(False, f"{widget} offers one of {names}, and not only {offered}")


def press(widget):
    act(widget, "Press", "Toggle")


def write(field, text):
    interface = field.accessible.get_editable_text_iface()
    check(Atspi.EditableText.set_text_contents(interface, text), f"{field} takes « {text} »")


def set_value(widget, value):
    check(Atspi.Value.set_current_value(widget.accessible.get_value_iface(), value), f"{widget} takes {value}")


def faults_of(window):
    """What a listener would stumble over, in words; empty where there is nothing."""
    faults = []
    names = collections.Counter()
    for each in window.shown():
        where = f"{each} in {each.parent}"
        if each.description and each.description == each.name:
            faults.append(f"{where} is read twice")
        if not each.has("focusable"):
            continue
        if not each.name.strip():
            faults.append(f"{where} has no name")
        if each.role not in FOCUSABLE_ROLES:
            faults.append(f"{where} can have the focus, but is no control")
        if each.role in ("push button", "radio button") and not each.accessible.get_action_iface():
            faults.append(f"{where} cannot be pressed")
        if each.role == "slider" and not each.accessible.get_value_iface():
            faults.append(f"{where} has no value")
        names[each.role, each.name, str(each.parent)] += 1
    # Groups repeat their controls, each within its own box, and that has a name.
    faults += [f"{count} times {role} « {name} » within {parent}"
               for (role, name, parent), count in names.items() if count > 1]
    return faults


def journey(person):
    program = person.start()
    screen = Screen(person, program)
    seen = set()

    def examine(moment):
        for fault in faults_of(screen.window):
            seen.add(f"{moment}: {fault}")

    examine("empty")
    press(screen.the("push button", "Ouvrir une vidéo"))
    dialog = person.the(program, where=lambda each: each.role == "dialog" and each.name == "Ouvrir une vidéo")
    write(person.the(dialog, "text"), str(SAMPLE))
    press(person.the(dialog, "push button", "Ouvrir"))
    screen.wait_for_film("balles")
    examine("with a film")

    # Thirty pictures a second: the third after the first is at 0.1 s.
    for _ in range(3):
        press(screen.button("Image suivante (→)"))
    screen.wait_for_time(0.1)
    press(screen.button("Capturer"))
    set_value(screen.the("slider", "Position dans la vidéo"), 2.0)
    screen.wait_for_time(2.0)
    press(screen.button("Capturer"))
    screen.wait_for_rows("00:00.100", "00:02.000")
    examine("with captures")

    press(screen.row("00:00.100"))
    person.wait_until(screen.row("00:00.100"), "selected")
    write(screen.the("text", "Note de l'extrait"), "De face")
    write(screen.the("text", "Nom du groupe"), "Lancer")
    press(screen.button("Nouveau groupe"))
    second = screen.header("Groupe 2")
    press(person.the(second, "push button", "Description du groupe"))
    write(screen.the("text", "Description du groupe"), "Vu de près")
    examine("with a description")
    press(person.the(second, "push button", "Description du groupe"))

    menu = menu_of(person, screen.row("00:02.000"))
    equal([entry.name for entry in menu.children], ["Déplacer vers", "Supprimer"], "the row's menu")
    groups = menu.children[0].children[0]
    press(person.wait_for(lambda: [each for each in groups.children if each.name == "Groupe 2"], "the group")[0])
    person.wait_for(lambda: len(screen.header("Groupe 2").parent.find("list item")) == 2, "both rows")

    press(screen.the(where=lambda each: each.name == "BD" and each.role in ("radio button", "check box")))
    screen.the("label", "Filtre : BD")
    press(screen.button("Contours"))
    set_value(screen.the("slider", "Affiner les bords"), 3.0)
    press(screen.the("check box", "Contour sticker"))
    set_value(screen.the("slider", "Largeur"), 12.0)
    press(screen.button("Couleur"))
    write(screen.the("text", "Code de la couleur"), "#FF8000")
    examine("with a colour")
    press(screen.button("Couleur"))
    examine("with edges")

    folder = person.folder / "sortie"
    folder.mkdir()
    press(screen.button("Dossier…"))
    dialog = person.the(program, where=lambda each: each.role == "dialog" and "dossier" in each.name)
    write(person.the(dialog, "text"), str(folder))
    press(person.the(dialog, "push button", "Choisir"))
    screen.the("label", "sortie")
    press(screen.button("Fusionné (⌘E)"))
    end = person.the(program, where=lambda each: each.name == "Export terminé" and each.role in ("alert", "dialog"))
    person.look("exported")
    press(person.the(end, "push button", "OK"))

    files = sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())
    pictures = [name for name in files if name.endswith(".png")]
    equal(len(pictures), 2, f"pictures among {files}")
    check(any("Lancer" in name for name in pictures), f"a picture of the group that was renamed: {files}")
    for name in pictures:
        width, height = struct.unpack(">II", (folder / name).read_bytes()[16:24])
        # The film is 1280 by 720, and an outline of 12 adds 12 + 2 on every side.
        equal((width, height), (1308, 748), f"the size of {name}")
    texts = "".join(path.read_text() for path in folder.rglob("*.md"))
    check("De face" in texts and "Vu de près" in texts, f"the note and the description in the index: {texts}")
    examine("in the end")
    check(not seen, "what a listener stumbles over:\n" + "\n".join(sorted(seen)))


def menu_of(person, row):
    """The menu that a row shows; no tree holds it, what gains the focus in it tells."""
    person._listen()
    person._focused.clear()
    act(row, "ShowMenu")

    def entry():
        person._pump()
        return [each for each in person._focused if each.get_role_name().endswith("menu item")]

    return Widget(person.wait_for(entry, "the row's menu")[-1].get_parent(), person.scale)


if __name__ == "__main__":
    travel(journey)
