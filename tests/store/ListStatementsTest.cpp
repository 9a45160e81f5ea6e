#include <gtest/gtest.h>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// The personal lists and their lines.

namespace {

using qm_ordering::Variant;
using test::Rows;
namespace failure = qm_ordering::failure;
using Texts = std::vector<std::string>;

class ListStatements : public test::DatabaseFixture {
 protected:
  Rows Lists() const { return Store.Query("select lListID, zName from tblPersonalList order by lListID"); }

  Rows Lines() const {
    return Store.Query(
        "select lListID, zItemNumber, lQuantity from tblPersonalListItem order by lListEntered");
  }

  void AddLine(std::int32_t lvListID, const std::string& zvItemNumber, std::int32_t lvQuantity) {
    Database.PersonalList_AddItem(lvListID, zvItemNumber, lvQuantity, "", "", "", "", 1, 1, "", false, "", "",
                                  false);
  }
};

}  // namespace

TEST_F(ListStatements, CreatingAListAddsItsRowAndAnswersItsId) {
  EXPECT_EQ(1, Database.PersonalLists_CreateList("Tools"));
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"select count(*) from tblPersonalList where zName = 'Tools'", "tblPersonalList",
                   "select max(lListID) from tblPersonalList"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"1", "Tools"}}), Lists());
}

TEST_F(ListStatements, CreatingAListUnderANameThatExistsReplacesItWithItsLines) {
  Database.PersonalLists_CreateList("Tools");
  Database.PersonalLists_CreateList("Paint");
  AddLine(1, "A-1", 5);
  AddLine(2, "A-1", 6);
  Trace.Take();

  EXPECT_EQ(3, Database.PersonalLists_CreateList("TOOLS"));
  EXPECT_EQ((Texts{"select count(*) from tblPersonalList where zName = 'TOOLS'",
                   "delete from tblPersonalList where zName = 'TOOLS'", "tblPersonalList",
                   "select max(lListID) from tblPersonalList"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"2", "Paint"}, {"3", "TOOLS"}}), Lists());
  EXPECT_EQ((Rows{{"2", "A-1", "6"}}), Lines());
}

TEST_F(ListStatements, AListWhoseNameHasAQuoteIsReplacedToo) {
  Database.PersonalLists_CreateList("Bob's list");
  Database.PersonalLists_CreateList("Bobs list");
  Trace.Take();
  EXPECT_EQ(3, Database.PersonalLists_CreateList("Bob's list"));
  EXPECT_EQ((Texts{"select count(*) from tblPersonalList where zName = 'Bob''s list'",
                   "delete from tblPersonalList where zName = 'Bob''s list'", "tblPersonalList",
                   "select max(lListID) from tblPersonalList"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"2", "Bobs list"}, {"3", "Bob's list"}}), Lists());
}

TEST_F(ListStatements, TheIdOfANewListIsItsOwnAndNotTheHighest) {
  Store.Run(
      "create trigger another after insert on tblPersonalList when new.zName = 'Tools' "
      "begin insert into tblPersonalList (zName) values ('another'); end");
  EXPECT_EQ(1, Database.PersonalLists_CreateList("Tools"));
  EXPECT_EQ((Rows{{"1", "Tools"}, {"2", "another"}}), Lists());
}

TEST_F(ListStatements, AListIdIsNeverGivenTwice) {
  Database.PersonalLists_CreateList("a");
  EXPECT_EQ(2, Database.PersonalLists_CreateList("b"));
  Database.PersonalLists_RemoveList(2);
  EXPECT_EQ(3, Database.PersonalLists_CreateList("c"));
}

TEST_F(ListStatements, ACreationThatTheStoreRefusesKeepsTheOldListAndSaysDuplicate) {
  Database.PersonalLists_CreateList("Tools");
  AddLine(1, "A-1", 5);
  Store.Run("create trigger refuse before insert on tblPersonalList begin select raise(abort, 'no'); end");
  EXPECT_EQ(0, Database.PersonalLists_CreateList("Tools"));
  EXPECT_EQ("8 Duplicate list", Recorded());
  EXPECT_EQ((Rows{{"1", "Tools"}}), Lists());
  EXPECT_EQ((Rows{{"1", "A-1", "5"}}), Lines());
}

TEST_F(ListStatements, RenamingAListChangesItsName) {
  Database.PersonalLists_CreateList("Tools");
  Trace.Take();
  EXPECT_TRUE(Database.PersonalLists_RenameList(1, "Bob's"));
  EXPECT_EQ((Texts{"update tblPersonalList set zName = 'Bob''s' where lListID = 1"}), Trace.Statements());
  EXPECT_EQ((Rows{{"1", "Bob's"}}), Lists());
  EXPECT_TRUE(Database.PersonalLists_RenameList(99, "nothing")) << "a list that is not there";
  EXPECT_TRUE(Database.PersonalLists_RenameList("1", "by a text"));
  EXPECT_EQ((Rows{{"1", "by a text"}}), Lists());
}

TEST_F(ListStatements, RenamingToANameThatExistsIsADuplicate) {
  Database.PersonalLists_CreateList("Tools");
  Database.PersonalLists_CreateList("Paint");
  EXPECT_FALSE(Database.PersonalLists_RenameList(2, "TOOLS"));
  EXPECT_EQ("8 Duplicate list", Recorded());
  EXPECT_EQ((Rows{{"1", "Tools"}, {"2", "Paint"}}), Lists());
}

TEST_F(ListStatements, AnIdOrANameThatCannotBeOneIsRecordedAndReachesNoStatement) {
  Database.PersonalLists_CreateList("Tools");
  Trace.Take();
  EXPECT_FALSE(Database.PersonalLists_RenameList("1 or 1 = 1", "x"));
  EXPECT_TRUE(Recorded().starts_with("5 13 : ")) << Recorded();
  EXPECT_FALSE(Database.PersonalLists_RenameList(1, Variant::Null()));
  EXPECT_TRUE(Recorded().starts_with("5 94 : ")) << Recorded();
  EXPECT_FALSE(Database.PersonalLists_ListExists(Variant::Missing()));
  EXPECT_TRUE(Recorded().starts_with("5 13 : ")) << Recorded();
  EXPECT_EQ(Texts{}, Trace.Statements());
  EXPECT_EQ((Rows{{"1", "Tools"}}), Lists());
}

TEST_F(ListStatements, RemovingAListRemovesItsLines) {
  Database.PersonalLists_CreateList("Tools");
  Database.PersonalLists_CreateList("Paint");
  AddLine(1, "A-1", 5);
  AddLine(2, "B-2", 6);
  Trace.Take();
  Database.PersonalLists_RemoveList(1);
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"delete from tblPersonalList where lListID = 1"}), Trace.Statements());
  EXPECT_EQ((Rows{{"2", "Paint"}}), Lists());
  EXPECT_EQ((Rows{{"2", "B-2", "6"}}), Lines());
  Database.PersonalLists_RemoveList(1);
  EXPECT_EQ("0 ", Recorded()) << "a list that is not there";
}

TEST_F(ListStatements, RemovingByNameAnswersTrueWhetherOrNotThereIsOne) {
  Database.PersonalLists_CreateList("Bob's list");
  AddLine(1, "A-1", 5);
  Trace.Take();
  EXPECT_TRUE(Database.PersonalLists_RemoveListByName("BOB'S LIST"));
  EXPECT_TRUE(Database.PersonalLists_RemoveListByName("nothing"));
  EXPECT_EQ((Texts{"Delete from tblPersonalList WHERE zName = 'BOB''S LIST' ",
                   "Delete from tblPersonalList WHERE zName = 'nothing' "}),
            Trace.Statements());
  EXPECT_EQ(Rows{}, Lists());
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(ListStatements, AListIsFoundByItsNameInAnyLetterCase) {
  Database.PersonalLists_CreateList("Bob's \xC3\x89lite \xF0\x9F\x94\xA7");
  Trace.Take();
  EXPECT_TRUE(Database.PersonalLists_ListExists("BOB'S \xC3\xA9lite \xF0\x9F\x94\xA7"));
  EXPECT_FALSE(Database.PersonalLists_ListExists("Bob"));
  EXPECT_EQ(
      (Texts{"select count(*) from tblPersonalList where zName = 'BOB''S \xC3\xA9lite \xF0\x9F\x94\xA7'",
             "select count(*) from tblPersonalList where zName = 'Bob'"}),
      Trace.Statements());
  EXPECT_EQ("Bob's \xC3\x89lite \xF0\x9F\x94\xA7", Database.PersonalLists_GetName(1));
}

TEST_F(ListStatements, TheNameOfAListThatIsNotThereIsEmptyAndNoError) {
  EXPECT_EQ("", Database.PersonalLists_GetName(7));
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"select zName from tblPersonalList where lListID = 7"}), Trace.Statements());
}

TEST_F(ListStatements, AllListsComeByNameAndNeedNoStore) {
  Database.PersonalLists_CreateList("b");
  Database.PersonalLists_CreateList("C");
  Database.PersonalLists_CreateList("a");
  Trace.Take();
  const auto lists = Database.PersonalLists_GetLists();
  EXPECT_EQ((Texts{"select lListID, zName from tblPersonalList order by zName"}), Trace.Statements());
  Database.PersonalLists_RemoveListByName("a");
  Texts names;
  for (; !lists->AtEnd(); lists->MoveNext()) {
    names.push_back(lists->Fields("zName").Value().ToString() + " " +
                    lists->Fields("lListID").Value().ToString());
  }
  EXPECT_EQ((Texts{"a 3", "b 1", "C 2"}), names);
}

TEST_F(ListStatements, TheSummaryOfAListHasItsNameAndId) {
  Database.PersonalLists_CreateList("Tools");
  Trace.Take();
  const auto summary = Database.PersonalList_GetSummary(1);
  EXPECT_EQ((Texts{"select zName, lListID from tblPersonalList where lListID = 1"}), Trace.Statements());
  EXPECT_EQ(Variant("Tools"), summary->Fields(0).Value());
  EXPECT_EQ(Variant(1), summary->Fields(1).Value());
  const auto none = Database.PersonalList_GetSummary(2);
  EXPECT_TRUE(none->AtBeginning() && none->AtEnd());
}

TEST_F(ListStatements, ALineIsStoredValueForValue) {
  Database.PersonalLists_CreateList("Tools");
  Trace.Take();
  Database.PersonalList_AddItem(1, "A'1", 5, "d'e", "s'd", "m'a", "m'o", 6, 12, "1-3 DAYS", true, "p'n",
                                "n'o", true);
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"insert into tblPersonalListItem (lListID, zItemNumber, lQuantity, zDescription, "
                   "zShortDescription, zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, "
                   "bIsTaxable, zCustomerPartNumber, zCustomerNotes, bHasPartsInfo) values (1, 'A''1', 5, "
                   "'d''e', 's''d', 'm''a', 'm''o', 6, 12, '1-3 DAYS', True, 'p''n', 'n''o', True)"}),
            Trace.Statements());
  Trace.Take();
  const auto rows = Database.PersonalList_GetItems(1);
  EXPECT_EQ((Texts{"select * from tblPersonalListItem where lListID = 1"}), Trace.Statements());
  EXPECT_EQ(Variant("A'1"), rows->Fields("zItemNumber").Value());
  EXPECT_EQ(Variant(5), rows->Fields("lQuantity").Value());
  EXPECT_EQ(Variant("d'e"), rows->Fields("zDescription").Value());
  EXPECT_EQ(Variant("s'd"), rows->Fields("zShortDescription").Value());
  EXPECT_EQ(Variant("m'a"), rows->Fields("zManufacturer").Value());
  EXPECT_EQ(Variant("m'o"), rows->Fields("zModel").Value());
  EXPECT_EQ(Variant(6), rows->Fields("lSellQuantity").Value());
  EXPECT_EQ(Variant(12), rows->Fields("lShipQuantity").Value());
  EXPECT_EQ(Variant("1-3 DAYS"), rows->Fields("zUsuallyShips").Value());
  EXPECT_EQ(Variant(true), rows->Fields("bIsTaxable").Value());
  EXPECT_EQ(Variant("p'n"), rows->Fields("zCustomerPartNumber").Value());
  EXPECT_EQ(Variant("n'o"), rows->Fields("zCustomerNotes").Value());
  EXPECT_EQ(Variant(true), rows->Fields("bHasPartsInfo").Value());
}

TEST_F(ListStatements, ALineThatTheStoreRefusesIsAnOrderThatIsNotLoaded) {
  Database.PersonalLists_CreateList("Tools");
  AddLine(1, "A-1", 5);
  AddLine(1, "a-1", 6);
  EXPECT_EQ("4 Order not loaded", Recorded()) << "the line is there already";
  AddLine(9, "A-1", 5);
  EXPECT_EQ("4 Order not loaded", Recorded()) << "the list is not there";
  for (const std::string zText : {"to'day", "a' || 'b", "x', True, 'p', 'n', True) --"}) {
    Trace.Take();
    Database.PersonalList_AddItem(1, "B-2", 1, "", "", "", "", 1, 1, zText, false, "", "", false);
    EXPECT_EQ("4 Order not loaded", Recorded()) << "a quote in a raw text";
    EXPECT_EQ(
        (Texts{"insert into tblPersonalListItem (lListID, zItemNumber, lQuantity, zDescription, "
               "zShortDescription, zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, "
               "bIsTaxable, zCustomerPartNumber, zCustomerNotes, bHasPartsInfo) values (1, 'B-2', 1, '', "
               "'', '', '', 1, 1, '" +
               zText + "', False, '', '', False)"}),
        Trace.Statements())
        << "the refused text is shown as it is";
  }
  EXPECT_EQ((Rows{{"1", "A-1", "5"}}), Lines());
}

TEST_F(ListStatements, AnIncrementAddsToTheStoredQuantity) {
  Database.PersonalLists_CreateList("Tools");
  Database.PersonalLists_CreateList("Paint");
  AddLine(1, "A-1", 5);
  AddLine(2, "A-1", 5);
  Trace.Take();
  Database.PersonalList_IncrementQuantity(1, "a-1", 2);
  Database.PersonalList_IncrementQuantity(1, "A-1", -3);
  EXPECT_EQ(
      (Texts{"update tblPersonalListItem set lQuantity = lQuantity + 2 where lListID = 1 and zItemNumber = "
             "'a-1'",
             "update tblPersonalListItem set lQuantity = lQuantity + -3 where lListID = 1 and zItemNumber = "
             "'A-1'"}),
      Trace.Statements());
  Trace.Take();
  EXPECT_EQ(failure::kStoreCommand, test::RaisedNumber([&] {
              Database.PersonalList_IncrementQuantity(1, "x' or 'a'='a", 1);
              return 0;
            }));
  EXPECT_EQ(
      (Texts{"update tblPersonalListItem set lQuantity = lQuantity + 1 where lListID = 1 and zItemNumber = "
             "'x' or 'a'='a'"}),
      Trace.Statements())
      << "the refused text is shown as it is";
  EXPECT_EQ((Rows{{"1", "A-1", "4"}, {"2", "A-1", "5"}}), Lines());
}

TEST_F(ListStatements, AnIncrementBeyondTheRangeOfQuantitiesIsAnOverflowAndStoresNothing) {
  Database.PersonalLists_CreateList("Tools");
  AddLine(1, "A-1", 2147483647);
  AddLine(1, "B-2", -2147483647);
  for (const auto& [zItem, lIncrement] : {std::pair{"A-1", 1}, {"B-2", -2}}) {
    EXPECT_EQ(failure::kOverflow, test::RaisedNumber([&] {
                Database.PersonalList_IncrementQuantity(1, zItem, lIncrement);
                return 0;
              }));
  }
  EXPECT_EQ((Rows{{"1", "A-1", "2147483647"}, {"1", "B-2", "-2147483647"}}), Lines());
  Database.PersonalList_IncrementQuantity(1, "B-2", -1);
  EXPECT_EQ((Rows{{"1", "A-1", "2147483647"}, {"1", "B-2", "-2147483648"}}), Lines());
}

TEST_F(ListStatements, ALineIsFoundByItsListAndItemNumber) {
  Database.PersonalLists_CreateList("Tools");
  AddLine(1, "A'1", 5);
  Trace.Take();
  EXPECT_TRUE(Database.PersonalList_ItemExists(1, "a'1"));
  EXPECT_FALSE(Database.PersonalList_ItemExists(2, "A'1"));
  EXPECT_EQ((Texts{"select count(*) from tblPersonalListItem where zItemNumber = 'a''1' and lListID = 1",
                   "select count(*) from tblPersonalListItem where zItemNumber = 'A''1' and lListID = 2"}),
            Trace.Statements());
}
