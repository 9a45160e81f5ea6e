#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// The customer's own part numbers and notes: the two operations that change several lines or none.

namespace {

using test::RaisedNumber;
using test::Rows;
using Texts = std::vector<std::string>;

class PartInfoStatements : public test::DatabaseFixture {
 protected:
  PartInfoStatements() {
    AddOrder(7);
    AddOrder(12, true);
    for (const char* zItem : {"A-1", "A-2", "A-3"}) {
      AddLine(12, zItem);
      AddLine(7, zItem);
    }
    Store.Run("update tblOrderItem set zCustomerPartNumber = 'P-' || zItemNumber, zCustomerNotes = 'old'");
  }

  Rows PartInfo(std::int32_t lvOrderID) const {
    return Store.Query(
        "select zItemNumber, zCustomerPartNumber, zCustomerNotes from tblOrderItem "
        "where lOrderID = " +
        std::to_string(lvOrderID) + " order by zItemNumber");
  }

  void RefuseChangesOf(const std::string& zvItemNumber) const {
    Store.Run("create trigger refuse before update on tblOrderItem when old.zItemNumber = " +
              test::Quoted(zvItemNumber) + " begin select raise(abort, 'not this one'); end");
  }

  const Rows kUnchanged = {{"A-1", "P-A-1", "old"}, {"A-2", "P-A-2", "old"}, {"A-3", "P-A-3", "old"}};
};

TEST_F(PartInfoStatements, WritingPartNumberAndNotesOfOneLine) {
  Database.UpdateCustPartInfo({"A-1"}, {"PN"}, {"new notes"}, 12);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='PN',zCustomerNotes='new notes' "
                   "WHERE (lOrderID=12  AND  zItemNumber='A-1');"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"A-1", "PN", "new notes"}, {"A-2", "P-A-2", "old"}, {"A-3", "P-A-3", "old"}}),
            PartInfo(12));
  EXPECT_EQ(kUnchanged, PartInfo(7));
}

TEST_F(PartInfoStatements, WritingSeveralLinesInTheOrderGiven) {
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber) values (7, ' B  2 ')");
  Database.UpdateCustPartInfo({"A-3", " B  2 ", "A-1"}, {"", "O'Neil", "'"}, {"N''3", "--", ""}, 7);

  EXPECT_EQ((Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='N''''3' "
                   "WHERE (lOrderID=7  AND  zItemNumber='A-3');",
                   "UPDATE tblOrderItem SET zCustomerPartNumber='O''Neil',zCustomerNotes='--' "
                   "WHERE (lOrderID=7  AND  zItemNumber=' B  2 ');",
                   "UPDATE tblOrderItem SET zCustomerPartNumber='''',zCustomerNotes='' "
                   "WHERE (lOrderID=7  AND  zItemNumber='A-1');"}),
            Trace.Statements());
  EXPECT_EQ(
      (Rows{{" B  2 ", "O'Neil", "--"}, {"A-1", "'", ""}, {"A-2", "P-A-2", "old"}, {"A-3", "", "N''3"}}),
      PartInfo(7));
  EXPECT_EQ(kUnchanged, PartInfo(12));
}

TEST_F(PartInfoStatements, WritingLinesThatAreNotThereChangesNothing) {
  Database.UpdateCustPartInfo({"A-9", "A-1"}, {"P", "P"}, {"N", "N"}, -1);
  EXPECT_EQ(
      "UPDATE tblOrderItem SET zCustomerPartNumber='P',zCustomerNotes='N' "
      "WHERE (lOrderID=-1  AND  zItemNumber='A-1');",
      Trace.Statements().at(1));
  EXPECT_EQ(kUnchanged, PartInfo(12));
  EXPECT_EQ(kUnchanged, PartInfo(7));
}

TEST_F(PartInfoStatements, WritingNoLinesRunsNoStatement) {
  Database.UpdateCustPartInfo({}, {}, {}, 12);
  Database.deleteCustPartInfo({}, 12);
  EXPECT_EQ(Texts{}, Trace.Statements());
}

TEST_F(PartInfoStatements, WritingIsOneTransaction) {
  Rows seen;
  std::string zRefused;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.find("A-2") != std::string::npos) {
      seen = PartInfo(12);
      try {
        Store.Run("pragma busy_timeout = 0; update tblOrderItem set lQuantity = 99");
      } catch (const std::runtime_error& error) {
        zRefused = error.what();
      }
    }
  };
  Database.UpdateCustPartInfo({"A-1", "A-2"}, {"P", "P"}, {"N", "N"}, 12);

  EXPECT_EQ(kUnchanged, seen) << "the first line is not to be seen before the commit";
  EXPECT_NE(std::string::npos, zRefused.find("database is locked")) << zRefused;
  EXPECT_EQ((Rows{{"A-1", "P", "N"}, {"A-2", "P", "N"}, {"A-3", "P-A-3", "old"}}), PartInfo(12));
}

TEST_F(PartInfoStatements, WritingLeavesAllLinesAsTheyWereWhenALaterOneFails) {
  RefuseChangesOf("A-3");
  EXPECT_EQ(-2147217900, RaisedNumber([&] {
    Database.UpdateCustPartInfo({"A-1", "A-2", "A-3"}, {"P", "P", "P"}, {"N", "N", "N"}, 12);
  }));

  EXPECT_EQ(3u, Trace.Statements().size());
  EXPECT_EQ(kUnchanged, PartInfo(12));
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrder set zDINotes = 'x'"))
      << "nothing of the transaction is left";
}

TEST_F(PartInfoStatements, WritingLeavesAllLinesAsTheyWereWhenALaterItemNumberHoldsAQuote) {
  EXPECT_EQ(-2147217900, RaisedNumber([&] {
    Database.UpdateCustPartInfo({"A-1", "A'2", "A-3"}, {"P", "P", "P"}, {"N", "N", "N"}, 12);
  }));
  EXPECT_EQ(
      "UPDATE tblOrderItem SET zCustomerPartNumber='P',zCustomerNotes='N' "
      "WHERE (lOrderID=12  AND  zItemNumber='A'2');",
      Trace.Statements().back());
  EXPECT_EQ(2u, Trace.Statements().size());
  EXPECT_EQ(kUnchanged, PartInfo(12));
}

TEST_F(PartInfoStatements, AfterAFailureTheSameObjectWritesAgain) {
  EXPECT_EQ(-2147217900, RaisedNumber([&] {
    Database.UpdateCustPartInfo({"A-1", "'"}, {"P", "P"}, {"N", "N"}, 12);
  }));
  Database.UpdateCustPartInfo({"A-1"}, {"P"}, {"N"}, 12);
  EXPECT_EQ((Rows{{"A-1", "P", "N"}, {"A-2", "P-A-2", "old"}, {"A-3", "P-A-3", "old"}}), PartInfo(12));
}

TEST_F(PartInfoStatements, ArraysOfDifferentLengthsAreAnIndexError) {
  const Rows before = Store.Everything();
  EXPECT_EQ(9, RaisedNumber([&] { Database.UpdateCustPartInfo({"A-1", "A-2"}, {"P"}, {"N", "N"}, 12); }));
  EXPECT_EQ(9, RaisedNumber([&] { Database.UpdateCustPartInfo({"A-1", "A-2"}, {"P", "P"}, {"N"}, 12); }));
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(PartInfoStatements, RemovingAPartNumberBlanksTheLinesOfTheOrderThatCarryIt) {
  Store.Run("update tblOrderItem set zCustomerPartNumber = 'same' where zItemNumber in ('A-1', 'A-3')");
  Database.deleteCustPartInfo({"same"}, 12);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' "
                   "WHERE zCustomerPartNumber='same' AND lOrderID=12"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"A-1", "", ""}, {"A-2", "P-A-2", "old"}, {"A-3", "", ""}}), PartInfo(12));
  EXPECT_EQ((Rows{{"A-1", "same", "old"}, {"A-2", "P-A-2", "old"}, {"A-3", "same", "old"}}), PartInfo(7));
}

TEST_F(PartInfoStatements, RemovingSeveralPartNumbersInTheOrderGiven) {
  Store.Run("update tblOrderItem set zCustomerPartNumber = 'O''Neil''s' where zItemNumber = 'A-2'");
  Database.deleteCustPartInfo({"P-A-3", "O'Neil's", "not there", " "}, 7);

  EXPECT_EQ((Texts{"UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' "
                   "WHERE zCustomerPartNumber='P-A-3' AND lOrderID=7",
                   "UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' "
                   "WHERE zCustomerPartNumber='O''Neil''s' AND lOrderID=7",
                   "UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' "
                   "WHERE zCustomerPartNumber='not there' AND lOrderID=7",
                   "UPDATE tblOrderItem SET zCustomerPartNumber='',zCustomerNotes='' "
                   "WHERE zCustomerPartNumber=' ' AND lOrderID=7"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"A-1", "P-A-1", "old"}, {"A-2", "", ""}, {"A-3", "", ""}}), PartInfo(7));
  EXPECT_EQ((Rows{{"A-1", "P-A-1", "old"}, {"A-2", "O'Neil's", "old"}, {"A-3", "P-A-3", "old"}}),
            PartInfo(12));
}

TEST_F(PartInfoStatements, RemovingIsOneTransaction) {
  Rows seen;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.find("P-A-2") != std::string::npos) {
      seen = PartInfo(12);
    }
  };
  Database.deleteCustPartInfo({"P-A-1", "P-A-2"}, 12);
  EXPECT_EQ(kUnchanged, seen);
  EXPECT_EQ((Rows{{"A-1", "", ""}, {"A-2", "", ""}, {"A-3", "P-A-3", "old"}}), PartInfo(12));
}

TEST_F(PartInfoStatements, RemovingLeavesAllLinesAsTheyWereWhenALaterOneFails) {
  RefuseChangesOf("A-3");
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.deleteCustPartInfo({"P-A-1", "P-A-2", "P-A-3"}, 12); }));
  EXPECT_EQ(kUnchanged, PartInfo(12));

  Database.deleteCustPartInfo({"P-A-1"}, 12);
  EXPECT_EQ((Rows{{"A-1", "", ""}, {"A-2", "P-A-2", "old"}, {"A-3", "P-A-3", "old"}}), PartInfo(12));
}

TEST_F(PartInfoStatements, RemovingLeavesAllLinesAsTheyWereWhenALaterPartNumberIsNotUTF8) {
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.deleteCustPartInfo({"P-A-1", "\xFF"}, 12); }));
  EXPECT_EQ(kUnchanged, PartInfo(12));
}

}  // namespace
