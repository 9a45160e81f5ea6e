"""What a type checker makes of the package, of good uses and of bad ones."""

import ast
import os
import re
import subprocess
import sys
from pathlib import Path

import pytest

import qm_ordering
from qm_ordering import _classes

HERE = Path(__file__).parent
PACKAGE = Path(qm_ordering.__file__).parent


@pytest.fixture
def check(tmp_path):
    def run(*arguments):
        return subprocess.run(
            [sys.executable, "-m", "mypy", "--strict", f"--cache-dir={tmp_path}", "--no-error-summary", *arguments],
            capture_output=True,
            text=True,
            cwd=PACKAGE.parent,
            env={name: value for name, value in os.environ.items() if name != "LD_PRELOAD"},
        )

    return run


def test_the_package_and_the_example(check, source):
    process = check("-p", "qm_ordering")
    assert (process.stdout, process.returncode) == ("", 0)
    process = check(source / "examples/python/order_from_catalogue.py")
    assert (process.stdout, process.returncode) == ("", 0)


def test_good_and_bad_uses(check):
    process = check(HERE / "uses.py")
    found = {int(line.split(":")[1]) for line in process.stdout.splitlines() if ": error:" in line}
    lines = (HERE / "uses.py").read_text().splitlines()
    expected = {number for number, line in enumerate(lines, 1) if line.endswith("# bad")}
    assert len(expected) > 15
    assert found == expected, process.stdout


def test_the_stubs_name_every_member_and_no_other():
    tree = ast.parse((PACKAGE / "_classes.pyi").read_text())
    stubs = {node.name: node for node in tree.body if isinstance(node, ast.ClassDef)}
    del stubs["_Property"]
    described = {class_.name: {member.name for member in class_.members} for class_ in _classes.describe()}
    assert set(stubs) == set(described)
    for name, node in stubs.items():
        members = set()
        for part in node.body:
            members.add(part.target.id if isinstance(part, ast.AnnAssign) else part.name)
        own = {member for member in members if re.match("__|OnProgress$", member)}
        assert members - own == described[name]
        for member in own:
            assert hasattr(getattr(qm_ordering, name), member)
