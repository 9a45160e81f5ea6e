#!/usr/bin/env python3
"""A host: orders items of a catalogue, checks the order, submits it and shows the history.

    order_from_catalogue.py [--store FOLDER] [--catalogue FILE.csv] [ITEM=QUANTITY ...]

Without a folder it works in one of its own that goes with it; without items it orders some of each kind.
"""

import argparse
import csv
import sys
import tempfile
from decimal import Decimal
from pathlib import Path

from qm_ordering import (
    CurrentOrder,
    DictSettings,
    ErrorInfo,
    OrderDetails,
    OrderHistory,
    OrderItem,
    OrderItems,
    QMFailure,
    create_order_store,
    install_settings,
    last_failure,
)

SOME_ITEMS = {"HT-1010": 2, "FX-2040": 130, "SF-3020": 24, "CL-4010": 12, "PT-5030": 10}
CATALOGUE = Path(__file__).parent.parent / "catalogue.csv"


def check(error: ErrorInfo) -> None:
    """Most members of an order leave an error record instead of raising."""
    if error:
        cause = last_failure()
        raise QMFailure(error.Number, f"{error.Description}. {cause.description if cause else ''}")


def read_catalogue(file: Path) -> dict[str, OrderItem]:
    catalogue = {}
    with open(file, newline="", encoding="utf-8") as rows:
        for row in csv.DictReader(rows):
            item = OrderItem()
            item.ItemNumber = row["ItemNumber"]
            item.Description = row["Description"]
            item.ShortDescription = row["ShortDescription"]
            item.Manufacturer = row["Manufacturer"]
            item.Model = row["Model"]
            item.SellQuantity = int(row["SellQuantity"] or 1)
            item.ShipQuantity = int(row["ShipQuantity"] or 1)
            item.UsuallyShips = row["UsuallyShips"]
            item.IsTaxable = row["Taxable"] == "true"
            item.Price = Decimal(row["Price"])
            catalogue[item.ItemNumber] = item
    return catalogue


def print_table(heads: list[str], rows: list[list[str]]) -> None:
    """Numbers to the right."""
    widths = [max(map(len, column)) for column in zip(heads, *rows)]
    for row in [heads, ["-" * width for width in widths], *rows]:
        cells = [
            text.rjust(width) if text.replace(".", "").isdecimal() else text.ljust(width)
            for text, width in zip(row, widths)
        ]
        print("  ".join(cells).rstrip())
    print()


def show_lines(details: OrderDetails) -> None:
    print_table(
        ["Item", "Description", "Quantity", "Price", "Extended", "Packs"],
        [
            [
                item.ItemNumber,
                item.Description,
                str(item.Quantity),
                str(item.Price),
                f"{item.ExtendedPrice:.2f}",
                "fit" if item.ValidQuantity else f"of {item.ShipQuantity}",
            ]
            for item in details.OrderItems
        ],
    )
    print(f"The order comes to {details.TotalPrice:.2f}.\n")


def fill(order: CurrentOrder, catalogue: dict[str, OrderItem], wanted: dict[str, int]) -> None:
    for number, quantity in wanted.items():
        if number not in catalogue:
            raise SystemExit(f"The catalogue has no item {number}.")
        item = catalogue[number]
        item.Quantity = quantity
        order.AddItem(item)
        check(order.Error)


def deliver_to_reims(order: CurrentOrder) -> None:
    details = order.OrderDetails
    details.PurchaseOrderNumber = "PO-7"
    delivery = details.DeliveryInformation
    delivery.DeliveryMethod = 1
    delivery.FirstName, delivery.LastName = "Zoë", "O'Hara"
    delivery.CompanyName = "Champagne Lefèvre"
    delivery.Address1, delivery.ZipOrPostCode, delivery.City = "12 rue de la Paix", "51100", "Reims"
    delivery.StateOr, delivery.Country, delivery.PhoneNumber = "Marne", "France", "03 26 00 00 00"
    details.PaymentInformation.MorvaneAccountNumber = "4711"
    order.SaveSummary()
    check(order.Error)
    if not delivery.Validate() or not details.PaymentInformation.Validate():
        raise SystemExit("The order lacks what its delivery or its payment needs.")


def round_up_to_packs(order: CurrentOrder) -> None:
    """The user takes the next full pack of what does not fit."""
    changed = OrderItems()
    for item in order.OrderDetails.OrderItems:
        if not item.ValidQuantity:
            item.Quantity += -item.Quantity % item.ShipQuantity
            item.ExtendedPrice = item.Price * item.Quantity
            changed.Add(item, item.ItemNumber)
    order.UpdateItems(changed)
    order.LoadItems(0)


def order_items(folder: Path, catalogue_file: Path, wanted: dict[str, int]) -> None:
    install_settings(DictSettings({"OrderingDatabasePath": str(folder)}))
    if not (folder / "Orders.mdb").exists():
        create_order_store(folder)

    order = CurrentOrder()
    check(order.OrderDetails.Error)
    deliver_to_reims(order)
    fill(order, read_catalogue(catalogue_file), wanted)
    order.LoadItems(0)
    show_lines(order.OrderDetails)
    if order.OrderDetails.HasInvalidQuantities:
        print("What does not fit its packs is rounded up to the next one.\n")
        round_up_to_packs(order)
        show_lines(order.OrderDetails)

    order.SaveToHistory()
    check(order.Error)
    history = OrderHistory()
    history.LoadOrders()
    print_table(
        ["Order", "Number", "Submitted", "Total"],
        [
            [
                str(previous.OrderID),
                previous.PurchaseOrderNumber,
                str(previous.SubmitDate or ""),
                f"{previous.OrderTotal:.2f}",
            ]
            for previous in history
        ],
    )


def main() -> None:
    arguments = argparse.ArgumentParser(description="Orders items of a catalogue and shows the history.")
    arguments.add_argument("--store", type=Path, metavar="FOLDER", help="the folder of the order store")
    arguments.add_argument("--catalogue", type=Path, metavar="FILE.csv", default=CATALOGUE)
    arguments.add_argument("items", nargs="*", metavar="ITEM=QUANTITY")
    given = arguments.parse_args()
    wanted = {}
    for text in given.items:
        number, equals, quantity = text.rpartition("=")
        if not equals or not quantity.isdecimal():
            arguments.error(f"{text} is not of the form ITEM=QUANTITY")
        wanted[number] = int(quantity)
    try:
        if given.store:
            order_items(given.store, given.catalogue, wanted or SOME_ITEMS)
        else:
            with tempfile.TemporaryDirectory() as folder:
                order_items(Path(folder), given.catalogue, wanted or SOME_ITEMS)
    except QMFailure as failure:
        sys.exit(f"error {failure.number}: {failure.description}")


if __name__ == "__main__":
    main()
