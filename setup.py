"""Builds the Python package with cmake: pip install --no-build-isolation .."""

import os
import re
import shutil
import subprocess
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = Path(__file__).resolve().parent
VERSION = re.search(r"project\(zelWeldDetect VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text())[1]


def put(file, folder, rpath):
    """A copy that finds the library where the package has it."""
    folder.mkdir(exist_ok=True)
    copy = shutil.copy2(file, folder)
    if rpath:
        script = folder / "rpath.cmake"
        script.write_text(f'file(RPATH_SET FILE "{copy}" NEW_RPATH "{rpath}")')
        subprocess.run(["cmake", "-P", script], check=True)
        script.unlink()


class CMakeBuild(build_ext):
    """Module, library and program in one folder. ZELWELD_BUILD names a folder that cmake has built in before."""

    def build_extension(self, ext):
        build = Path(os.environ.get("ZELWELD_BUILD") or self.build_temp).resolve()
        package = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        options = ["-DZELWELD_BUILD_PYTHON=ON"]
        if not (build / "CMakeCache.txt").exists():
            options += [f"-DZELWELD_BUILD_{part}=OFF" for part in ("TESTS", "EXAMPLES", "BENCHMARKS")]
        subprocess.run(["cmake", "-S", SOURCE, "-B", build, *options], check=True)
        jobs = str(os.cpu_count() or 1)
        subprocess.run(["cmake", "--build", build, "-j", jobs, "--target", "zelweld_core", "zelweld"], check=True)
        package.mkdir(parents=True, exist_ok=True)
        put(next((build / "python" / "zelweld").glob("_core.*.so")), package, "$ORIGIN/lib")
        put(next(path for path in (build / "src").glob("libzelWeldDetect.so.*") if path.is_symlink()), package / "lib", "")
        put(build / "tools" / "zelweld", package / "bin", "$ORIGIN/../lib")


BESIDE = SOURCE / "build"  # what setuptools leaves behind
BESIDE.mkdir(exist_ok=True)

setup(
    options={"egg_info": {"egg_base": str(BESIDE)}},
    version=VERSION,
    packages=["zelweld"],
    package_dir={"": "python"},
    package_data={"zelweld": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("zelweld._core", [])],
    cmdclass={"build_ext": CMakeBuild},
)
