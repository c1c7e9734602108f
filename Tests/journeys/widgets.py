"""What the program shows, found as a screen reader finds it: through the accessibility tree, by role and name."""
import contextlib

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


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
