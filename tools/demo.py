#!/usr/bin/python3
"""A whole online update on this machine alone: an FTP server on loopback with the example site, a simulated device, and
the program between them. Called by run.sh once everything is built. With a display it is a rehearsal in the window;
without one the console does it, and the window once more where nobody sees it, for a picture.

    tools/demo.py [--hid] [--console]    --console: as if there were no display
"""

import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "bin"
PICTURE = ROOT / "build" / "screenshot.png"
IMAGE = "firmware/images/r200_v52r1.hex"
ACCOUNT, PASSWORD = "demo", "practice"
SERIAL = "kind=TarnPlus,baud=19200,boot-baud=57600,version=TARN-R200 V5.1R23,next-version=TARN-R200 V5.2R1"
HID = "hid=yes," + SERIAL


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


def wait_for(port, process):
    """Until the server listens; an error when it ends before that."""
    for _ in range(200):
        if process.poll() is not None:
            sys.exit("demo: the FTP server did not start; is python3-pyftpdlib installed?")
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return
        except OSError:
            time.sleep(0.05)
    sys.exit("demo: the FTP server does not answer")


def serve(folder):
    port = free_port()
    server = subprocess.Popen(
        ["/usr/bin/python3", "-W", "ignore", "-m", "pyftpdlib", "-i", "127.0.0.1", "-p", str(port),
         "-u", ACCOUNT, "-P", PASSWORD, "-d", str(folder)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for(port, server)
    return server, port


def update_on_console(device):
    """The whole job from a server of its own; the bench's exit status."""
    with tempfile.TemporaryDirectory(prefix="corvane-demo-") as folder:
        site = pathlib.Path(folder) / "site"
        shutil.copytree(ROOT / "docs" / "example-site", site)
        server, port = serve(site)
        bench = [BIN / "corvane-bench", "--config-dir", pathlib.Path(folder) / "config", "--device", device,
                 "--setting", "FTP/UserName=" + ACCOUNT, "--setting", "FTP/Password=" + PASSWORD,
                 "--setting", "FTP/Server=127.0.0.1:%d" % port, "--image", site / IMAGE, "--verify", "--"]
        try:
            return run(bench + [BIN / "corvane-cli", "update", "--yes"])
        finally:
            server.terminate()
            server.wait()


def update_in_window(kind):
    """A rehearsal, whose exit status is the simulated device's. Without anybody at the terminal the window presses its
    buttons itself."""
    if sys.stdin.isatty():
        print("The window is open: press the start button, and close it when the update is done.", flush=True)
        return run([BIN / "corvane", "--rehearse=" + kind])
    return run([BIN / "corvane-windowrun", "--rehearse", kind])


def picture_of_window(kind):
    """The same rehearsal where nobody sees it. What Qt says about a display that is none is of interest only when it fails."""
    command = [BIN / "corvane-windowrun", "--rehearse", kind, "--picture", PICTURE]
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    print(done.stdout if done.returncode else "The window does the same; a picture of it is in %s." % PICTURE.relative_to(ROOT))
    return done.returncode


def run(command):
    return subprocess.run([str(word) for word in command], check=False).returncode


def main(options):
    if not set(options) <= {"--hid", "--console"}:
        sys.exit(__doc__)
    kind = "reader" if "--hid" in options else "healthy"
    has_display = bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))
    if has_display and "--console" not in options:
        status = update_in_window(kind)
    else:
        status = update_on_console(HID if "--hid" in options else SERIAL)
        status = status or picture_of_window(kind)
    if status == 0:
        print("Verdict: the device's memory equals the image.")
    else:
        print("Verdict: NOT updated; the device's memory does not equal the image (status %d)." % status)
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
