#include "qm_ordering/order/LibraryAccess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::LibraryAccess;
using qm_ordering::failure::kStoreCommand;
using qm_ordering::failure::kStoreUnavailable;
using test::RaisedNumber;

using Texts = std::vector<std::string>;

class LibraryAccessTest : public test::OrderFixture {
 protected:
  LibraryAccessTest() {
    AddSubmittedOrder(5);
    const auto oOrder = LoadCurrent();
    Store.Run(
        "insert into tblOrderItem (lOrderID, zItemNumber, zCustomerPartNumber, zCustomerNotes) values "
        "(6, 'A', 'part', 'a'), (6, 'B', 'PART', 'b'), (6, 'C', 'other', 'c'), (5, 'A', 'part', 'old')");
  }

  test::Rows PartsInfo() const {
    return Store.Query(
        "select lOrderID, zItemNumber, zCustomerPartNumber, zCustomerNotes from tblOrderItem "
        "order by lOrderEntered");
  }
};

TEST_F(LibraryAccessTest, MarksAnItemAsImported) {
  qm_ordering::OrderItem item;
  LibraryAccess::Imported(item, true);
  EXPECT_TRUE(item.Imported());
  LibraryAccess::Imported(item, false);
  EXPECT_FALSE(item.Imported());
}

TEST_F(LibraryAccessTest, WritesPartNumberAndNotesOfOneLine) {
  const test::TraceRecorder trace;
  LibraryAccess::UpdateCustPartInfo(6, "a", "P'1", "it's mine");
  EXPECT_EQ(trace.Statements(),
            Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='P''1',zCustomerNotes='it''s mine' WHERE "
                  "(lOrderID=6  AND  zItemNumber='a');"});
  EXPECT_EQ(PartsInfo(), (test::Rows{{"6", "A", "P'1", "it's mine"},
                                     {"6", "B", "PART", "b"},
                                     {"6", "C", "other", "c"},
                                     {"5", "A", "part", "old"}}));
}

TEST_F(LibraryAccessTest, BlanksTheLinesOfAnOrderThatCarryAPartNumber) {
  const test::TraceRecorder trace;
  LibraryAccess::DeleteCustPartInfo("part", 6);
  EXPECT_EQ(trace.Statements(),
            Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' WHERE "
                  "zCustomerPartNumber='part' AND lOrderID=6"});
  EXPECT_EQ(
      PartsInfo(),
      (test::Rows{
          {"6", "A", "", ""}, {"6", "B", "", ""}, {"6", "C", "other", "c"}, {"5", "A", "part", "old"}}));
}

TEST_F(LibraryAccessTest, DoublesAQuoteInThePartNumberToBlank) {
  LibraryAccess::UpdateCustPartInfo(6, "C", "P'1", "n");
  LibraryAccess::DeleteCustPartInfo("P'1", 6);
  EXPECT_EQ(PartsInfo()[2], (test::Row{"6", "C", "", ""}));
}

TEST_F(LibraryAccessTest, RaisesAQuoteInTheItemNumberAndChangesNothing) {
  const auto before = PartsInfo();
  for (const char* zNumber : {"A'", "A''", "' or ''='"}) {
    EXPECT_EQ(RaisedNumber([&] { LibraryAccess::UpdateCustPartInfo(6, zNumber, "x", "x"); }), kStoreCommand);
  }
  EXPECT_EQ(PartsInfo(), before);
}

TEST_F(LibraryAccessTest, PassesOverALineThatIsNotThere) {
  const auto before = PartsInfo();
  LibraryAccess::UpdateCustPartInfo(6, "Z", "x", "x");
  LibraryAccess::DeleteCustPartInfo("Z", 6);
  EXPECT_EQ(PartsInfo(), before);
}

TEST_F(LibraryAccessTest, RaisesAStoreThatFailsAndChangesNothing) {
  const auto before = PartsInfo();
  test::TraceRecorder trace;
  trace.Before = [](const std::string&) { throw qm_ordering::Failure(kStoreUnavailable, "gone"); };
  EXPECT_EQ(RaisedNumber([] { LibraryAccess::UpdateCustPartInfo(6, "A", "x", "x"); }), kStoreUnavailable);
  EXPECT_EQ(RaisedNumber([] { LibraryAccess::DeleteCustPartInfo("part", 6); }), kStoreUnavailable);
  EXPECT_EQ(PartsInfo(), before);
  trace.Before = nullptr;
  LibraryAccess::UpdateCustPartInfo(6, "A", "x", "x");
  EXPECT_EQ(PartsInfo().front(), (test::Row{"6", "A", "x", "x"}));
}

}  // namespace
