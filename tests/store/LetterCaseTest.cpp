#include <gtest/gtest.h>

#include "tests/store/DatabaseFixture.h"

// Item and part numbers are the same without regard to letter case, by the rule by which collections have
// their keys.

namespace {

using qm_ordering::OrderItems;
using test::Item;
using test::Line;
using test::Money;
using test::Rows;

using Pairs = std::vector<std::pair<std::string, std::string>>;

const Pairs kSame = {
    {"A-1", "a-1"},
    {"\xC3\x89-1", "\xC3\xA9-1"},              // É é
    {"\xCE\xA9", "\xCF\x89"},                  // Ω ω
    {"\xD0\xAF\xD0\x96", "\xD1\x8F\xD0\xB6"},  // ЯЖ яж
    {"\xC3\x9F", "\xE1\xBA\x9E"},              // ß ẞ
    {"\xCF\x83", "\xCF\x82"},                  // σ ς
    {"k", "\xE2\x84\xAA"},                     // k K (kelvin)
    {"\xF0\x90\x90\x80", "\xF0\x90\x90\xA8"},  // two letters beyond the first plane
    {"\xEF\xBC\xA1", "\xEF\xBD\x81"},          // Ａ ａ
    {std::string("A\0b", 3), std::string("a\0B", 3)},
};

const Pairs kDifferent = {
    {"stra\u00DFe", "strasse"},
    {"\xC3\x9F", "ss"},
    {"\xC3\x9F", "SS"},
    {"e", "\xC3\xA9"},
    {"\xC3\xA9", "e\xCC\x81"},  // é in one character and in two
    {"A", "A "},
    {"A", " A"},
    {"A-1", "A1"},
    {"1", "01"},
    {"\xEF\xAC\x81", "fi"},  // ﬁ
    {"A", std::string("A\0", 2)},
    {"", std::string(1, '\0')},
};

class LetterCase : public test::DatabaseFixture {
 protected:
  LetterCase() {
    AddOrder(7);
    AddOrder(12, true);
  }

  // Stores the line of order 12 that the test is about.
  void Add(const std::string& zvItemNumber) {
    Store.Run("delete from tblOrderItem");
    Line line;
    line.ItemNumber = zvItemNumber;
    line.Quantity = 5;
    AddItem(Database, line);
    ASSERT_EQ("0 ", Recorded());
  }

  std::string Lines() const {
    const Rows rows = Store.Query("select lQuantity from tblOrderItem");
    return rows.empty() ? "none" : rows.front().front();
  }
};

TEST_F(LetterCase, EveryStatementFindsALineByItsNumberInOtherLetters) {
  for (const auto& [zStored, zAsked] : kSame) {
    SCOPED_TRACE(zStored + " " + zAsked);
    Add(zStored);
    EXPECT_TRUE(Database.OrderDetails_ItemExists(12, zAsked));
    EXPECT_EQ(5, Database.OrderDetails_GetQuantity(12, zAsked));

    Line line;
    line.ItemNumber = zAsked;
    AddItem(Database, line);
    EXPECT_EQ("4 Order not loaded", Recorded());
    EXPECT_EQ(1, Database.OrderDetails_ItemCount(12));

    Database.OrderDetails_IncrementQuantity(12, zAsked, 3, Money("1"), Money("3"));
    EXPECT_EQ("3", Lines());
    Database.OrderDetails_UpdateItem(zAsked, 4, Money("1"), Money("4"), false, false);
    EXPECT_EQ("4", Lines());
    OrderItems written;
    written.Add(Item(zAsked, 6), zAsked);
    Database.OrderDetails_UpdateItems(12, written);
    EXPECT_EQ("6", Lines());
    Database.UpdateCustPartInfo({zAsked}, {"P"}, {"N"}, 12);
    EXPECT_EQ("N", Store.Value("select zCustomerNotes from tblOrderItem"));

    OrderItems removed;
    removed.Add(Item(zAsked, 0), zAsked);
    Database.OrderDetails_UpdateItems(12, removed);
    EXPECT_EQ("none", Lines());

    Add(zStored);
    Database.OrderItem_RemoveItem(12, zAsked);
    EXPECT_EQ("none", Lines());
  }
}

TEST_F(LetterCase, NoStatementTakesADifferentNumberForTheLines) {
  for (const auto& [zStored, zAsked] : kDifferent) {
    SCOPED_TRACE(zStored + " " + zAsked);
    Add(zStored);
    EXPECT_FALSE(Database.OrderDetails_ItemExists(12, zAsked));
    EXPECT_EQ(std::nullopt, Database.OrderDetails_GetQuantity(12, zAsked));

    const Rows before = Store.Everything();
    Database.OrderDetails_IncrementQuantity(12, zAsked, 3, Money("1"), Money("3"));
    Database.OrderDetails_UpdateItem(zAsked, 4, Money("1"), Money("4"), false, false);
    OrderItems items;
    items.Add(Item(zAsked, 6), zAsked);
    Database.OrderDetails_UpdateItems(12, items);
    OrderItems removed;
    removed.Add(Item(zAsked, 0), zAsked);
    Database.OrderDetails_UpdateItems(12, removed);
    Database.UpdateCustPartInfo({zAsked}, {"P"}, {"N"}, 12);
    Database.OrderItem_RemoveItem(12, zAsked);
    EXPECT_EQ(before, Store.Everything());

    Line line;
    line.ItemNumber = zAsked;
    AddItem(Database, line);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_EQ(2, Database.OrderDetails_ItemCount(12));
  }
}

TEST_F(LetterCase, StoreAndCollectionAgreeOnWhichNumbersAreTheSame) {
  for (const Pairs& pairs : {kSame, kDifferent}) {
    for (const auto& [zStored, zAsked] : pairs) {
      Add(zStored);
      OrderItems items;
      items.Add(Item(zStored, 5), zStored);
      EXPECT_EQ(items.Item(zAsked) != nullptr, Database.OrderDetails_ItemExists(12, zAsked))
          << zStored << " " << zAsked;
    }
  }
}

TEST_F(LetterCase, ALineKeepsTheLettersInWhichItWasAdded) {
  Add("\xC3\x89-1a");
  Database.OrderDetails_IncrementQuantity(12, "\xC3\xA9-1A", 3, Money("1"), Money("3"));
  EXPECT_EQ("\xC3\x89-1a", Store.Value("select zItemNumber from tblOrderItem"));
}

TEST_F(LetterCase, PartNumbersAreFoundInOtherLettersToo) {
  for (const auto& [zStored, zAsked] : kSame) {
    Add("A");
    Database.UpdateCustPartInfo({"A"}, {zStored}, {"N"}, 12);
    Database.deleteCustPartInfo({zAsked}, 12);
    EXPECT_EQ("", Store.Value("select zCustomerNotes from tblOrderItem")) << zStored << " " << zAsked;
  }
  for (const auto& [zStored, zAsked] : kDifferent) {
    Add("A");
    Database.UpdateCustPartInfo({"A"}, {zStored}, {"N"}, 12);
    Database.deleteCustPartInfo({zAsked}, 12);
    EXPECT_EQ("N", Store.Value("select zCustomerNotes from tblOrderItem")) << zStored << " " << zAsked;
  }
}

}  // namespace
