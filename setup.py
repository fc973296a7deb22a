"""The Python module as a package: `pip install --no-build-isolation .`, with the library inside the extension."""
import pathlib
import re

from skbuild import setup

VERSION = pathlib.Path(__file__).parent / "include/zaltag/base/ZALVersion.h"

setup(
    name="zaltag",
    version=re.search(r'ZALTAG_VERSION "([\d.]+)"', VERSION.read_text()).group(1),
    description="Metadata of DJ software: tags, cue points, collections",
    packages=["zaltag"],
    package_dir={"": "python"},
    package_data={"zaltag": ["py.typed", "*.pyi"]},
    python_requires=">=3.11",
    cmake_args=["-DZALTAG_PYTHON_MODULE=ON", "-DZALTAG_CLI=OFF", "-DZALTAG_TESTS=OFF", "-DZALTAG_INSTALL=OFF",
                "-DBUILD_SHARED_LIBS=OFF"],
)
