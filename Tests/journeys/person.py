"""A person before the program, in a desktop made by the script of that name.

What is on the screen is found as a screen reader finds it, through the accessibility tree, by role and name;
it is worked with the real pointer and keyboard. Nothing sleeps for a time that was guessed: whatever takes time
is waited for.
"""
import argparse
import contextlib
import enum
import itertools
import os
import pathlib
import subprocess
import sys
import time
import traceback

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 30  # seconds; far more than anything takes, for machines with much else to do
LOOK_AGAIN = 0.02  # seconds between two looks at the tree
SKIPPED = 77


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


class Widget:
    """Something on the screen, as the accessibility tree tells it; asked anew each time."""

    def __init__(self, accessible, scale):
        self.accessible = accessible
        self._scale = scale

    @property
    def name(self):
        return self.accessible.get_name() or ""

    @property
    def description(self):
        return self.accessible.get_description() or ""

    @property
    def role(self):
        return self.accessible.get_role_name()

    def has(self, *states):
        """Whether it has all these states, named as Atspi.StateType names them, in lower case."""
        now = self.accessible.get_state_set()
        return all(now.contains(getattr(Atspi.StateType, state.upper())) for state in states)

    @property
    def states(self):
        return sorted(state.value_nick for state in self.accessible.get_state_set().get_states())

    @property
    def text(self):
        """What an editor holds."""
        interface = self.accessible.get_text_iface()
        return Atspi.Text.get_text(interface, 0, -1) if interface else ""

    @property
    def value(self):
        """A slider's value."""
        return Atspi.Value.get_current_value(self.accessible.get_value_iface())

    @property
    def bounds(self):
        """(left, top, width, height) in pixels of the screen."""
        box = Atspi.Component.get_extents(
            self.accessible.get_component_iface(), Atspi.CoordType.SCREEN
        )
        return tuple(round(side * self._scale) for side in (box.x, box.y, box.width, box.height))

    def place(self, across=0.5, down=0.5):
        """A place within it, in pixels of the screen: from (0, 0), its upper left, to (1, 1)."""
        left, top, width, height = self.bounds
        return round(left + across * (width - 1)), round(top + down * (height - 1))

    @property
    def children(self):
        found = []
        for index in range(self.accessible.get_child_count()):
            with contextlib.suppress(GLib.Error):
                child = self.accessible.get_child_at_index(index)
                if child is not None:
                    found.append(Widget(child, self._scale))
        return found

    @property
    def parent(self):
        return Widget(self.accessible.get_parent(), self._scale)

    def shown(self):
        """Itself and all within it that is shown, in the tree's order."""
        with contextlib.suppress(GLib.Error):  # what goes while it is looked at is not there
            if not self.has("showing"):
                return
            yield self
            for child in self.children:
                yield from child.shown()

    def find(self, role=None, name=None, where=None):
        """All within it that are shown and have this role, this name, and fulfil a condition."""
        found = []
        for each in self.shown():
            with contextlib.suppress(GLib.Error):
                if role is not None and each.role != role:
                    continue
                if name is not None and each.name != name:
                    continue
                if where is None or where(each):
                    found.append(each)
        return found

    def __eq__(self, other):
        return isinstance(other, Widget) and self.accessible == other.accessible

    def __hash__(self):
        return hash(self.accessible)

    def __str__(self):
        return f"{self.role} « {self.name} »"


class Program:
    """The program under test, running."""

    def __init__(self, process, scale, log):
        self.process = process
        self.log = log
        self._scale = scale

    @property
    def windows(self):
        """Its windows and dialogs that are shown; context menus are not among them."""
        application = self._application()
        if application is None:
            return []
        found = []
        for each in Widget(application, self._scale).children:
            with contextlib.suppress(GLib.Error):
                if each.has("showing"):
                    found.append(each)
        return found

    def _application(self):
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        for index in range(desktop.get_child_count()):
            with contextlib.suppress(GLib.Error):
                application = desktop.get_child_at_index(index)
                if application and application.get_process_id() == self.process.pid:
                    # What the library remembers is not what is shown now.
                    application.set_cache_mask(Atspi.Cache.NONE)
                    return application
        return None

    def find(self, role=None, name=None, where=None):
        return [each for window in self.windows for each in window.find(role, name, where)]

    @property
    def is_running(self):
        return self.process.poll() is None

    def tree(self):
        """All that is shown, as lines of text."""
        lines = []

        def tell(widget, depth):
            with contextlib.suppress(GLib.Error):
                lines.append("  " * depth + f"{widget} {widget.bounds} {' '.join(widget.states)}")
                for child in widget.children:
                    if child.has("showing"):
                        tell(child, depth + 1)

        for window in self.windows:
            tell(window, 0)
        return "\n".join(lines)


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
                    abs(int(geometry["X"]) - left) < 10
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


def check(condition, claim):
    """Raises a Failure that says what should hold."""
    if not condition:
        raise Failure(claim)


def equal(actual, expected, what):
    if actual != expected:
        raise Failure(f"{what}: {actual!r} instead of {expected!r}")


def skip(why):
    """Ends the journey as one that could not be made here."""
    print(f"Skipped: {why}")
    sys.exit(SKIPPED)


def options():
    parser = argparse.ArgumentParser(description="One journey through the program.")
    parser.add_argument("--program", required=True, help="the program to be worked with")
    parser.add_argument("--tools", help="folder of the programs that journeys need beside it")
    parser.add_argument("--films", help="folder of real films, which may be absent")
    parser.add_argument("--pictures", required=True, help="folder for what was seen")
    parser.add_argument("--scale", type=float, default=1.0, help="the toolkit's scale factor")
    parser.add_argument("--window", metavar="WIDTHxHEIGHT", help="another size for first windows; "
                        "the least if it is too small",
                        type=lambda text: tuple(int(side) for side in text.split("x")))
    parser.add_argument("--look", choices=("light", "dark"), help="what the desktop's portal says")
    return parser


def travel(journey, chosen=None):
    """Makes a journey: a function of a Person. On failure it tells what was to be seen."""
    chosen = chosen or options().parse_args()
    person = Person(chosen.program, chosen.pictures, chosen.scale, chosen.tools, chosen.window)
    person.films = pathlib.Path(chosen.films) if chosen.films else None
    try:
        if chosen.look:
            person.set_look(chosen.look)
        journey(person)
    except Exception:
        traceback.print_exc()
        with contextlib.suppress(Exception):
            print("What was seen last:", person.look("failed"))
        for program in person.programs:
            print(f"--- what the program said:\n{program.log.read_text(errors='replace')}")
            with contextlib.suppress(Exception):
                print("--- what it showed:\n" + program.tree())
        sys.exit(1)
    finally:
        person.leave()
