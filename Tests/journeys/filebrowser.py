"""The desktop's file browser, as the program meets it: a name on the message bus that is asked to show folders."""
import os
import threading

from gi.repository import Gio, GLib

INTERFACE = "org.freedesktop.FileManager1"
METHODS = f"""<node><interface name="{INTERFACE}">
<method name="ShowFolders"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>"""


class FileBrowser:
    def __init__(self):
        self.shown = []  # addresses of folders, in the order asked for
        ready = threading.Event()
        threading.Thread(target=self._serve, args=(ready,), daemon=True).start()
        if not ready.wait(10):
            raise RuntimeError("no file browser")

    def _serve(self, ready):
        context = GLib.MainContext()
        context.push_thread_default()
        bus = Gio.DBusConnection.new_for_address_sync(
            os.environ["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
        )
        interface = Gio.DBusNodeInfo.new_for_xml(METHODS).interfaces[0]
        bus.register_object("/org/freedesktop/FileManager1", interface, self._answer, None, None)
        bus.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            GLib.Variant("(su)", (INTERFACE, 0)), None, Gio.DBusCallFlags.NONE, -1, None,
        )
        ready.set()
        GLib.MainLoop(context).run()

    def _answer(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        self.shown += arguments.unpack()[0]
        invocation.return_value(None)
