"""What a host does from the first line to the history, the lists and the import."""

import datetime
import xml.etree.ElementTree as ElementTree
from decimal import Decimal

import qm_ordering
from conftest import make_item
from qm_ordering import CurrentOrder, OrderHistory, OrderItems, PersonalList, PersonalLists


def test_the_whole_road(in_store):
    in_store(walk)


def walk():
    order = CurrentOrder()
    assert not order.Error
    details = order.OrderDetails
    assert details.IsCurrentOrder and details.SubmitDate is None and details.OrderID > 0

    # The lines.
    for number, quantity, price in (("4QX17", 18, "11.4725"), ("Ärmel", 7, "0.0001"), ("W-1", 6, "3")):
        item = make_item(number, quantity, price)
        item.Description = f"Description of {number}"
        order.AddItem(item)
        assert not order.Error
    again = make_item("4qx17", 6, "11.4725")
    order.AddItem(again)
    assert not order.Error
    order.LoadItems(1)
    items = details.OrderItems
    assert [item.ItemNumber for item in items] == ["4QX17", "W-1", "Ärmel"]
    assert items["4QX17"].Quantity == 24
    assert items["4QX17"].ExtendedPrice == Decimal("275.3400")
    assert details.TotalPrice == Decimal("293.3407")
    assert details.HasInvalidQuantities
    assert [item.ValidQuantity for item in items] == [True, True, False]

    # Changes.
    changed = items["Ärmel"]
    changed.Quantity = 12
    changed.ExtendedPrice = changed.Price * changed.Quantity
    collection = OrderItems()
    collection.Add(changed, changed.ItemNumber)
    order.UpdateItems(collection)
    order.RemoveItem("W-1")
    order.LoadItems(0)
    assert order.ItemCount() == len(details.OrderItems) == 2
    assert not details.HasInvalidQuantities
    assert details.TotalPrice == Decimal("275.3412")
    assert order.ItemExists("Ärmel") and not order.ItemExists("W-1")

    # The header.
    details.PurchaseOrderNumber = "PO-7"
    delivery = details.DeliveryInformation
    delivery.DeliveryMethod = 1
    delivery.FirstName, delivery.LastName, delivery.CompanyName = "Zoë", "O'Hara", "Champagne & Fils"
    delivery.Address1, delivery.City, delivery.ZipOrPostCode = "1 rue \"Neuve\"", "Reims", "51100"
    delivery.Country, delivery.PhoneNumber = "France", "03 26"
    assert not delivery.Validate()
    delivery.StateOr = "Marne"
    assert delivery.Validate()
    details.PaymentInformation.MorvaneAccountNumber = "4711"
    assert details.PaymentInformation.Validate()
    order.SaveSummary()
    assert not order.Error

    # The document, and the order as another object reads it.
    document = ElementTree.fromstring(order.GetXML())
    assert document.tag == "order"
    assert [element.get("itemnumber") for element in document.iter("orderitem")] == ["4QX17", "Ärmel"]
    other = CurrentOrder()
    assert other.OrderDetails.DeliveryInformation.City == "Reims"
    assert other.OrderDetails is not details

    # The history.
    submitted = details.OrderID
    before = datetime.datetime.now().replace(microsecond=0)
    order.SaveToHistory()
    assert not order.Error
    order.LoadSummary()
    order.LoadItems(0)
    assert details.OrderID != submitted and len(details.OrderItems) == 0
    assert details.DeliveryInformation.City == "Reims"
    history = OrderHistory()
    history.LoadOrders(lvSortOrder=2)
    (previous,) = history
    assert previous is history[submitted]
    assert (previous.OrderID, previous.PurchaseOrderNumber) == (submitted, "PO-7")
    assert previous.OrderTotal == Decimal("275.3412")
    assert before <= previous.SubmitDate <= datetime.datetime.now()
    assert history.ItemExists("po-7") is True and history.ItemExists("PO-8") is False
    previous.OrderDetails.LoadSummary()
    previous.OrderDetails.LoadItems()
    assert [item.Quantity for item in previous.OrderDetails.OrderItems] == [24, 12]
    assert "orderhistory" in history.GetXML()

    # The lists.
    lists = PersonalLists()
    number = lists.CreateList("Halle 3")
    list_ = PersonalList()
    list_.ListID = number
    for item in previous.OrderDetails.OrderItems:
        list_.AddItem(item, vvListID=number)
        assert not list_.Error
    lists.LoadLists()
    (held,) = lists
    held.LoadItems()
    assert sorted(item.ItemNumber for item in held.OrderItems) == ["4QX17", "Ärmel"]
    assert lists.RenameList(number, "Halle 4") and lists.GetName(number) == "Halle 4"
    lists = PersonalLists()
    lists.LoadLists()
    lists.SaveAsXML()
    assert qm_ordering.last_failure() is None
    lists.RemoveList(number)
    assert not lists.ListExists("Halle 4")

    # Back again.
    history.DeleteOrder(submitted)
    empty = OrderHistory()
    empty.LoadOrders()
    assert list(empty) == []
    assert qm_ordering.check_order_store() == []
