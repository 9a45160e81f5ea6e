#include "qm_ordering/lists/PersonalList.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <memory>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::OrderItem;
using qm_ordering::PersonalList;
using qm_ordering::Variant;
using test::RaisedNumber;
using test::Rows;
namespace failure = qm_ordering::failure;

class PersonalListTest : public test::StoreFixture {
 protected:
  PersonalListTest() {
    // Of the ids 1 to 5 the last one stays.
    qm_ordering::PersonalLists lists;
    for (const char* zName : {"a", "b", "c", "d", "Tools"}) {
      lists.CreateList(zName);
    }
    Store.Run("delete from tblPersonalList where lListID < 5");
  }

  static std::shared_ptr<OrderItem> NewItem(const std::string& zvItemNumber, std::int32_t lvQuantity = 1) {
    auto oItem = std::make_shared<OrderItem>();
    oItem->ItemNumber(zvItemNumber);
    oItem->Quantity(lvQuantity);
    oItem->SellQuantity(1);
    oItem->ShipQuantity(1);
    return oItem;
  }

  static std::string Recorded(const PersonalList& list) {
    return std::to_string(list.Error().Number) + " " + list.Error().Description;
  }

  template <typename Call>
  static std::int32_t Raised(Call call) {
    return test::FailureOf(call).Number();
  }

  Rows Lines() const {
    return Store.Query(
        "select lListID, zItemNumber, lQuantity, zDescription from tblPersonalListItem order by "
        "lListEntered");
  }

  PersonalList List;
};

}  // namespace

TEST_F(PersonalListTest, StartsUnboundEmptyAndWithoutAnError) {
  EXPECT_EQ(-1, List.ListID());
  EXPECT_EQ("", List.Name());
  EXPECT_EQ(0, List.OrderItems()->Count());
  EXPECT_EQ("0 ", Recorded(List));
}

TEST_F(PersonalListTest, KeepsWhatItsSettersGet) {
  const auto oItems = std::make_shared<qm_ordering::OrderItems>();
  List.Name("n");
  List.ListID(7);
  List.OrderItems(oItems);
  EXPECT_EQ("n", List.Name());
  EXPECT_EQ(7, List.ListID());
  EXPECT_EQ(oItems, List.OrderItems());
}

TEST_F(PersonalListTest, LoadsTheNameOfTheListThatIsNamed) {
  List.LoadSummary(5);
  EXPECT_EQ("Tools", List.Name());
  EXPECT_EQ(5, List.ListID());
  EXPECT_EQ("0 ", Recorded(List));
  Store.Run("update tblPersonalList set zName = 'Paint'");
  List.LoadSummary();
  EXPECT_EQ("Paint", List.Name()) << "without an argument, of the list that it has";
}

TEST_F(PersonalListTest, SaysWhichListItCannotLoad) {
  List.LoadSummary();
  EXPECT_EQ("9 List ID not set", Recorded(List));
  List.LoadSummary("abc");
  EXPECT_EQ("10 Invalid list ID", Recorded(List));
  EXPECT_EQ(-1, List.ListID());
  List.Name("stays");
  List.LoadSummary(4711);
  EXPECT_EQ("11 List not found", Recorded(List));
  EXPECT_EQ(4711, List.ListID());
  EXPECT_EQ("stays", List.Name());
}

TEST_F(PersonalListTest, TakesEveryNumberAsAListId) {
  for (const Variant& vListID : {Variant(5), Variant("5"), Variant(" +5 "), Variant("5e0"), Variant(5.4),
                                 Variant(4.5 + 0.25), Variant(qm_ordering::Currency::Parse("5.1"))}) {
    PersonalList list;
    list.LoadSummary(vListID);
    EXPECT_EQ("Tools", list.Name()) << vListID.ToString();
  }
  List.LoadSummary(Variant());
  EXPECT_EQ(0, List.ListID()) << "the empty value";
  List.LoadSummary(true);
  EXPECT_EQ(-1, List.ListID());
  List.LoadSummary(2.5);
  EXPECT_EQ(2, List.ListID()) << "half to even";
  List.LoadSummary("1e2");
  EXPECT_EQ(100, List.ListID());
}

TEST_F(PersonalListTest, RefusesWhatIsNoNumberInEveryMember) {
  for (const Variant& vListID : {Variant(""), Variant::Null(), Variant("inf"), Variant("nan"), Variant("0x5"),
                                 Variant("5 or 1 = 1")}) {
    PersonalList list;
    list.ListID(5);
    list.LoadSummary(vListID);
    EXPECT_EQ("10 Invalid list ID", Recorded(list));
    PersonalList other;
    other.ListID(5);
    other.LoadItems(vListID);
    EXPECT_EQ("10 Invalid list ID", Recorded(other));
    PersonalList third;
    third.ListID(5);
    third.AddItem(NewItem("A-1"), vListID);
    EXPECT_EQ("10 Invalid list ID", Recorded(third));
    EXPECT_EQ(5, third.ListID());
  }
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(PersonalListTest, RaisesOverflowForAnIdOutOfRangeInEveryMember) {
  List.ListID(5);
  for (const Variant& vListID : {Variant("2147483648"), Variant(-3e9)}) {
    EXPECT_EQ(failure::kOverflow, Raised([&] { List.LoadSummary(vListID); }));
    EXPECT_EQ(failure::kOverflow, Raised([&] { List.LoadItems(vListID); }));
    EXPECT_EQ(failure::kOverflow, Raised([&] { List.AddItem(NewItem("A-1"), vListID); }));
  }
  EXPECT_EQ(5, List.ListID());
  EXPECT_EQ("0 ", Recorded(List));
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(PersonalListTest, RaisesWhatTheStoreRaises) {
  List.AddItem(NewItem("A-1", 5), 5);
  Store.Run(
      "create trigger refuse before update on tblPersonalListItem begin select raise(abort, 'not now'); end");
  PersonalList other;
  EXPECT_EQ(failure::kStoreCommand, Raised([&] { other.AddItem(NewItem("A-1", 2), 5); }));
  EXPECT_EQ(0, other.OrderItems()->Count());
  Store.Run("alter table tblPersonalListItem rename to gone");
  EXPECT_EQ(failure::kStoreNoTable, Raised([&] { other.AddItem(NewItem("B-2"), 5); }));
  EXPECT_EQ(failure::kStoreNoTable, Raised([&] { other.LoadItems(5); }));
  Store.Run("alter table tblPersonalList rename to gone_too");
  EXPECT_EQ(failure::kStoreNoTable, Raised([&] { other.LoadSummary(5); }));
  EXPECT_EQ("0 ", Recorded(other)) << "what is raised is not recorded";
}

TEST_F(PersonalListTest, HoldsNoFileOfTheStoreWhenItHasRead) {
  List.AddItem(NewItem("A-1"), 5);
  List.LoadSummary();
  EXPECT_EQ(0U, test::OpenFiles(Store.Path()));
  List.LoadSummary(4711);
  EXPECT_EQ(0U, test::OpenFiles(Store.Path()));
  PersonalList loaded;
  loaded.LoadItems(5);
  EXPECT_EQ(0U, test::OpenFiles(Store.Path()));
  EXPECT_EQ(failure::kDuplicateKey, Raised([&] { loaded.LoadItems(5); }));
  EXPECT_EQ(0U, test::OpenFiles(Store.Path())) << "also when it stopped at a line";
}

TEST_F(PersonalListTest, StoresANewLineAndHoldsTheItem) {
  const auto oItem = NewItem("A-1", 3);
  oItem->Description("Bolt");
  List.AddItem(oItem, 5);
  EXPECT_EQ("0 ", Recorded(List));
  EXPECT_EQ(5, oItem->OrderID());
  EXPECT_EQ(5, List.ListID());
  EXPECT_EQ((Rows{{"5", "A-1", "3", "Bolt"}}), Lines());
  EXPECT_EQ(oItem, List.OrderItems()->Item("A-1"));
}

TEST_F(PersonalListTest, AddsTheQuantityToALineThatIsThereAndLeavesTheRest) {
  const auto oFirst = NewItem("A-1", 5);
  oFirst->Description("Bolt");
  List.AddItem(oFirst, 5);
  PersonalList other;
  const auto oSecond = NewItem("a-1", 2);
  oSecond->Description("Another text");
  other.AddItem(oSecond, 5);
  EXPECT_EQ((Rows{{"5", "A-1", "7", "Bolt"}}), Lines());
  EXPECT_EQ(oSecond, other.OrderItems()->Item(1)) << "the given item is a member after an increment, too";
}

TEST_F(PersonalListTest, RaisesForAnItemThatItHoldsWithTheStoreUpdated) {
  List.AddItem(NewItem("A-1", 5), 5);
  EXPECT_EQ(failure::kDuplicateKey, RaisedNumber([&] {
              List.AddItem(NewItem("A-1", 2), 5);
              return 0;
            }));
  EXPECT_EQ((Rows{{"5", "A-1", "7", ""}}), Lines());
  EXPECT_EQ(1, List.OrderItems()->Count());
}

TEST_F(PersonalListTest, RefusesMoreThanAQuantityHoldsAndCanStillBeLoaded) {
  List.AddItem(NewItem("A-1", 2147483647), 5);
  const qm_ordering::Failure refused = test::FailureOf([&] { PersonalList().AddItem(NewItem("A-1"), 5); });
  EXPECT_EQ(failure::kOverflow, refused.Number());
  EXPECT_EQ("Overflow: the quantity would be more than a list can hold.", refused.Description());
  PersonalList loaded;
  loaded.LoadItems(5);
  EXPECT_EQ(2147483647, loaded.OrderItems()->Item("A-1")->Quantity());
}

TEST_F(PersonalListTest, WantsTheListNamedWithEveryItem) {
  List.AddItem(NewItem("A-1"));
  EXPECT_EQ("9 List ID not set", Recorded(List));
  List.ListID(5);
  EXPECT_EQ(failure::kTypeMismatch, RaisedNumber([&] {
              List.AddItem(NewItem("A-1"));
              return 0;
            }));
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(PersonalListTest, RaisesWithoutACollectionOfItemsWithTheLineStored) {
  List.OrderItems(nullptr);
  EXPECT_EQ(failure::kObjectNotSet, Raised([&] { List.AddItem(NewItem("A-1"), 5); }));
  EXPECT_EQ((Rows{{"5", "A-1", "1", ""}}), Lines());
  EXPECT_EQ(failure::kObjectNotSet, Raised([&] { List.LoadItems(); }));
}

TEST_F(PersonalListTest, RaisesForANullItemWithTheListSet) {
  EXPECT_EQ(failure::kObjectNotSet, RaisedNumber([&] {
              List.AddItem(nullptr, 5);
              return 0;
            }));
  EXPECT_EQ(5, List.ListID());
}

TEST_F(PersonalListTest, RecordsALineThatTheStoreRefusesAndDoesNotHoldIt) {
  const auto oItem = NewItem("A-1");
  List.AddItem(oItem, 4711);
  EXPECT_EQ("4 Order not loaded", Recorded(List));
  EXPECT_EQ(4711, oItem->OrderID());
  PersonalList other;
  oItem->UsuallyShips("two weeks' time");
  other.AddItem(oItem, 5);
  EXPECT_EQ("4 Order not loaded", Recorded(other)) << "a quote in the shipping estimate";
  PersonalList third;
  oItem->UsuallyShips("\xFF");
  third.AddItem(oItem, 5);
  EXPECT_EQ("4 Order not loaded", Recorded(third)) << "broken UTF-8";
  for (const PersonalList* pList : {&List, &other, &third}) {
    EXPECT_EQ(0, pList->OrderItems()->Count());
  }
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(PersonalListTest, RecordsADiskThatIsFullAndDoesNotHoldTheLine) {
  qm_ordering::ado::embedded::CloseIdleSessions();
  test::ChildProcess child([&]() -> std::string {
    // A limit on the size of a file fails in the middle of the writing, as a full disk does.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{65'536, 65'536};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      return "no limit";
    }
    const auto oItem = NewItem("A-1");
    oItem->CustomerNotes(std::string(300'000, 'x'));
    List.AddItem(oItem, 5);
    return Recorded(List) + (List.OrderItems()->Count() == 0 ? "" : ", and the line is held");
  });
  const std::string zOutcome = child.Outcome();
  EXPECT_TRUE(zOutcome.starts_with("5 -2147467259 : ")) << zOutcome;
  EXPECT_NE(std::string::npos, zOutcome.find(Store.Path())) << zOutcome;
  EXPECT_FALSE(zOutcome.ends_with("and the line is held")) << zOutcome;
  EXPECT_EQ(Rows{}, Lines());
}

TEST_F(PersonalListTest, CountsWithALineThatAnotherProgramAddsInBetween) {
  test::TraceRecorder trace;
  const auto addInBetween = [&](const std::string& zSQL) {
    if (zSQL.starts_with("insert")) {
      Store.Run(
          "pragma busy_timeout = 0; delete from tblPersonalListItem; "
          "insert into tblPersonalListItem (lListID, zItemNumber, lQuantity) values (5, 'a-1', 5)");
    }
  };
  trace.Before = addInBetween;
  const auto oItem = NewItem("A-1", 2);
  qm_ordering::ClearLastFailure();
  List.AddItem(oItem, 5);
  EXPECT_EQ("0 ", Recorded(List));
  EXPECT_EQ(0, qm_ordering::LastFailure().Number) << "what was made good is no failure";
  EXPECT_EQ(oItem, List.OrderItems()->Item(1));
  EXPECT_EQ((Rows{{"5", "a-1", "7", "NULL"}}), Lines());

  Store.Run("delete from tblPersonalListItem");
  PersonalList other;
  other.LoadSummary();
  other.AddItem(NewItem("A-1", 2), 5);
  EXPECT_EQ("9 List ID not set", Recorded(other)) << "as with every line that is there";
  EXPECT_EQ(0, other.OrderItems()->Count());
  EXPECT_EQ((Rows{{"5", "a-1", "7", "NULL"}}), Lines());
}

TEST_F(PersonalListTest, DoesNotHoldAnIncrementedItemWhileAnOlderErrorStands) {
  List.AddItem(NewItem("A-1", 5), 5);
  PersonalList other;
  other.LoadSummary();
  other.AddItem(NewItem("A-1", 2), 5);
  EXPECT_EQ("9 List ID not set", Recorded(other)) << "an increment does not touch the record";
  EXPECT_EQ(0, other.OrderItems()->Count());
  EXPECT_EQ((Rows{{"5", "A-1", "7", ""}}), Lines());
  other.AddItem(NewItem("B-2"), 5);
  EXPECT_EQ("0 ", Recorded(other)) << "a new line does";
  EXPECT_EQ(1, other.OrderItems()->Count());
}

TEST_F(PersonalListTest, LoadsItsLinesValueForValueWithoutPrices) {
  const auto oItem = NewItem("A'1", 3);
  oItem->Description("d");
  oItem->ShortDescription("s");
  oItem->Manufacturer("ma");
  oItem->Model("mo");
  oItem->SellQuantity(6);
  oItem->ShipQuantity(12);
  oItem->UsuallyShips("TODAY");
  oItem->IsTaxable(true);
  oItem->CustomerPartNumber("p");
  oItem->CustomerNotes("line\nbreak \xC3\xA9");
  oItem->HasPartsInfo(true);
  oItem->Price(qm_ordering::Currency::Parse("9.5"));
  List.AddItem(oItem, 5);
  PersonalList loaded;
  loaded.LoadItems(5);
  ASSERT_EQ(1, loaded.OrderItems()->Count());
  const auto oLine = loaded.OrderItems()->Item("a'1");
  ASSERT_NE(nullptr, oLine);
  EXPECT_EQ(5, oLine->OrderID());
  EXPECT_EQ("A'1", oLine->ItemNumber());
  EXPECT_EQ(3, oLine->Quantity());
  EXPECT_EQ("d", oLine->Description());
  EXPECT_EQ("s", oLine->ShortDescription());
  EXPECT_EQ("ma", oLine->Manufacturer());
  EXPECT_EQ("mo", oLine->Model());
  EXPECT_EQ(6, oLine->SellQuantity());
  EXPECT_EQ(12, oLine->ShipQuantity());
  EXPECT_EQ("TODAY", oLine->UsuallyShips());
  EXPECT_TRUE(oLine->IsTaxable());
  EXPECT_EQ("p", oLine->CustomerPartNumber());
  EXPECT_EQ("line\nbreak \xC3\xA9", oLine->CustomerNotes());
  EXPECT_TRUE(oLine->HasPartsInfo());
  EXPECT_EQ(qm_ordering::Currency(), oLine->Price());
}

TEST_F(PersonalListTest, LoadsItsLinesAsTheyComeFromTheStore) {
  for (const char* zItem : {"C-3", "A-1", "B-2"}) {
    List.AddItem(NewItem(zItem), 5);
  }
  const auto loaded = [&] {
    PersonalList list;
    list.LoadItems(5);
    std::string zItems;
    for (const auto& oItem : *list.OrderItems()) {
      zItems += oItem->ItemNumber() + " ";
    }
    return zItems;
  };
  EXPECT_EQ("A-1 B-2 C-3 ", loaded());
  // Without the index that they are found by, they come as they were entered.
  Store.Run("drop index idxPersonalListItem");
  EXPECT_EQ("C-3 A-1 B-2 ", loaded());
}

TEST_F(PersonalListTest, WithoutLinesLoadsNoneAndIsNoError) {
  List.LoadItems(5);
  EXPECT_EQ(0, List.OrderItems()->Count());
  PersonalList unbound;
  unbound.LoadItems();
  EXPECT_EQ(0, unbound.OrderItems()->Count());
  EXPECT_EQ("0 ", Recorded(List));
  EXPECT_EQ("0 ", Recorded(unbound));
}

TEST_F(PersonalListTest, RaisesWhenItIsLoadedTwice) {
  List.AddItem(NewItem("A-1"), 5);
  PersonalList loaded;
  loaded.LoadItems(5);
  EXPECT_EQ(failure::kDuplicateKey, RaisedNumber([&] {
              loaded.LoadItems();
              return 0;
            }));
  EXPECT_EQ(1, loaded.OrderItems()->Count());
}

TEST_F(PersonalListTest, ShowsAnOldErrorAfterALoadThatSucceeds) {
  List.LoadSummary();
  List.LoadItems(5);
  EXPECT_EQ("9 List ID not set", Recorded(List));
  List.LoadSummary(5);
  EXPECT_EQ("Tools", List.Name());
  EXPECT_EQ("9 List ID not set", Recorded(List));
}

// A store that another program holds; the call waits some seconds before it gives up.
class PersonalListOfAHeldStoreFull : public PersonalListTest {
 protected:
  PersonalListOfAHeldStoreFull() {
    m_oOther.Open(qm_ordering::ConnectionString());
    m_oOther.BeginTransaction();
  }
  qm_ordering::ado::Connection m_oOther;
};

TEST_F(PersonalListOfAHeldStoreFull, RecordsThatItsLineCannotBeStored) {
  List.AddItem(NewItem("A-1"), 5);
  EXPECT_TRUE(Recorded(List).starts_with("5 -2147467259 : ")) << Recorded(List);
  EXPECT_EQ(0, List.OrderItems()->Count());
}

TEST_F(PersonalListOfAHeldStoreFull, RaisesWhereTheQuantityOfALineCannotBeChanged) {
  m_oOther.RollbackTransaction();
  List.AddItem(NewItem("A-1"), 5);
  m_oOther.BeginTransaction();
  PersonalList other;
  EXPECT_EQ(-2147467259, RaisedNumber([&] {
    other.AddItem(NewItem("A-1"), 5);
    return 0;
  }));
  EXPECT_EQ("0 ", Recorded(other));
}
