"""The stubs of the Python module are what it is, and pass strict checks."""
import os
import pathlib
import subprocess
import sys
import unittest

import zaltag


class Stubs(unittest.TestCase):
    def test_stubs_are_right_and_pass_strict_checks(self):
        if subprocess.run([sys.executable, "-c", "import mypy"], capture_output=True, check=False).returncode:
            self.skipTest("LEFT OUT: the stubs need mypy")
        package = pathlib.Path(zaltag.__file__).parent
        environment = dict(os.environ, MYPYPATH=str(package.parent), MYPY_CACHE_DIR="/dev/null")
        allowed = pathlib.Path(__file__).parent / "stubtest_allowed.txt"
        for command in (["mypy", "--strict", package], ["mypy.stubtest", "--allowlist", allowed, "zaltag._core"]):
            done = subprocess.run([sys.executable, "-m", *command], capture_output=True, text=True, env=environment, check=False,
                                  cwd=package.parent)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
