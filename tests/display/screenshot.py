"""Starts the sample host, compares its window's pixels with the frames that it draws, closes it and takes its status.

    xdisplay-wine 32|64 screenshot.py PROGRAM.exe SCREENSHOT.png

The screenshot is written whether it is right or wrong.
"""
import os
import subprocess
import sys
import time

from PIL import Image
from Xlib import X, display, error
from Xlib.protocol import event

from compare import differences
from expected import client_area

TITLE = "zepbmp"
START_SECONDS, PAINT_SECONDS, CLOSE_SECONDS = 60, 30, 30
POLL_SECONDS = 0.05


class Failure(Exception):
    pass


def poll(program, seconds, what, ask):
    """The first true answer. The program has to run until it comes."""
    deadline = time.monotonic() + seconds
    while True:
        answer = ask()
        if answer:
            return answer
        if program.poll() is not None:
            raise Failure(f"the program ended with {program.returncode} before {what}")
        if time.monotonic() > deadline:
            raise Failure(f"not within {seconds} seconds: {what}")
        time.sleep(POLL_SECONDS)


def visible_window(root):
    for window in root.query_tree().children:
        try:
            if window.get_wm_name() == TITLE and window.get_attributes().map_state == X.IsViewable:
                return window
        except error.BadWindow:  # gone since it was listed
            pass
    return None


def picture_of(window):
    size = window.get_geometry()
    pixels = window.get_image(0, 0, size.width, size.height, X.ZPixmap, 0xffffffff)
    return Image.frombytes("RGB", (size.width, size.height), pixels.data, "raw", "BGRX")


def ask_to_close(connection, window):
    """As a window manager does for the close button."""
    delete = connection.intern_atom("WM_DELETE_WINDOW")
    window.send_event(event.ClientMessage(window=window, client_type=connection.intern_atom("WM_PROTOCOLS"),
                                          data=(32, [delete, X.CurrentTime, 0, 0, 0])))
    connection.flush()


def check(program, want, screenshot):
    connection = display.Display()
    window = poll(program, START_SECONDS, "the window is there", lambda: visible_window(connection.screen().root))

    state = {}

    def is_painted():
        state["got"] = picture_of(window)
        state["wrong"] = differences(state["got"], want)
        return not state["wrong"]

    try:
        poll(program, PAINT_SECONDS, "the window shows the frames", is_painted)
    except Failure as failure:
        raise Failure(f"{failure}; {state['wrong']}; see {screenshot}") from None
    finally:
        if "got" in state:
            state["got"].save(screenshot)

    ask_to_close(connection, window)
    try:
        status = program.wait(CLOSE_SECONDS)
    except subprocess.TimeoutExpired:
        raise Failure(f"the program runs on {CLOSE_SECONDS} seconds after it was told to close")
    if status != 0:
        raise Failure(f"the program ended with {status} after it was closed")
    print(f"{want.width * want.height} pixels are right: {screenshot}")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: screenshot.py PROGRAM.exe SCREENSHOT.png")
    path, screenshot = sys.argv[1:]
    want = client_area()
    program = subprocess.Popen([os.environ["WINELOADER"], path], stdin=subprocess.DEVNULL)
    try:
        check(program, want, screenshot)
    except (Failure, error.XError) as failure:
        sys.exit(f"screenshot: {failure}")
    finally:
        program.kill()
        program.wait()


if __name__ == "__main__":
    main()
