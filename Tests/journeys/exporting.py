#!/usr/bin/python3
"""Both exports write their files, tell what failed, and offer the folder."""
import struct

from filebrowser import FileBrowser
from journey import check, equal, travel
from person import Key
from screen import SAMPLE, Screen, make_film


def size_of(png):
    """A PNG's width and height, and whether it has alpha, from its header."""
    head = png.read_bytes()[:26]
    equal(head[:8], b"\x89PNG\r\n\x1a\n", f"{png.name}'s first bytes")
    width, height, depth, kind = struct.unpack(">IIBB", head[16:26])
    equal((depth, kind), (8, 6), f"{png.name}'s depth and colour type")
    return width, height


def journey(person):
    # Two seconds of two balls, then a wall with nothing before it.
    film = make_film(
        person.folder / "mur.mp4", "-i", SAMPLE, "-filter_complex",
        "[0:v]trim=0:2,setpts=PTS-STARTPTS[a];color=c=0x808080:s=1280x720:r=30:d=2[b];[a][b]concat=n=2",
        "-an", "-pix_fmt", "yuv420p", "-preset", "veryfast",
    )
    folder = person.folder / "Images à garder"
    folder.mkdir()
    browser = FileBrowser()
    screen = Screen(person, person.start(film))
    screen.wait_for_film("mur")
    for count in (1, 2):
        person.press("shift+Right")
        screen.wait_for_time(2 * count - 1)
        screen.capture(count)
        person.press("shift+Right")
        screen.wait_for_time(2 * count)
    equal([row.split(", ")[1] for row in screen.rows], ["sujet détouré", "aucun sujet"], "what was found")

    merged, each = screen.button("Fusionné (⌘E)"), screen.button("Par sujet (⇧⌘E)")
    check(not merged.has("enabled") and not each.has("enabled"), "no export without a folder")
    screen.the("label", "Choisissez un dossier de sortie pour exporter.")
    person.look("no-folder")
    person.press("ctrl+e")
    alert = person.dialog(screen.program, "Erreur")
    person.the(alert, "label", "Aucun dossier de sortie sélectionné.")
    person.look("no-folder-told")
    person.press(Key.ENTER)
    person.wait_for(lambda: alert not in screen.program.windows, "the alert's end")

    screen.click_in_panel("push button", "Dossier…")
    dialog = person.dialog(screen.program, "Sélectionnez le dossier de sortie des PNG")
    person.look("folder-dialog")
    person.answer_file_dialog(dialog, folder)
    person.wait_until(merged, "enabled")
    person.wait_gone(screen.window, "label", "Choisissez un dossier de sortie pour exporter.")
    person.look("folder-chosen")

    person.press("ctrl+e")
    notice = person.dialog(screen.program, "Export terminé")
    person.the(notice, "label", "1 image(s) exportée(s), 1 échec(s).")
    person.look("merged-told")
    equal(browser.shown, [], "folders shown unasked")
    person.click(person.the(notice, "push button", "Ouvrir le dossier"))
    person.wait_for(lambda: browser.shown == [folder.as_uri()], "the folder shown")
    screen.the("label", "1 échec(s)")
    screen.the("label", "00:03.000 — Aucun sujet détecté dans cette image.")
    person.look("failure-told")
    equal([file.name for file in folder.iterdir()], ["mur_00-00-01-000.png"], "the merged export's files")
    equal(size_of(folder / "mur_00-00-01-000.png"), (1280, 720), "the merged picture's size")
    person.wait_until(merged, "enabled")

    # A note on the first capture asks for an index; trimmed, the whole is as large as the two balls.
    person.click(screen.row("00:01.000"))
    person.type_into(screen.the("text", "Note de l'extrait"), "vue de face")
    screen.click_in_panel("check box", "Recadrer sur le sujet")
    person.wait_until(screen.the("check box", "Recadrer sur le sujet"), "checked")
    person.press("ctrl+e")
    notice = person.dialog(screen.program, "Export terminé")
    person.press(Key.ESCAPE)
    person.wait_for(lambda: notice not in screen.program.windows, "the notice's end")
    width, height = size_of(folder / "mur_00-00-01-000.png")
    check(width < 1200 and 240 < height < 600, f"trimmed to the two balls: {width} × {height}")
    equal(
        (folder / "Captures.md").read_text(),
        "# Captures\n\n## Images\n"
        "- [mur_00-00-01-000.png](mur_00-00-01-000.png) — 00:01.000\n  > vue de face\n",
        "the index",
    )

    # Each ball apart, by the button; the balls have radii of 135 and 105 pixels.
    screen.click_in_panel("push button", "Par sujet (⇧⌘E)")
    notice = person.dialog(screen.program, "Export terminé")
    person.the(notice, "label", "1 image(s) exportée(s), 1 échec(s).")
    person.look("per-subject-told")
    person.click(person.the(notice, "push button", "OK"))
    for number, side in ((1, 271), (2, 211)):
        width, height = size_of(folder / f"mur_00-00-01-000_s{number}.png")
        check(abs(width - side) <= 8 and abs(height - side) <= 8, f"ball {number}: {width} × {height}")
    equal(len(browser.shown), 1, "folders shown")


if __name__ == "__main__":
    travel(journey)
