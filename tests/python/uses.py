"""For the type checker alone: what it must accept, and what it must refuse, which is marked."""

from datetime import date, datetime
from decimal import Decimal

import qm_ordering
from qm_ordering import CurrentOrder, OrderHistory, OrderItem, OrderItems, QMFailure

item = OrderItem()
item.Price = Decimal("12.50")
item.Price = 12
item.Price = 12.5  # bad
item.Price = "12.5"  # bad
money: Decimal = item.Price
item.Quantity = 3
item.Quantity = 3.0  # bad
item.Quantity = None  # bad
item.Description = "text"
item.Description = b"text"  # bad
item.IsTaxable = True
item.IsTaxable = "True"  # bad
item.quantity = 3  # bad
item.ValidQuantity = True  # bad
valid: bool = item.Validate(0)
valid = item.Validate(lvDeliveryMethod=0)
item.Validate()  # bad
item.Validate(method=0)  # bad

order = CurrentOrder()
CurrentOrder("name")  # bad


class NumberedItem(OrderItem):
    def __init__(self, number: str) -> None:
        super().__init__()
        self.ItemNumber = number


numbered: OrderItem = NumberedItem("4QX17")
NumberedItem(7)  # bad
NumberedItem()  # bad
order.AddItem(item)
order.AddItem(order)  # bad
order.OrderDetails.DeliveryInformation.City = "Reims"
order.OrderDetails.DeliveryInformation.City = 7  # bad
order.OrderDetails.LoadItems(bvValidate=True)
order.OrderDetails.SubmitDate = date(2003, 7, 4)
order.OrderDetails.SubmitDate = None
order.OrderDetails.SubmitDate = "2003-07-04"  # bad
submitted: datetime = order.OrderDetails.SubmitDate  # bad
if order.Error:
    print(order.Error.Number + 1, order.Error.Description.upper())

items: OrderItems = order.OrderDetails.OrderItems
items = item  # bad
for line in items:
    money += line.Price * line.Quantity
first: OrderItem = items[1]
first = items["4QX17"]
first = items[1.5]  # bad
count: int = len(items) + items.Count
len(item)  # bad
held: bool = first in items

history = OrderHistory()
history.LoadOrders(2)
history["PO-7"]  # bad
total = sum((previous.OrderTotal for previous in history), Decimal())

failure = qm_ordering.last_failure()
if failure is not None:
    print(failure.number + 1, failure.operation.upper())
failure.number  # bad
qm_ordering.set_statement_trace(lambda statement: print(statement.upper()))
qm_ordering.set_statement_trace(7)  # bad
importer = qm_ordering.OrderHistoryImporter()
importer.OnProgress(lambda orders, lines, in_all: lines < 5)
importer.OnProgress(lambda orders: True)  # bad
findings: list[str] = qm_ordering.backup_order_store("backup", lambda done, in_all: None)
qm_ordering.install_settings(qm_ordering.DictSettings({"OrderingDatabasePath": "."}))
qm_ordering.install_settings({"OrderingDatabasePath": "."})  # bad

try:
    raise QMFailure(5, "text")
except QMFailure as raised:
    print(raised.number + 1, raised.description.upper())
