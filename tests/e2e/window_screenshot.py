#!/usr/bin/env python3
"""Starts fxgraph on an edit in a window on a virtual X display, takes a
screenshot of the display and checks that the window drew something, that
the tool fills it and that the first view frames the graph with nothing
over a node (by the state dump and the screenshot); then
drives the tool with the mouse (xdotool) as a person would: a node dragged
away, and the same again followed by a click on Tidy, which puts it back.

usage: window_screenshot.py FXGRAPH EDIT
Exits 77 (skipped) when Xvfb, xwd or xdotool is not installed."""
import json
import os
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time


def free_display():
    for n in range(90, 200):
        if not os.path.exists(f"/tmp/.X11-unix/X{n}") and not os.path.exists(f"/tmp/.X{n}-lock"):
            return n
    raise RuntimeError("no free display number")


def screenshot(display, path):
    subprocess.run(["xwd", "-root", "-silent", "-display", display, "-out", path], check=True, timeout=20)
    data = open(path, "rb").read()
    fields = struct.unpack(">25I", data[:100])
    header_size, width, height = fields[0], fields[4], fields[5]
    bits_per_pixel, bytes_per_line, ncolors = fields[11], fields[12], fields[19]
    pixels = data[header_size + 12 * ncolors:]
    return width, height, bits_per_pixel // 8, bytes_per_line, pixels


def pixel(shot, x, y):
    """The (r, g, b) at x, y counted from the top-left corner, 0 to 255."""
    width, height, step, stride, pixels = shot
    b, g, r = pixels[y * stride + x * step:y * stride + x * step + 3]
    return r, g, b


def distinct_colours(shot):
    width, height, step, stride, pixels = shot
    seen = set()
    for y in range(0, height, 4):
        row = pixels[y * stride:(y + 1) * stride]
        for x in range(0, width, 4):
            seen.add(row[x * step:x * step + 3])
    return len(seen)


def xdotool(display, *args):
    subprocess.run(["xdotool", *map(str, args)], check=True, timeout=20, env=dict(os.environ, DISPLAY=display))


def run_window(fxgraph, edit, work, env, name, actions):
    """Opens the window, runs the mouse actions, closes it; the state dump it left."""
    dump = os.path.join(work, name + ".json")
    env = dict(env, FXGRAPH_STATE_DUMP=dump)
    program = subprocess.Popen([fxgraph, edit], cwd=work, env=env, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True)
    try:
        display = env["DISPLAY"]
        for _ in range(80):
            time.sleep(0.25)
            if distinct_colours(screenshot(display, os.path.join(work, "wait.xwd"))) > 20:
                break
        time.sleep(0.5)
        actions(display)
        time.sleep(0.5)
        program.send_signal(signal.SIGTERM)
        program.wait(timeout=20)
    finally:
        if program.poll() is None:
            program.kill()
    with open(dump) as f:
        return json.load(f)


def drive_the_tool(fxgraph, edit, work, env, shot):
    first = json.load(open(os.path.join(work, "first.json")))
    panel = first["panel"]
    if not panel:
        print("the window showed no tool")
        return 1
    for name in ("ToggleTemplates", "TidyNodes", "undoBtn", "redoBtn", "autoPos", "orientation", "view",
                 "templatesList"):
        if not panel["widgets"].get(name):
            print("the tool has no", name)
            return 1
    height = 800  # the screen, as the window shows it one to one from its top-left corner

    def on_screen(x, y):  # host pixels count up from the bottom, X's down from the top
        return x, height - 1 - y

    view = panel["widgets"]["view"]
    ox, oy = first["view"]["origin"]
    # The first view frames the graph: every node inside the view, none
    # under the preview.
    wx0, wy0, wx1, wy1 = first["view"]["window"]
    preview = first["view"]["preview"]
    for n in first["nodes"]:
        x0, y0, x1, y1 = n["pixels"]
        if not (wx0 <= x0 and x1 <= wx1 and wy0 <= y0 and y1 <= wy1):
            print("node", n["id"], "is not wholly in the first view:", n["pixels"], "window", first["view"]["window"])
            return 1
        if preview and max(x0, preview[0]) < min(x1, preview[2]) and max(y0, preview[1]) < min(y1, preview[3]):
            print("node", n["id"], "lies under the preview", preview)
            return 1
        # On the screen, the title bar shows its own colour near its left end:
        # nothing is drawn over the node.
        bx0, by0, bx1, by1 = n["titleBar"]["pixels"]
        sx, sy = ox + bx0 + 3, 800 - 1 - (oy + (by0 + by1) // 2)
        got = pixel(shot, sx, sy)
        want = [round(c * 255) for c in n["titleBar"]["colour"][:3]]
        if any(abs(a - b) > 30 for a, b in zip(got, want)):
            print("node", n["id"], "title bar shows", got, "not", want, "at", (sx, sy))
            return 1
    if panel["w"] != 1280 or panel["h"] != 800:
        print("the tool does not fill the window:", panel["w"], "x", panel["h"])
        return 1
    node = None
    for n in first["nodes"]:
        x0, y0, x1, y1 = n["pixels"]
        cx, cy = ox + (x0 + x1) // 2, oy + (y0 + y1) // 2
        if view[0] + 40 < cx < view[2] - 80 and view[1] + 40 < cy < view[3] - 80:
            node = n
            break
    if not node:
        print("no node lies well inside the view")
        return 1
    x0, y0, x1, y1 = node["pixels"]
    grab = on_screen(ox + (x0 + x1) // 2, oy + y0 + (y1 - y0) // 3)
    tidy = panel["widgets"]["TidyNodes"]
    tidy_at = on_screen((tidy[0] + tidy[2]) // 2, (tidy[1] + tidy[3]) // 2)

    def drag(display):
        xdotool(display, "mousemove", *grab)
        xdotool(display, "mousedown", 1)
        for step in range(1, 6):
            time.sleep(0.05)
            xdotool(display, "mousemove", grab[0] + 10 * step, grab[1] + 6 * step)
        xdotool(display, "mouseup", 1)

    def drag_then_tidy(display):
        drag(display)
        time.sleep(0.3)
        xdotool(display, "mousemove", *tidy_at)
        xdotool(display, "click", 1)

    def position(dump):
        return next(n["pos"] for n in dump["nodes"] if n["id"] == node["id"])

    dragged = run_window(fxgraph, edit, work, env, "dragged", drag)
    tidied = run_window(fxgraph, edit, work, env, "tidied", drag_then_tidy)
    start = position(first)
    print("node", node["id"], "at", start, "dragged to", position(dragged), "tidied to", position(tidied))
    if position(dragged) == start:
        print("the drag did not move the node")
        return 1
    if position(tidied) != start:
        print("Tidy did not put the node back")
        return 1
    return 0


def main():
    fxgraph, edit = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    if not shutil.which("Xvfb") or not shutil.which("xwd") or not shutil.which("xdotool"):
        print("window test skipped: Xvfb, xwd or xdotool is missing")
        return 77
    n = free_display()
    display = f":{n}"
    xvfb = subprocess.Popen(["Xvfb", display, "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    work = tempfile.mkdtemp()
    program = None
    try:
        for _ in range(100):
            if os.path.exists(f"/tmp/.X11-unix/X{n}"):
                break
            time.sleep(0.1)
        else:
            print("Xvfb did not start")
            return 1
        # Preferences and the screen layout of the runs stay in the work folder.
        env = dict(os.environ, DISPLAY=display, XDG_CONFIG_HOME=os.path.join(work, "config"),
                   FXGRAPH_STATE_DUMP=os.path.join(work, "first.json"))
        program = subprocess.Popen([fxgraph, edit], cwd=work, env=env, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        blank = distinct_colours(screenshot(display, os.path.join(work, "before.xwd")))
        colours = 0
        shot = None
        for _ in range(60):
            time.sleep(0.25)
            if program.poll() is not None:
                print("fxgraph ended early:", program.returncode, program.stdout.read(), program.stderr.read())
                return 1
            shot = screenshot(display, os.path.join(work, "shot.xwd"))
            colours = distinct_colours(shot)
            if colours > 20:
                break
        print(f"distinct colours: {colours} (empty display: {blank})")
        if os.path.exists(os.path.join(work, "fxgraph-screen.png")):
            print("fxgraph fell back to headless")
            return 1
        if colours <= 20:
            print("the window stayed blank")
            return 1
        time.sleep(0.5)
        shot = screenshot(display, os.path.join(work, "shot.xwd"))
        program.send_signal(signal.SIGTERM)
        status = program.wait(timeout=20)
        if status != 0:
            print("fxgraph did not quit cleanly:", status, program.stderr.read())
            return 1
        return drive_the_tool(fxgraph, edit, work, env, shot)
    finally:
        if program and program.poll() is None:
            program.kill()
        xvfb.terminate()
        xvfb.wait(timeout=20)
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
