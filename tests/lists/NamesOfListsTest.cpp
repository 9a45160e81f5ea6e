#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/lists/PersonalList.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/StrictXml.h"

// Names of lists and item numbers as users type them, each with every member that takes or gives one.

namespace {

using qm_ordering::ClearLastFailure;
using qm_ordering::LastFailure;
using qm_ordering::OrderItem;
using qm_ordering::PersonalList;
using qm_ordering::PersonalLists;
using test::RaisedNumber;
using test::Rows;
using Texts = std::vector<std::string>;
using Pairs = std::vector<std::pair<std::string, std::string>>;
namespace failure = qm_ordering::failure;

std::string Repeated(const std::string& zvText, int lvTimes) {
  std::string zAll;
  for (int l = 0; l < lvTimes; ++l) {
    zAll += zvText;
  }
  return zAll;
}

// No two of them are the same without regard to letter case.
const Texts& Names() {
  static const Texts texts = {
      "Tools",
      // quotes, and what means something to a statement
      "Bob's list",
      "'",
      "''",
      "a''b",
      "'; delete from tblPersonalList; --",
      "x' or 'a'='a",
      "A-1') or ('a'='a",
      "100%",
      "_%*?[a-z]#",
      "-- a",
      "/* a */",
      "a;b;",
      ")",
      "\\",
      "C:\\new\\",
      "null",
      "True",
      "1 = 1",
      "007",
      "7",
      "1e2",
      "12345 DUP2",
      // what means something to XML
      "<b>&amp;</b>",
      "]]>",
      "<!-- a -->",
      "\"quoted\" & 'quoted'",
      "&#39;",
      // letters
      "\u00C9lite",
      "e\u0301lite",
      "Stra\u00DFe",
      "STRASSE",
      "\u0416\u0443\u043A",
      "\u6771\u4EAC\u306E\u9053\u5177",
      "\u05E9\u05DC\u05D5\u05DD \u202Ertl\u202C",
      "\u2019",
      "\uFF07",
      "\u00A0",
      "\uFEFFmark",
      "\u0085\u2028\u2029",
      "\x7F\u0080\u009F",
      "\uFFFD",
      "\U0010FFFF",
      // blanks
      "",
      " ",
      "   ",
      " leading",
      "trailing ",
      "inner  two",
      "\t",
      "tab\tbed",
      "line\nbreak",
      "line\r\nbreak\r",
      "\n",
      // emoji
      "\U0001F527",
      "\U0001F469\u200D\U0001F527 \U0001F1EE\U0001F1EA \U0001F44D\U0001F3FD",
      // long ones
      Repeated("x", 255),
      Repeated("x", 256),
      Repeated("Bob's ", 400),
      Repeated("\u00E9", 255),
      Repeated("\U0001F527", 256),
      Repeated("long & \"quoted\" \u00E9\U0001F527 ", 4000),
  };
  return texts;
}

// The same text but for the case of its letters.
const Pairs kSame = {
    {"Tools", "TOOLS"},
    {"\u00C9lite", "\u00E9LITE"},
    {"Bob's \u00C4\u00D1 list", "bOB'S \u00E4\u00F1 LIST"},
    {"\u0416\u0443\u043A", "\u0436\u0423\u041A"},
    {"\u03A9", "\u03C9"},
    {"stra\u00DFe", "STRA\u1E9EE"},
    {" two  blanks ", " TWO  BLANKS "},
    {Repeated("\u00C9'", 300), Repeated("\u00E9'", 300)},
};

const Pairs kDifferent = {
    {"\u00C9lite", "Elite"},
    {"\u00E9", "e\u0301"},
    {"Tools", "Tools "},
    {"Tools", " Tools"},
    {"two blanks", "two  blanks"},
    {"a b", "a\u00A0b"},
    {"stra\u00DFe", "strasse"},
    {"Bob's", "Bobs"},
    {"Bob's", "Bob''s"},
    {"'", "''"},
    {"", " "},
    {" ", "  "},
    {"1", "01"},
    {Repeated("x", 255), Repeated("x", 256)},
    {Repeated("x", 255) + "a", Repeated("x", 255) + "b"},
    {"a%", "ab"},
};

const Texts kNotXML = {
    "\x01",     "bell\x07", "\x0B", "\x1F", "a\uFFFE", "\uFFFF", std::string("a\0b", 3), std::string(1, '\0'),
    "Bob\x1Bs",
};

const Texts kNotUTF8 = {
    "\xFF",
    "a\xC3",             // ends within a character
    "\x80",              // begins within one
    "\xC9lite",          // of another encoding
    "\xC0\x80",          // a zero byte in a longer form
    "\xED\xA0\x80",      // half of a pair
    "\xF4\x90\x80\x80",  // beyond the last plane
    "Bob's \xFF",
};

std::string Shown(const std::string& zvText) {
  return std::to_string(zvText.size()) + " bytes: " + zvText.substr(0, 60);
}

class NamesOfLists : public test::StoreFixture {
 protected:
  static std::shared_ptr<OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity) {
    auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber(zvItemNumber);
    oItem->Quantity(lvQuantity);
    oItem->Description("of " + zvItemNumber);
    return oItem;
  }

  // Adds by a list object of its own; answers number and text of its record.
  static std::string Add(std::int32_t lvListID, const std::string& zvItemNumber, std::int32_t lvQuantity) {
    PersonalList list;
    list.AddItem(NewItem(zvItemNumber, lvQuantity), lvListID);
    return std::to_string(list.Error().Number) + " " + list.Error().Description;
  }

  // The stored lists by id, their names as the bytes that they are.
  Rows Lists() const {
    return Store.Query("select lListID, cast(zName as blob) from tblPersonalList order by lListID");
  }

  Rows Lines() const {
    return Store.Query(
        "select lListID, cast(zItemNumber as blob), lQuantity from tblPersonalListItem order by "
        "lListEntered");
  }

  void Clear() const { Store.Run("delete from tblPersonalListItem; delete from tblPersonalList"); }

  std::string File() const { return Folder.File("PersonalLists.xml"); }

  // Writes the file by a fresh object; answers the number of the failure that this swallowed.
  static std::int32_t Save() {
    PersonalLists lists;
    lists.LoadLists();
    ClearLastFailure();
    lists.SaveAsXML();
    return LastFailure().Number;
  }

  PersonalLists All;
};

TEST_F(NamesOfLists, EveryNameIsCreatedFoundShownAndRemovedByEveryMember) {
  All.CreateList("another");
  for (const std::string& zName : Names()) {
    SCOPED_TRACE(Shown(zName));
    ClearLastFailure();
    const Rows before = Lists();
    EXPECT_FALSE(All.ListExists(zName));
    const std::int32_t lListID = All.CreateList(zName);
    ASSERT_NE(0, lListID);
    EXPECT_EQ((Rows{before.front(), {std::to_string(lListID), zName}}), Lists());
    EXPECT_TRUE(All.ListExists(zName));
    EXPECT_EQ(zName, All.GetName(lListID));
    PersonalList list;
    list.LoadSummary(lListID);
    EXPECT_EQ(zName, list.Name());
    PersonalLists loaded;
    loaded.LoadLists();
    EXPECT_EQ(2, loaded.Count());
    EXPECT_EQ(zName, loaded.Item(lListID)->Name());

    EXPECT_EQ("0 ", Add(lListID, "A-1", 2));
    const std::int32_t lAgain = All.CreateList(zName);
    EXPECT_GT(lAgain, lListID) << "replaces the list of that name";
    EXPECT_EQ((Rows{before.front(), {std::to_string(lAgain), zName}}), Lists());
    EXPECT_EQ(Rows{}, Lines());

    EXPECT_EQ("0 ", Add(lAgain, "A-1", 2));
    EXPECT_TRUE(All.RemoveListByName(zName));
    EXPECT_EQ(before, Lists());
    EXPECT_EQ(Rows{}, Lines());
    EXPECT_FALSE(All.ListExists(zName));
    EXPECT_TRUE(All.RemoveListByName(zName)) << "none is there any more";

    const std::int32_t lThird = All.CreateList(zName);
    All.RemoveList(lThird);
    EXPECT_EQ("", All.GetName(lThird));
    EXPECT_EQ(before, Lists());
    EXPECT_EQ(0, LastFailure().Number) << LastFailure().Description;
  }
}

TEST_F(NamesOfLists, EveryNameIsGivenAndTakenAwayByRenaming) {
  const std::int32_t lListID = All.CreateList("before");
  EXPECT_EQ("0 ", Add(lListID, "A-1", 2));
  const std::int32_t lOther = All.CreateList("other");
  for (const std::string& zName : Names()) {
    SCOPED_TRACE(Shown(zName));
    ClearLastFailure();
    EXPECT_TRUE(All.RenameList(lListID, zName));
    EXPECT_EQ(zName, All.GetName(lListID));
    EXPECT_TRUE(All.ListExists(zName));
    EXPECT_FALSE(All.ListExists("before"));
    EXPECT_TRUE(All.RenameList(lListID, zName)) << "the name that it has";
    EXPECT_EQ(0, LastFailure().Number) << LastFailure().Description;

    EXPECT_FALSE(All.RenameList(lOther, zName)) << "another list has it";
    EXPECT_EQ(failure::kStoreCommand, LastFailure().Number);
    EXPECT_EQ("Database.PersonalLists_RenameList", LastFailure().Operation);
    EXPECT_EQ((Rows{{std::to_string(lListID), zName}, {std::to_string(lOther), "other"}}), Lists());

    EXPECT_TRUE(All.RenameList(lListID, "before"));
    EXPECT_FALSE(All.ListExists(zName));
    EXPECT_EQ((Rows{{std::to_string(lListID), "A-1", "2"}}), Lines());
  }
}

TEST_F(NamesOfLists, ANameInOtherLettersIsTheSameName) {
  for (const auto& [zName, zAsked] : kSame) {
    SCOPED_TRACE(Shown(zName));
    Clear();
    const std::int32_t lListID = All.CreateList(zName);
    EXPECT_TRUE(All.ListExists(zAsked));
    EXPECT_TRUE(All.RenameList(lListID, zAsked)) << "only the letters change";
    EXPECT_EQ(zAsked, All.GetName(lListID));
    const std::int32_t lOther = All.CreateList("other");
    EXPECT_FALSE(All.RenameList(lOther, zName));
    EXPECT_EQ("other", All.GetName(lOther));
    const std::int32_t lAgain = All.CreateList(zName);
    EXPECT_EQ((Rows{{std::to_string(lOther), "other"}, {std::to_string(lAgain), zName}}), Lists());
    EXPECT_TRUE(All.RemoveListByName(zAsked));
    EXPECT_EQ((Rows{{std::to_string(lOther), "other"}}), Lists());
  }
}

TEST_F(NamesOfLists, ADifferentNameIsAnotherList) {
  for (const auto& [zName, zAsked] : kDifferent) {
    SCOPED_TRACE(Shown(zName) + ", " + Shown(zAsked));
    Clear();
    const std::int32_t lListID = All.CreateList(zName);
    EXPECT_FALSE(All.ListExists(zAsked));
    EXPECT_TRUE(All.RemoveListByName(zAsked));
    EXPECT_EQ((Rows{{std::to_string(lListID), zName}}), Lists()) << "nothing of that name was removed";
    const std::int32_t lOther = All.CreateList(zAsked);
    EXPECT_EQ((Rows{{std::to_string(lListID), zName}, {std::to_string(lOther), zAsked}}), Lists());
    EXPECT_FALSE(All.RenameList(lOther, zName));
    EXPECT_TRUE(All.RemoveListByName(zName));
    EXPECT_EQ((Rows{{std::to_string(lOther), zAsked}}), Lists());
  }
}

TEST_F(NamesOfLists, EveryItemNumberIsAddedLoadedAndGoesWithItsList) {
  const std::int32_t lOther = All.CreateList("other");
  EXPECT_EQ("0 ", Add(lOther, "A-1", 1));
  const Rows before = Lines();
  for (const std::string& zNumber : Names()) {
    SCOPED_TRACE(Shown(zNumber));
    const std::int32_t lListID = All.CreateList("list");
    const std::string zListID = std::to_string(lListID);
    PersonalList list;
    list.AddItem(NewItem(zNumber, 5), lListID);
    EXPECT_EQ(0, list.Error().Number) << list.Error().Description;
    ASSERT_NE(nullptr, list.OrderItems()->Item(zNumber));
    EXPECT_EQ((Rows{before.front(), {zListID, zNumber, "5"}}), Lines());

    PersonalList loaded;
    loaded.LoadItems(lListID);
    ASSERT_EQ(1, loaded.OrderItems()->Count());
    const auto oLine = loaded.OrderItems()->Item(zNumber);
    ASSERT_NE(nullptr, oLine);
    EXPECT_EQ(zNumber, oLine->ItemNumber());
    EXPECT_EQ("of " + zNumber, oLine->Description());
    EXPECT_EQ(5, oLine->Quantity());

    All.RemoveList(lListID);
    EXPECT_EQ(before, Lines());
  }
}

// The statement that adds to a stored quantity takes the item number as it is: one with a quote fails it.
TEST_F(NamesOfLists, EveryItemNumberWithoutAQuoteIsAddedToAndAQuoteIsRefused) {
  int lRefused = 0;
  for (const std::string& zNumber : Names()) {
    SCOPED_TRACE(Shown(zNumber));
    Clear();
    const std::int32_t lListID = All.CreateList("list");
    const std::string zListID = std::to_string(lListID);
    EXPECT_EQ("0 ", Add(lListID, "another", 1));
    EXPECT_EQ("0 ", Add(lListID, zNumber, 5));
    PersonalList list;
    const auto oItem = NewItem(zNumber, 2);
    const std::int32_t lRaised = RaisedNumber([&] {
      list.AddItem(oItem, lListID);
      return 0;
    });
    EXPECT_EQ("0 ", std::to_string(list.Error().Number) + " " + list.Error().Description)
        << "adding to a quantity does not touch the record";
    EXPECT_EQ(lListID, oItem->OrderID());
    const bool bRefused = zNumber.find('\'') != std::string::npos;
    lRefused += bRefused ? 1 : 0;
    EXPECT_EQ(bRefused ? failure::kStoreCommand : 0, lRaised);
    EXPECT_EQ(bRefused ? 0 : 1, list.OrderItems()->Count());
    EXPECT_EQ((Rows{{zListID, "another", "1"}, {zListID, zNumber, bRefused ? "5" : "7"}}), Lines());
    EXPECT_EQ("0 ", Add(lListID, "after", 3)) << "the list goes on";
    EXPECT_EQ(3U, Lines().size());
  }
  EXPECT_GE(lRefused, 8) << "the names must try it";
}

// Of a line's texts, the shipping estimate alone stands in the statement as it is.
TEST_F(NamesOfLists, ALineTakesEveryTextButAShippingEstimateWithAQuote) {
  for (const std::string& zText : Names()) {
    SCOPED_TRACE(Shown(zText));
    Clear();
    const std::int32_t lListID = All.CreateList("list");
    const auto oItem = NewItem("A-1", 1);
    oItem->Description(zText);
    oItem->ShortDescription(zText);
    oItem->Manufacturer(zText);
    oItem->Model(zText);
    oItem->CustomerPartNumber(zText);
    oItem->CustomerNotes(zText);
    PersonalList list;
    list.AddItem(oItem, lListID);
    EXPECT_EQ(0, list.Error().Number) << list.Error().Description;
    PersonalList loaded;
    loaded.LoadItems(lListID);
    const auto oLine = loaded.OrderItems()->Item("A-1");
    ASSERT_NE(nullptr, oLine);
    EXPECT_EQ((Texts{zText, zText, zText, zText, zText, zText}),
              (Texts{oLine->Description(), oLine->ShortDescription(), oLine->Manufacturer(), oLine->Model(),
                     oLine->CustomerPartNumber(), oLine->CustomerNotes()}));

    const auto oShips = NewItem("B-2", 1);
    oShips->UsuallyShips(zText);
    list.AddItem(oShips, lListID);
    const bool bRefused = zText.find('\'') != std::string::npos;
    EXPECT_EQ(bRefused ? "4 Order not loaded" : "0 ",
              std::to_string(list.Error().Number) + " " + list.Error().Description);
    EXPECT_EQ(bRefused, list.OrderItems()->Item("B-2") == nullptr);
    EXPECT_EQ(bRefused ? Rows{} : (Rows{{zText}}),
              Store.Query("select cast(zUsuallyShips as blob) from tblPersonalListItem "
                          "where zItemNumber = 'B-2'"));
  }
}

TEST_F(NamesOfLists, AnItemNumberInOtherLettersIsTheSameLine) {
  for (const auto& [zNumber, zAsked] : kSame) {
    SCOPED_TRACE(Shown(zNumber));
    Clear();
    const std::int32_t lListID = All.CreateList("list");
    const std::string zListID = std::to_string(lListID);
    EXPECT_EQ("0 ", Add(lListID, zNumber, 5));
    const bool bRefused = zAsked.find('\'') != std::string::npos;
    EXPECT_EQ(bRefused ? failure::kStoreCommand : 0, RaisedNumber([&] {
                Add(lListID, zAsked, 2);
                return 0;
              }));
    EXPECT_EQ((Rows{{zListID, zNumber, bRefused ? "5" : "7"}}), Lines());
  }
}

TEST_F(NamesOfLists, ADifferentItemNumberIsAnotherLine) {
  for (const auto& [zNumber, zAsked] : kDifferent) {
    SCOPED_TRACE(Shown(zNumber) + ", " + Shown(zAsked));
    Clear();
    const std::int32_t lListID = All.CreateList("list");
    const std::string zListID = std::to_string(lListID);
    EXPECT_EQ("0 ", Add(lListID, zNumber, 5));
    EXPECT_EQ("0 ", Add(lListID, zAsked, 2));
    EXPECT_EQ((Rows{{zListID, zNumber, "5"}, {zListID, zAsked, "2"}}), Lines());
  }
}

TEST_F(NamesOfLists, AllNamesAndItemNumbersStandInTheFileAsTheyAre) {
  for (const std::string& zName : Names()) {
    const std::int32_t lListID = All.CreateList(zName);
    EXPECT_EQ("0 ", Add(lListID, zName, 3));
    EXPECT_EQ("0 ", Add(lListID, zName + "2", 4));
  }
  PersonalLists loaded;
  loaded.LoadLists();
  const test::XmlElement alone = test::ReadStrictly(loaded.GetXML());
  ASSERT_EQ(0, Save()) << LastFailure().Description;
  const test::XmlElement root = test::ReadStrictly(test::ReadFile(File()));
  EXPECT_EQ("personallists", root.Name);
  ASSERT_EQ(Names().size(), root.Children.size());
  ASSERT_EQ(Names().size(), alone.Children.size());
  const Rows sorted = Store.Query("select lListID from tblPersonalList order by zName");
  for (std::size_t l = 0; l < root.Children.size(); ++l) {
    const test::XmlElement& list = root.Children[l];
    const std::string& zListID = sorted[l][0];
    // The store is empty at the start: ids count up in the order of the names.
    const std::string& zName = Names().at(std::stoul(zListID) - 1);
    SCOPED_TRACE(Shown(zName));
    EXPECT_EQ("personallist", list.Name);
    EXPECT_EQ((std::map<std::string, std::string>{{"id", zListID}, {"name", zName}}), list.Attributes);
    EXPECT_EQ(list.Attributes, alone.Children[l].Attributes);
    EXPECT_TRUE(alone.Children[l].Children.empty());
    ASSERT_EQ(2U, list.Children.size());
    EXPECT_EQ("orderitem", list.Children[0].Name);
    EXPECT_EQ(zName, list.Children[0].Attributes.at("itemnumber"));
    EXPECT_EQ("of " + zName, list.Children[0].Attributes.at("description"));
    EXPECT_EQ("3", list.Children[0].Attributes.at("quantity"));
    EXPECT_EQ(zName + "2", list.Children[1].Attributes.at("itemnumber"));
    EXPECT_EQ("4", list.Children[1].Attributes.at("quantity"));
  }
}

TEST_F(NamesOfLists, WhatXMLCannotHoldIsStoredAndKeepsTheOldFile) {
  test::WriteFile(File(), "the old one");
  for (const std::string& zText : kNotXML) {
    SCOPED_TRACE(Shown(zText));
    Clear();
    // As a name.
    const std::int32_t lListID = All.CreateList(zText);
    ASSERT_NE(0, lListID);
    EXPECT_TRUE(All.ListExists(zText));
    EXPECT_EQ(zText, All.GetName(lListID));
    PersonalLists loaded;
    loaded.LoadLists();
    EXPECT_EQ(zText, loaded.Item(lListID)->Name());
    EXPECT_EQ(failure::kXmlCharacter, RaisedNumber([&] { return loaded.GetXML(); }));
    EXPECT_EQ(failure::kXmlCharacter, Save());
    EXPECT_EQ("PersonalLists.SaveAsXML", LastFailure().Operation);
    EXPECT_EQ("the old one", test::ReadFile(File()));
    EXPECT_TRUE(All.RenameList(lListID, "a name"));
    EXPECT_FALSE(All.ListExists(zText));
    EXPECT_TRUE(All.RenameList(lListID, zText));
    EXPECT_EQ((Rows{{std::to_string(lListID), zText}}), Lists());
    EXPECT_TRUE(All.RenameList(lListID, "a name"));

    // As an item number.
    EXPECT_EQ("0 ", Add(lListID, "A-1", 1));
    EXPECT_EQ("0 ", Add(lListID, zText, 5));
    EXPECT_EQ("0 ", Add(lListID, zText, 2));
    const std::string zListID = std::to_string(lListID);
    EXPECT_EQ((Rows{{zListID, "A-1", "1"}, {zListID, zText, "7"}}), Lines());
    PersonalList list;
    list.LoadItems(lListID);
    ASSERT_NE(nullptr, list.OrderItems()->Item(zText));
    EXPECT_EQ(zText, list.OrderItems()->Item(zText)->ItemNumber());
    EXPECT_EQ(failure::kXmlCharacter, Save());
    EXPECT_EQ("the old one", test::ReadFile(File()));
  }
}

TEST_F(NamesOfLists, WhatIsNotUTF8IsRefusedByEveryMemberAndChangesNothing) {
  const std::int32_t lListID = All.CreateList("Tools");
  EXPECT_EQ("0 ", Add(lListID, "A-1", 5));
  const Rows before = Store.Everything();
  for (const std::string& zText : kNotUTF8) {
    SCOPED_TRACE(Shown(zText));
    const std::vector<std::pair<std::string, std::function<bool()>>> members = {
        {"Database.PersonalLists_ListExists", [&] { return All.ListExists(zText); }},
        {"Database.PersonalLists_CreateList", [&] { return All.CreateList(zText) != 0; }},
        {"Database.PersonalLists_RenameList", [&] { return All.RenameList(lListID, zText); }},
        {"Database.PersonalLists_RemoveListByName", [&] { return All.RemoveListByName(zText); }},
    };
    for (const auto& [zOperation, call] : members) {
      ClearLastFailure();
      EXPECT_FALSE(call());
      EXPECT_EQ(zOperation, LastFailure().Operation);
      EXPECT_EQ(failure::kStoreCommand, LastFailure().Number);
    }
    PersonalList list;
    EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] {
                list.AddItem(NewItem(zText, 1), lListID);
                return 0;
              }));
    EXPECT_EQ(0, list.Error().Number) << "it is raised before the record is touched";
    EXPECT_EQ(0, list.OrderItems()->Count());
    EXPECT_EQ(before, Store.Everything());
  }
}

TEST_F(NamesOfLists, WhatIsNotUTF8KeepsTheOldFileWhereverItComesFrom) {
  test::WriteFile(File(), "the old one");
  const std::int32_t lListID = All.CreateList("Tools");
  EXPECT_EQ("0 ", Add(lListID, "A-1", 5));
  for (const std::string& zText : kNotUTF8) {
    SCOPED_TRACE(Shown(zText));
    PersonalLists renamed;
    renamed.LoadLists();
    renamed.Item(lListID)->Name(zText);
    EXPECT_EQ(failure::kXmlCharacter, RaisedNumber([&] { return renamed.GetXML(); }));
    ClearLastFailure();
    renamed.SaveAsXML();
    EXPECT_EQ(failure::kXmlCharacter, LastFailure().Number);

    PersonalLists filled;
    filled.LoadLists();
    filled.Item(lListID)->OrderItems()->Add(NewItem(zText, 1), "another key");
    ClearLastFailure();
    filled.SaveAsXML();
    EXPECT_EQ(failure::kXmlCharacter, LastFailure().Number);

    // Another program may have stored it.
    for (const char* zPlace : {"tblPersonalList set zName", "tblPersonalListItem set zItemNumber",
                               "tblPersonalListItem set zModel"}) {
      const Rows rows = Lists();
      const Rows lines = Lines();
      Store.Run(std::string("update ") + zPlace + " = " + test::Quoted(zText));
      EXPECT_EQ(failure::kXmlCharacter, Save()) << zPlace;
      Store.Run("update tblPersonalList set zName = 'Tools'");
      Store.Run("update tblPersonalListItem set zItemNumber = 'A-1', zModel = ''");
      EXPECT_EQ(rows, Lists());
      EXPECT_EQ(lines, Lines());
    }
    EXPECT_EQ("the old one", test::ReadFile(File()));
  }
  EXPECT_EQ(0, Save());
  EXPECT_EQ("Tools", test::ReadStrictly(test::ReadFile(File())).Children.at(0).Attributes.at("name"));
}

}  // namespace
