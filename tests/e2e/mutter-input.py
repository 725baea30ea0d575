#!/usr/bin/python3
"""Pointer and keys for a headless mutter through its RemoteDesktop API, one command a line on
standard input ("move X Y", "press B", "release B", "click B", "step DX DY", "key NAME");
"ok" answers each. The pointer is placed by moving far to the top left, where mutter stops it at
(0, 0), and from there by the point's coordinates."""
import sys

import dbus

bus = dbus.SessionBus()
service = "org.gnome.Mutter.RemoteDesktop"
desktop = dbus.Interface(bus.get_object(service, "/org/gnome/Mutter/RemoteDesktop"), service)
session = dbus.Interface(bus.get_object(service, desktop.CreateSession()), service + ".Session")
session.Start()
buttons = {"1": 0x110, "3": 0x111}  # evdev BTN_LEFT, BTN_RIGHT
keys = {"esc": 1, "m": 50, "shift": 42}  # evdev KEY_ESC, KEY_M, KEY_LEFTSHIFT
print("ok", flush=True)
for line in sys.stdin:
    words = line.split()
    if not words:
        continue
    verb, args = words[0], words[1:]
    if verb == "move":
        session.NotifyPointerMotionRelative(-100000.0, -100000.0)
        session.NotifyPointerMotionRelative(float(args[0]), float(args[1]))
    elif verb == "step":
        session.NotifyPointerMotionRelative(float(args[0]), float(args[1]))
    elif verb in ("press", "release", "click"):
        if verb != "release":
            session.NotifyPointerButton(buttons[args[0]], True)
        if verb != "press":
            session.NotifyPointerButton(buttons[args[0]], False)
    elif verb == "key":
        session.NotifyKeyboardKeycode(keys[args[0]], True)
        session.NotifyKeyboardKeycode(keys[args[0]], False)
    print("ok", flush=True)
