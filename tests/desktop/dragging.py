"""Drags files over a window and drops them there, like a file manager: version 5 of the X protocol XDND."""

import time

from Xlib import X, Xatom, display
from Xlib.protocol import event


def drop(name, window_id, point, uris, patience=20):
    """Drops files at a point of the screen. Returns True if the window accepted them."""
    connection = display.Display(name)
    root = connection.screen().root
    source = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
    target = connection.create_resource_object("window", window_id)
    atom = connection.intern_atom
    files = atom("text/uri-list")
    source.set_selection_owner(atom("XdndSelection"), X.CurrentTime)

    def send(message, *data):
        words = [source.id, *data]
        target.send_event(event.ClientMessage(window=target, client_type=atom(message),
                                              data=(32, words + [0] * (5 - len(words)))))
        connection.flush()

    def answer(message):
        """Returns the data of the target's answer. Answers its requests for the files until then."""
        end = time.monotonic() + patience
        while time.monotonic() < end:
            if not connection.pending_events():
                time.sleep(0.01)
                continue
            heard = connection.next_event()
            if heard.type == X.SelectionRequest:
                heard.requestor.change_property(heard.property, files, 8, "".join(f"{uri}\r\n" for uri in uris).encode())
                heard.requestor.send_event(event.SelectionNotify(
                    time=heard.time, requestor=heard.requestor, selection=heard.selection, target=heard.target,
                    property=heard.property if heard.target == files else Xatom.NONE))
            elif heard.type == X.ClientMessage and heard.client_type == atom(message):
                return heard.data[1]
        raise AssertionError(f"waited in vain for {message}")

    try:
        send("XdndEnter", 5 << 24, files)
        x, y = point
        # A real pointer sends a position for each of its moves over the window.
        end = time.monotonic() + 1
        accepted = False
        while not accepted and time.monotonic() < end:
            send("XdndPosition", 0, x << 16 | y, X.CurrentTime, atom("XdndActionCopy"))
            accepted = bool(answer("XdndStatus")[1] & 1)
            time.sleep(0.05)
        if not accepted:
            send("XdndLeave")
            return False
        send("XdndDrop", 0, X.CurrentTime)
        return bool(answer("XdndFinished")[1] & 1)
    finally:
        connection.close()
