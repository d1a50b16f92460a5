"""The programs under measurement: a copy of their own, so that they find the firmware.inf and the Download folder of a
benchmark beside them and not those of the build."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

LIMIT = 300      # seconds after which a program is lost
NAMES = ("corvane-cli", "corvane-bench", "corvane-windowrun", "VellIO.so", "bench/VellIO.so")


class Failure(Exception):
    """A program did not do what it is measured at."""


class Run:
    """A finished program: status, output, seconds of the wall clock and of the processor."""

    def __init__(self, status, output, seconds, processor):
        self.status, self.output, self.seconds, self.processor = status, output, seconds, processor

    def share(self):
        return self.processor / self.seconds * 100

    def number(self, pattern):
        found = re.search(pattern, self.output)
        if not found:
            raise Failure("no %r in: %s" % (pattern, self.output))
        return float(found.group(1))


def run(command, **environment):
    """Starts a program and waits for it, with as little as possible around it."""
    with tempfile.TemporaryFile() as output:
        actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), (os.POSIX_SPAWN_DUP2, output.fileno(), 1),
                   (os.POSIX_SPAWN_DUP2, output.fileno(), 2)]
        words = [str(word) for word in command]
        start = time.monotonic()
        process = os.posix_spawn(words[0], words, dict(os.environ, **environment), file_actions=actions)
        _, status, usage = os.wait4(process, 0)
        seconds = time.monotonic() - start
        output.seek(0)
        text = output.read().decode("utf-8", "replace")
    return Run(os.waitstatus_to_exitcode(status), text, seconds, usage.ru_utime + usage.ru_stime)


def checked(command, statuses=(0,), **environment):
    done = run(command, **environment)
    if done.status not in statuses:
        raise Failure("%s ended with %d: %s" % (" ".join(map(str, command)), done.status, done.output[-2000:]))
    return done


class Programs:
    """A folder with the programs, to be used as a context."""

    def __init__(self, build):
        self.build = pathlib.Path(build)

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="corvane-bench-"))
        for name in NAMES:
            (self.folder / "bin" / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(self.build / name, self.folder / "bin" / name)
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, name):
        return self.folder / "bin" / name

    def write(self, name, text):
        """A file beside the programs."""
        path = self.folder / "bin" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def environment(self, **more):
        """One in which a program finds nothing of the user's."""
        places = {"XDG_CONFIG_HOME": "config", "XDG_DATA_HOME": "data", "HOME": "home"}
        own = {key: str(self.folder / name) for key, name in places.items()}
        return {**own, "QT_QPA_PLATFORM": "offscreen", "CORVANE_STARTED": str(time.monotonic_ns()), **more}


class Bench:
    """corvane-bench beside the program, as a context; variables is what the program's environment needs."""

    def __init__(self, programs, device, *options, settings=("FTP/OffLine=True",)):
        self.programs = programs
        self.ready = programs.folder / "ready"
        self.report = programs.folder / "report"
        self.command = [programs.path("corvane-bench"), "--config-dir", programs.folder / "bench", "--device", device,
                        "--ready-file", self.ready, "--report", self.report, *options]
        for setting in settings:
            self.command += ["--setting", setting]

    def __enter__(self):
        self.ready.unlink(missing_ok=True)
        self.process = subprocess.Popen([str(word) for word in self.command], stdin=subprocess.DEVNULL)
        end = time.monotonic() + 10
        while not self.ready.exists():
            if time.monotonic() > end or self.process.poll() is not None:
                self.process.kill()
                self.process.wait()
                raise Failure("the bench did not start")
            time.sleep(0.02)
        lines = self.ready.read_text().splitlines()
        self.variables = dict(line.split("=", 1) for line in lines if line.startswith("CORVANE_"))
        self.variables["XDG_CONFIG_HOME"] = str(self.programs.folder / "bench")
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.status = self.process.wait(LIMIT)
