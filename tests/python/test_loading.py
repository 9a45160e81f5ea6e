"""How the package finds its library."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import qm_ordering
from qm_ordering import _library

PACKAGE = Path(qm_ordering.__file__).parent
LIBRARY = Path(_library._waiting._name).resolve()


@pytest.fixture
def load(tmp_path):
    """Imports a copy of the package that has no library beside it."""
    shutil.copytree(PACKAGE, tmp_path / "qm_ordering", ignore=shutil.ignore_patterns("*.so*", "__pycache__"))

    def run(**environment):
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("QM_ORDERING_", "LD_LIBR"))}
        return subprocess.run(
            [sys.executable, "-c", "import qm_ordering; print(qm_ordering.__version__)"],
            capture_output=True,
            text=True,
            cwd=tmp_path,
            env={**kept, "PYTHONPATH": str(tmp_path), **environment},
        )

    run.package = tmp_path / "qm_ordering"
    return run


def failure(process):
    assert process.returncode == 1
    return process.stderr.splitlines()[-1]


def test_the_environment_names_it(load):
    assert load(QM_ORDERING_LIBRARY=str(LIBRARY)).stdout == qm_ordering.__version__ + "\n"


def test_it_is_beside_the_package(load):
    os.symlink(LIBRARY, load.package / "libqm_ordering.so.0")
    assert load().stdout == qm_ordering.__version__ + "\n"


def test_the_systems_loader_finds_it(load, tmp_path):
    (tmp_path / "lib").mkdir()
    os.symlink(LIBRARY, tmp_path / "lib" / "libqm_ordering.so.0")
    assert load(LD_LIBRARY_PATH=str(tmp_path / "lib")).stdout == qm_ordering.__version__ + "\n"


def test_the_environment_goes_before_all(load, tmp_path):
    os.symlink(LIBRARY, load.package / "libqm_ordering.so.0")
    text = failure(load(QM_ORDERING_LIBRARY="/nowhere/libqm_ordering.so.0"))
    assert text.startswith("ImportError: qm_ordering: its library cannot be loaded: /nowhere/libqm_ordering.so.0: ")


def test_where_there_is_none(load):
    text = failure(load())
    assert text.startswith("ImportError: qm_ordering: its library cannot be loaded: libqm_ordering.so.0: ")
    assert "Install the package libqm-ordering0" in text and "QM_ORDERING_LIBRARY" in text


def test_another_library(load):
    text = failure(load(QM_ORDERING_LIBRARY="libm.so.6"))
    assert text.startswith("ImportError: qm_ordering: the library libm.so.6 has no function qm_ordering_version")


@pytest.mark.parametrize(
    ("version", "fits"),
    [("0.1.7", True), ("0.2.0", False), ("1.1.0", False)],
)
def test_a_library_of_another_version(load, version, fits):
    file = load.package / "_version.py"
    file.write_text(file.read_text().replace(qm_ordering.__version__, version))
    process = load(QM_ORDERING_LIBRARY=str(LIBRARY))
    if fits:
        assert process.stdout == qm_ordering.__version__ + "\n"
    else:
        text = failure(process)
        assert f"is of version {qm_ordering.__version__}, this package of version {version}" in text


@pytest.mark.parametrize(
    ("mine", "its", "fits"),
    [("1.2.3", "1.9.0", True), ("1.2.3", "2.2.3", False), ("0.1.0", "0.1.9", True), ("0.1.0", "0.2.0", False)],
)
def test_versions_that_fit(monkeypatch, mine, its, fits):
    monkeypatch.setattr(_library, "VERSION", mine)
    assert _library._fits(its) is fits
