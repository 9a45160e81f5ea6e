"""Threads, processes and the interpreter's end."""

import gc
import multiprocessing
import threading

import pytest

from conftest import assert_clean, make_item, on_a_thread, use_store
from qm_ordering import CurrentOrder, OrderItem, OrderItems, QMFailure
from qm_ordering import _library, _objects

WRONG_THREAD = -2147417842


def is_known(number):
    """Whether the library still has the object."""
    return _library.class_name(number, _library.c_char_p()) != 91


def test_an_object_stays_with_its_thread(in_store):
    items = OrderItems()
    item = make_item()
    items.Add(item, "A")

    def refused(call):
        with pytest.raises(QMFailure, match="another thread") as raised:
            call()
        assert raised.value.number == WRONG_THREAD

    def work():
        for call in (
            lambda: item.Quantity,
            lambda: setattr(item, "Quantity", 1),
            lambda: len(items),
            lambda: list(items),
            lambda: items["A"],
            item.GetXML,
            lambda: OrderItems().Add(item, "B"),
        ):
            refused(call)

    in_store(work)
    assert item.Quantity == 18 and items["A"] is item


def test_threads_with_an_object_each(tmp_path):
    def host(number):
        folder = tmp_path / str(number)
        folder.mkdir()
        use_store(folder)
        order = CurrentOrder()
        for line in range(40):
            order.AddItem(make_item(f"{number}-{line}"))
            assert not order.Error
        order.LoadItems(0)
        numbers.extend(item.ItemNumber for item in order.OrderDetails.OrderItems)

    numbers = []
    threads = [threading.Thread(target=host, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(numbers) == sorted(f"{number}-{line}" for number in range(4) for line in range(40))


def test_an_object_that_another_thread_drops_ends_on_its_own():
    made = [OrderItem() for _ in range(100)]
    numbers = [item._number for item in made]
    threading.Thread(target=made.clear).start()
    while made:
        pass
    OrderItem()
    assert not any(map(is_known, numbers))


def test_a_cycle_that_another_threads_collector_finds():
    class Node(OrderItem):
        pass

    gc.disable()
    try:
        numbers = []
        for _ in range(100):
            node = Node()
            node.itself = node
            numbers.append(node._number)
        del node
        on_a_thread(gc.collect)
    finally:
        gc.enable()
    OrderItem()
    assert not any(map(is_known, numbers))


def test_an_object_dropped_elsewhere_while_its_own_thread_reaches_it_again():
    items = OrderItems()
    items.Add(make_item("A"), "A")
    stop = threading.Event()
    handed = []

    def drop():
        while not stop.is_set():
            handed.clear()

    thread = threading.Thread(target=drop)
    thread.start()
    try:
        for _ in range(20_000):
            handed.append(items["A"])
            assert items["A"].ItemNumber == "A"
    finally:
        stop.set()
        thread.join()
    handed.clear()
    assert items["A"] is items["A"]
    assert len(items) == 1


def test_objects_of_threads_that_ended():
    kept = on_a_thread(lambda: [OrderItem() for _ in range(10)])
    with pytest.raises(QMFailure) as raised:
        kept[0].Quantity
    assert raised.value.number == WRONG_THREAD
    # Its traceback holds the object.
    del raised
    numbers = [item._number for item in kept]
    kept.clear()
    # They ended with their thread.
    assert [_library.release(number) for number in numbers] == [0] * 10


def count_lines(folder, connection):
    """In a process of its own."""
    try:
        use_store(folder)
        order = CurrentOrder()
        if order.OrderDetails.Error:
            connection.send(str(order.OrderDetails.Error))
        else:
            connection.send(order.ItemCount())
    except QMFailure as failure:
        connection.send(failure)
    connection.close()


def ask(method, folder):
    """What count_lines sends from a process that is started by that method, and how it ends."""
    context = multiprocessing.get_context(method)
    here, there = context.Pipe(duplex=False)
    process = context.Process(target=count_lines, args=(folder, there))
    process.start()
    there.close()
    answer = here.recv()
    process.join()
    return answer, process.exitcode


@pytest.mark.parametrize("method", ["spawn", "forkserver"])
def test_processes_of_their_own(in_store, tmp_path, method):
    def work():
        order = CurrentOrder()
        order.AddItem(make_item())
        assert ask(method, tmp_path) == (1, 0)
        assert order.ItemCount() == 1

    in_store(work)


FORK = """
import os, sys, qm_ordering
from conftest import make_item, use_store
from test_processes import ask

folder = sys.argv[1]
if sys.argv[2] == "before":
    # Nothing of the library is in use yet.
    qm_ordering.create_order_store(folder)
    print(ask("fork", folder))
    sys.exit()
use_store(folder)
order = qm_ordering.CurrentOrder()
order.AddItem(make_item())
sys.stdout.flush()
child = os.fork()
if child == 0:
    # The parent's objects are refused and may be dropped; the store may not be opened.
    try:
        order.ItemCount()
    except qm_ordering.QMFailure as failure:
        print(failure.number, "forked" in failure.description)
    item = make_item("in the child")
    print(item.ItemNumber)
    del order
    print("forked" in qm_ordering.CurrentOrder().OrderDetails.Error.Description)
    sys.exit()
print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))
print(order.ItemCount())
"""


def test_a_fork_before_the_library_is_used(run_python, tmp_path):
    process = run_python(FORK, tmp_path, "before")
    assert_clean(process)
    assert process.stdout == "(0, 0)\n"


def test_a_fork_while_objects_live(run_python, tmp_path):
    process = run_python(FORK, tmp_path, "meanwhile")
    assert_clean(process)
    assert process.stdout.splitlines() == [str(WRONG_THREAD) + " True", "in the child", "True", "0", "1"]


ALIVE = """
import gc, sys, threading, qm_ordering
from conftest import make_item, use_store

def host():
    component = use_store(sys.argv[1])
    order = qm_ordering.CurrentOrder()
    order.AddItem(make_item(f"{threading.get_ident()}"))
    order.LoadItems(0)
    walk = iter(order.OrderDetails.OrderItems)
    next(walk)
    importer = qm_ordering.OrderHistoryImporter()
    importer.OnProgress(lambda *done: importer)
    qm_ordering.set_statement_trace(lambda statement: None)
    kept.append((order, walk, importer, order.Error, component))
    sys.modules[f"kept{len(kept)}"] = order

kept = []
for _ in range(2):
    thread = threading.Thread(target=host)
    thread.start()
    thread.join()
host()

class Last:
    def __del__(self):
        kept[-1][0].ItemCount()

last = Last()
last.itself = last
if sys.argv[2] == "exit":
    sys.exit(0)
elif sys.argv[2] == "daemon":
    ready = threading.Event()
    threading.Thread(target=lambda: (host(), ready.set(), threading.Event().wait()), daemon=True).start()
    ready.wait()
"""


@pytest.mark.parametrize("way", ["end", "exit", "daemon"])
def test_the_interpreter_ends_while_objects_live(run_python, tmp_path, way):
    assert_clean(run_python(ALIVE, tmp_path, way))


def test_ten_thousand_objects_leave_nothing():
    items = OrderItems()
    made = [OrderItem() for _ in range(10_000)]
    for position, item in enumerate(made):
        items.Add(item, str(position))
    numbers = [item._number for item in made]
    del item
    made.clear()
    assert not any(map(is_known, numbers))
    assert len(items) == 10_000 and all(item.Quantity == 0 for item in items)


def test_what_was_dropped_is_forgotten_here_too():
    for _ in range(100_000):
        OrderItem()
    assert len(_objects._references) < 10_000


# On the main thread, whose memory is what mallinfo2 tells; Python's own comes from the same allocator.
MEMORY = """
import ctypes, gc, sys, qm_ordering
from conftest import make_item, use_store
from qm_ordering import CurrentOrder, OrderItem, OrderItems, QMFailure, _objects

class MallocInformation(ctypes.Structure):
    _fields_ = [
        (field, ctypes.c_size_t)
        for field in "arena ordblks smblks hblks hblkhd usmblks fsmblks uordblks fordblks keepcost".split()
    ]

libc = ctypes.CDLL(None)
libc.mallinfo2.restype = MallocInformation

def in_use():
    gc.collect()
    # What is swept now and then, is swept now.
    _objects._sweep_at = 0
    OrderItem()
    information = libc.mallinfo2()
    return information.uordblks + information.hblkhd

def one_round():
    order = CurrentOrder()
    order.LoadItems(0)
    for item in order.OrderDetails.OrderItems:
        item.Description = item.Description + " and more"
        item.GetXML()
    assert not order.Error
    try:
        OrderItems().Add(None, "A")
    except QMFailure:
        pass
    try:
        order.OrderDetails.TotalPrice = 1.5
    except TypeError:
        pass
    made = [OrderItem() for _ in range(200)]
    importer = qm_ordering.OrderHistoryImporter()
    importer.OnProgress(lambda *done: importer)
    if len(sys.argv) > 2:
        lost.append(OrderItem())

lost = []
use_store(sys.argv[1])
order = CurrentOrder()
for number in range(10):
    order.AddItem(make_item(f"I{number}"))
del order
for _ in range(100):
    one_round()
before = in_use()
for _ in range(100):
    one_round()
print(in_use() - before)
"""


@pytest.mark.system_allocator
def test_no_memory_is_lost(run_python, tmp_path):
    def growth(*arguments):
        process = run_python(MEMORY, tmp_path, *arguments, PYTHONMALLOC="malloc")
        assert_clean(process)
        return int(process.stdout)

    # In a hundred rounds; one object lost in each is seen.
    assert growth() < 10_000
    assert growth("lose one") > 30_000


DESCRIPTORS = """
import os, sys, time, qm_ordering
from conftest import on_a_thread, use_store

def in_use():
    return len(os.listdir("/proc/self/fd"))

def work():
    use_store(sys.argv[1])
    qm_ordering.CurrentOrder().LoadItems(0)

before = in_use()
for _ in range(20):
    on_a_thread(work)
# The library closes a thread's store when the system ends the thread, which is after Python has joined it.
while in_use() != before:
    time.sleep(0.1)
"""


def test_no_descriptor_is_lost(run_python, tmp_path):
    assert_clean(run_python(DESCRIPTORS, tmp_path))
