#!/usr/bin/env python3
# ctest: once release-only
"""The documents that go into the packages link to nothing, and name nothing, that is not in them.

In the archives three links led nowhere, in the Debian package two, and the texts told people to start scripts that
only the repository has. `./package --check` looks at the finished packages; here the build installs the same files.
"""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, main, seconds

sys.path.insert(0, str(ROOT / "tests" / "packaging"))
from package_documents import document_faults  # noqa: E402

BUILD = Path(ENGINE).parent


@unittest.skipUnless((BUILD / "cmake_install.cmake").is_file(), "the engine does not stand in its build folder")
class PackageDocuments(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-documents-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def install(self, component):
        done = subprocess.run(["cmake", "--install", BUILD, "--component", component, "--prefix", self.folder],
                              capture_output=True, text=True, timeout=seconds(60), check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return {path.name for path in self.folder.rglob("*")}

    def check(self, component, *expected):
        self.assertLessEqual({"front-ends.md", "clients.md", *expected}, self.install(component))
        faults, followed = document_faults(self.folder)
        self.assertEqual(faults, [])
        self.assertGreaterEqual(followed, 10)

    def test_of_the_archive(self):
        names = {path.name for path in BUILD.glob("packaging/*")}
        self.check("program", *({"README.txt"} if "windows" in names else {"README.md", "brenquil.6"}))

    @unittest.skipUnless((BUILD / "packaging" / "debian").is_dir(), "no Debian package is made of this build")
    def test_of_the_debian_package(self):
        self.check("debian", "README.md", "changelog.gz", "copyright", "brenquil.6.gz", "brenquil.eng")
        readme = next(self.folder.rglob("README.md")).read_text()
        self.assertIn("/usr/games", readme)

    def test_holds_no_picture_that_no_document_shows(self):
        self.install("program")
        pictures = {path.name for path in self.folder.rglob("images/*")}
        shown = "".join(path.read_text(encoding="utf-8") for path in self.folder.rglob("*.md"))
        self.assertTrue(pictures)
        self.assertEqual({name for name in pictures if name not in shown}, set())

    def test_program_comes_by_its_strict_name_as_well(self):
        names = self.install("program")
        self.assertTrue({"brenquil-strict", "brenquil-strict.exe"} & names, names)

    def test_a_link_that_leads_nowhere_is_noticed(self):
        (self.folder / "there.md").write_text("# A heading, that `is` there\n")
        (self.folder / "a.md").write_text("[1](gone.md) [2](there.md#gone) [3](there.md#a-heading-that-is-there)\n"
                                          "[4](https://example.org/x) `./run` and\ntools/pgo\n[5]: also-gone.md\n")
        faults, followed = document_faults(self.folder)
        self.assertEqual(followed, 4)
        self.assertEqual([fault.split(": ", 1)[1] for fault in faults],
                         ["names ./run", "names tools/", "links to gone.md, which is not there",
                          "links to there.md#gone, and there is no such heading",
                          "links to also-gone.md, which is not there"])


if __name__ == "__main__":
    main()
