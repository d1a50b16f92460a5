#!/usr/bin/python3
"""The Debian package as somebody gets it who installs it: made from this build, unpacked into an empty root, and used there by an
ordinary user who can write nothing in it.

    package_test.py CPACK BUILD     the cpack command, the build folder
"""

import gzip
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from black_box import LIMIT, start_site  # noqa: E402

SKIPPED = 77    # as ctest knows it
NOBODY = 65534
CPACK, BUILD = sys.argv[1:3]
SITE = "usr/share/doc/corvane/example-site"
IMAGE = SITE + "/firmware/images/c10_v30r2.hex"
DEVICE = "kind=TarnPlus,baud=115200,version=KESTREL-C10 V2.9R1"


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="corvane-package-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.folder.chmod(0o755)
        subprocess.run([CPACK, "-G", "DEB", "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip", "-B", cls.folder / "out",
                        "--config", BUILD + "/CPackConfig.cmake"], check=True, stdout=subprocess.DEVNULL)
        cls.package, = (cls.folder / "out").glob("*.deb")
        cls.root = cls.folder / "root"
        subprocess.run(["dpkg-deb", "-x", cls.package, cls.root], check=True)
        for place in [cls.root, *(path for path in cls.root.rglob("*") if path.is_dir())]:
            place.chmod(0o555)

    def setUp(self):
        self.home = self.folder / self.id()
        self.home.mkdir()
        if os.geteuid() == 0:
            os.chown(self.home, NOBODY, NOBODY)

    def run_as_user(self, *words, **variables):
        """A command of the installed program, by somebody who is not root."""
        environment = {"PATH": "%s/usr/bin:/usr/bin:/bin" % self.root, "HOME": str(self.home), "LC_ALL": "C.UTF-8"}
        other = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        return subprocess.run([str(word) for word in words], env={**environment, **variables}, cwd=self.home,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=LIMIT, check=False, **other)

    def test_an_update_from_a_site_by_an_ordinary_user(self):
        before = sorted(self.root.rglob("*"))
        self.assertEqual(self.run_as_user("test", "-w", self.root / "usr/bin").returncode, 1)
        done = self.run_as_user("corvane-bench", "--config-dir", self.home / "bench", "--device", DEVICE, "--image",
                                self.root / IMAGE, "--verify", "--",
                                "corvane-cli", "update", "--server", start_site(self, self.root / SITE, {"customer": "practice"}), "--user", "customer",
                                "--select", "PGM_C10", "--yes", CORVANE_FTP_PASSWORD="practice")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("COM1: memory equals image", done.stdout)
        self.assertFalse((self.home / ".local").exists(), "practice is no work of the operator's")
        data = self.home / "bench/data/Corvane"
        self.assertEqual(sorted(str(path.relative_to(data)) for path in data.rglob("*")),
                         ["Download", "Download/c10_v30r2.hex", "firmware.inf", "jobs.csv"])
        self.assertEqual(sorted(self.root.rglob("*")), before)

    def test_the_private_libraries_are_found(self):
        library, = self.root.glob("usr/lib/**/corvane/VellIO.so")
        done = self.run_as_user("corvane-cli", "ports", LD_DEBUG="files")
        self.assertIn("calling init: " + str(library), done.stderr)
        done = self.run_as_user("corvane-bench", "--device", "hid=yes,reader=Kestrel", "--", "corvane-cli", "ports")
        self.assertEqual(done.stdout.splitlines()[0], "HID1\t\tHID1 Kestrel", done.stderr)

    def test_what_the_package_says(self):
        text = subprocess.run(["dpkg-deb", "-f", self.package], check=True, capture_output=True, text=True).stdout
        fields = dict(re.findall(r"^(\S+): (.*)", text, re.MULTILINE))
        for needed in ("libcurl4", "libqt6widgets6", "libhidapi-hidraw0", "libudev1", "qt6-qpa-plugins"):
            self.assertRegex(fields["Depends"], r"(^|, )%s( |,|$)" % needed)
        changes = gzip.decompress((self.root / "usr/share/doc/corvane/changelog.gz").read_bytes()).decode()
        self.assertTrue(changes.startswith("corvane (%s) " % fields["Version"]), changes)
        metainfo, = self.root.glob("usr/share/metainfo/*.xml")
        self.assertEqual(re.search(r'<release version="([^"]*)"', metainfo.read_text())[1], fields["Version"])
        rules = (self.root / "usr/lib/udev/rules.d/60-corvane.rules").read_text()
        vendor = re.search(r"CORVANE_MAKER_VENDOR_ID:STRING=0x(\w+)", pathlib.Path(BUILD, "CMakeCache.txt").read_text())
        self.assertIn('ATTRS{idVendor}=="%s"' % vendor[1].lower().zfill(4), rules)
        self.assertNotIn("@", rules)

    def test_the_validators_find_no_errors(self):
        metainfo, = self.root.glob("usr/share/metainfo/*.xml")
        for command in (["desktop-file-validate", self.root / "usr/share/applications/corvane.desktop"],
                        ["appstreamcli", "validate", "--no-net", metainfo],
                        ["lintian", "--fail-on", "error", self.package]):
            with self.subTest(command[0]):
                done = subprocess.run(command, env={**os.environ, "TMPDIR": str(self.folder)}, capture_output=True,
                                      text=True, timeout=LIMIT, check=False)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_man_page_and_completion_know_every_option(self):
        for program in ("corvane-cli", "corvane-bench"):
            help_text = self.run_as_user(program, "--help").stdout
            page = gzip.decompress((self.root / ("usr/share/man/man1/%s.1.gz" % program)).read_bytes()).decode().replace("\\-", "-")
            completion = (self.root / "usr/share/bash-completion/completions" / program).read_text()
            words = set(re.findall(r"--[a-z][a-z0-9-]+", help_text))
            if program == "corvane-bench":      # keys and faults begin a line of two columns
                words |= set(re.findall(r"^  ([a-z]+(?:-[a-z]+)*)(?:\S*)  *[^ ]", help_text, re.MULTILINE))
            self.assertGreater(len(words), 12)
            for place, text in (("man page", page), ("completion", completion)):
                missing = [word for word in words if not re.search(r"(?<![\w-])%s(?![\w-])" % word, text)]
                self.assertEqual(missing, [], "%s of %s" % (place, program))

    def complete(self, program, *words):
        script = '. "$1"; f=$2; shift 2; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); $f; printf "%s\n" "${COMPREPLY[@]}"'
        done = self.run_as_user("bash", "-c", script, "bash", self.root / "usr/share/bash-completion/completions" / program,
                                "_" + program.replace("-", "_"), program, *words)
        self.assertEqual(done.stderr, "")
        return done.stdout.split("\n")[:-1]

    def test_completion(self):
        for program, words, expected in (
                ("corvane-cli", ["ch"], ["check", "check-site"]),
                ("corvane-cli", ["scan", "--"], ["--force", "--json", "--help"]),
                ("corvane-cli", ["update", "--se"], ["--server", "--select", "--self-update"]),
                ("corvane-bench", ["--device", "kind", "=", "Ta"], ["TarnPlus", "Tarn"]),
                ("corvane-bench", ["--device", "kind", "=", "Tarn,b"], ["Tarn,baud=", "Tarn,boot-baud="]),
                ("corvane-bench", ["--device", "fault", "=", "nak", "@", "5x2,po"], ["5x2,port="]),
                ("corvane-bench", ["--device", "kind", "=", "Tarn", "--im"], ["--image"])):
            with self.subTest(" ".join(words)):
                self.assertEqual(self.complete(program, *words), expected)

    def test_completion_runs_nothing_that_a_site_has_written(self):
        data = self.home / ".local/share/Corvane"
        (data / "Download").mkdir(parents=True)
        (data / "Download/x.hex").write_text(":00000001FF\n")
        keys = "PRODUCT=R\nVERSION=V1.0R1\nDESC=d\nFILE=/x.hex\n"
        (data / "firmware.inf").write_text("[PGM_A]\n%s[PGM_$(touch${IFS}run)]\n%s" % (keys, keys))
        self.assertEqual(self.complete("corvane-cli", "update", "--select", "=", "PGM_"),
                         ["PGM_A", r"PGM_\$\(touch\$\{IFS\}run\)"])
        self.assertFalse((self.home / "run").exists())


if __name__ == "__main__":
    if not shutil.which("dpkg-deb") or not shutil.which("dpkg-shlibdeps"):
        print("skipped: dpkg-deb and dpkg-shlibdeps make the package, and this system has none")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
