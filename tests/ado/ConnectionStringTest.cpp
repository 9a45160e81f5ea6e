#include "qm_ordering/platform/ado/ConnectionString.h"

#include <gtest/gtest.h>

#include <string>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::ado::Connection;
using qm_ordering::ado::ConnectionString;
using qm_ordering::ado::SameName;

qm_ordering::Failure OpenFailure(const std::string& zvConnectionString) {
  return test::FailureOf([&] { Connection().Open(zvConnectionString); });
}

}  // namespace

TEST(ConnectionString, FindsAPartInAnyLetterCase) {
  const ConnectionString parts("Driver=Some Driver (*.mdb);DBQ=C:\\Orders\\Orders.mdb");
  EXPECT_EQ("Some Driver (*.mdb)", parts.Value("DRIVER"));
  EXPECT_EQ("C:\\Orders\\Orders.mdb", parts.Value("dbq"));
}

TEST(ConnectionString, AnswersTheEmptyTextForAPartThatIsNotThere) {
  EXPECT_EQ("", ConnectionString("a=b").Value("c"));
  EXPECT_EQ("", ConnectionString("").Value("c"));
  EXPECT_EQ("", ConnectionString("c=").Value("c"));
}

TEST(ConnectionString, KeepsBlanksAndSignsOfAValue) {
  const ConnectionString parts("a = b c = d ;e='f' ;");
  EXPECT_EQ(" b c = d ", parts.Value("a"));
  EXPECT_EQ("'f' ", parts.Value("e"));
}

TEST(ConnectionString, AnswersTheFirstOfTwoPartsOfOneName) {
  EXPECT_EQ("1", ConnectionString("a=1;A=2").Value("a"));
}

TEST(ConnectionString, TakesAValueInBracesWithSemicolonsAndBraces) {
  const ConnectionString parts("a={x;y=z};b={in }} and {};c={};d=plain{}");
  EXPECT_EQ("x;y=z", parts.Value("a"));
  EXPECT_EQ("in } and {", parts.Value("b"));
  EXPECT_EQ("", parts.Value("c"));
  EXPECT_EQ("plain{}", parts.Value("d"));
  EXPECT_EQ("", parts.Value("y"));
}

TEST(ConnectionString, RefusesATextOfAnotherForm) {
  for (const char* zText :
       {"a", "a=b;c", "a=b;;c=d", ";a=b", "=b", " =b", "a={b", "a={b}}", "a={b}c", "a={b} ;c=d", "a=b; "}) {
    const auto refused = test::FailureOf([&] { ConnectionString parts(zText); });
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number()) << zText;
    EXPECT_NE(std::string::npos, refused.Description().find("OrderingDatabasePath")) << zText;
  }
}

TEST(ConnectionString, KnowsWhetherItHoldsOtherParts) {
  EXPECT_TRUE(ConnectionString("a=1;B=2").HoldsOnly({"A", "b"}));
  EXPECT_TRUE(ConnectionString("a=1").HoldsOnly({"a", "b"}));
  EXPECT_TRUE(ConnectionString("").HoldsOnly({"a"}));
  EXPECT_FALSE(ConnectionString("a=1;c=2").HoldsOnly({"a", "b"}));
  EXPECT_FALSE(ConnectionString("a=1;A=1").HoldsOnly({"a", "b"}));
}

TEST(ConnectionString, ComparesNamesByTheLettersAToZAlone) {
  EXPECT_TRUE(SameName("zCCStateor", "ZCCSTATEOR"));
  EXPECT_FALSE(SameName("a", "ab"));
  EXPECT_FALSE(SameName("@", "`"));
  EXPECT_FALSE(SameName("\xC3\x84", "\xC3\xA4"));
  EXPECT_TRUE(SameName("", ""));
}

TEST(OpeningAConnection, RefusesADriverThatNothingServes) {
  for (const char* zText : {"", "DBQ=/tmp/Orders.mdb", "Driver=Oracle;DBQ=/tmp/Orders.mdb",
                            "Driver=Microsoft Access Driver (*.mdb) ;DBQ=/tmp/Orders.mdb"}) {
    EXPECT_EQ(failure::kStoreUnavailable, OpenFailure(zText).Number()) << zText;
  }
  EXPECT_NE(std::string::npos, OpenFailure("Driver={Oracle}").Description().find("\"Oracle\""));
}

TEST(OpeningAConnection, ShowsNoPasswordInTheFailure) {
  EXPECT_EQ(std::string::npos, OpenFailure("Driver={Oracle};UID=u;PWD=secret").Description().find("secret"));
}

TEST(OpeningAConnection, RefusesAFolderThatIsNotSet) {
  for (const char* zText :
       {"Driver=Microsoft Access Driver (*.mdb);DBQ=\\Orders.mdb",
        "driver={Microsoft Access Driver (*.mdb)};dbq={\\Orders.mdb}",
        "Driver=Microsoft Access Driver (*.mdb)", "Driver=Microsoft Access Driver (*.mdb);DBQ="}) {
    const auto refused = OpenFailure(zText);
    EXPECT_EQ(failure::kPathNotFound, refused.Number()) << zText;
    EXPECT_NE(std::string::npos, refused.Description().find("OrderingDatabasePath")) << refused.Description();
  }
}

TEST(OpeningAConnection, RefusesAFolderWithASemicolon) {
  // What stands before the semicolon would be another file than the store of that folder.
  for (const char* zFolder : {"/data/A;B=C", "/data/A;DBQ=/data", "/data/A;Driver=x", "{/data};B=C"}) {
    const auto refused =
        OpenFailure(std::string("Driver=Microsoft Access Driver (*.mdb);DBQ=") + zFolder + "\\Orders.mdb");
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number()) << zFolder;
    EXPECT_NE(std::string::npos, refused.Description().find("must not hold a semicolon"))
        << refused.Description();
  }
}
