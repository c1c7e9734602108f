"""What a window of the program shows, by the names that its parts have for everybody."""
import json
import pathlib
import subprocess

from journey import check

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "Samples" / "balles.mp4"  # 30 pictures a second, 4 s


class Screen:
    """One window of a program, and the person before it."""

    def __init__(self, person, program, window=None):
        self.person = person
        self.program = program
        self.window = window or person.the_window(program)

    def the(self, role=None, name=None, where=None):
        return self.person.the(self.window, role, name, where)

    def find(self, role=None, name=None, where=None):
        return self.window.find(role, name, where)

    def button(self, name):
        return self.the("push button", name)

    @property
    def panel(self):
        """What can be scrolled below the preview: edges and export."""
        return self.the("filler", where=lambda each: each.find("check box", "Recadrer sur le sujet")
                        and not each.find(name="Aperçu du détourage"))

    def click_in_panel(self, role, name):
        widget = self.the(role, name)
        self.person.show(self.panel, widget)
        self.person.click(widget)

    # The film

    @property
    def seconds(self):
        """Where in the film the window says to be."""
        return self.the("slider", "Position dans la vidéo").value

    @property
    def length(self):
        """The film's, in seconds."""
        slider = self.the("slider", "Position dans la vidéo")
        return slider.accessible.get_value_iface().get_maximum_value()

    def wait_for_time(self, seconds):
        """Waits for a time, to the millisecond that is displayed."""
        self.person.wait_for(
            lambda: abs(self.seconds - seconds) < 0.0005, f"{seconds} s instead of {self.seconds}"
        )

    def wait_for_film(self, title):
        """Waits for a film's name in the title, and for its length."""
        self.person.wait_for(lambda: self.window.name == title, f"the title « {title} »")
        self.person.wait_for(lambda: self.length > 0.01, "the film's length")

    @property
    def is_playing(self):
        """By the label of the menu's entry."""
        label = self.the("menu item", "Vidéo").children[0].children[0].name
        check(label in ("Pause (Espace)", "Lecture (Espace)"), f"a label for playing: {label}")
        return label == "Pause (Espace)"

    def wait_until_playing(self, is_playing):
        self.person.wait_for(
            lambda: self.is_playing == is_playing, "a film that plays" if is_playing else "a film that rests"
        )

    # The captures

    @property
    def rows(self):
        """The captures in the list, as it reads them out."""
        return [row.name for row in self.find("list item")]

    def row(self, start):
        """The row whose text begins so."""
        return self.the("list item", where=lambda each: each.name.startswith(start))

    def wait_for_rows(self, *times):
        """Waits for these captures in this order, each with its cut-out finished."""
        self.person.wait_for(
            lambda: [row.split(",")[0] for row in self.rows] == list(times)
            and not any(row.endswith("en cours") for row in self.rows),
            f"captures at {times}",
        )

    def capture(self, count):
        """Presses C, and waits for that many captures, finished."""
        self.person.press("c")
        self.person.wait_for(
            lambda: len(self.rows) == count and not any("en cours" in row for row in self.rows),
            f"{count} captures",
        )

    # The groups

    def header(self, name):
        """The header of the group of that name."""
        return self.the("panel", where=lambda each: any(
            field.text == name for field in each.find("text", "Nom du groupe")
        ))

    # The project

    def save_as(self, path):
        """Saves under a name by the dialog, and returns what stands in the file."""
        self.person.press("ctrl+shift+s")
        dialog = self.person.dialog(self.program, "Enregistrer le projet")
        self.person.answer_file_dialog(dialog, path)
        self.person.wait_for(path.exists, f"the file {path.name}")
        return json.loads(path.read_text())

    def save(self, path):
        """Saves where it was saved before, and returns what stands in the file."""
        before = path.stat()
        self.person.press("ctrl+s")
        self.person.wait_for(
            lambda: (path.stat().st_ino, path.stat().st_mtime_ns) != (before.st_ino, before.st_mtime_ns),
            "a new file",
        )
        return json.loads(path.read_text())


def open_film(person, film=SAMPLE):
    """A window with a film open, as from a double click on the film's file."""
    program = person.start(film)
    screen = Screen(person, program)
    screen.wait_for_film(pathlib.Path(film).stem)
    return screen


def make_film(path, *words):
    """A film made by ffmpeg."""
    subprocess.run(["ffmpeg", "-nostdin", "-y", "-v", "error", *map(str, words), str(path)],
                   check=True, timeout=120)
    return path


def frames_of(project, group=0):
    """The seconds of a project's captures in one group, as exact pairs."""
    return [(frame["timeValue"], frame["timeScale"]) for frame in project["groups"][group]["frames"]]


__all__ = ["SAMPLE", "Screen", "frames_of", "make_film", "open_film"]
