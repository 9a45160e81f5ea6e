"""What the tests of the Python package share. A thread of the library reads its settings once, so what needs a store of
its own runs on a thread of its own, or in a process."""

import os
import subprocess
import sys
import threading
from decimal import Decimal
from pathlib import Path

import pytest

import qm_ordering


def pytest_addoption(parser):
    parser.addoption("--source", required=True, type=Path, help="the folder of the sources")


@pytest.fixture(scope="session")
def source(pytestconfig):
    return pytestconfig.getoption("--source").resolve()


def on_a_thread(work):
    """What work answers on a new thread; what it raises is raised here."""
    outcome = []

    def run():
        try:
            outcome.append((True, work()))
        except BaseException as exception:
            outcome.append((False, exception))

    thread = threading.Thread(target=run)
    thread.start()
    thread.join()
    done, result = outcome[0]
    if not done:
        raise result
    return result


def use_store(folder, **settings):
    """Makes a store in the folder and chooses it for this thread."""
    component = qm_ordering.DictSettings({"OrderingDatabasePath": str(folder), **settings})
    qm_ordering.install_settings(component)
    if not (Path(folder) / "Orders.mdb").exists():
        qm_ordering.create_order_store(folder)
    return component


def make_item(number="4QX17", quantity=18, price="11.4725", pack=6):
    item = qm_ordering.OrderItem()
    item.ItemNumber = number
    item.Quantity = quantity
    item.Price = Decimal(price)
    item.SellQuantity = item.ShipQuantity = pack
    return item


@pytest.fixture
def in_store(tmp_path):
    """Runs a function on a thread with a store of its own."""

    def run(work):
        def with_store():
            use_store(tmp_path)
            return work()

        return on_a_thread(with_store)

    return run


@pytest.fixture
def run_python(tmp_path):
    """Runs a program with the package, and the names of this module; answers the finished process."""

    def run(program, *arguments, **environment):
        file = tmp_path / "program.py"
        file.write_text(program)
        return subprocess.run(
            [sys.executable, file, *map(str, arguments)],
            capture_output=True,
            text=True,
            timeout=120,
            env={**os.environ, "PYTHONPATH": f"{os.environ['PYTHONPATH']}:{Path(__file__).parent}", **environment},
        )

    return run


def assert_clean(process):
    assert (process.returncode, process.stderr) == (0, "")
