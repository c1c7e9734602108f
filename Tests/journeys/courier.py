"""The window beside the program that files are dragged from and to; see Courier.cpp."""
import pathlib


class Courier:
    def __init__(self, person, *arguments):
        self.person = person
        self.program = person.start_beside("journeys/Courier", *arguments)
        self.window = person.wait_for(lambda: self.program.windows, "the courier's window")[0]
        person.move(self.window, 4, 30)

    @property
    def said(self):
        return self.program.log.read_text().split()

    def drag_to(self, place, before_drop=None):
        """Drags its files to a place on the screen; returns what became of them."""
        count = len(self.said)
        self.person.drag(self.window.place(), place, before_drop=before_drop)
        self.person.wait_for(lambda: len(self.said) > count, "the end of the drag")
        return self.said[-1]

    def leave(self):
        self.program.process.terminate()
        self.program.process.wait()


class Taker(Courier):
    """One that takes what is dropped on it."""

    def __init__(self, person, folder):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        super().__init__(person, "--take", self.folder)

    @property
    def formats(self):
        """The formats of what was dropped, once it has been."""
        file = self.folder / "formats"
        self.person.wait_for(file.exists, "something dropped")
        return file.read_text().split("\n")

    def bytes_of(self, format):
        return (self.folder / format.replace("/", "_")).read_bytes()
