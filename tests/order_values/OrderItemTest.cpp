#include "qm_ordering/order/OrderItem.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "qm_ordering/order/LibraryAccess.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/xml/Document.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemorySettings.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::Failure;
using qm_ordering::OrderItem;
using test::FailureOf;

constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

class OrderItemTest : public testing::Test {
 protected:
  // The answer of Validate on an item with these quantities.
  static bool IsValid(std::int32_t lvQuantity, std::int32_t lvPack) {
    OrderItem item;
    item.Quantity(lvQuantity);
    item.SellQuantity(lvPack);
    const bool bValid = item.Validate(0);
    EXPECT_EQ(item.ValidQuantity(), bValid);
    return bValid;
  }

  test::SettingsScope m_oSettings;
  test::EnvironmentScope m_oLocale{"LC_ALL", "C"};
};

TEST_F(OrderItemTest, IsEmptyAndValidWhenNew) {
  const OrderItem item;
  EXPECT_STREQ(item.ClassName(), "OrderItem");
  EXPECT_EQ(item.OrderID(), 0);
  EXPECT_EQ(item.ItemNumber(), "");
  EXPECT_EQ(item.Quantity(), 0);
  EXPECT_EQ(item.Description(), "");
  EXPECT_EQ(item.ShortDescription(), "");
  EXPECT_EQ(item.Manufacturer(), "");
  EXPECT_EQ(item.Model(), "");
  EXPECT_EQ(item.ShipQuantity(), 0);
  EXPECT_EQ(item.SellQuantity(), 0);
  EXPECT_EQ(item.UsuallyShips(), "");
  EXPECT_FALSE(item.IsTaxable());
  EXPECT_EQ(item.Price(), Currency());
  EXPECT_EQ(item.ExtendedPrice(), Currency());
  EXPECT_FALSE(item.IsPriceModified());
  EXPECT_EQ(item.CustomerPartNumber(), "");
  EXPECT_EQ(item.CustomerNotes(), "");
  EXPECT_FALSE(item.HasContractItem());
  EXPECT_FALSE(item.HasNotes());
  EXPECT_FALSE(item.HasPartsInfo());
  EXPECT_EQ(item.Error().Number, 0);
  EXPECT_EQ(item.Error().Description, "");
  EXPECT_TRUE(item.ValidQuantity());
  EXPECT_FALSE(item.Imported());
}

TEST_F(OrderItemTest, KeepsWhatItIsGivenInEachField) {
  OrderItem item;
  item.OrderID(-1);
  item.ItemNumber(" 1A234 ");
  item.Quantity(kSmallest);
  item.Description(std::string("de\0scription", 12));
  item.ShortDescription("short");
  item.Manufacturer("manufacturer");
  item.Model("model");
  item.ShipQuantity(kLargest);
  item.SellQuantity(-7);
  item.UsuallyShips("SPECIAL ORDER");
  item.Price(Currency::FromScaled(-1));
  item.ExtendedPrice(Currency::FromScaled(std::numeric_limits<std::int64_t>::max()));
  item.CustomerPartNumber("part");
  item.CustomerNotes("\xFF");
  EXPECT_EQ(item.OrderID(), -1);
  EXPECT_EQ(item.ItemNumber(), " 1A234 ");
  EXPECT_EQ(item.Quantity(), kSmallest);
  EXPECT_EQ(item.Description(), std::string("de\0scription", 12));
  EXPECT_EQ(item.ShortDescription(), "short");
  EXPECT_EQ(item.Manufacturer(), "manufacturer");
  EXPECT_EQ(item.Model(), "model");
  EXPECT_EQ(item.ShipQuantity(), kLargest);
  EXPECT_EQ(item.SellQuantity(), -7);
  EXPECT_EQ(item.UsuallyShips(), "SPECIAL ORDER");
  EXPECT_EQ(item.Price(), Currency::FromScaled(-1));
  EXPECT_EQ(item.ExtendedPrice(), Currency::FromScaled(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ(item.CustomerPartNumber(), "part");
  EXPECT_EQ(item.CustomerNotes(), "\xFF");
}

TEST_F(OrderItemTest, KeepsItsFlagsApart) {
  OrderItem item;
  item.IsTaxable(true);
  EXPECT_TRUE(item.IsTaxable());
  EXPECT_FALSE(item.IsPriceModified() || item.HasContractItem() || item.HasNotes() || item.HasPartsInfo());
  item.IsTaxable(false);
  item.IsPriceModified(true);
  EXPECT_TRUE(item.IsPriceModified());
  EXPECT_FALSE(item.IsTaxable() || item.HasContractItem() || item.HasNotes() || item.HasPartsInfo());
  item.IsPriceModified(false);
  item.HasContractItem(true);
  EXPECT_TRUE(item.HasContractItem());
  EXPECT_FALSE(item.IsTaxable() || item.IsPriceModified() || item.HasNotes() || item.HasPartsInfo());
  item.HasContractItem(false);
  item.HasNotes(true);
  EXPECT_TRUE(item.HasNotes());
  EXPECT_FALSE(item.IsTaxable() || item.IsPriceModified() || item.HasContractItem() || item.HasPartsInfo());
  item.HasNotes(false);
  item.HasPartsInfo(true);
  EXPECT_TRUE(item.HasPartsInfo());
  EXPECT_FALSE(item.IsTaxable() || item.IsPriceModified() || item.HasContractItem() || item.HasNotes());
}

TEST_F(OrderItemTest, IsMarkedAsImportedByTheLibraryAlone) {
  OrderItem item;
  qm_ordering::LibraryAccess::Imported(item, true);
  EXPECT_TRUE(item.Imported());
  qm_ordering::LibraryAccess::Imported(item, false);
  EXPECT_FALSE(item.Imported());
}

TEST_F(OrderItemTest, KeepsAnExtendedPriceThatIsNotPriceTimesQuantity) {
  OrderItem item;
  item.Quantity(3);
  item.Price(Currency::Parse("2"));
  item.ExtendedPrice(Currency::Parse("7.77"));
  item.Quantity(4);
  item.Price(Currency::Parse("3"));
  EXPECT_EQ(item.ExtendedPrice(), Currency::Parse("7.77"));
}

TEST_F(OrderItemTest, ChecksSellPacksForCollectionAndShipPacksForDelivery) {
  OrderItem item;
  item.Quantity(12);
  item.SellQuantity(5);
  item.ShipQuantity(4);
  EXPECT_FALSE(item.Validate(0));
  EXPECT_FALSE(item.ValidQuantity());
  EXPECT_TRUE(item.Validate(2));
  EXPECT_TRUE(item.ValidQuantity());
  EXPECT_TRUE(item.Validate(1));
  EXPECT_TRUE(item.Validate(-1));
  EXPECT_FALSE(item.Validate(0));
}

TEST_F(OrderItemTest, IsValidWithAQuantityOfZeroWhateverThePackSize) {
  for (const std::int32_t lPack : {1, 2, 1000, kLargest, -1, -3, kSmallest}) {
    EXPECT_TRUE(IsValid(0, lPack)) << lPack;
  }
}

TEST_F(OrderItemTest, IsValidWithANegativeMultipleOfThePackSize) {
  EXPECT_TRUE(IsValid(-10, 5));
  EXPECT_FALSE(IsValid(-11, 5));
  EXPECT_TRUE(IsValid(10, -5));
  EXPECT_FALSE(IsValid(11, -5));
}

TEST_F(OrderItemTest, ChecksTheLimitsOfItsIntegers) {
  EXPECT_TRUE(IsValid(kSmallest, -1));
  EXPECT_TRUE(IsValid(kSmallest, 1));
  EXPECT_TRUE(IsValid(kSmallest, kSmallest));
  EXPECT_FALSE(IsValid(kSmallest, kLargest));
  EXPECT_FALSE(IsValid(kLargest, kSmallest));
  EXPECT_TRUE(IsValid(kLargest, kLargest));
}

TEST_F(OrderItemTest, FailsOnAPackSizeOfZeroAndKeepsItsLastAnswer) {
  OrderItem item;
  item.ItemNumber("1A234");
  item.Quantity(1);
  item.ShipQuantity(2);
  const Failure raised = FailureOf([&] { item.Validate(0); });
  EXPECT_EQ(raised.Number(), qm_ordering::failure::kDivisionByZero);
  EXPECT_NE(raised.Description().find("1A234"), std::string::npos) << raised.Description();
  EXPECT_TRUE(item.ValidQuantity());
  EXPECT_FALSE(item.Validate(1));
  EXPECT_EQ(FailureOf([&] { item.Validate(0); }).Number(), qm_ordering::failure::kDivisionByZero);
  EXPECT_FALSE(item.ValidQuantity());
  item.SellQuantity(1);
  item.ShipQuantity(0);
  EXPECT_EQ(FailureOf([&] { item.Validate(1); }).Number(), qm_ordering::failure::kDivisionByZero);
  item.Quantity(0);
  EXPECT_EQ(FailureOf([&] { item.Validate(-1); }).Number(), qm_ordering::failure::kDivisionByZero);
  EXPECT_FALSE(item.ValidQuantity());
  EXPECT_EQ(item.Error().Number, 0);
}

TEST_F(OrderItemTest, KeepsItsLastAnswerWhenQuantitiesChange) {
  OrderItem item;
  item.Quantity(1);
  item.SellQuantity(2);
  item.ShipQuantity(2);
  EXPECT_TRUE(item.ValidQuantity());
  EXPECT_FALSE(item.Validate(0));
  item.Quantity(2);
  item.SellQuantity(1);
  item.ShipQuantity(1);
  EXPECT_FALSE(item.ValidQuantity());
  EXPECT_TRUE(item.Validate(0));
  EXPECT_TRUE(item.ValidQuantity());
}

TEST_F(OrderItemTest, WritesEveryAttributeWhenNew) {
  EXPECT_EQ(
      OrderItem().GetXML(),
      "<orderitem itemnumber=\"\" quantity=\"0\" validquantity=\"1\" description=\"\" manufacturer=\"\""
      " model=\"\" sellquantity=\"0\" shipquantity=\"0\" usuallyships=\"\" istaxable=\"0\" price=\"0.00\""
      " extendedprice=\"0.00\" ispricemodified=\"0\" customerpartnumber=\"\" customernotes=\"\""
      " hasnotes=\"0\" hascontractitem=\"0\" haspartsinfo=\"0\"/>");
}

TEST_F(OrderItemTest, WritesEveryAttributeInItsOrderWhenFilled) {
  OrderItem item;
  item.OrderID(99);
  item.ItemNumber("1A234");
  item.Quantity(-2147483647 - 1);
  item.Description("description");
  item.ShortDescription("unseen");
  item.Manufacturer("manufacturer");
  item.Model("model");
  item.ShipQuantity(2147483647);
  item.SellQuantity(1234);
  item.UsuallyShips("1-3 DAYS");
  item.IsTaxable(true);
  item.Price(Currency::Parse("1234.5"));
  item.ExtendedPrice(Currency::Parse("-9876543.215"));
  item.IsPriceModified(true);
  item.CustomerPartNumber("part");
  item.CustomerNotes("notes");
  item.HasContractItem(true);
  item.HasNotes(true);
  item.HasPartsInfo(true);
  qm_ordering::LibraryAccess::Imported(item, true);
  EXPECT_FALSE(item.Validate(0));
  EXPECT_EQ(item.GetXML(),
            "<orderitem itemnumber=\"1A234\" quantity=\"-2147483648\" validquantity=\"0\""
            " description=\"description\" manufacturer=\"manufacturer\" model=\"model\" sellquantity=\"1234\""
            " shipquantity=\"2147483647\" usuallyships=\"1-3 DAYS\" istaxable=\"1\" price=\"1,234.50\""
            " extendedprice=\"-9,876,543.22\" ispricemodified=\"1\" customerpartnumber=\"part\""
            " customernotes=\"notes\" hasnotes=\"1\" hascontractitem=\"1\" haspartsinfo=\"1\"/>");
}

TEST_F(OrderItemTest, WritesEachFlagUnderItsOwnName) {
  const auto Written = [](void (OrderItem::*pSet)(bool)) {
    OrderItem item;
    (item.*pSet)(true);
    const std::string zXML = item.GetXML();
    std::string zNames;
    for (const char* zName :
         {"istaxable", "ispricemodified", "hasnotes", "hascontractitem", "haspartsinfo"}) {
      if (zXML.find(std::string(" ") + zName + "=\"1\"") != std::string::npos) {
        zNames += zName;
      }
    }
    return zNames;
  };
  EXPECT_EQ(Written(&OrderItem::IsTaxable), "istaxable");
  EXPECT_EQ(Written(&OrderItem::IsPriceModified), "ispricemodified");
  EXPECT_EQ(Written(&OrderItem::HasNotes), "hasnotes");
  EXPECT_EQ(Written(&OrderItem::HasContractItem), "hascontractitem");
  EXPECT_EQ(Written(&OrderItem::HasPartsInfo), "haspartsinfo");
}

TEST_F(OrderItemTest, WritesTextsThatComeBackByteForByte) {
  const std::string zWorst = " \t<b c=\"d\">'&amp;'\r\n]]>\xC3\xA9\xF0\x9F\x94\xA7 ";
  OrderItem item;
  item.ItemNumber(zWorst);
  item.Description(zWorst);
  item.CustomerNotes(zWorst);
  qm_ordering::xml::Document document;
  ASSERT_TRUE(document.LoadXML(item.GetXML()));
  const qm_ordering::xml::Element element = document.SelectSingleNode("orderitem");
  EXPECT_EQ(element.Attribute("itemnumber"), zWorst);
  EXPECT_EQ(element.Attribute("description"), zWorst);
  EXPECT_EQ(element.Attribute("customernotes"), zWorst);
}

TEST_F(OrderItemTest, RaisesATextThatXMLCannotHold) {
  OrderItem item;
  item.CustomerNotes("bell \x07");
  const Failure raised = FailureOf([&] { (void)item.GetXML(); });
  EXPECT_EQ(raised.Number(), qm_ordering::failure::kXmlCharacter);
  EXPECT_NE(raised.Description().find("customernotes"), std::string::npos) << raised.Description();
  EXPECT_EQ(item.Error().Number, 0);
  // A text that is not written does no harm.
  item.CustomerNotes("");
  item.ShortDescription("\x07");
  EXPECT_EQ(FailureOf([&] { (void)item.GetXML(); }).Number(), 0);
}

}  // namespace
