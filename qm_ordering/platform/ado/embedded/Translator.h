#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qm_ordering::ado::embedded {

// What a column holds, by its declared type. The engine itself knows numbers and texts only.
enum class ColumnKind {
  Integer,   // "INTEGER": 32 bits
  Boolean,   // "YESNO INTEGER": -1 and 0
  Currency,  // "CURRENCY INTEGER": the amount times 10,000
  Text,      // "TEXT", "MEMO TEXT"
  Date,      // "DATETIME TEXT": YYYY-MM-DD HH:MM:SS
};

// The kind of a declared type; nothing for one that the store does not use.
std::optional<ColumnKind> KindOfDeclaredType(std::string_view zvType);

// The kind of a column by its name, in any letter case; nothing for an unknown one.
using ColumnKinds = std::function<std::optional<ColumnKind>(std::string_view zvColumn)>;

// A value that goes to the engine as a parameter; the last one is null.
using Parameter = std::variant<std::int64_t, std::string, std::monostate>;

// A statement in the engine's form: one text for all statements that differ in their literals alone, so that
// it is the key of the cache of prepared statements.
struct Translation {
  std::string Text;
  std::vector<Parameter> Parameters;
  // The text depends on the number of values too (a long list behind IN): not worth keeping prepared.
  bool VariableLength = false;
  // The kinds of the results that have no declared type: count(*), sum(COLUMN), max(COLUMN), min(COLUMN), by
  // their position in the select list.
  std::vector<std::optional<ColumnKind>> ResultKinds;
  // The table behind the first FROM.
  std::string Table;
};

// Splits the statement into words, numbers, texts and signs (so that "12and" is a number and a word), lifts
// the literals into parameters of the kind of the column that they are assigned to, inserted into or compared
// with, and writes True and False as -1 and 0. With zvHiddenColumn, that column becomes the first of the
// select list.
//
// One statement, SELECT, INSERT, UPDATE or DELETE; a ";" may end it. Raises failure::kStoreCommand for
// anything else, for text that is not UTF-8, and for a literal that its column cannot take.
Translation Translate(std::string_view zvSQL, const ColumnKinds& kinds, std::string_view zvHiddenColumn = {});

}  // namespace qm_ordering::ado::embedded
