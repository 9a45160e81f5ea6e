import copy
import gc
import inspect
import pickle
import pydoc
import sys
import weakref
from ctypes import byref

import pytest

import qm_ordering
from conftest import make_item, on_a_thread
from qm_ordering import CurrentOrder, OrderDetails, OrderItem, OrderItems, QMFailure
from qm_ordering import _classes, _library, _objects, _values

CLASSES = {class_.name: class_ for class_ in _classes.describe()}


def test_every_class_of_the_library_is_a_class_here():
    assert {"CurrentOrder", "OrderItems", "ErrorInfo", "ImportPreview"} <= set(CLASSES)
    for name, class_ in CLASSES.items():
        made = getattr(qm_ordering, name)
        assert issubclass(made, qm_ordering.Object)
        assert (made.__name__, made.__qualname__, made.__module__) == (name, name, "qm_ordering")
        assert name in qm_ordering.__all__
        for member in class_.members:
            assert hasattr(made, member.name)


@pytest.mark.parametrize("name", CLASSES)
def test_every_class_and_member_has_its_contract(name):
    made = getattr(qm_ordering, name)
    assert len(made.__doc__) > 20
    for member in CLASSES[name].members:
        assert len(inspect.getdoc(getattr(made, member.name))) > 10, member.name
    if name in ("OrderItem", "CurrentOrder"):
        assert "in the order already, in any" in OrderDetails.AddItem.__doc__


@pytest.mark.parametrize(
    "function",
    [
        "backup_order_store",
        "check_order_store",
        "clear_last_failure",
        "create_order_store",
        "install_settings",
        "install_settings_file",
        "last_failure",
        "order_store_path",
        "repair_order_store",
        "restore_order_store",
        "set_statement_trace",
    ],
)
def test_every_function_has_its_contract(function):
    doc = getattr(qm_ordering, function).__doc__
    first, contract = doc.split("\n\n", 1)
    assert len(first) > 20 and len(contract) > 50


def test_help_shows_signatures_and_contracts():
    text = pydoc.plain(pydoc.render_doc(OrderDetails))
    assert "LoadItems(self, lvSortType: int = 0, bvIsLoadCurrent: bool = False, bvValidate: bool = False) -> None" in text
    assert "lvSortType: 0 entry, 1 item number" in text
    assert "Type: Decimal." in text
    assert "Type: bool; can only be read." in text
    assert "CurrentOrder" in pydoc.plain(pydoc.render_doc(qm_ordering))


def test_arguments_by_position_and_by_keyword():
    items = OrderItems()
    first, second = OrderItem(), OrderItem()
    items.Add(first, "A")
    items.Add(zvItemNumber="B", ovOrderItem=second)
    assert list(items) == [first, second]


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (lambda items: items.Add(), r"OrderItems.Add\(\) missing 2 required positional arguments: 'ovOrderItem' and"),
        (lambda items: items.Add(None), r"OrderItems.Add\(\) missing 1 required positional argument: 'zvItemNumber'"),
        (lambda items: items.Add(None, "A", 1), r"OrderItems.Add\(\) takes 3 positional arguments but 4 were given"),
        (lambda items: items.Add(None, "A", zvItemNumber="B"), "got multiple values for argument 'zvItemNumber'"),
        (lambda items: items.Add(None, number="A"), "got an unexpected keyword argument 'number'"),
        (lambda items: items.Item(vvKey=b"A"), "OrderItems.Item: vvKey takes None"),
        (lambda items: items.Add(None, 1), "OrderItems.Add: zvItemNumber takes a str, not int"),
        (lambda items: CurrentOrder(1), r"CurrentOrder\(\) takes no arguments"),
        (lambda items: OrderItem(Quantity=1), r"OrderItem\(\) takes no arguments"),
    ],
)
def test_wrong_arguments_are_told_as_python_tells_them(call, message):
    with pytest.raises(TypeError, match=message):
        call(OrderItems())


def test_names_that_a_class_does_not_have():
    item = OrderItem()
    for name in ("quantity", "Quantitiy", "anything"):
        with pytest.raises(AttributeError):
            getattr(item, name)
        with pytest.raises(AttributeError):
            setattr(item, name, 1)
    with pytest.raises(AttributeError, match="has no setter"):
        item.ValidQuantity = True
    with pytest.raises(AttributeError, match="has no deleter"):
        del item.Quantity


def test_classes_that_only_members_answer():
    for name in (name for name, class_ in CLASSES.items() if not class_.is_creatable):
        with pytest.raises(TypeError, match=f"cannot create '{name}' objects"):
            getattr(qm_ordering, name)()
    with pytest.raises(TypeError, match="cannot create 'Object' objects"):
        qm_ordering.Object()


def test_a_class_of_the_hosts_own():
    class Item(OrderItem):
        def double(self):
            self.Quantity *= 2

    item = Item()
    item.Quantity = 3
    item.double()
    items = OrderItems()
    items.Add(item, "A")
    assert items["A"] is item
    assert items["A"].Quantity == 6


def test_a_class_of_the_hosts_own_has_its_own_constructor():
    class Item(OrderItem):
        def __init__(self, number, *, quantity=1):
            super().__init__()
            self.ItemNumber = number
            self.Quantity = quantity

    class Boxed(Item):
        def __new__(cls, number, boxes):
            return super().__new__(cls)

        def __init__(self, number, boxes):
            super().__init__(number, quantity=6 * boxes)

    item = Item("4QX17", quantity=3)
    assert (item.ItemNumber, item.Quantity) == ("4QX17", 3)
    boxed = Boxed("4QX18", 2)
    assert (boxed.ItemNumber, boxed.Quantity) == ("4QX18", 12)
    with pytest.raises(TypeError, match="missing 1 required positional argument: 'number'"):
        Item()

    class Plain(OrderItem):
        pass

    with pytest.raises(TypeError, match=r"Plain\(\) takes no arguments"):
        Plain("4QX17")


def test_one_object_of_the_library_is_one_here():
    payment = qm_ordering.PaymentInformation()
    assert payment.CreditCardDetails is payment.CreditCardDetails
    items = OrderItems()
    item = OrderItem()
    items.Add(item, "A")
    assert items.Item(1) is items["a"] is next(iter(items)) is item
    assert payment != qm_ordering.PaymentInformation()
    assert len({payment, payment, item}) == 2


def test_an_object_ends_with_its_last_reference():
    items = OrderItems()
    items.Add(OrderItem(), "A")
    items["A"].Description = "kept by the collection"
    gc.collect()
    assert items["A"].Description == "kept by the collection"
    item = OrderItem()
    number = item._number
    gone = weakref.ref(item)
    del item
    assert gone() is None
    assert _library.class_name(number, _library.c_char_p()) == 91


def test_an_object_answered_anew_while_what_was_dropped_is_forgotten_stays_known(monkeypatch):
    monkeypatch.setattr(_objects, "_sweep_at", _objects._sweep_at)
    items = OrderItems()
    items.Add(OrderItem(), "A")

    def answered_at(instruction):
        """Has the library answer an object and Python drop it, and takes the answer at that instruction of the sweep,
        as another thread may. Answers whether there is such an instruction."""
        item = items["A"]
        key = _library.Value()
        _values.fill_integer(key, 1)
        value = _library.Value()
        assert _library.call(items._number, b"Item", byref(key), 1, byref(value)) == 0
        number = item._number
        assert value.object == number
        del item
        assert _objects.living(number) is None
        left = instruction
        again = None

        def trace(frame, event, argument):
            nonlocal left, again
            if frame.f_code is not _objects._bind.__code__:
                return None
            frame.f_trace_opcodes = True
            if event == "opcode" and left >= 0:
                left -= 1
                if left < 0:
                    again = _objects.object_of(number)
            return trace

        _objects._sweep_at = 0
        before = sys.gettrace()
        sys.settrace(trace)
        try:
            OrderItem()
        finally:
            sys.settrace(before)
        if again is None:
            _library.release(number)
            return False
        is_known = _objects.living(number) is again
        again = None
        assert is_known
        return True

    instructions = 0
    while answered_at(instructions):
        instructions += 1
    assert instructions > 30


def test_a_cycle_of_references_is_collected():
    class Node(OrderItem):
        pass

    node = Node()
    node.itself = node
    number = node._number
    gone = weakref.ref(node)
    del node
    gc.collect()
    assert gone() is None
    assert _library.class_name(number, _library.c_char_p()) == 91


class Finalized(OrderItem):
    """Notes what its finalizer finds."""

    found = []

    def __del__(self):
        attempts = [
            lambda: self.Description,
            lambda: setattr(self, "Quantity", 7),
            lambda: "to the end" in self.GetXML(),
            lambda: OrderItems().Add(self, "A"),
        ]
        for attempt in attempts:
            try:
                self.found.append(attempt())
            except QMFailure as failure:
                self.found.append(failure.number)
        self.found.append(self)


def finalized(monkeypatch):
    monkeypatch.setattr(Finalized, "found", [])
    item = Finalized()
    item.Description = "to the end"
    return item


def test_a_finalizer_may_use_its_object(monkeypatch):
    item = finalized(monkeypatch)
    del item
    description, *others, item = Finalized.found
    assert (description, others) == ("to the end", [None, True, None])
    # The finalizer has kept it.
    assert item.Quantity == 7


def test_a_finalizer_finds_what_was_in_a_cycle_released(monkeypatch):
    item = finalized(monkeypatch)
    item.itself = item
    del item
    gc.collect()
    *failures, item = Finalized.found
    assert failures == [91, 91, 91, 91]
    with pytest.raises(QMFailure) as raised:
        item.Quantity
    assert raised.value.number == 91


def test_an_importer_and_its_callback_are_collected():
    importer = qm_ordering.OrderHistoryImporter()
    importer.OnProgress(lambda *done: importer.LogHeader)
    number = importer._number
    del importer
    gc.collect()
    assert _library.class_name(number, _library.c_char_p()) == 91


@pytest.mark.parametrize(
    "attempt", [copy.copy, copy.deepcopy, pickle.dumps, lambda item: pickle.dumps(item, 0)]
)
def test_copying_and_pickling_are_refused(attempt):
    with pytest.raises(TypeError, match="cannot copy or pickle 'OrderItem' object: it stands for one object"):
        attempt(OrderItem())


def test_failures_can_be_pickled():
    failure = pickle.loads(pickle.dumps(QMFailure(75, "The file ...")))
    assert (failure.number, failure.description, str(failure)) == (75, "The file ...", "The file ... (failure 75)")


def test_raised_failures():
    items = OrderItems()
    items.Add(OrderItem(), "A")
    with pytest.raises(QMFailure, match=r'"a" \(failure 457\)') as raised:
        items.Add(OrderItem(), "a")
    assert raised.value.number == 457
    assert raised.value.description in str(raised.value)
    with pytest.raises(QMFailure) as raised:
        items.Add(None, "B")
    assert raised.value.number == 91


def test_collections():
    items = OrderItems()
    assert len(items) == 0 and not items and list(items) == []
    held = [make_item(number) for number in "ABC"]
    for item in held:
        items.Add(item, item.ItemNumber)
    assert len(items) == items.Count == 3 and items
    assert list(items) == held
    assert [items[1], items[3], items["b"]] == [held[0], held[2], held[1]]
    assert list(items.NewEnum()) == held
    with pytest.raises(IndexError):
        items[0]
    with pytest.raises(IndexError):
        items[4]
    with pytest.raises(IndexError):
        items[-1]
    for position in (2**31, 2**40, -(2**40), 10**5000):
        with pytest.raises(IndexError):
            items[position]
    with pytest.raises(OverflowError):
        items.Item(2**40)
    with pytest.raises(KeyError, match="'D'"):
        items["D"]
    with pytest.raises(TypeError, match=r"takes no slices; write list\(...\)\[first:last\]"):
        items[1:2]
    with pytest.raises(TypeError):
        items[b"A"]
    with pytest.raises(TypeError):
        iter(OrderItem())
    with pytest.raises(TypeError):
        len(OrderItem())


def test_what_is_in_a_collection():
    items = OrderItems()
    item = make_item("A")
    items.Add(item, "A")
    assert item in items and "A" in items and "a" in items and 1 in items
    assert OrderItem() not in items
    for absent in ("B", 2, 0, 2**40, None, b"A", "\ud800", object()):
        assert absent not in items


def test_collections_by_the_ids_of_the_store(in_store):
    def work():
        lists = qm_ordering.PersonalLists()
        number = lists.CreateList("Halle 3")
        lists.LoadLists()
        assert lists[number].Name == "Halle 3"
        assert number in lists and lists[number] in lists
        assert number + 1 not in lists
        with pytest.raises(KeyError, match=str(number + 1)):
            lists[number + 1]
        with pytest.raises(KeyError, match=str(2**40)):
            lists[2**40]
        with pytest.raises(KeyError, match=str(2**40)):
            qm_ordering.OrderHistory()[2**40]
        with pytest.raises(QMFailure) as raised:
            lists.Item(number + 1)
        assert raised.value.number == 5
        with pytest.raises(TypeError):
            lists["Halle 3"]
        assert "Halle 3" not in lists

    in_store(work)


def test_an_enumeration_meets_what_is_added_meanwhile_and_keeps_its_collection():
    items = OrderItems()
    items.Add(make_item("A"), "A")
    walk = iter(items)
    assert next(walk).ItemNumber == "A"
    items.Add(make_item("B"), "B")
    del items
    gc.collect()
    assert next(walk).ItemNumber == "B"
    with pytest.raises(StopIteration):
        next(walk)
    with pytest.raises(StopIteration):
        next(walk)


def test_error_records(in_store):
    def work():
        order = CurrentOrder()
        assert not order.Error and order.Error.Number == 0
        assert str(order.Error) == "no error"
        unloaded = OrderDetails()
        unloaded.SaveSummary()
        error = unloaded.Error
        assert error and error.Number == 1 and error.Description == "Order not loaded yet"
        assert str(error) == "1: Order not loaded yet"
        assert repr(error) == "ErrorInfo(1, 'Order not loaded yet')"
        assert error == unloaded.Error and hash(error) == hash(unloaded.Error) and error is not unloaded.Error
        assert error != order.Error and error != 1

    in_store(work)


def test_the_last_failure(tmp_path):
    def work():
        qm_ordering.install_settings(qm_ordering.DictSettings({"OrderingDatabasePath": str(tmp_path)}))
        assert qm_ordering.last_failure() is None
        order = CurrentOrder()
        failure = qm_ordering.last_failure()
        assert failure.number == -2147467259
        assert "Orders.mdb" in failure.description
        assert failure.operation == "OrderDetails.LoadSummary"
        assert order.OrderDetails.Error.Number == 5
        qm_ordering.clear_last_failure()
        assert qm_ordering.last_failure() is None

    on_a_thread(work)
