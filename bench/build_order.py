"""Builds an order as build_order.cpp does, line by line, and says how long each part took. Arguments: a folder for the
store, the number of lines."""

import sys
import time
from decimal import Decimal

import qm_ordering


def make_item(number):
    item = qm_ordering.OrderItem()
    item.ItemNumber = f"ITEM-{number}"
    item.Quantity = number % 7 + 1
    item.Description = f"Description of item {number}"
    item.ShortDescription = f"Item {number}"
    item.Manufacturer = "Manufacturer"
    item.Model = f"M-{number}"
    item.SellQuantity = 1
    item.ShipQuantity = 1
    item.UsuallyShips = "TODAY"
    item.IsTaxable = True
    item.Price = Decimal(114725 + number).scaleb(-4)
    return item


folder, lines = sys.argv[1], int(sys.argv[2])
qm_ordering.install_settings(qm_ordering.DictSettings({"OrderingDatabasePath": folder}))
qm_ordering.create_order_store(folder)
order = qm_ordering.CurrentOrder()

start = time.perf_counter()
items = qm_ordering.OrderItems()
for number in range(lines):
    item = make_item(number)
    items.Add(item, item.ItemNumber)
items_made = time.perf_counter()
for item in items:
    order.AddItem(item)
    if order.Error:
        sys.exit(str(order.Error))
lines_added = time.perf_counter()
order.LoadItems(0)
total = sum((item.ExtendedPrice for item in order.OrderDetails.OrderItems), Decimal())
lines_read = time.perf_counter()
print(items_made - start, lines_added - items_made, lines_read - lines_added, total)
