#include "qm_ordering/platform/ado/embedded/Prepared.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::embedded {

namespace {

[[noreturn]] void RaiseHolds(const Prepared& statement, std::size_t lvColumn, const char* zvWhat) {
  throw Failure(failure::kTypeMismatch,
                "The column " + (*statement.Columns)[lvColumn] + " holds " + zvWhat + ".");
}

Variant TextColumn(const Prepared& statement, std::size_t lvColumn, sqlite3_value* pValue) {
  const void* pBytes = sqlite3_value_blob(pValue);
  const std::string_view zText(static_cast<const char*>(pBytes),
                               pBytes == nullptr ? 0 : static_cast<std::size_t>(sqlite3_value_bytes(pValue)));
  switch (statement.Kinds[lvColumn].value_or(ColumnKind::Text)) {
    case ColumnKind::Text:
      return zText;
    case ColumnKind::Date:
      if (const std::optional<Date> datValue = Date::ParseStoreText(zText)) {
        return *datValue;
      }
      RaiseHolds(statement, lvColumn, "no date");
    default:
      RaiseHolds(statement, lvColumn, "a text, not a number");
  }
}

Variant IntegerColumn(const Prepared& statement, std::size_t lvColumn, sqlite3_value* pValue) {
  const std::int64_t lNumber = sqlite3_value_int64(pValue);
  switch (statement.Kinds[lvColumn].value_or(ColumnKind::Integer)) {
    case ColumnKind::Integer:
      return lNumber;
    case ColumnKind::Boolean:
      return lNumber != 0;
    case ColumnKind::Currency:
      return Currency::FromScaled(lNumber);
    default:
      RaiseHolds(statement, lvColumn, "a number of the wrong kind");
  }
}

}  // namespace

Variant ReadColumn(const Prepared& statement, std::size_t lvColumn) {
  // The value itself, asked for once: the engine's readers of columns look each for it anew. It may be used
  // so because one thread at a time has the session.
  sqlite3_value* pValue = sqlite3_column_value(statement.Handle.get(), static_cast<int>(lvColumn));
  switch (sqlite3_value_type(pValue)) {
    case SQLITE_NULL:
      return Variant::Null();
    case SQLITE_INTEGER:
      return IntegerColumn(statement, lvColumn, pValue);
    case SQLITE_FLOAT:
      if (statement.Kinds[lvColumn]) {
        RaiseHolds(statement, lvColumn, "a number of the wrong kind");
      }
      return sqlite3_value_double(pValue);
    default:
      return TextColumn(statement, lvColumn, pValue);
  }
}

void DescribeResults(Prepared& statement, const std::vector<std::optional<ColumnKind>>& resultKinds) {
  const int lColumns = sqlite3_column_count(statement.Handle.get());
  std::vector<std::string> zColumns;
  for (int i = 0; i < lColumns; ++i) {
    const char* zName = sqlite3_column_name(statement.Handle.get(), i);
    const char* zType = sqlite3_column_decltype(statement.Handle.get(), i);
    if (zName == nullptr) {
      throw OutOfMemory();
    }
    zColumns.emplace_back(zName);
    if (zType != nullptr) {
      statement.Kinds.push_back(KindOfDeclaredType(zType));
    } else if (resultKinds.size() == static_cast<std::size_t>(lColumns)) {
      statement.Kinds.push_back(resultKinds[static_cast<std::size_t>(i)]);
    } else {
      statement.Kinds.push_back(std::nullopt);
    }
  }
  statement.Columns = std::make_shared<const ColumnNames>(std::move(zColumns));
}

}  // namespace qm_ordering::ado::embedded
