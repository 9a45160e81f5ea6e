import datetime
import decimal
from decimal import Decimal

import pytest

import qm_ordering
from qm_ordering import OrderDetails, OrderItem, QMFailure

# No store is needed: these objects keep what they are given.


@pytest.mark.parametrize(
    "text",
    ["0", "11.4725", "-0.0001", "922337203685477.5807", "-922337203685477.5808", "1E+3", "12.5", "3.10000000"],
)
def test_money_is_exact_both_ways(text):
    item = OrderItem()
    item.Price = Decimal(text)
    assert isinstance(item.Price, Decimal)
    assert item.Price == Decimal(text)


def test_money_is_exact_whatever_the_hosts_context_says():
    item = OrderItem()
    with decimal.localcontext() as context:
        context.prec = 3
        item.Price = Decimal("123456.7891")
        answered = item.Price
    assert answered == Decimal("123456.7891")
    assert str(answered) == "123456.7891"


def test_money_may_be_an_int():
    item = OrderItem()
    item.Price = 12
    assert item.Price == Decimal("12.0000")


@pytest.mark.parametrize("text", ["0.00001", "1.23456", "-1E-5", "922337203685477.58071"])
def test_a_fifth_decimal_is_refused(text):
    item = OrderItem()
    item.Price = Decimal("7.5")
    with pytest.raises(ValueError, match="OrderItem.Price takes money with four decimals"):
        item.Price = Decimal(text)
    assert item.Price == Decimal("7.5")


@pytest.mark.parametrize("text", ["922337203685477.5808", "-922337203685477.5809", "1E+30", "1E+999999", "9" * 60])
def test_money_out_of_range_is_refused(text):
    with pytest.raises(OverflowError, match="OrderItem.Price takes money from"):
        OrderItem().Price = Decimal(text)
    with pytest.raises(OverflowError):
        OrderItem().Price = 10**15
    for given in (10**5000, -(10**5000)):
        with pytest.raises(OverflowError, match="OrderItem.Price takes money from .* to 922337203685477.5807$"):
            OrderItem().Price = given


@pytest.mark.parametrize("text", ["NaN", "sNaN", "Infinity", "-Infinity"])
def test_what_is_no_number_is_no_money(text):
    with pytest.raises(ValueError, match="takes money, which"):
        OrderItem().Price = Decimal(text)


@pytest.mark.parametrize("given", [12.5, True, "12.5", None, b"1"])
def test_other_types_are_no_money(given):
    with pytest.raises(TypeError, match="OrderItem.Price takes a decimal.Decimal or an int for money, not"):
        OrderItem().Price = given


def test_the_refusal_of_a_float_says_what_to_write():
    with pytest.raises(TypeError, match=r"a float is not exact, write Decimal\('12.50'\)"):
        OrderItem().Price = 12.5


def test_integers():
    class Index:
        def __index__(self):
            return 7

    item = OrderItem()
    for given, kept in ((-(2**31), -(2**31)), (2**31 - 1, 2**31 - 1), (Index(), 7)):
        item.Quantity = given
        assert item.Quantity == kept
    for given in (2**31, -(2**31) - 1, 2**40):
        with pytest.raises(OverflowError, match=f"OrderItem.Quantity takes an int of 32 bits, which {given} is not$"):
            item.Quantity = given
    for given in (10**30, 10**5000, -(10**5000)):
        with pytest.raises(OverflowError, match="OrderItem.Quantity takes an int of 32 bits$"):
            item.Quantity = given
    for given in (1.0, "1", None, True, Decimal(1)):
        with pytest.raises(TypeError, match="OrderItem.Quantity takes an int, not"):
            item.Quantity = given
    assert item.Quantity == 7


def test_booleans():
    item = OrderItem()
    item.IsTaxable = True
    assert item.IsTaxable is True
    item.IsTaxable = False
    assert item.IsTaxable is False
    for given in (1, 0, "True", None):
        with pytest.raises(TypeError, match="OrderItem.IsTaxable takes a bool, not"):
            item.IsTaxable = given


@pytest.mark.parametrize("text", ["", "Zoë O'Hara", "雪 \U0001f6e0", "a\0b", "\n\t", "x" * 100_000])
def test_texts_come_back_as_they_were_given(text):
    item = OrderItem()
    item.Description = text
    assert item.Description == text


def test_half_a_surrogate_pair_is_refused():
    item = OrderItem()
    item.Description = "whole"
    with pytest.raises(ValueError, match=r"OrderItem.Description takes a text .* '\\ud800' at index 2"):
        item.Description = "ab\ud800"
    assert item.Description == "whole"
    with pytest.raises(ValueError, match="half a surrogate pair"):
        qm_ordering.OrderItems().Add(item, "\udfff")


@pytest.mark.parametrize("given", [b"bytes", 1, None])
def test_other_types_are_no_text(given):
    with pytest.raises(TypeError, match="OrderItem.Description takes a str, not"):
        OrderItem().Description = given


def test_dates():
    order = OrderDetails()
    assert order.SubmitDate is None
    order.SubmitDate = datetime.datetime(2003, 7, 4, 15, 4, 5)
    assert order.SubmitDate == datetime.datetime(2003, 7, 4, 15, 4, 5)
    order.SubmitDate = datetime.date(100, 1, 1)
    assert order.SubmitDate == datetime.datetime(100, 1, 1)
    order.SubmitDate = datetime.date(9999, 12, 31)
    assert order.SubmitDate == datetime.datetime(9999, 12, 31)
    order.SubmitDate = datetime.datetime(1899, 12, 30, 15, 4)
    assert order.SubmitDate == datetime.datetime(1899, 12, 30, 15, 4)


def test_none_is_the_zero_date():
    order = OrderDetails()
    order.SubmitDate = datetime.date(2003, 7, 4)
    order.SubmitDate = None
    assert order.SubmitDate is None
    order.SubmitDate = datetime.datetime(1899, 12, 30)
    assert order.SubmitDate is None


def test_dates_that_are_refused():
    order = OrderDetails()
    order.SubmitDate = before = datetime.datetime(2003, 7, 4)
    aware = datetime.datetime(2003, 7, 4, tzinfo=datetime.timezone.utc)
    with pytest.raises(ValueError, match="OrderDetails.SubmitDate takes a time as the user's clock shows it"):
        order.SubmitDate = aware
    with pytest.raises(ValueError, match=r"to the second, .* write value.replace\(microsecond=0\)"):
        order.SubmitDate = datetime.datetime(2003, 7, 4, 1, 2, 3, 4)
    for given in (datetime.date(1, 1, 1), datetime.datetime(50, 1, 1), datetime.date(99, 12, 31)):
        with pytest.raises(ValueError, match=f"takes a date from the year 100 on, which {given} is not$"):
            order.SubmitDate = given
    for given in ("2003-07-04", 0, datetime.time(1, 2), datetime.timedelta(1)):
        with pytest.raises(TypeError, match="takes a datetime.datetime, a datetime.date or None, not"):
            order.SubmitDate = given
    assert order.SubmitDate == before


def test_references():
    previous = qm_ordering.PreviousOrder()
    own = OrderDetails()
    previous.OrderDetails = own
    assert previous.OrderDetails is own
    previous.OrderDetails = None
    assert previous.OrderDetails is None
    with pytest.raises(TypeError, match="takes an object of the class OrderDetails or None, not OrderItem"):
        previous.OrderDetails = OrderItem()
    with pytest.raises(QMFailure) as raised:
        previous.OrderID = 1
    assert raised.value.number == 91


def test_values_of_any_kind():
    items = qm_ordering.OrderItems()
    item = OrderItem()
    items.Add(item, "A")
    assert items.Item("a") is item
    assert items.Item(1) is item
    assert items.Item(0.5) is None
    assert items.Item(1.5) is None
    assert items.Item(0.75) is item
    assert items.Item(Decimal("1.25")) is item
    for key in (2, "B", None, True, item, datetime.date(2003, 7, 4)):
        assert items.Item(key) is None
    for key in (b"A", object(), [1], datetime.timedelta(1)):
        with pytest.raises(TypeError, match="OrderItems.Item: vvKey takes None, a bool, an int"):
            items.Item(key)


def test_no_value_for_an_argument_that_may_be_left_out():
    list_ = qm_ordering.PersonalList()
    for arguments, keywords in (((), {}), ((None,), {}), ((), {"vvListID": None})):
        list_.LoadSummary(*arguments, **keywords)
        assert list_.Error.Number == 9
    list_.LoadSummary("no number")
    assert list_.Error.Number == 10
