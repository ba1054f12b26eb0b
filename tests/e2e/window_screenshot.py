#!/usr/bin/env python3
"""Starts fxgraph on an edit in a window on a virtual X display, takes a
screenshot of the display and checks that the window drew something.

usage: window_screenshot.py FXGRAPH EDIT
Exits 77 (skipped) when Xvfb or xwd is not installed."""
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


def distinct_colours(shot):
    width, height, step, stride, pixels = shot
    seen = set()
    for y in range(0, height, 4):
        row = pixels[y * stride:(y + 1) * stride]
        for x in range(0, width, 4):
            seen.add(row[x * step:x * step + 3])
    return len(seen)


def main():
    fxgraph, edit = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    if not shutil.which("Xvfb") or not shutil.which("xwd"):
        print("window test skipped: Xvfb or xwd is missing")
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
        env = dict(os.environ, DISPLAY=display)
        program = subprocess.Popen([fxgraph, edit], cwd=work, env=env, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        blank = distinct_colours(screenshot(display, os.path.join(work, "before.xwd")))
        colours = 0
        for _ in range(60):
            time.sleep(0.25)
            if program.poll() is not None:
                print("fxgraph ended early:", program.returncode, program.stdout.read(), program.stderr.read())
                return 1
            colours = distinct_colours(screenshot(display, os.path.join(work, "shot.xwd")))
            if colours > 20:
                break
        print(f"distinct colours: {colours} (empty display: {blank})")
        if os.path.exists(os.path.join(work, "fxgraph-screen.png")):
            print("fxgraph fell back to headless")
            return 1
        if colours <= 20:
            print("the window stayed blank")
            return 1
        program.send_signal(signal.SIGTERM)
        status = program.wait(timeout=20)
        if status != 0:
            print("fxgraph did not quit cleanly:", status, program.stderr.read())
            return 1
        return 0
    finally:
        if program and program.poll() is None:
            program.kill()
        xvfb.terminate()
        xvfb.wait(timeout=20)
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
