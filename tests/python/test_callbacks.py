import json
import os
import sqlite3
import subprocess
import traceback
from decimal import Decimal

import pytest

import qm_ordering
from conftest import assert_clean, make_item, on_a_thread, use_store
from qm_ordering import CurrentOrder, DictSettings, QMFailure, SettingsComponent


class Stop(BaseException):
    pass


def raised_by(call):
    """What the call raises, and that its traceback leads from here into the callback."""
    with pytest.raises(BaseException) as raised:
        call()
    frames = [frame.name for frame in traceback.extract_tb(raised.value.__traceback__)]
    assert frames[0] == "raised_by" and frames[-1] == "fail"
    return raised.value


EXCEPTIONS = [LookupError("no such key"), KeyboardInterrupt(), SystemExit(3), Stop(), QMFailure(75, "No disk.")]


@pytest.mark.parametrize("exception", EXCEPTIONS, ids=repr)
@pytest.mark.parametrize("method", ["user_setting", "order_default"])
def test_what_a_settings_component_raises_arrives_whole(tmp_path, method, exception):
    class Settings(DictSettings):
        pass

    def fail(*arguments):
        raise exception

    def work():
        use_store(tmp_path)
        component = Settings({"OrderingDatabasePath": str(tmp_path)})
        setattr(component, method, fail)
        qm_ordering.install_settings(component)
        assert raised_by(CurrentOrder) is exception
        delattr(component, method)
        order = CurrentOrder()
        assert order.OrderDetails.IsCurrentOrder

    on_a_thread(work)


@pytest.mark.parametrize("method", ["set_order_default", "save_order_defaults"])
def test_a_failure_that_goes_into_an_error_record_is_raised_too(tmp_path, method):
    exception = OSError(28, "No space left on device")

    def fail(*arguments):
        raise exception

    def work():
        component = use_store(tmp_path)
        order = CurrentOrder()
        order.OrderDetails.PurchaseOrderNumber = "PO-7"
        setattr(component, method, fail)
        assert raised_by(order.SaveSummary) is exception
        assert order.OrderDetails.Error.Number == 5
        assert "OSError: [Errno 28] No space left on device" in order.OrderDetails.Error.Description
        delattr(component, method)
        order.SaveSummary()
        assert not order.Error

    on_a_thread(work)


def test_what_is_raised_while_the_registration_is_read(tmp_path):
    exception = Stop()

    def fail(*arguments):
        raise exception

    def work():
        component = use_store(tmp_path)
        order = CurrentOrder()
        component.registration = fail
        assert raised_by(order.ApplyRegistrationSettings) is exception

    on_a_thread(work)


def test_a_failure_of_a_component_keeps_its_number(tmp_path):
    def fail(*arguments):
        raise QMFailure(76, "The drive is not there.")

    def work():
        component = use_store(tmp_path)
        order = CurrentOrder()
        component.save_order_defaults = fail
        with pytest.raises(QMFailure, match="The drive is not there"):
            order.SaveSummary()
        assert order.Error.Number == 5
        assert order.Error.Description.startswith("76 : ") and "The drive is not there." in order.Error.Description

    on_a_thread(work)


def test_a_settings_component_in_python(tmp_path):
    class Settings(SettingsComponent):
        def __init__(self):
            self.defaults = {"DEFAULT_DI_CITY": "Épernay"}
            self.unsaved = {}
            self.saved = 0

        def user_setting(self, key):
            return str(tmp_path) if key == "OrderingDatabasePath" else None

        def order_default(self, key):
            return self.defaults.get(key, "")

        def set_order_default(self, key, value):
            self.unsaved[key] = value

        def save_order_defaults(self):
            self.defaults.update(self.unsaved)
            self.saved += 1

        def registration(self, field):
            return f"registered {field}"

    def work():
        settings = Settings()
        qm_ordering.install_settings(settings)
        qm_ordering.create_order_store(tmp_path)
        order = CurrentOrder()
        assert order.OrderDetails.DeliveryInformation.City == "Épernay"
        order.OrderDetails.DeliveryInformation.City = "Reims\nhaut"
        order.SaveSummary()
        assert not order.Error
        assert (settings.saved, settings.defaults["DEFAULT_DI_CITY"]) == (1, "Reims\nhaut")
        order.ApplyRegistrationSettings()
        assert not order.Error
        assert order.OrderDetails.DeliveryInformation.CompanyName == "registered CompanyName"
        with pytest.raises(QMFailure) as raised:
            qm_ordering.install_settings(Settings())
        assert raised.value.number == 5
        # The first one is still in force.
        order.SaveSummary()
        assert settings.saved == 2

    on_a_thread(work)


def test_settings_in_dictionaries(tmp_path):
    def work():
        defaults = {}
        component = DictSettings({"OrderingDatabasePath": str(tmp_path)}, defaults, {"City": "Reims"})
        qm_ordering.install_settings(component)
        qm_ordering.create_order_store(tmp_path)
        order = CurrentOrder()
        order.OrderDetails.OrderInformation.Email = "achats@example.org"
        order.SaveSummary()
        assert defaults["DEFAULT_OI_EMAIL"] == "achats@example.org"

    on_a_thread(work)


@pytest.mark.parametrize("answer", [7, b"bytes", Decimal(1), "half \ud800"])
def test_a_component_that_answers_no_text(tmp_path, answer):
    def work():
        component = use_store(tmp_path)
        component.user_setting = lambda key: answer
        with pytest.raises((TypeError, ValueError)):
            CurrentOrder()
        del component.user_setting
        assert CurrentOrder().OrderDetails.IsCurrentOrder

    on_a_thread(work)


def test_what_is_no_settings_component():
    class Half:
        def user_setting(self, key):
            return ""

    for given in (Half(), {}, "settings.ini"):
        with pytest.raises(TypeError, match="a settings component has a method"):
            qm_ordering.install_settings(given)
    with pytest.raises(NotImplementedError, match="has no user_setting"):
        on_a_thread(lambda: (qm_ordering.install_settings(SettingsComponent()), CurrentOrder()))


def test_the_librarys_own_settings(tmp_path, monkeypatch):
    file = tmp_path / "settings.ini"
    file.write_text(f"OrderingDatabasePath={tmp_path}\n")
    monkeypatch.setenv("QK_COMMON_SETTINGS", str(file))

    def path_by(install):
        def work():
            qm_ordering.install_settings(DictSettings({"OrderingDatabasePath": "/elsewhere"}))
            install()
            return qm_ordering.order_store_path()

        return on_a_thread(work)

    for install in (
        lambda: qm_ordering.install_settings(None),
        lambda: qm_ordering.install_settings_file(),
        lambda: qm_ordering.install_settings_file(file),
        lambda: qm_ordering.install_settings_file(str(file)),
    ):
        assert path_by(install) == str(tmp_path / "Orders.mdb")
    for name in (b"settings.ini", "a\0b", 7):
        with pytest.raises((TypeError, ValueError)):
            qm_ordering.install_settings_file(name)


def test_the_statement_trace(in_store):
    def work():
        statements = []
        order = CurrentOrder()
        qm_ordering.set_statement_trace(statements.append)
        order.AddItem(make_item("Ärmel"))
        assert any(text.startswith("insert into tblOrderItem") and "Ärmel" in text for text in statements)
        count = len(statements)
        qm_ordering.set_statement_trace(None)
        order.ItemCount()
        assert len(statements) == count

    in_store(work)


@pytest.mark.parametrize("exception", EXCEPTIONS, ids=repr)
def test_a_trace_that_raises_stops_the_statement(in_store, exception):
    def fail(statement):
        raise exception

    def work():
        order = CurrentOrder()
        qm_ordering.set_statement_trace(fail)
        # ItemCount swallows failures, AddItem has a record, LoadItems raises.
        for call in (order.ItemCount, lambda: order.AddItem(make_item()), lambda: order.LoadItems(0)):
            assert raised_by(call) is exception
        qm_ordering.set_statement_trace(None)
        assert order.ItemCount() == 0
        order.AddItem(make_item())
        assert not order.Error

    in_store(work)


def test_after_an_exception_no_callback_of_the_same_call_runs(in_store):
    def work():
        order = CurrentOrder()
        order.AddItem(make_item())
        calls = []

        def fail(statement):
            calls.append(statement)
            raise Stop

        qm_ordering.set_statement_trace(fail)
        with pytest.raises(Stop):
            order.SaveToHistory()
        qm_ordering.set_statement_trace(None)
        assert len(calls) == 1

    in_store(work)


def test_a_callback_may_use_the_library_and_handle_what_that_raises(in_store):
    def work():
        order = CurrentOrder()
        other = CurrentOrder()
        seen = []

        def trace(statement):
            if seen:
                return
            seen.append(statement)
            seen.append(other.OrderDetails.OrderID)
            try:
                qm_ordering.OrderItems().Add(None, "A")
            except QMFailure as failure:
                seen.append(failure.number)

        qm_ordering.set_statement_trace(trace)
        assert order.ItemCount() == 0
        qm_ordering.set_statement_trace(None)
        assert seen[1:] == [other.OrderDetails.OrderID, 91]

    in_store(work)


def test_callbacks_are_functions():
    for install in (
        qm_ordering.set_statement_trace,
        qm_ordering.OrderHistoryImporter().OnProgress,
        lambda given: qm_ordering.backup_order_store("backup", given),
    ):
        with pytest.raises(TypeError, match="takes a function or None, not int"):
            install(7)


@pytest.fixture(scope="module")
def legacy_tables(source, tmp_path_factory):
    """The older program's orders: 3 of 4 lines each."""
    folder = tmp_path_factory.mktemp("older")
    made = {
        "orders": [{"DATETIME": f"K{order}", "PONUM": f"PO-{order}", "ORDDATE": "2003-07-04"} for order in range(3)],
        "lines": [
            {"DATETIME": f"K{order}", "ITEMNUM": f"I{order}-{line}", "QUANTITY": "2", "UNITPRICE": "1.25"}
            for order in range(3)
            for line in range(4)
        ],
    }
    (folder / "made.json").write_text(json.dumps(made))
    subprocess.run(
        ["/usr/bin/python3", source / "tests/support/make-legacy-tables", folder, folder / "made.json"], check=True
    )
    return str(folder)


def test_the_progress_of_an_import(in_store, legacy_tables):
    def work():
        importer = qm_ordering.OrderHistoryImporter()
        preview = importer.PreviewImports(legacy_tables)
        assert (preview.Orders, preview.Lines, preview.FailingRows, list(preview.Failures)) == (3, 12, 0, [])
        seen = []
        importer.OnProgress(lambda *done: seen.append(done))
        assert importer.ApplyImports(legacy_tables) == 3
        assert (seen[0], seen[-1], len(seen)) == ((0, 0, 12), (3, 12, 12), 13)
        importer.OnProgress(None)
        assert importer.ApplyImports(zvUserDataPath=legacy_tables, bvWriteLog=False) == 3
        assert len(seen) == 13

    in_store(work)


def test_an_import_that_is_cancelled(in_store, legacy_tables):
    def work():
        importer = qm_ordering.OrderHistoryImporter()
        importer.OnProgress(lambda orders, lines, in_all: lines < 5)
        assert importer.ApplyImports(legacy_tables) == 0
        assert qm_ordering.last_failure().number == 5
        history = qm_ordering.OrderHistory()
        history.LoadOrders()
        assert len(history) == 0

    in_store(work)


@pytest.mark.parametrize("exception", EXCEPTIONS, ids=repr)
def test_what_the_progress_of_an_import_raises(in_store, legacy_tables, exception):
    def fail(orders, lines, in_all):
        if lines == 5:
            raise exception

    def work():
        importer = qm_ordering.OrderHistoryImporter()
        importer.OnProgress(fail)
        assert raised_by(lambda: importer.ApplyImports(legacy_tables)) is exception
        history = qm_ordering.OrderHistory()
        history.LoadOrders()
        assert len(history) == 0

    in_store(work)


def test_backup_and_restore(in_store, tmp_path):
    def work():
        order = CurrentOrder()
        order.AddItem(make_item())
        seen = []
        backup = tmp_path / "backup.mdb"
        assert qm_ordering.backup_order_store(backup, progress=lambda *done: seen.append(done)) == []
        assert seen[-1][0] == seen[-1][1] > 0
        del order
        restored = []
        kept = qm_ordering.restore_order_store(str(backup), lambda *done: restored.append(done))
        assert kept.startswith(str(tmp_path / "Orders.mdb.replaced-")) and os.path.exists(kept)
        assert restored
        assert qm_ordering.check_order_store() == []
        assert qm_ordering.repair_order_store() == []
        assert CurrentOrder().ItemCount() == 1

    in_store(work)


@pytest.mark.parametrize("exception", EXCEPTIONS, ids=repr)
def test_what_the_progress_of_a_backup_raises(in_store, tmp_path, exception):
    def fail(done, in_all):
        raise exception

    def work():
        CurrentOrder()
        assert raised_by(lambda: qm_ordering.backup_order_store(tmp_path / "backup.mdb", fail)) is exception
        assert not (tmp_path / "backup.mdb").exists()
        qm_ordering.backup_order_store(tmp_path / "backup.mdb")
        assert raised_by(lambda: qm_ordering.restore_order_store(tmp_path / "backup.mdb", fail)) is exception
        assert CurrentOrder().OrderDetails.IsCurrentOrder

    in_store(work)


def test_store_functions_raise(tmp_path):
    def work():
        use_store(tmp_path)
        with pytest.raises(QMFailure) as raised:
            qm_ordering.create_order_store(tmp_path)
        assert raised.value.number == 75
        assert qm_ordering.order_store_path() == str(tmp_path / "Orders.mdb")
        with pytest.raises(QMFailure) as raised:
            qm_ordering.restore_order_store(tmp_path / "absent")
        assert raised.value.number == 75
        for name in (b"backup", "a\0b", None):
            with pytest.raises((TypeError, ValueError)):
                qm_ordering.backup_order_store(name)

    on_a_thread(work)


def test_findings_are_texts(in_store, tmp_path):
    def work():
        order = CurrentOrder()
        order.AddItem(make_item())
        store = sqlite3.connect(tmp_path / "Orders.mdb")
        store.execute("UPDATE tblOrder SET cTotalPrice = 1")
        store.commit()
        store.close()
        (finding,) = qm_ordering.check_order_store()
        assert "total" in finding
        assert len(qm_ordering.repair_order_store()) == 1
        assert qm_ordering.check_order_store() == []

    in_store(work)


def test_a_byte_in_the_store_that_is_not_utf8(in_store, tmp_path):
    def work():
        order = CurrentOrder()
        order.AddItem(make_item())
        store = sqlite3.connect(tmp_path / "Orders.mdb")
        store.execute("UPDATE tblOrderItem SET zDescription = CAST(X'41FF42' AS TEXT)")
        store.commit()
        store.close()
        order.LoadItems(0)
        (item,) = order.OrderDetails.OrderItems
        assert item.Description == "A\ufffdB"

    in_store(work)


# A signal is handled where the next Python function begins, which is the callback. The moment is left to chance: what
# must hold holds at every one.
SIGNALS = """
import os, signal, sys, threading
from decimal import Decimal
from conftest import make_item, use_store
import qm_ordering

use_store(sys.argv[1])
order = qm_ordering.CurrentOrder()
for number in range(30):
    order.AddItem(make_item(f"I{number}"))
statements = 0
def trace(statement):
    global statements
    statements += 1
qm_ordering.set_statement_trace(trace)
arrived = 0
for interval in range(1, 61):
    try:
        signal.setitimer(signal.ITIMER_REAL, interval * 7e-5)
        while True:
            order.LoadItems(0)
            for item in order.OrderDetails.OrderItems:
                item.Quantity
    except KeyboardInterrupt:
        arrived += 1
signal.setitimer(signal.ITIMER_REAL, 0)
order.LoadItems(0)
print(arrived, len(order.OrderDetails.OrderItems), statements > 0, sys.unraisablehook is sys.__unraisablehook__)
"""


def test_a_signal_that_arrives_in_a_callback_is_raised_by_the_call(run_python, tmp_path):
    program = "import signal\nsignal.signal(signal.SIGALRM, signal.default_int_handler)\n" + SIGNALS
    process = run_python(program, tmp_path)
    assert_clean(process)
    assert process.stdout == "60 30 True True\n"
