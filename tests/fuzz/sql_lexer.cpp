// Any bytes as a statement: the translator refuses them with a failure, or makes a text of which all that is
// true of every translation is true, and which the engine takes as one statement on rows, or refuses.

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/embedded/PooledSession.h"
#include "qm_ordering/platform/ado/embedded/Translator.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/Store.h"

namespace {

using fuzz::Require;
using qm_ordering::Failure;
namespace engine = qm_ordering::ado::embedded;

// A statement of the library touches rows, and nothing else.
int AllowRowsOnly(void*, int lvAction, const char*, const char*, const char*, const char*) {
  switch (lvAction) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
      return SQLITE_OK;
    default:
      Require(false,
              "a translated statement reads and writes rows alone (action " + std::to_string(lvAction) + ")");
      return SQLITE_DENY;
  }
}

engine::PooledSession& Session() {
  static const auto session = [] {
    const std::string zStore = fuzz::NewStore();
    auto opened = std::make_unique<engine::PooledSession>(zStore, engine::PooledSession::Use::Store, zStore);
    // What the engine looks up in the file when it refuses a text is then in memory.
    opened->Run("BEGIN IMMEDIATE");
    sqlite3_set_authorizer(opened->Database(), AllowRowsOnly, nullptr);
    return opened;
  }();
  return *session;
}

std::vector<std::string_view> TokensOf(std::string_view zvText) {
  std::vector<std::string_view> tokens;
  while (!zvText.empty()) {
    const std::size_t lEnd = zvText.find(' ');
    tokens.push_back(zvText.substr(0, lEnd));
    zvText.remove_prefix(lEnd == std::string_view::npos ? zvText.size() : lEnd + 1);
  }
  return tokens;
}

bool IsWord(std::string_view zvToken) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
  return !zvToken.empty() && kLetters.find(zvToken.front()) != std::string_view::npos &&
         zvToken.find_first_not_of(std::string(kLetters) + "0123456789") == std::string_view::npos;
}

bool IsName(std::string_view zvToken) {
  return IsWord(zvToken) && !qm_ordering::ado::SameName(zvToken, "True") &&
         !qm_ordering::ado::SameName(zvToken, "False");
}

bool IsSign(std::string_view zvToken) {
  return zvToken == "<>" || zvToken == "<=" || zvToken == ">=" ||
         (zvToken.size() == 1 && std::string_view("=<>()+-*/,.").find(zvToken) != std::string_view::npos);
}

// The constants that True and False become.
bool IsFlag(std::string_view zvToken) {
  return zvToken == "-1" || zvToken == "0";
}

void RequireOnlyWordsSignsAndParameters(const engine::Translation& translation, std::string_view zvSQL) {
  std::size_t lParameters = 0;
  bool bFlags = false;
  for (const std::string_view zToken : TokensOf(translation.Text)) {
    lParameters += zToken == "?" ? 1 : 0;
    bFlags = bFlags || IsFlag(zToken);
    Require(zToken == "?" || IsFlag(zToken) || IsWord(zToken) || IsSign(zToken),
            "a translation consists of words, signs, parameters and flags: " + translation.Text);
    Require(!IsWord(zToken) || zvSQL.find(zToken) != std::string_view::npos,
            "the words of a translation are those of the statement: " + translation.Text);
    Require(!IsWord(zToken) || IsName(zToken), "True and False are written as numbers: " + translation.Text);
  }
  Require(lParameters == translation.Parameters.size(),
          "there is a parameter for each of its signs: " + translation.Text);
  const std::string zFolded = qm_ordering::text::Fold(zvSQL);
  Require(!bFlags || zFolded.find("true") != std::string::npos || zFolded.find("false") != std::string::npos,
          "no number stays in the text: " + translation.Text);
}

// Each text is one that stands in the statement, or a date.
void RequireTextsOfTheStatement(const engine::Translation& translation, std::string_view zvSQL) {
  for (const engine::Parameter& parameter : translation.Parameters) {
    const auto* pText = std::get_if<std::string>(&parameter);
    Require(!std::holds_alternative<std::monostate>(parameter), "no literal is null");
    if (pText == nullptr) {
      continue;
    }
    Require(!qm_ordering::text::FindBrokenUTF8(*pText), "a parameter is UTF-8");
    if (zvSQL.find("'" + qm_ordering::SQLText(*pText) + "'") == std::string_view::npos) {
      const auto datText = qm_ordering::Date::ParseStoreText(*pText);
      Require(datText && datText->ToStoreText() == *pText,
              "a text parameter stands in the statement or is a date: " + *pText);
    }
  }
}

// The statement that a translation without columns stands for, in one spelling.
std::string Written(const engine::Translation& translation) {
  std::string zSQL;
  std::size_t lParameter = 0;
  bool bBehindSign = false;  // where a minus belongs to the number that follows
  for (const std::string_view zToken : TokensOf(translation.Text)) {
    zSQL += ' ';
    if (zToken == "?") {
      const engine::Parameter& parameter = translation.Parameters[lParameter++];
      if (const auto* pText = std::get_if<std::string>(&parameter)) {
        zSQL += "'" + qm_ordering::SQLText(*pText) + "'";
      } else {
        const std::int64_t lNumber = std::get<std::int64_t>(parameter);
        zSQL += lNumber < 0 && !bBehindSign ? "True" : std::to_string(lNumber);
      }
    } else if (IsFlag(zToken)) {
      zSQL += zToken == "0" ? "False" : "True";
    } else {
      zSQL += zToken;
    }
    bBehindSign = IsSign(zToken) && zToken != ")";
  }
  return zSQL;
}

// A literal behind a FROM is no table.
bool SameTranslation(const engine::Translation& left, const engine::Translation& right) {
  return left.Text == right.Text && left.Parameters == right.Parameters &&
         left.VariableLength == right.VariableLength && left.ResultKinds == right.ResultKinds &&
         (left.Table == right.Table || !IsName(left.Table));
}

void RequireOneMeaning(std::string_view zvSQL) {
  const engine::ColumnKinds none = [](std::string_view) { return std::optional<engine::ColumnKind>(); };
  engine::Translation plain;
  try {
    plain = engine::Translate(zvSQL, none);
  } catch (const Failure&) {
    return;
  }
  const std::string zWritten = Written(plain);
  try {
    Require(SameTranslation(plain, engine::Translate(zWritten, none)),
            "a statement written anew is the same statement: " + zWritten);
  } catch (const Failure& failure) {
    Require(false, "a statement written anew is taken: " + zWritten + ": " + failure.Description());
  }
}

void RequireHiddenColumnFirst(const engine::Translation& translation, std::string_view zvSQL) {
  const engine::Translation hidden = engine::Translate(zvSQL, Session().Kinds(), "rowid");
  std::string zExpected = translation.Text;
  zExpected.insert(zExpected.find(' ') == std::string::npos ? zExpected.size() : zExpected.find(' '),
                   " rowid ,");
  Require(hidden.Text == zExpected && hidden.Parameters == translation.Parameters,
          "the hidden column comes first and changes nothing else: " + hidden.Text);
}

void RequireOneStatement(const engine::Translation& translation) {
  std::unique_ptr<engine::Prepared> statement;
  try {
    statement = Session().Prepare(translation);
  } catch (const Failure&) {
    return;
  }
  sqlite3_stmt* pStatement = statement->Handle.get();
  Require(pStatement != nullptr, "the engine makes a statement of what it takes: " + translation.Text);
  Require(sqlite3_sql(pStatement) == translation.Text,
          "the engine takes the text as one statement: " + translation.Text);
  Require(sqlite3_bind_parameter_count(pStatement) == static_cast<int>(translation.Parameters.size()),
          "the engine finds the same parameters: " + translation.Text);
  Require(sqlite3_stmt_isexplain(pStatement) == 0, "nothing is explained");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  const std::string_view zSQL(reinterpret_cast<const char*>(pData), lSize);
  engine::Translation translation;
  try {
    translation = engine::Translate(zSQL, Session().Kinds());
  } catch (const Failure&) {
    return 0;
  }
  RequireOnlyWordsSignsAndParameters(translation, zSQL);
  RequireTextsOfTheStatement(translation, zSQL);
  RequireOneMeaning(zSQL);
  RequireHiddenColumnFirst(translation, zSQL);
  RequireOneStatement(translation);
  return 0;
}
