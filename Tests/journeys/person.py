"""A person before the program, in a desktop made by the script of that name.

What is on the screen is worked with the real pointer and keyboard. Nothing sleeps for a time that was guessed:
whatever takes time is waited for.
"""
import contextlib
import enum
import itertools
import os
import pathlib
import subprocess
import time

from widgets import Atspi, GLib, Program, Widget

PATIENCE = 30  # seconds; far more than anything takes, for machines with much else to do
LOOK_AGAIN = 0.02  # seconds between two looks at the tree


class Failure(AssertionError):
    """What was expected did not come, or was not so."""


class Key(str, enum.Enum):
    """Keys by the names that X gives them."""

    SPACE = "space"
    ENTER = "Return"
    ESCAPE = "Escape"
    TAB = "Tab"
    LEFT = "Left"
    RIGHT = "Right"
    UP = "Up"
    DOWN = "Down"
    DELETE = "Delete"


class Person:
    """Somebody with a pointer, a keyboard and patience."""

    def __init__(self, program, pictures, scale=1.0, tools=None, window=None):
        self.pictures = pathlib.Path(pictures)
        self.tools = pathlib.Path(tools) if tools else None
        self.scale = scale
        self.programs = []
        self.films = None
        self._program = program
        self._window = window
        self._started = []
        self._looks = 0
        self._focused = []
        self._listener = None
        self._portal = None
        self.folder = pathlib.Path(os.environ["HOME"])  # goes with the desktop
        self.pictures.mkdir(parents=True, exist_ok=True)
        for old in self.pictures.glob("*.png"):
            old.unlink()
        Atspi.init()

    # Programs

    def start(self, *arguments, windows=1):
        """Starts the program and waits until as many windows are there."""
        log = self.pictures / f"program-{len(self.programs) + 1}.log"
        with open(log, "wb") as output:
            environment = dict(os.environ, QT_SCALE_FACTOR=str(self.scale))
            process = subprocess.Popen(
                [self._program, *map(str, arguments)],
                stdout=output,
                stderr=subprocess.STDOUT,
                env=environment,
            )
        program = Program(process, self.scale, log)
        self.programs.append(program)
        self.wait_for(lambda: len(program.windows) >= windows, "the program's window")
        self.wait_for(
            lambda: any(window.has("active") for window in program.windows), "an active window"
        )
        if self._window:
            self.resize(self.the_window(program), *self._window)
        return program

    def start_beside(self, tool, *arguments):
        """Starts another program of ours, which ends with the journey."""
        log = self.folder / f"beside-{len(self._started) + 1}.log"
        with open(log, "wb") as output:
            process = subprocess.Popen(
                [self.tools / tool, *map(str, arguments)],
                stdin=subprocess.PIPE,
                stdout=output,
                env=dict(os.environ, QT_SCALE_FACTOR=str(self.scale)),
            )
        self._started.append(process)
        return Program(process, self.scale, log)

    def set_look(self, look):
        """Lets the desktop's portal say which look it has; what runs already hears of the change."""
        preference = {"dark": 1, "light": 2}[look]
        if self._portal:
            self._portal.process.stdin.write(str(preference).encode())
            self._portal.process.stdin.flush()
            return
        self._portal = self.start_beside("Interface/FakePortal", os.environ["DBUS_SESSION_BUS_ADDRESS"], preference)
        self.wait_for(lambda: "ready" in self._portal.log.read_text(), "the portal")

    def leave(self):
        """Ends all that was started."""
        for process in [program.process for program in self.programs] + self._started:
            process.terminate()
        for process in [program.process for program in self.programs] + self._started:
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    # Waiting

    def wait_for(self, condition, what, seconds=PATIENCE):
        """The condition's value once it is true."""
        end = time.monotonic() + seconds
        while True:
            with contextlib.suppress(GLib.Error):
                value = condition()
                if value:
                    return value
            for program in self.programs:
                code = program.process.poll()
                if code is not None and code < 0:
                    raise Failure(f"the program ended by signal {-code} before: {what}")
            if time.monotonic() > end:
                raise Failure(f"waited in vain for {what}")
            time.sleep(LOOK_AGAIN)

    def the(self, within, role=None, name=None, where=None, seconds=PATIENCE):
        """The first such widget, waited for. `within` is a Program or a Widget."""
        wanted = f"{role or 'something'} « {name or ''} »"
        return self.wait_for(lambda: within.find(role, name, where), wanted, seconds)[0]

    def wait_gone(self, within, role=None, name=None, where=None, seconds=PATIENCE):
        wanted = f"the end of {role or 'something'} « {name or ''} »"
        self.wait_for(lambda: not within.find(role, name, where), wanted, seconds)

    def wait_until(self, widget, *states, what=None):
        self.wait_for(lambda: widget.has(*states), what or f"{widget} {' '.join(states)}")

    # The pointer

    @staticmethod
    def _do(*words):
        subprocess.run(["xdotool", *map(str, words)], check=True, timeout=PATIENCE)

    def point(self, target, across=0.5, down=0.5):
        self._do("mousemove", *self._place(target, across, down))

    def click(self, target, across=0.5, down=0.5, button=1, times=1, holding=()):
        """Clicks on a widget, or a place (x, y)."""
        self._settled(target)
        place = self._place(target, across, down)
        press = [word for key in holding for word in ("keydown", key)]
        release = [word for key in holding for word in ("keyup", key)]
        clicks = ["click", "--repeat", times, "--delay", 40, button]
        self._do("mousemove", *place, *press, *clicks, *release)

    def drag(self, start, end, steps=16, before_drop=None):
        """Presses at one place (x, y), moves to another bit by bit, and lets go."""
        self._do("mousemove", *start, "mousedown", 1)
        for step in range(1, steps + 1):
            part = step / steps
            here = [round(a + (b - a) * part) for a, b in zip(start, end)]
            self._do("mousemove", *here, "sleep", 0.015)  # as fast as a hand
        if before_drop is not None:
            before_drop()
        self._do("mouseup", 1)

    def show(self, panel, widget):
        """Turns the wheel over a panel until the widget can be seen whole in it."""

        def is_seen():
            _, top, _, height = panel.bounds
            _, upper, _, own = widget.bounds
            if upper >= top and upper + own <= top + height:
                return True
            self.scroll(panel, 1 if upper + own > top + height else -1)
            return False

        self.wait_for(is_seen, f"{widget} in view")

    def scroll(self, target, clicks):
        """Turns the wheel: down where the number is positive."""
        self._do("mousemove", *self._place(target))
        button = 5 if clicks > 0 else 4
        self._do("click", "--repeat", abs(clicks), "--delay", 10, button)

    @staticmethod
    def _place(target, across=0.5, down=0.5):
        return target.place(across, down) if isinstance(target, Widget) else target

    def _settled(self, target):
        """Waits until a widget stands still: layouts come in steps."""
        if not isinstance(target, Widget):
            return
        last = [None]

        def stands():
            now = target.bounds
            same, last[0] = now == last[0], now
            return same and now[2] > 0

        self.wait_for(stands, f"{target} to stand still")

    # The keyboard

    def press(self, *keys):
        """Presses keys one after the other: names of X, with « ctrl+ » and the like before them."""
        for key in keys:
            self._do("key", key.value if isinstance(key, Key) else key)

    def type(self, text):
        """Types a text where the focus is: of letters that a French keyboard has keys for."""
        self._do("type", "--delay", 12, "--", text)

    def type_into(self, field, text, replacing=False):
        """Clicks into a field, types, and waits until the text stands there."""
        self.click(field)
        self.wait_until(field, "focused")
        before = "" if replacing else field.text
        self.press("ctrl+a" if replacing else "ctrl+End")
        self.type(text)
        self.wait_for(lambda: field.text == before + text, f"« {before + text} » in {field}")

    # Windows, menus, dialogs

    def the_window(self, program):
        """The program's active window."""
        return self.wait_for(
            lambda: [each for each in program.windows if each.has("active")], "an active window"
        )[0]

    def dialog(self, program, title):
        """The dialog of that title, once it is there."""
        return self.wait_for(
            lambda: [each for each in program.windows if each.name == title and each.has("active")],
            f"the dialog « {title} »",
        )[0]

    def bring_forward(self, window):
        """Makes a window the active one, as a click on its title does."""
        left, top, width, _ = window.bounds
        # Where a window above, a little to the left, leaves it free.
        self._do("mousemove", left + width - 150, top - 8, "click", 1)
        self.wait_until(window, "active")

    def resize(self, window, width, height):
        """Asks the window manager for a size, in the program's own pixels; the program has the last word."""
        found = self._x_window(window)
        self._do("windowsize", found, round(width * self.scale), round(height * self.scale))
        self._settled(window)

    def move(self, window, left, top):
        self._do("windowmove", self._x_window(window), left, top)
        self._settled(window)

    def _x_window(self, window):
        """X's number of a window: of the program's windows the one that stands there."""

        def number():
            pid = str(window.accessible.get_process_id())
            left, top, width, height = window.bounds
            for candidate in self._ask("search", "--onlyvisible", "--all", "--pid", pid, "--name", "."):
                geometry = dict(line.split("=") for line in self._ask("getwindowgeometry", "--shell", candidate))
                # The place that is told is off by the frame's sides.
                if (
                    geometry  # none of a window that has gone meanwhile
                    and abs(int(geometry["X"]) - left) < 10
                    and abs(int(geometry["Y"]) - top) < 40
                    and abs(int(geometry["WIDTH"]) - width) <= 2
                    and abs(int(geometry["HEIGHT"]) - height) <= 2
                ):
                    return candidate
            return None

        return self.wait_for(number, f"the window of X for {window}")

    @staticmethod
    def _ask(*words):
        return subprocess.run(
            ["xdotool", *words], capture_output=True, text=True, check=False, timeout=PATIENCE
        ).stdout.split()

    def choose(self, program, *labels):
        """Chooses an entry of the menu bar by clicking: « Fichier », « Enregistrer »."""
        within = self.the(program, "menu bar")
        for label in labels:
            entry = self.the(within, "menu item", label)
            self.click(entry)
            within = entry

    def choose_from(self, menu, *labels, before_last=None):
        """Clicks through an open menu and those within it."""
        for position, label in enumerate(labels):
            entry = self.wait_for(
                lambda: [each for each in menu.children if each.name == label], f"the entry « {label} »"
            )[0]
            self._settled(entry)
            if position == len(labels) - 1 and before_last is not None:
                self.point(entry)
                before_last()
            self.click(entry)
            if position < len(labels) - 1:
                menu = self.wait_for(lambda: entry.children, f"the menu of « {label} »")[0]

    def open_context_menu(self, target):
        """The menu that a click with the right button opens. No tree holds it: what gains the focus in it tells."""
        self._listen()
        self._focused.clear()
        left, top = self._place(target)
        self._do("mousemove", left, top, "click", 3)
        looks = itertools.count()

        def menu():
            # Over its first entry: below the pointer, or above it near the screen's foot.
            step = round((12 + next(looks) % 3) * self.scale) * (-1 if next(looks) % 8 > 4 else 1)
            self._do("mousemove", left + step, top + step)
            self._pump()
            for each in reversed(self._focused):
                with contextlib.suppress(GLib.Error):  # of a menu that is gone
                    if each.get_role_name().endswith("menu item"):
                        return Widget(each.get_parent(), self.scale)
            return None

        return self.wait_for(menu, "a context menu")

    def _listen(self):
        if self._listener is None:
            self._listener = Atspi.EventListener.new(
                lambda event: self._focused.append(event.source)
            )
            self._listener.register("object:state-changed:focused")
        self._pump()

    @staticmethod
    def _pump():
        while GLib.MainContext.default().iteration(False):
            pass

    def answer_file_dialog(self, dialog, path):
        """Types a path into a file dialog and confirms it."""
        field = self.the(dialog, "text")
        self.type_into(field, str(path), replacing=True)
        self.press(Key.ENTER)

    # Looking

    def look(self, name):
        """Keeps a picture of the screen, as NN-NAME.png."""
        self._looks += 1
        file = self.pictures / f"{self._looks:02d}-{name}.png"
        self._grab(os.environ["DESKTOP_SIZE"], "", "-draw_mouse", "1", output=["-update", "1", file])
        return file

    def pixels(self, widget):
        """What is seen of a widget, without the pointer: bytes R, G, B row by row."""
        left, top, width, height = widget.bounds
        return self._grab(f"{width}x{height}", f"+{left},{top}", "-draw_mouse", "0",
                          output=["-pix_fmt", "rgb24", "-f", "rawvideo", "-"])

    def wait_still(self, widget):
        """Waits until a widget looks the same twice, and returns its pixels."""
        seen = [None]

        def is_still():
            seen.append(self.pixels(widget))
            return seen[-1] == seen.pop(0)

        self.wait_for(is_still, f"{widget} at rest")
        return seen[0]

    @staticmethod
    def _grab(size, place, *settings, output):
        words = ["ffmpeg", "-nostdin", "-y", "-v", "error", "-f", "x11grab", "-framerate", "60", *settings,
                 "-video_size", size, "-i", os.environ["DISPLAY"] + place, "-frames:v", "1", *output]
        return subprocess.run(list(map(str, words)), check=True, timeout=PATIENCE, capture_output=True).stdout
