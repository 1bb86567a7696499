"""Prints what the accessibility bus says is on the screen: "window TITLE", and for all that is in the windows its role, its
name, and of a text field its text ("label No light found.", "text Server lync.example")."""

import dbus

ACCESSIBLE = "org.a11y.atspi.Accessible"
SHOWING = 25  # ATSPI_STATE_SHOWING, of the 64 states

launcher = dbus.SessionBus().get_object("org.a11y.Bus", "/org/a11y/bus")
bus = dbus.bus.BusConnection(launcher.GetAddress(dbus_interface="org.a11y.Bus"))


def children(parent):
    references = parent.GetChildren(dbus_interface=ACCESSIBLE)
    return [bus.get_object(*reference, introspect=False) for reference in references]


def tell_shown(parent, is_window=False):
    for item in children(parent):
        if not item.GetState(dbus_interface=ACCESSIBLE)[0] >> SHOWING & 1:
            continue
        role = "window" if is_window else item.GetRoleName(dbus_interface=ACCESSIBLE)
        name = item.Get(ACCESSIBLE, "Name", dbus_interface=dbus.PROPERTIES_IFACE)
        text = " " + item.GetText(0, -1, dbus_interface="org.a11y.atspi.Text") if role == "text" else ""
        print(role, (name + text).replace("\n", " "))
        tell_shown(item)


desktop = bus.get_object("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root", introspect=False)
for application in children(desktop):
    tell_shown(application, is_window=True)
