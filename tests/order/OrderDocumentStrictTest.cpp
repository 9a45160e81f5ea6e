#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "qm_ordering/foundation/Strings.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/OrderFields.h"
#include "tests/support/StrictXml.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::OrderDetails;
using qm_ordering::OrderItem;
using test::XmlElement;

// Every character that an XML document can hold, in the order of their codes.
std::vector<std::string> AllCharacters() {
  std::vector<std::string> all = {"\t", "\n", "\r"};
  const auto lByte = [](int lvBits) { return static_cast<char>(lvBits); };
  for (int lCode = 0x20; lCode <= 0x10FFFF; ++lCode) {
    if ((lCode >= 0xD800 && lCode <= 0xDFFF) || lCode == 0xFFFE || lCode == 0xFFFF) {
      continue;
    }
    if (lCode < 0x80) {
      all.push_back({lByte(lCode)});
    } else if (lCode < 0x800) {
      all.push_back({lByte(0xC0 | lCode >> 6), lByte(0x80 | (lCode & 0x3F))});
    } else if (lCode < 0x10000) {
      all.push_back(
          {lByte(0xE0 | lCode >> 12), lByte(0x80 | (lCode >> 6 & 0x3F)), lByte(0x80 | (lCode & 0x3F))});
    } else {
      all.push_back({lByte(0xF0 | lCode >> 18), lByte(0x80 | (lCode >> 12 & 0x3F)),
                     lByte(0x80 | (lCode >> 6 & 0x3F)), lByte(0x80 | (lCode & 0x3F))});
    }
  }
  return all;
}

// The texts that break careless writers.
constexpr const char* kWorst[] = {"O'Brien \"& Sons\" <b>&amp;&#0;</b> ]]> <!-- --> <?x?> <![CDATA[",
                                  "  blanks at both ends  ",
                                  "\ttab\t\nline\r\nline\rend\n\n",
                                  "\xF0\x9F\x9B\x92 \xF0\xA0\x80\x80 \xF4\x8F\xBF\xBD",
                                  "",
                                  "&",
                                  "\"'<>",
                                  "e\xCC\x81 \xC3\xA9 \xEF\xBB\xBF \xE2\x80\xA8 \xC2\x85"};

std::string Worst(std::size_t lvIndex) {
  return kWorst[lvIndex % std::size(kWorst)];
}

// An order of many lines through the store into its document, and from the document by a strict parser back
// to the very values.
class OrderDocumentStrict : public test::OrderFixture {
 protected:
  static std::shared_ptr<OrderItem> WorstItem(std::size_t lvLine, const std::string& zvNotes) {
    auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber(Worst(lvLine) + std::to_string(lvLine));
    oItem->Quantity(static_cast<std::int32_t>(lvLine % 7) * 1000 - 3000);
    oItem->Price(Currency::FromScaled(static_cast<std::int64_t>(lvLine) * 123457 - 500000000));
    oItem->SellQuantity(static_cast<std::int32_t>(lvLine % 3) + 1);
    oItem->ShipQuantity(static_cast<std::int32_t>(lvLine % 4) + 1);
    oItem->Description(Worst(lvLine + 1));
    oItem->Manufacturer(Worst(lvLine + 2));
    oItem->Model(Worst(lvLine + 3));
    oItem->UsuallyShips(lvLine % 2 == 0 ? "\t<1-3> & \"DAYS\"\r\n" : " TODAY ");
    oItem->CustomerPartNumber(Worst(lvLine + 4));
    oItem->CustomerNotes(zvNotes);
    oItem->IsTaxable(lvLine % 2 == 0);
    oItem->IsPriceModified(lvLine % 3 == 0);
    oItem->HasNotes(lvLine % 5 == 0);
    oItem->HasPartsInfo(lvLine % 7 == 0);
    return oItem;
  }

  static std::map<std::string, std::string> Expected(const OrderItem& item, std::int32_t lvDeliveryMethod) {
    const auto zFlag = [](bool bvFlag) { return std::string(bvFlag ? "1" : "0"); };
    const std::int32_t lPack = lvDeliveryMethod == 0 ? item.SellQuantity() : item.ShipQuantity();
    return {{"itemnumber", item.ItemNumber()},
            {"quantity", std::to_string(item.Quantity())},
            {"validquantity", zFlag(item.Quantity() % lPack == 0)},
            {"description", item.Description()},
            {"manufacturer", item.Manufacturer()},
            {"model", item.Model()},
            {"sellquantity", std::to_string(item.SellQuantity())},
            {"shipquantity", std::to_string(item.ShipQuantity())},
            {"usuallyships", item.UsuallyShips()},
            {"istaxable", zFlag(item.IsTaxable())},
            {"price", qm_ordering::text::AmountFormat().Text(item.Price())},
            {"extendedprice", qm_ordering::text::AmountFormat().Text(item.Price() * item.Quantity())},
            {"ispricemodified", zFlag(item.IsPriceModified())},
            {"customerpartnumber", item.CustomerPartNumber()},
            {"customernotes", item.CustomerNotes()},
            {"hasnotes", zFlag(item.HasNotes())},
            {"hascontractitem", "0"},
            {"haspartsinfo", zFlag(item.HasPartsInfo())}};
  }

  // So many lines that together hold every character in their notes.
  static std::vector<std::shared_ptr<OrderItem>> WorstItems(std::size_t lvLines) {
    const std::vector<std::string> characters = AllCharacters();
    const std::size_t lEach = characters.size() / lvLines + 1;
    std::vector<std::shared_ptr<OrderItem>> items;
    for (std::size_t lLine = 0; lLine < lvLines; ++lLine) {
      std::string zNotes;
      for (std::size_t l = lLine * lEach; l < std::min((lLine + 1) * lEach, characters.size()); ++l) {
        zNotes += characters[l];
      }
      items.push_back(WorstItem(lLine, zNotes));
    }
    return items;
  }

  static void FillWithWorst(OrderDetails& orOrder) {
    orOrder.DeliveryInformation()->DeliveryMethod(1);
    orOrder.DeliveryInformation()->Notes(Worst(0));
    orOrder.PurchaseOrderNumber(Worst(2));
    orOrder.OrderInformation()->Department(Worst(3));
    orOrder.PaymentInformation()->CreditCardDetails()->Comment1(Worst(7));
  }

  // Reads the document and compares all that FillWithWorst and the items have set.
  static void ExpectReadBack(const OrderDetails& order,
                             const std::vector<std::shared_ptr<OrderItem>>& items) {
    const XmlElement root = test::ReadStrictly(order.GetXML());
    EXPECT_EQ(root.Name, "order");
    EXPECT_EQ(root.Attributes.at("purchaseordernumber"), Worst(2));
    ASSERT_EQ(root.Children.size(), 4U);
    EXPECT_EQ(root.Children[0].Children.at(0).Attributes.at("comment1"), Worst(7));
    EXPECT_EQ(root.Children[1].Attributes.at("department"), Worst(3));
    EXPECT_EQ(root.Children[2].Attributes.at("notes"), Worst(0));
    const std::vector<XmlElement>& lines = root.Children[3].Children;
    ASSERT_EQ(lines.size(), items.size());
    Currency cTotal;
    for (std::size_t lLine = 0; lLine < items.size(); ++lLine) {
      EXPECT_EQ(lines[lLine].Name, "orderitem");
      ASSERT_EQ(lines[lLine].Attributes, Expected(*items[lLine], 1)) << "line " << lLine;
      cTotal += items[lLine]->Price() * items[lLine]->Quantity();
    }
    EXPECT_EQ(root.Attributes.at("totalprice"), qm_ordering::text::AmountFormat().Text(cTotal));
  }

  test::EnvironmentScope m_oLocale{"LC_ALL", "C"};
};

TEST_F(OrderDocumentStrict, BringsEveryCharacterAndTheWorstTextsBackFrom300LinesThroughTheStore) {
  const auto items = WorstItems(300);
  const auto oOrder = LoadCurrent();
  FillWithWorst(*oOrder);
  oOrder->SaveSummary();
  ASSERT_EQ(oOrder->Error().Number, 0) << oOrder->Error().Description;
  for (const auto& oItem : items) {
    oOrder->AddItem(oItem);
    ASSERT_EQ(oOrder->Error().Number, 0) << oOrder->Error().Description;
  }
  const auto oLoaded = LoadCurrent();
  oLoaded->LoadItems(0, true, true);
  ExpectReadBack(*oLoaded, items);
}

TEST_F(OrderDocumentStrict, BringsEveryCharacterAndTheWorstTextsBackFrom10000Lines) {
  const auto items = WorstItems(10000);
  const auto oOrder = LoadCurrent();
  FillWithWorst(*oOrder);
  Currency cTotal;
  for (const auto& oItem : items) {
    oItem->ExtendedPrice(oItem->Price() * oItem->Quantity());
    oItem->Validate(oOrder->DeliveryInformation()->DeliveryMethod());
    oOrder->OrderItems()->Add(oItem, oItem->ItemNumber());
    cTotal += oItem->ExtendedPrice();
  }
  oOrder->TotalPrice(cTotal);
  ExpectReadBack(*oOrder, items);
}

TEST_F(OrderDocumentStrict, HoldsTheLinesAsTheirOwnTextsParsedAndGraftedWouldBe) {
  const auto oOrder = LoadCurrent();
  std::string zGrafted = "<orderitems>";
  for (const auto& oItem : WorstItems(300)) {
    oOrder->OrderItems()->Add(oItem, oItem->ItemNumber());
    zGrafted += qm_ordering::SelectElement(oItem->GetXML(), "orderitem").XML();
  }
  EXPECT_NE(oOrder->GetXML().find(zGrafted + "</orderitems>"), std::string::npos);
}

TEST_F(OrderDocumentStrict, IsReadByAParserThatRefusesWhatIsNotXML) {
  EXPECT_EQ(test::ReadStrictly("<a b=\"&lt;&#x9;'\"><c/></a>").Attributes.at("b"), "<\t'");
  for (const char* zBad : {"<a b=\"\x01\"/>", "<a b=\"\xC3\"/>", "<a b=\"<\"/>", "<a/><b/>", ""}) {
    EXPECT_THROW(test::ReadStrictly(zBad), std::runtime_error) << zBad;
  }
}

}  // namespace
