#!/usr/bin/python3
"""Captures are put in groups, which are named, described, ordered, and deleted."""
from journey import check, equal, travel
from person import Key
from screen import frames_of, open_film


def journey(person):
    screen = open_film(person)
    for count in (1, 2, 3):
        screen.capture(count)
        person.press("shift+Right")
        screen.wait_for_time(count)
    screen.wait_for_rows("00:00.000", "00:01.000", "00:02.000")
    check(not screen.find("push button", "Supprimer le groupe"), "the only group cannot be deleted")
    person.look("three-captures")

    new_group = screen.button("Nouveau groupe")
    person.click(new_group)
    screen.header("Groupe 2")
    person.click(new_group)
    screen.header("Groupe 3")
    equal(len(screen.find("push button", "Supprimer le groupe")), 3, "groups that can be deleted")
    equal(len(screen.find("push button", "Groupe actif (cible des captures)")), 1, "active groups")
    person.look("three-groups")

    person.type_into(person.the(screen.header("Groupe 2"), "text"), "Détails de près", replacing=True)
    person.click(person.the(screen.header("Captures"), "push button", "Description du groupe"))
    editor = screen.the("text", "Description du groupe")
    person.type_into(editor, "Vu de l'entrée, le matin")
    person.look("description")
    person.press(Key.ESCAPE)
    person.wait_gone(screen.window, "text", "Description du groupe")

    # Captured into the group that was made last; then into one that is made active.
    person.click(screen.row("00:02.000"))
    screen.capture(4)
    person.click(person.the(screen.header("Détails de près"), "push button", "Définir comme groupe actif"))
    person.press("shift+Left")
    screen.wait_for_time(2)
    screen.capture(5)
    screen.wait_for_rows("00:00.000", "00:01.000", "00:02.000", "00:02.000", "00:03.000")

    # The third of the first group before its first.
    start, first = screen.row("00:02.000"), screen.row("00:00.000")
    person.drag(start.place(0.4, 0.5), first.place(0.4, 0.1), before_drop=lambda: person.look("dragging-a-row"))
    screen.wait_for_rows("00:02.000", "00:00.000", "00:01.000", "00:02.000", "00:03.000")
    # Into another group it cannot be dragged: there it would be moved by the menu.
    person.drag(screen.row("00:00.000").place(0.4), screen.row("00:03.000").place(0.4, 0.9))
    screen.wait_for_rows("00:02.000", "00:00.000", "00:01.000", "00:02.000", "00:03.000")
    menu = person.open_context_menu(screen.row("00:00.000"))
    equal([entry.name for entry in menu.children], ["Déplacer vers", "Supprimer"], "the context menu")
    person.choose_from(menu, "Déplacer vers", "Détails de près", before_last=lambda: person.look("context-menu"))
    screen.wait_for_rows("00:02.000", "00:01.000", "00:02.000", "00:00.000", "00:03.000")
    person.choose_from(person.open_context_menu(screen.row("00:01.000")), "Supprimer")
    screen.wait_for_rows("00:02.000", "00:02.000", "00:00.000", "00:03.000")

    project = screen.save_as(person.folder / "trois groupes.stillwick")
    equal([group["name"] for group in project["groups"]], ["Captures", "Détails de près", "Groupe 3"], "groups")
    equal([group["notes"] for group in project["groups"]], ["Vu de l'entrée, le matin", "", ""], "descriptions")
    equal(project["activeGroupIndex"], 1, "the active group")
    equal([seconds_of(project, group) for group in range(3)], [[2], [2, 0], [3]], "times")

    person.click(person.the(screen.header("Groupe 3"), "push button", "Supprimer le groupe"))
    screen.wait_for_rows("00:02.000", "00:02.000", "00:00.000")
    person.click(person.the(screen.header("Détails de près"), "push button", "Supprimer le groupe"))
    screen.wait_for_rows("00:02.000")
    check(not screen.find("push button", "Supprimer le groupe"), "the last group cannot be deleted")
    person.look("one-group-again")
    project = screen.save(person.folder / "trois groupes.stillwick")
    equal([group["name"] for group in project["groups"]], ["Captures"], "groups in the end")


def seconds_of(project, group):
    return [value / scale for value, scale in frames_of(project, group)]


if __name__ == "__main__":
    travel(journey)
