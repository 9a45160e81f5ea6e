"""The ordering data of a product catalogue, for hosts in Python.

Classes and members have the names that they have in the library's C++ headers, whose comments are the docstrings here;
where those say null, it is None in Python. Money is decimal.Decimal, exact both ways; a point in time is a naive
datetime.datetime, None for the zero date; a failure that is raised is a QMFailure. Most members of orders and lists do
not raise but leave an error record: `if order.Error: ...`.

    import qm_ordering

    qm_ordering.install_settings(qm_ordering.DictSettings({"OrderingDatabasePath": folder}))
    qm_ordering.create_order_store(folder)
    order = qm_ordering.CurrentOrder()
    item = qm_ordering.OrderItem()
    item.ItemNumber, item.Quantity, item.Price = "4QX17", 18, Decimal("11.4725")
    order.AddItem(item)
    for item in order.OrderDetails.OrderItems:
        print(item.ItemNumber, item.ExtendedPrice)

An object stays with the thread that made it. In a process that was forked from its own it is refused; there the library
works when its parent had not used it yet, otherwise start the process by spawn.
"""

from . import _classes
from ._callbacks import (
    DictSettings,
    SettingsComponent,
    install_settings,
    install_settings_file,
    set_statement_trace,
)
from ._classes import *
from ._failure import LastFailure, QMFailure, clear_last_failure, last_failure
from ._library import LIBRARY_VERSION as __version__
from ._objects import Object
from ._store import (
    backup_order_store,
    check_order_store,
    create_order_store,
    order_store_path,
    repair_order_store,
    restore_order_store,
)

__all__ = [
    "DictSettings",
    "LastFailure",
    "Object",
    "QMFailure",
    "SettingsComponent",
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
]
__all__ += _classes.__all__

for _public in (DictSettings, LastFailure, Object, QMFailure, SettingsComponent):
    _public.__module__ = __name__
