#include "qm_ordering/platform/ado/embedded/Translator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"

using namespace std::string_view_literals;

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::ado::embedded::ColumnKind;
using qm_ordering::ado::embedded::KindOfDeclaredType;
using qm_ordering::ado::embedded::Parameter;
using qm_ordering::ado::embedded::Translation;

// A table with a column of each kind.
std::optional<ColumnKind> Kinds(std::string_view zvColumn) {
  if (zvColumn == "lNumber") {
    return ColumnKind::Integer;
  }
  if (zvColumn == "bFlag") {
    return ColumnKind::Boolean;
  }
  if (zvColumn == "cAmount") {
    return ColumnKind::Currency;
  }
  if (zvColumn == "zText") {
    return ColumnKind::Text;
  }
  if (zvColumn == "datDay") {
    return ColumnKind::Date;
  }
  return std::nullopt;
}

Translation Translate(std::string_view zvSQL) {
  return qm_ordering::ado::embedded::Translate(zvSQL, Kinds);
}

std::string TextOf(std::string_view zvSQL) {
  return Translate(zvSQL).Text;
}

std::vector<Parameter> ParametersOf(std::string_view zvSQL) {
  return Translate(zvSQL).Parameters;
}

std::int32_t Refusal(std::string_view zvSQL) {
  return test::RaisedNumber([&] { return Translate(zvSQL); });
}

Parameter Number(std::int64_t lvNumber) {
  return lvNumber;
}

Parameter Text(std::string_view zvText) {
  return std::string(zvText);
}

using Parameters = std::vector<Parameter>;

// One assignment to the column: what becomes of the literal.
Parameter Assigned(const std::string& zvColumn, const std::string& zvLiteral) {
  const Translation result = Translate("update t set " + zvColumn + " = " + zvLiteral);
  EXPECT_EQ("update t set " + zvColumn + " = ?", result.Text);
  return result.Parameters.empty() ? Parameter("no parameter") : result.Parameters.front();
}

std::int32_t AssignmentRefusal(const std::string& zvColumn, const std::string& zvLiteral) {
  return Refusal("update t set " + zvColumn + " = " + zvLiteral);
}

}  // namespace

TEST(Translator, SplitsANumberFromTheWordThatFollowsIt) {
  EXPECT_EQ("delete from t where lNumber = ? and zText = ?",
            TextOf("delete from t where lNumber = 12and zText = 'a'"));
  EXPECT_EQ((Parameters{Number(12), Text("a")}),
            ParametersOf("delete from t where lNumber = 12and zText = 'a'"));
}

TEST(Translator, SplitsANegativeNumberFromTheWordThatFollowsIt) {
  const Translation result = Translate("delete from t where lNumber = -1and zText = 'a'");
  EXPECT_EQ("delete from t where lNumber = ? and zText = ?", result.Text);
  EXPECT_EQ((Parameters{Number(-1), Text("a")}), result.Parameters);
}

TEST(Translator, KeepsTheDigitsOfAWordInTheWord) {
  EXPECT_EQ("select zDIAddress1 , _2 from t", TextOf("select zDIAddress1,_2 from t"));
  EXPECT_EQ(Parameters{}, ParametersOf("select zDIAddress1,_2 from t"));
}

TEST(Translator, TakesANumberWithDecimalsAsOne) {
  EXPECT_EQ(Number(15000), Assigned("cAmount", "1.5"));
}

TEST(Translator, TakesAPointAsPartOfANumberOnlyBetweenDigits) {
  EXPECT_EQ("update t set cAmount = ? .", TextOf("update t set cAmount = 1."));
  EXPECT_EQ("update t set cAmount = . ?", TextOf("update t set cAmount = .5"));
  EXPECT_EQ("update t set cAmount = ? . . ?", TextOf("update t set cAmount = 1..2"));
  EXPECT_EQ("update t set cAmount = ? . ?", TextOf("update t set cAmount = 1.2.3"));
}

TEST(Translator, GivesAMinusToTheNumberBehindAComparison) {
  for (const char* zSign : {"=", "<>", "<", ">", "<=", ">="}) {
    const Translation result = Translate(std::string("delete from t where lNumber ") + zSign + "-7");
    EXPECT_EQ(std::string("delete from t where lNumber ") + zSign + " ?", result.Text);
    EXPECT_EQ(Parameters{Number(-7)}, result.Parameters);
  }
}

TEST(Translator, GivesAMinusToTheNumberInAListAndInValues) {
  EXPECT_EQ((Parameters{Number(-1), Number(-2)}), ParametersOf("delete from t where lNumber in (-1,-2)"));
  EXPECT_EQ((Parameters{Number(-1), Number(-20000)}),
            ParametersOf("insert into t (lNumber, cAmount) values (-1, -2)"));
}

TEST(Translator, TakesAMinusBetweenOperandsAsASign) {
  for (const char* zSQL : {"update t set lNumber = lNumber-3", "update t set lNumber = lNumber - 3",
                           "update t set lNumber = lNumber -3"}) {
    EXPECT_EQ("update t set lNumber = lNumber - ?", TextOf(zSQL)) << zSQL;
    EXPECT_EQ(Parameters{Number(3)}, ParametersOf(zSQL)) << zSQL;
  }
  EXPECT_EQ("update t set lNumber = ? - ?", TextOf("update t set lNumber = 5-3"));
  EXPECT_EQ("update t set lNumber = ( lNumber ) - ?", TextOf("update t set lNumber = (lNumber)-3"));
}

TEST(Translator, TakesAMinusBehindAMinusAsTheNumbers) {
  const Translation result = Translate("update t set lNumber = lNumber--3");
  EXPECT_EQ("update t set lNumber = lNumber - ?", result.Text);
  EXPECT_EQ(Parameters{Number(-3)}, result.Parameters);
}

TEST(Translator, TakesTwoQuotesInATextAsOne) {
  EXPECT_EQ(Text("O'Brien"), Assigned("zText", "'O''Brien'"));
  EXPECT_EQ(Text("'"), Assigned("zText", "''''"));
  EXPECT_EQ(Text("''"), Assigned("zText", "''''''"));
  EXPECT_EQ(Text(""), Assigned("zText", "''"));
}

TEST(Translator, RefusesATextWithoutAClosingQuote) {
  for (const char* zSQL :
       {"select 'a from t", "select ' from t", "select 'a'' from t", "select '", "select ''' from t"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL)) << zSQL;
  }
}

TEST(Translator, KeepsEverySignInsideAText) {
  const std::string zInner = "; -- /* ? :a @b $c \"d\" [e] `f` \\ % | True 12and\t\r\n";
  EXPECT_EQ(Text(zInner), Assigned("zText", "'" + zInner + "'"));
}

TEST(Translator, KeepsZeroBytesInsideAText) {
  const auto zSQL = "update t set zText = 'a\0b\0' where lNumber = 1"sv;
  EXPECT_EQ("update t set zText = ? where lNumber = ?", TextOf(zSQL));
  EXPECT_EQ((Parameters{Text("a\0b\0"sv), Number(1)}), ParametersOf(zSQL));
}

TEST(Translator, RefusesAZeroByteOutsideATextWithItsPosition) {
  const auto zSQL = "select\0 zText from t"sv;
  const auto refused = test::FailureOf([&] { Translate(zSQL); });
  EXPECT_EQ(failure::kStoreCommand, refused.Number());
  EXPECT_NE(std::string::npos, refused.Description().find("position 7")) << refused.Description();
  EXPECT_EQ(failure::kStoreCommand, Refusal("select zText from t\0"sv));
}

TEST(Translator, RefusesSignsThatStandForNothing) {
  for (const char* zSign :
       {"\"", "[", "]",  "`", "?", ":",    "@",    "$",  "#",  "%", "&",        "|",           "!",
        "~",  "^", "\\", "{", "}", "\x01", "\x7f", "\v", "\f", "é", "\xC2\xA0", "\xEF\xBB\xBF"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(std::string("select ") + zSign + " from t")) << zSign;
  }
}

TEST(Translator, RefusesNamesInDoubleQuotesBracketsAndBackticks) {
  for (const char* zSQL : {R"(select "zText" from t)", "select [zText] from t", "select `zText` from t"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL)) << zSQL;
  }
}

TEST(Translator, MakesNoCommentsOfMinusesAndSlashes) {
  // Set apart, they mean nothing to the engine, which refuses them.
  EXPECT_EQ("delete from t - - where lNumber = ?", TextOf("delete from t -- where lNumber = 1"));
  EXPECT_EQ("delete from t / * where lNumber = ? * /", TextOf("delete from t /* where lNumber = 1 */"));
}

TEST(Translator, JoinsNoSignsThatStoodApart) {
  EXPECT_EQ("delete from t where lNumber < = ?", TextOf("delete from t where lNumber < = 1"));
  EXPECT_EQ("delete from t where lNumber < > ?", TextOf("delete from t where lNumber < > 1"));
}

TEST(Translator, MakesNoOneTextOfTwoThatStandApart) {
  EXPECT_EQ("select ? ? from t", TextOf("select 'a' 'b' from t"));
}

TEST(Translator, MakesNoBytesOfATextBehindALetter) {
  EXPECT_EQ("select x ? from t", TextOf("select x'4142' from t"));
}

TEST(Translator, TakesAllBlanksAlike) {
  EXPECT_EQ("select zText from t", TextOf("\t select\r\n\r\n zText\tfrom    t \n"));
}

TEST(Translator, AllowsOneSemicolonAtTheEnd) {
  EXPECT_EQ("select zText from t", TextOf("select zText from t;"));
  EXPECT_EQ("select zText from t", TextOf("select zText from t ; \r\n"));
}

TEST(Translator, RefusesWhatFollowsTheClosingSemicolon) {
  for (const char* zSQL :
       {"select zText from t; delete from t", "select zText from t;;", "select zText from t; 'a'",
        "select zText from t; x", "delete from t; ;", "delete from t where zText = ''; --"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL)) << zSQL;
  }
}

TEST(Translator, RefusesAClosingParenthesisWithoutAnOpeningOne) {
  EXPECT_EQ(failure::kStoreCommand, Refusal("select count) from t where lNumber in (1, 2, 3)"));
  EXPECT_EQ(failure::kStoreCommand, Refusal("select a from t where (lNumber = 1)) or (lNumber = 2"));
}

TEST(Translator, RefusesAnEmptyStatement) {
  for (const char* zSQL : {"", " ", ";", " ; ", ";;", "\r\n"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL)) << '"' << zSQL << '"';
  }
}

TEST(Translator, TakesTheFourStatementsInAnyLetterCase) {
  EXPECT_EQ("SELECT zText FROM t", TextOf("SELECT zText FROM t"));
  EXPECT_EQ("Insert into t ( zText ) values ( ? )", TextOf("Insert into t (zText) values ('a')"));
  EXPECT_EQ("uPdAtE t set zText = ?", TextOf("uPdAtE t set zText = 'a'"));
  EXPECT_EQ("DELETE from t", TextOf("DELETE from t"));
}

TEST(Translator, RefusesEveryOtherStatement) {
  for (const char* zSQL : {"drop table t",
                           "create table u (a)",
                           "alter table t rename to u",
                           "attach 'x' as y",
                           "detach y",
                           "pragma foreign_keys = off",
                           "vacuum",
                           "vacuum into 'x'",
                           "begin",
                           "commit",
                           "rollback",
                           "savepoint a",
                           "release a",
                           "reindex",
                           "analyze",
                           "explain select zText from t",
                           "with a as (select 1) select * from a",
                           "replace into t (zText) values ('a')",
                           "values (1)",
                           "selectx from t",
                           "12 select",
                           "'select'",
                           "(select zText from t)",
                           "True",
                           "- select zText from t"}) {
    EXPECT_EQ(failure::kStoreCommand, Refusal(zSQL)) << zSQL;
  }
}

TEST(Translator, RefusesATextThatIsNotUTF8WithThePlace) {
  for (const std::string zBroken : {"\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
    const auto refused = test::FailureOf([&] { Translate("update t set zText = '" + zBroken + "'"); });
    EXPECT_EQ(failure::kStoreCommand, refused.Number());
    EXPECT_NE(std::string::npos, refused.Description().find("byte 23")) << refused.Description();
  }
}

TEST(Translator, PairsTheValuesOfAnInsertWithItsColumns) {
  const Translation result = Translate(
      "insert into t (lNumber, bFlag, cAmount, zText, datDay) values (1, True, 2.5, 'a', '2003-07-04')");
  EXPECT_EQ("insert into t ( lNumber , bFlag , cAmount , zText , datDay ) values ( ? , ? , ? , ? , ? )",
            result.Text);
  EXPECT_EQ((Parameters{Number(1), Number(-1), Number(25000), Text("a"), Text("2003-07-04 00:00:00")}),
            result.Parameters);
}

TEST(Translator, PairsTheValuesOfEachRowOfAnInsert) {
  EXPECT_EQ((Parameters{Number(1), Number(20000), Number(3), Number(40000)}),
            ParametersOf("insert into t (lNumber, cAmount) values (1, 2), (3, 4)"));
}

TEST(Translator, PairsTheAssignmentsOfAnUpdate) {
  const Translation result =
      Translate("update t set lNumber=1,bFlag=False,cAmount=-2.5 , zText='a' , datDay='2003-07-04 15:04:05'");
  EXPECT_EQ("update t set lNumber = ? , bFlag = ? , cAmount = ? , zText = ? , datDay = ?", result.Text);
  EXPECT_EQ((Parameters{Number(1), Number(0), Number(-25000), Text("a"), Text("2003-07-04 15:04:05")}),
            result.Parameters);
}

TEST(Translator, PairsWhatIsAddedToAColumnWithThatColumn) {
  EXPECT_EQ(Parameters{Number(30000)}, ParametersOf("update t set cAmount = cAmount + 3"));
  EXPECT_EQ(Parameters{Number(30000)}, ParametersOf("update t set cAmount = cAmount - 3"));
  EXPECT_EQ(Parameters{Number(3)}, ParametersOf("update t set lNumber = lNumber + 3"));
}

TEST(Translator, PairsTheConditionsOfEveryStatement) {
  for (const char* zBegin : {"select zText from t", "update t set zText = zText", "delete from t"}) {
    const std::string zSQL =
        std::string(zBegin) +
        " where lNumber = 1 and cAmount <> 2 and zText < 'a' and datDay >= '2003-07-04' or cAmount <= 3";
    EXPECT_EQ((Parameters{Number(1), Number(20000), Text("a"), Text("2003-07-04 00:00:00"), Number(30000)}),
              ParametersOf(zSQL))
        << zSQL;
  }
}

TEST(Translator, PairsEachMemberOfAListWithTheColumnBeforeIt) {
  EXPECT_EQ((Parameters{Number(10000), Number(25000), Number(-1)}),
            ParametersOf("delete from t where cAmount in (1, 2.5) and lNumber=-1"));
}

TEST(Translator, PairsNothingWithAColumnThatItDoesNotKnow) {
  const Translation result = Translate("update t set other = 3, another = 'a' where third in (4)");
  EXPECT_EQ((Parameters{Number(3), Text("a"), Number(4)}), result.Parameters);
}

TEST(Translator, TakesEvery32BitIntegerAndNothingBeyond) {
  EXPECT_EQ(Number(2147483647), Assigned("lNumber", "2147483647"));
  EXPECT_EQ(Number(-2147483648LL), Assigned("lNumber", "-2147483648"));
  EXPECT_EQ(Number(7), Assigned("lNumber", "007"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("lNumber", "2147483648"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("lNumber", "-2147483649"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("lNumber", "9223372036854775808"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("lNumber", "1.5"));
}

TEST(Translator, TakesMoneyExactlyUpToBothEnds) {
  EXPECT_EQ(Number(std::numeric_limits<std::int64_t>::max()), Assigned("cAmount", "922337203685477.5807"));
  EXPECT_EQ(Number(std::numeric_limits<std::int64_t>::min()), Assigned("cAmount", "-922337203685477.5808"));
  EXPECT_EQ(Number(1), Assigned("cAmount", "0.0001"));
  EXPECT_EQ(Number(120000), Assigned("cAmount", "12"));
  // Beyond what a floating-point number of 64 bits could tell apart.
  EXPECT_EQ(Number(9007199254740993), Assigned("cAmount", "900719925474.0993"));
}

TEST(Translator, RaisesOverflowForMoneyBeyondTheEnds) {
  EXPECT_EQ(failure::kOverflow, AssignmentRefusal("cAmount", "922337203685477.5808"));
  EXPECT_EQ(failure::kOverflow, AssignmentRefusal("cAmount", "-922337203685477.5809"));
}

TEST(Translator, WritesTheWordsTrueAndFalseAsTheStoresFlags) {
  for (const char* zTrue : {"True", "true", "TRUE"}) {
    EXPECT_EQ(Number(-1), Assigned("bFlag", zTrue)) << zTrue;
  }
  for (const char* zFalse : {"False", "false", "FALSE"}) {
    EXPECT_EQ(Number(0), Assigned("bFlag", zFalse)) << zFalse;
  }
}

TEST(Translator, WritesEveryNumberButZeroAsTrueInAFlag) {
  EXPECT_EQ(Number(-1), Assigned("bFlag", "1"));
  EXPECT_EQ(Number(-1), Assigned("bFlag", "-1"));
  EXPECT_EQ(Number(0), Assigned("bFlag", "0"));
}

TEST(Translator, KeepsFlagsInAConditionAsConstants) {
  // So that the engine can see that an index over one of the two is of use.
  const Translation result = Translate("update t set bFlag = False where bFlag = True and bFlag <> False");
  EXPECT_EQ("update t set bFlag = ? where bFlag = -1 and bFlag <> 0", result.Text);
  EXPECT_EQ(Parameters{Number(0)}, result.Parameters);
}

TEST(Translator, WritesDatesInTheStoresForm) {
  EXPECT_EQ(Text("2003-07-04 15:04:05"), Assigned("datDay", "'2003-07-04 15:04:05'"));
  EXPECT_EQ(Text("2003-07-04 00:00:00"), Assigned("datDay", "'2003-07-04'"));
  EXPECT_EQ(Text("0100-01-01 00:00:00"), Assigned("datDay", "'0100-01-01 00:00:00'"));
  EXPECT_EQ(Text("9999-12-31 23:59:59"), Assigned("datDay", "'9999-12-31 23:59:59'"));
}

TEST(Translator, RefusesATextThatIsNoDateForADate) {
  for (const char* zLiteral : {"''", "'7/4/2003'", "'2003-02-29'", "'2003-07-04 24:00:00'",
                               "'2003-07-04 15:04'", "'2003-07-04 15:04:05 '", "'2003-07-04T15:04:05'"}) {
    EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("datDay", zLiteral)) << zLiteral;
  }
}

TEST(Translator, RefusesALiteralOfAnotherKindThanItsColumn) {
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("lNumber", "'1'"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("cAmount", "'1'"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("bFlag", "'True'"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("zText", "1"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("datDay", "1"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("zText", "True"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("cAmount", "True"));
  EXPECT_EQ(failure::kStoreCommand, AssignmentRefusal("datDay", "False"));
  EXPECT_EQ(failure::kStoreCommand, Refusal("insert into t (lNumber) values ('1')"));
  EXPECT_EQ(failure::kStoreCommand, Refusal("delete from t where lNumber in (1, '2')"));
  EXPECT_EQ(failure::kStoreCommand, Refusal("select zText from t where zText = 1"));
}

TEST(Translator, MakesOneTextOfStatementsThatDifferInTheirLiteralsAlone) {
  const std::string zText = "update t set lNumber = ? , zText = ? where cAmount = ?";
  EXPECT_EQ(zText, TextOf("update t set lNumber = 1, zText = 'a' where cAmount = 2"));
  EXPECT_EQ(zText, TextOf("update t set lNumber=-300,zText='it''s; longer' where cAmount=-0.0001;"));
}

std::string InList(std::size_t lvValues) {
  std::string zSQL = "delete from t where zText in (";
  for (std::size_t i = 0; i < lvValues; ++i) {
    zSQL += (i == 0 ? "'" : ", '") + std::to_string(i) + "'";
  }
  return zSQL + ") and lNumber = 7";
}

TEST(Translator, FillsAListUpToAPowerOfTwoWithItsLastValue) {
  const Translation three = Translate("delete from t where zText in ('a', 'b', 'c') and lNumber = 7");
  EXPECT_EQ("delete from t where zText in ( ? , ? , ? , ? ) and lNumber = ?", three.Text);
  EXPECT_EQ((Parameters{Text("a"), Text("b"), Text("c"), Text("c"), Number(7)}), three.Parameters);
  EXPECT_EQ("delete from t where zText not in ( ? )", TextOf("delete from t where zText not in ('a')"));
  EXPECT_EQ(Translate(InList(65)).Text, Translate(InList(128)).Text);
  EXPECT_NE(Translate(InList(64)).Text, Translate(InList(65)).Text);
  EXPECT_EQ(129U, Translate(InList(65)).Parameters.size());
  EXPECT_FALSE(Translate(InList(65)).VariableLength);
}

TEST(Translator, FillsOnlyListsOfValues) {
  EXPECT_EQ(
      "delete from t where zText in ( select zText from t where zText > ? or zText < ? or zText = ? )",
      TextOf("delete from t where zText in (select zText from t where zText>'a' or zText<'b' or zText='c')"));
  EXPECT_EQ("delete from t where zText in ( zText , ? , ? , ? )",
            TextOf("delete from t where zText in (zText, 'a', 'b', 'c')"));
  EXPECT_EQ("delete from t where zText in ( )", TextOf("delete from t where zText in ()"));
}

TEST(Translator, MarksTextsWhoseLengthFollowsTheirLiterals) {
  EXPECT_FALSE(Translate(InList(1024)).VariableLength);
  EXPECT_TRUE(Translate(InList(1025)).VariableLength);
  EXPECT_EQ(1026U, Translate(InList(1025)).Parameters.size());
  EXPECT_FALSE(Translate("delete from t where zText = 'in (a, b)'").VariableLength);
  EXPECT_FALSE(Translate("insert into t (zText, lNumber) values ('a', 1)").VariableLength);
}

TEST(Translator, KnowsTheKindsOfCountsSumsAndLargestValues) {
  using Kind = std::optional<ColumnKind>;
  const std::vector<Kind> kinds = {ColumnKind::Integer, ColumnKind::Currency, ColumnKind::Integer,
                                   ColumnKind::Date,    std::nullopt,         ColumnKind::Integer};
  EXPECT_EQ(kinds,
            Translate("select count(*), sum(cAmount), MAX(lNumber), min(datDay), zText, Count(zText) from t")
                .ResultKinds);
}

TEST(Translator, KnowsNoResultKindsWhereItCannotTell) {
  using Kind = std::optional<ColumnKind>;
  EXPECT_EQ((std::vector<Kind>{std::nullopt}), Translate("select * from t").ResultKinds);
  EXPECT_EQ((std::vector<Kind>{std::nullopt}), Translate("select sum(other) from t").ResultKinds);
  EXPECT_EQ((std::vector<Kind>{std::nullopt}), Translate("select avg(cAmount) from t").ResultKinds);
  EXPECT_EQ(std::vector<Kind>{}, Translate("update t set lNumber = 1").ResultKinds);
}

TEST(Translator, NamesTheTableBehindTheFirstFrom) {
  EXPECT_EQ("tblOrder", Translate("select zText From tblOrder where lNumber = 1").Table);
  EXPECT_EQ("tblOrder", Translate("delete from tblOrder").Table);
  EXPECT_EQ("", Translate("select zText from").Table);
}

TEST(Translator, PutsAHiddenColumnFirst) {
  EXPECT_EQ(
      "select rowid , zText , lNumber from t where lNumber = ?",
      qm_ordering::ado::embedded::Translate("select zText, lNumber from t where lNumber = 1", Kinds, "rowid")
          .Text);
}

TEST(Translator, KnowsTheDeclaredTypesOfTheStore) {
  EXPECT_EQ(ColumnKind::Integer, KindOfDeclaredType("INTEGER"));
  EXPECT_EQ(ColumnKind::Boolean, KindOfDeclaredType("YESNO INTEGER"));
  EXPECT_EQ(ColumnKind::Currency, KindOfDeclaredType("currency integer"));
  EXPECT_EQ(ColumnKind::Text, KindOfDeclaredType("TEXT"));
  EXPECT_EQ(ColumnKind::Text, KindOfDeclaredType("MEMO TEXT"));
  EXPECT_EQ(ColumnKind::Date, KindOfDeclaredType("DATETIME TEXT"));
  for (const char* zType : {"", "INT", "REAL", "BLOB", "VARCHAR(20)", "INTEGER "}) {
    EXPECT_EQ(std::nullopt, KindOfDeclaredType(zType)) << zType;
  }
}
