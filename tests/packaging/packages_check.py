#!/usr/bin/env python3
"""Tries out the packages in dist/; run as root by ./package --check, which installs what is needed.

    tests/packaging/packages_check.py [-v] [TEST...]

SOURCE_DATE_EPOCH is the time that the packages were made with.
"""
import datetime
import gzip
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import threading
import unittest
import zipfile

from package_documents import document_faults

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "system"))
from determinism_test import signatures  # noqa: E402  (found through the path above)

SMALL_BENCH = 4
DIST = ROOT / "dist"
EPOCH = int(os.environ.get("SOURCE_DATE_EPOCH", "0"))
NOBODY = 65534
# The oldest Debian that people are told to build on; the program does not depend on the choice.
SUITE = "bookworm"
# What the program says, does with files and searches; enough to know it for the one that ./test has tested.
SYSTEM_TESTS = ("bench_signature_test.py", "console_texts_test.py", "program_files_test.py", "session_test.py")
# What README.md links to.
LINKED = {"docs/clients.md", "docs/front-ends.md"} | {str(path.relative_to(ROOT)) for path in (ROOT / "docs").glob("images/*.png")}
SYSTEM_LIBRARIES = {"kernel32.dll", "msvcrt.dll"}
BANNER_DATE = re.compile(r"^Brenquil \S+ x64 \((\w{3} \d{1,2} \d{4})\)$", re.MULTILINE)


def the_one(pattern):
    """The only file of dist/ that matches."""
    found = list(DIST.glob(pattern))
    if len(found) != 1:
        raise AssertionError(f"dist/{pattern} is {len(found)} files")
    return found[0]


def run(*command, **options):
    """What a command prints; it must succeed."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


def play(*command, folder="/", errors=None):
    """Lets an engine introduce itself and search; returns all that it has printed on its standard output."""
    with subprocess.Popen([str(word) for word in command], cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=errors, text=True) as engine:
        watchdog = threading.Timer(180, engine.kill)
        watchdog.start()
        try:
            engine.stdin.write("uci\ngo depth 5\n")
            engine.stdin.flush()
            lines = []
            for line in engine.stdout:
                lines.append(line)
                if line.startswith("bestmove "):
                    break
            engine.stdin.write("quit\n")
            engine.stdin.flush()
            code = engine.wait(30)
        finally:
            watchdog.cancel()
            engine.kill()
    if code != 0:
        raise AssertionError(f"{command} ended with {code}:\n{''.join(lines)}")
    return "".join(lines)


class PackageCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-packages-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        # Some things here are done by another user.
        self.folder.chmod(0o755)

    def assert_plays(self, printed):
        """The dialogue of play() is that of this engine, made at the time of the sources."""
        when = datetime.datetime.fromtimestamp(EPOCH, datetime.timezone.utc)
        date = BANNER_DATE.search(printed)
        self.assertTrue(date, printed)
        self.assertEqual(date[1], f"{when:%b} {when.day} {when.year}")
        self.assertRegex(printed, r"(?m)^uciok$")
        self.assertRegex(printed, r"(?m)^info depth 5 .* pv [a-h][1-8]")
        self.assertRegex(printed, r"(?m)^bestmove [a-h][1-8][a-h][1-8]")

    def assert_tells_no_path(self, program):
        """The program does not hold the folder that it was built in."""
        self.assertNotIn(os.fsencode(str(ROOT)), program.read_bytes())
        self.assertNotIn(b"src/interface", program.read_bytes())


class Documents(PackageCase):
    """Every link of the documents is followed, and no script is named that is not there."""

    def check(self):
        faults, followed = document_faults(self.folder)
        self.assertEqual(faults, [])
        self.assertGreaterEqual(followed, 10)

    def test_of_the_linux_archive(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        self.check()

    def test_of_the_linux_archive_for_arm(self):
        run("tar", "-xzf", the_one("*-linux-aarch64.tar.gz"), "-C", self.folder)
        self.check()
        readme = next(self.folder.rglob("README.md")).read_text(encoding="utf-8")
        self.assertIn("64-bit ARM", readme)
        self.assertNotIn("brenquil-v3", readme)

    def test_of_the_debian_package(self):
        run("dpkg-deb", "--extract", the_one("*_amd64.deb"), self.folder)
        self.check()

    def test_of_the_windows_archive(self):
        with zipfile.ZipFile(the_one("*.zip")) as archive:
            archive.extractall(self.folder)
        self.check()


class Sums(PackageCase):
    def test_every_package_has_its_sum(self):
        listed = dict(reversed(line.split()) for line in (DIST / "SHA256SUMS").read_text().splitlines())
        found = {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in DIST.iterdir()
                 if path.name != "SHA256SUMS"}
        self.assertEqual(len(found), 5)
        self.assertEqual(listed, found)


class SameBytes(PackageCase):
    def test_made_again_elsewhere(self):
        """Another folder, user, time zone, file mode and clock: the same packages."""
        copy = self.folder / "quite another place" / "sources"
        shutil.copytree(ROOT, copy, symlinks=True,
                        ignore=lambda folder, _: ["build", "dist", ".git"] if folder == str(ROOT) else [])
        run("chown", "-R", f"{NOBODY}:{NOBODY}", self.folder)
        environment = dict(os.environ, TZ="Asia/Tokyo", HOME=str(self.folder), SOURCE_DATE_EPOCH=str(EPOCH))
        run(copy / "package", cwd=self.folder, env=environment, user=NOBODY, group=NOBODY, extra_groups=[], umask=0o077)
        self.assertEqual((copy / "dist" / "SHA256SUMS").read_text(), (DIST / "SHA256SUMS").read_text())


class LinuxArchive(PackageCase):
    def test_members(self):
        self.check_members(the_one("*-linux-x86_64.tar.gz"), {"bin/brenquil-v3"})

    def test_members_for_arm(self):
        self.check_members(the_one("*-linux-aarch64.tar.gz"), set())

    def check_members(self, path, more):
        with tarfile.open(path) as archive:
            members = archive.getmembers()
        names = [member.name for member in members]
        self.assertEqual(names, sorted(names))
        self.assertEqual({(member.uid, member.gid, member.uname, member.gname) for member in members}, {(0, 0, "", "")})
        self.assertEqual({member.mtime for member in members}, {EPOCH})
        links = {name.partition("/")[2]: member.linkname for name, member in zip(names, members) if member.issym()}
        self.assertEqual(links, {"bin/brenquil-strict": "brenquil"})
        for member in members:
            if member.issym():
                continue
            self.assertEqual(member.mode, 0o755 if member.isdir() or "/bin/" in member.name else 0o644)
        files = {name.partition("/")[2] for name, member in zip(names, members) if member.isfile()}
        self.assertEqual(files, more | {
            "bin/brenquil", "bin/brenquil-tables", "share/man/man6/brenquil.6",
            "share/man/man6/brenquil-tables.6"} | {
            "share/doc/brenquil/" + name
            for name in {"README.md", "CHANGELOG.md", "LICENSE", "libraries.txt"} | LINKED})

    def test_program(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        program = next(self.folder.glob("*/bin/brenquil"))
        self.assert_plays(play(program, folder=self.folder))
        self.assertNotRegex(run("readelf", "--wide", "--program-headers", program), r"INTERP|DYNAMIC")
        self.assertIn("no symbols", run("nm", program))
        self.assert_tells_no_path(program)

    def test_program_by_its_other_name_talks_strict_uci(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        program = next(self.folder.glob("*/bin/brenquil-strict"))
        self.assertIn("UCI_ShowWDL", play(program, folder=self.folder))
        self.assertNotIn("UCI_ShowWDL", play(program.with_name("brenquil"), folder=self.folder))

    def test_program_for_arm_in_the_emulator(self):
        run("tar", "-xzf", the_one("*-linux-aarch64.tar.gz"), "-C", self.folder)
        program = next(self.folder.glob("*/bin/brenquil"))
        self.assertIn("AArch64", run("readelf", "--file-header", program))
        self.assertNotRegex(run("readelf", "--wide", "--program-headers", program), r"INTERP|DYNAMIC")
        self.assert_tells_no_path(program)
        self.assert_plays(play("qemu-aarch64", program, folder=self.folder))
        self.assertIn("UCI_ShowWDL", play("qemu-aarch64", "-0", "brenquil-strict", program, folder=self.folder))
        signature = signatures()[SMALL_BENCH]
        self.assertRegex(run("qemu-aarch64", program, "bench", SMALL_BENCH), rf"(?m)^{signature} nodes")

    def test_program_for_newer_processors(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        program = next(self.folder.glob("*/bin/brenquil-v3"))
        self.assert_tells_no_path(program)
        # Instructions that the other one must not have.
        self.assertRegex(run("objdump", "--disassemble", "--no-show-raw-insn", program), r"\tpopcnt .*\n(.*\n)*?.*\t(shlx|blsr|andn) ")
        self.assertNotRegex(run("objdump", "--disassemble", "--no-show-raw-insn", program.with_name("brenquil")),
                            r"<_ZN8brenquil[^>]*>:\n([^\n]+\n)*[^\n]*\t(shlx|blsr) ")
        if "avx2" in pathlib.Path("/proc/cpuinfo").read_text():
            self.assert_plays(play(program, folder=self.folder))

    def test_program_passes_system_tests(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        environment = dict(os.environ, BRENQUIL_ENGINE=str(next(self.folder.glob("*/bin/brenquil"))))
        for test in SYSTEM_TESTS:
            run(sys.executable, "-B", ROOT / "tests" / "system" / test, cwd=self.folder, env=environment)

    def test_manual(self):
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        for page in ("brenquil.6", "brenquil-tables.6"):
            run("mandoc", "-T", "lint", "-W", "warning", next(self.folder.glob("*/share/man/man6/" + page)))


class DebianPackage(PackageCase):
    def test_lintian(self):
        for package in ("*_amd64.deb", "*_arm64.deb"):
            run("lintian", "--allow-root", "--fail-on", "error,warning", the_one(package))

    def test_for_arm_holds_the_program_of_the_archive(self):
        run("dpkg-deb", "--extract", the_one("*_arm64.deb"), self.folder)
        run("tar", "-xzf", the_one("*-linux-aarch64.tar.gz"), "-C", self.folder)
        self.assertEqual((self.folder / "usr/games/brenquil").read_bytes(),
                         next(self.folder.glob("*/bin/brenquil")).read_bytes())
        self.assertEqual(run("dpkg-deb", "--field", the_one("*_arm64.deb"), "Architecture"), "arm64\n")

    def test_list_of_engines_names_a_program_that_is_there(self):
        run("dpkg-deb", "--extract", the_one("*_amd64.deb"), self.folder)
        lines = (self.folder / "usr/share/games/plugins/uci/brenquil.eng").read_text().splitlines()
        self.assertEqual(lines[0], "plugin spec 0.0")
        program = self.folder / "usr/games" / lines[1]
        self.assertIn("UCI_ShowWDL", play(program, folder=self.folder))
        self.assertIn("chess", lines[2].split(","))

    def test_holds_the_program_of_the_archive(self):
        run("dpkg-deb", "--extract", the_one("*_amd64.deb"), self.folder)
        run("tar", "-xzf", the_one("*-linux-x86_64.tar.gz"), "-C", self.folder)
        for name in ("brenquil", "brenquil-v3"):
            self.assertEqual((self.folder / "usr/games" / name).read_bytes(),
                             next(self.folder.glob(f"*/bin/{name}")).read_bytes())

    def test_in_a_fresh_debian(self):
        root = self.folder / "debian"
        run("debootstrap", "--variant=minbase", SUITE, root)
        before = self.files(root)

        shutil.copy(the_one("*_amd64.deb"), root / "tmp" / "brenquil.deb")
        self.in_root(root, "apt-get", "install", "--yes", "--no-install-recommends", "/tmp/brenquil.deb")
        self.assertIn("install ok installed", self.in_root(root, "dpkg", "--status", "brenquil"))
        self.assert_plays(play("chroot", f"--userspec={NOBODY}:{NOBODY}", root, "/usr/games/brenquil"))
        manual = gzip.decompress((root / "usr/share/man/man6/brenquil.6.gz").read_bytes()).decode()
        self.assertRegex(manual, r'(?m)^\.TH BRENQUIL 6 "\d{4}-\d\d-\d\d" "Brenquil \d+\.\d+"')
        folder = root / "usr/share/doc/brenquil"
        documents = {str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file()}
        self.assertEqual(documents, LINKED | {
            "README.md", "changelog.Debian.gz", "changelog.gz", "copyright", "libraries.txt"})

        self.in_root(root, "apt-get", "purge", "--yes", "brenquil")
        self.assertEqual(self.files(root), before)

    @staticmethod
    def in_root(root, *command):
        return run("chroot", root, *command, env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C",
                                                  "DEBIAN_FRONTEND": "noninteractive"})

    @staticmethod
    def files(root):
        """What lies in a system, without the notes of its package manager and what stands for the kernel."""
        apart = re.compile(r"(var/lib/(dpkg|apt)|var/cache|var/log|tmp|proc|sys|dev)(/|$)")
        names = (str(path.relative_to(root)) for path in root.rglob("*"))
        return {name for name in names if not apart.match(name)}


class WindowsArchive(PackageCase):
    def test_members(self):
        with zipfile.ZipFile(the_one("*.zip")) as archive:
            self.assertIsNone(archive.testzip())
            names = [member.filename for member in archive.infolist()]
            self.assertEqual(names, sorted(names))
            files = {name.partition("/")[2] for name in names if not name.endswith("/")}
            self.assertEqual(files, LINKED | {
                "brenquil.exe", "brenquil-strict.exe", "brenquil-v3.exe", "brenquil-tables.exe", "README.txt", "CHANGELOG.txt",
                "LICENSE.txt", "LIBRARIES.txt"})
            # Two seconds are the unit of time in such an archive, and zip rounds up.
            when = datetime.datetime.fromtimestamp(EPOCH + EPOCH % 2, datetime.timezone.utc)
            self.assertEqual({member.date_time for member in archive.infolist()}, {when.timetuple()[:6]})
            programs = {name.rpartition("/")[2]: archive.read(name) for name in names if name.endswith(".exe")}
            self.assertEqual(programs["brenquil-strict.exe"], programs["brenquil.exe"])
            for name in names:
                if name.endswith(".txt"):
                    text = archive.read(name)
                    self.assertGreater(text.count(b"\r\n"), 10, name)
                    self.assertEqual(text.count(b"\r\n"), text.count(b"\n"), name)

    def test_program(self):
        with zipfile.ZipFile(the_one("*.zip")) as archive:
            archive.extractall(self.folder)
        program = next(self.folder.glob("*/brenquil.exe"))
        headers = run("x86_64-w64-mingw32-objdump", "--private-headers", program)
        libraries = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}
        self.assertTrue(libraries)
        self.assertLessEqual(libraries, SYSTEM_LIBRARIES)
        self.assert_tells_no_path(program)
        if shutil.which("wine"):
            # Wine complains of what this machine has not, a screen for one.
            self.assert_plays(play("wine", program, folder=self.folder, errors=subprocess.DEVNULL))


if __name__ == "__main__":
    if os.geteuid() != 0 and not {"--help", "-h"} & set(sys.argv):
        sys.exit("A fresh Debian can only be made by root: sudo ./package --check")
    unittest.main()
