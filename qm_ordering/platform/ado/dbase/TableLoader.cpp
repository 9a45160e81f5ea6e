#include "qm_ordering/platform/ado/dbase/TableLoader.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/dbase/EngineAnswer.h"
#include "qm_ordering/platform/value/Date.h"

namespace qm_ordering::ado::dbase {

namespace {

constexpr std::size_t kMostShown = 40;  // bytes of a value in a message

constexpr int kMillisecondsOfADay = 86'400'000;
// The number that FoxPro gives to 1 January 1970, and to the last day of the year 9999.
constexpr int kFirstDayOf1970 = 2'440'588;
constexpr int kLastDayOf9999 = 5'373'484;
// The years that a Date has.
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;

std::string Quoted(std::string_view zvName) {
  std::string zQuoted = "\"";
  for (const char c : zvName) {
    zQuoted.append(c == '"' ? 2 : 1, c);
  }
  return zQuoted + '"';
}

// What fills a field behind its value, or before it.
bool IsPadding(char c) {
  return c == ' ' || c == '\0';
}

std::string_view WithoutPaddingBehind(std::string_view zvBytes) {
  while (!zvBytes.empty() && IsPadding(zvBytes.back())) {
    zvBytes.remove_suffix(1);
  }
  return zvBytes;
}

std::string_view WithoutPaddingBefore(std::string_view zvBytes) {
  while (!zvBytes.empty() && IsPadding(zvBytes.front())) {
    zvBytes.remove_prefix(1);
  }
  return zvBytes;
}

bool IsAscii(std::string_view zvBytes) {
  unsigned char lAll = 0;
  for (const char c : zvBytes) {
    lAll |= static_cast<unsigned char>(c);
  }
  return lAll < 128;
}

std::optional<Date> DayOf(std::string_view zvBytes) {
  std::string zDay(zvBytes.substr(0, 4));
  zDay.append("-").append(zvBytes.substr(4, 2)).append("-").append(zvBytes.substr(6));
  return Date::ParseStoreText(zDay);
}

// FoxPro's number of a day and milliseconds of it, to the nearest second.
std::optional<Date> MomentOf(std::string_view zvBytes) {
  const auto lDay = static_cast<std::int32_t>(LittleEndian(zvBytes.substr(0, 4)));
  const auto lTime = static_cast<std::int32_t>(LittleEndian(zvBytes.substr(4)));
  if (lTime < 0 || lTime >= kMillisecondsOfADay || lDay < 0 || lDay > kLastDayOf9999) {
    return std::nullopt;
  }
  using namespace std::chrono;
  const sys_seconds moment = sys_days(days(lDay - kFirstDayOf1970)) + round<seconds>(milliseconds(lTime));
  const sys_days day = floor<days>(moment);
  const year_month_day date(day);
  const hh_mm_ss time(moment - day);
  const int lYear = static_cast<int>(date.year());
  if (lYear < kFirstYear || lYear > kLastYear) {
    return std::nullopt;
  }
  return Date(lYear, static_cast<int>(static_cast<unsigned>(date.month())),
              static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(time.hours().count()),
              static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
}

// The bytes must stay where they are until the row is in the table.
int BindInPlace(sqlite3_stmt* pStatement, int lvPosition, std::string_view zvText) {
  return sqlite3_bind_text(pStatement, lvPosition, zvText.data(), static_cast<int>(zvText.size()),
                           SQLITE_STATIC);
}

}  // namespace

TableLoader::TableLoader(sqlite3* db, std::string zvName, TableFile& table, const StatementColumns& columns)
    : m_oDatabase(db), m_zName(std::move(zvName)), m_oTable(table), m_oNamed(columns) {
  for (const TableField& field : table.Fields()) {
    if (!field.IsSystem) {
      Column column;
      column.Field = &field;
      column.DeclaredType = DeclaredTypeOf(field);
      column.IsKey = std::ranges::any_of(columns.Keys,
                                         [&](const std::string& zKey) { return SameName(zKey, field.Name); });
      m_oColumns.push_back(std::move(column));
    }
  }
  if (m_oColumns.empty()) {
    throw table.Damage("it has no fields");
  }
  Create(true, NullKeys::Taken);
}

void TableLoader::Use(const char* zvColumn) {
  for (Column& column : m_oColumns) {
    if (SameName(column.Field->Name, zvColumn)) {
      column.IsUsed = true;
    }
  }
}

void TableLoader::Load() {
  bool bAnyUsed = false;
  for (const Column& column : m_oColumns) {
    if (column.IsUsed) {
      CheckUsable(column);
      bAnyUsed = true;
    }
  }
  for (const NullKeys nullKeys : {NullKeys::Refused, NullKeys::Taken}) {
    Run("DROP TABLE " + Quoted(m_zName));
    // A table of no column at all there is not.
    Create(!bAnyUsed, nullKeys);
    if (Insert(nullKeys)) {
      break;
    }
  }
  CreateIndex();
}

const char* TableLoader::DeclaredTypeOf(const TableField& field) const {
  switch (field.Type) {
    case 'D':
    case 'T':
      return "DATETIME TEXT";
    case 'L':
      return "YESNO INTEGER";
    case 'I':
      return "INTEGER";
    case 'Y':
      return "CURRENCY INTEGER";
    case 'B':
      return m_oTable.IsFoxPro() ? "REAL" : "TEXT";
    default:
      return "TEXT";
  }
}

void TableLoader::CheckUsable(const Column& column) const {
  const TableField& field = *column.Field;
  std::size_t lLength = field.Length;
  switch (field.Type) {
    case 'C':
      if (field.IsBinary) {
        throw m_oTable.Damage("column " + field.Name + " holds bytes, not text");
      }
      break;
    case 'N':
    case 'F':
    case 'M':
    case 'G':
    case 'P':
      break;
    case 'L':
      lLength = 1;
      break;
    case 'I':
      lLength = 4;
      break;
    case 'B':
      lLength = m_oTable.IsFoxPro() ? 8 : field.Length;
      break;
    case 'D':
    case 'T':
    case 'Y':
      lLength = 8;
      break;
    default:
      throw m_oTable.Damage("column " + field.Name + " is of the type " + Shown({&field.Type, 1}) +
                            ", which is none of C, N, F, D, T, L, I, Y, B, M, G, P");
  }
  if (field.Length != lLength) {
    throw m_oTable.Damage("column " + field.Name + " of the type " + field.Type + " takes " +
                          std::to_string(field.Length) + " bytes instead of " + std::to_string(lLength));
  }
}

void TableLoader::Create(bool bvAll, NullKeys nullKeys) {
  std::string zColumns;
  for (const Column& column : m_oColumns) {
    if (!bvAll && !column.IsUsed) {
      continue;
    }
    zColumns += (zColumns.empty() ? "" : ", ") + Quoted(column.Field->Name) + " " + column.DeclaredType;
    if (column.IsKey) {
      // Only a key that is never null is known by the engine to find one record at most.
      zColumns += nullKeys == NullKeys::Refused ? " NOT NULL" : "";
    } else if (std::string_view(column.DeclaredType) == "TEXT") {
      zColumns += std::string(" COLLATE ") + embedded::kTextCollation;
    }
  }
  Run("CREATE TABLE " + Quoted(m_zName) + " (" + zColumns + ")");
}

bool TableLoader::Insert(NullKeys nullKeys) {
  std::vector<Column*> used;
  std::string zValues;
  for (Column& column : m_oColumns) {
    if (column.IsUsed) {
      zValues += used.empty() ? "?" : ", ?";
      used.push_back(&column);
    }
  }
  const std::string zInsert = "INSERT INTO " + Quoted(m_zName) +
                              (used.empty() ? std::string(" DEFAULT VALUES") : " VALUES (" + zValues + ")");
  sqlite3_stmt* pStatement = nullptr;
  int lResult = sqlite3_prepare_v2(m_oDatabase, zInsert.c_str(), -1, &pStatement, nullptr);
  const embedded::StatementHandle statement(pStatement);
  if (lResult != SQLITE_OK) {
    throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
  }
  Run("BEGIN");
  for (std::int32_t lRecord = 0; lRecord < m_oTable.RecordCount(); ++lRecord) {
    const char* pRecord = m_oTable.Record(lRecord);
    if (pRecord == nullptr) {
      continue;
    }
    int lPosition = 0;
    for (Column* pColumn : used) {
      lResult = Bind(pStatement, ++lPosition, *pColumn, pRecord, lRecord);
      if (lResult != SQLITE_OK) {
        throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
      }
    }
    lResult = sqlite3_step(pStatement);
    sqlite3_reset(pStatement);
    if (lResult == SQLITE_CONSTRAINT && nullKeys == NullKeys::Refused) {
      Run("COMMIT");
      return false;
    }
    if (lResult != SQLITE_DONE) {
      throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
    }
  }
  Run("COMMIT");
  return true;
}

int TableLoader::Bind(sqlite3_stmt* pStatement, int lvPosition, Column& column, const char* pvRecord,
                      std::int32_t lvRecord) const {
  const TableField& field = *column.Field;
  const std::string_view zBytes(pvRecord + field.Offset, field.Length);
  if (m_oTable.IsNull(field, pvRecord)) {
    return sqlite3_bind_null(pStatement, lvPosition);
  }
  switch (field.Type) {
    case 'C':
      return BindText(pStatement, lvPosition, column, WithoutPaddingBehind(zBytes));
    case 'N':
    case 'F':
      return BindText(pStatement, lvPosition, column, WithoutPaddingBefore(WithoutPaddingBehind(zBytes)));
    case 'D':
    case 'T': {
      if (WithoutPaddingBehind(zBytes).empty() || (field.Type == 'D' && zBytes == "00000000")) {
        return sqlite3_bind_null(pStatement, lvPosition);
      }
      const std::optional<Date> datValue = field.Type == 'D' ? DayOf(zBytes) : MomentOf(zBytes);
      if (!datValue) {
        throw BadValue(
            column, lvRecord,
            field.Type == 'D' ? "\"" + Shown(zBytes) + "\" is no date" : "it holds no date and time");
      }
      column.Text = datValue->ToStoreText();
      return BindInPlace(pStatement, lvPosition, column.Text);
    }
    case 'L': {
      const char c = zBytes[0];
      if (IsPadding(c) || c == '?') {
        return sqlite3_bind_null(pStatement, lvPosition);
      }
      const bool bTrue = std::string_view("TtYy").find(c) != std::string_view::npos;
      if (!bTrue && std::string_view("FfNn").find(c) == std::string_view::npos) {
        throw BadValue(column, lvRecord, "\"" + Shown(zBytes) + "\" is neither true nor false");
      }
      return sqlite3_bind_int64(pStatement, lvPosition, bTrue ? -1 : 0);
    }
    case 'I':
      return sqlite3_bind_int64(pStatement, lvPosition, static_cast<std::int32_t>(LittleEndian(zBytes)));
    case 'Y':
      return sqlite3_bind_int64(pStatement, lvPosition, static_cast<std::int64_t>(LittleEndian(zBytes)));
    case 'B':
      if (m_oTable.IsFoxPro()) {
        const auto dNumber = std::bit_cast<double>(LittleEndian(zBytes));
        if (!std::isfinite(dNumber)) {
          throw BadValue(column, lvRecord, "it holds no number");
        }
        return sqlite3_bind_double(pStatement, lvPosition, dNumber);
      }
      [[fallthrough]];
    default:
      return sqlite3_bind_null(pStatement, lvPosition);
  }
}

int TableLoader::BindText(sqlite3_stmt* pStatement, int lvPosition, Column& column,
                          std::string_view zvBytes) const {
  if (zvBytes.empty()) {
    return sqlite3_bind_null(pStatement, lvPosition);
  }
  if (!IsAscii(zvBytes)) {
    column.Text.clear();
    m_oTable.Characters().Append(zvBytes, column.Text);
    zvBytes = column.Text;
  }
  return BindInPlace(pStatement, lvPosition, zvBytes);
}

std::string TableLoader::Shown(std::string_view zvBytes) const {
  std::string zShown;
  m_oTable.Characters().Append(zvBytes.substr(0, kMostShown), zShown);
  // A message is one line of text.
  std::ranges::replace_if(
      zShown, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }, '?');
  return zShown;
}

Failure TableLoader::BadValue(const Column& column, std::int32_t lvRecord, const std::string& zvWhat) const {
  return m_oTable.Damage(lvRecord, "column " + column.Field->Name + ": " + zvWhat);
}

void TableLoader::CreateIndex() {
  const std::vector<const Column*> keys = UsedOf(m_oNamed.Keys);
  std::string zColumns;
  for (const Column* pColumn : keys) {
    zColumns += (zColumns.empty() ? "" : ", ") + Quoted(pColumn->Field->Name);
  }
  bool bKeysAlone = !keys.empty();
  for (const Column* pColumn : UsedOf(m_oNamed.Sorted)) {
    if (!pColumn->IsKey) {
      bKeysAlone = false;
      zColumns += (zColumns.empty() ? "" : ", ") + Quoted(pColumn->Field->Name);
    }
  }
  if (zColumns.empty()) {
    return;
  }
  const std::string zIndex =
      "INDEX " + Quoted(m_zName + " in order") + " ON " + Quoted(m_zName) + " (" + zColumns + ")";
  // With a unique key that leads to one record at most, what is joined to it need not be sorted.
  if (bKeysAlone) {
    const int lResult =
        sqlite3_exec(m_oDatabase, ("CREATE UNIQUE " + zIndex).c_str(), nullptr, nullptr, nullptr);
    if (lResult == SQLITE_OK) {
      return;
    }
    if ((lResult & 0xff) != SQLITE_CONSTRAINT) {
      throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
    }
  }
  Run("CREATE " + zIndex);
}

std::vector<const TableLoader::Column*> TableLoader::UsedOf(const std::vector<std::string>& zvNames) const {
  std::vector<const Column*> found;
  for (const std::string& zName : zvNames) {
    for (const Column& column : m_oColumns) {
      if (column.IsUsed && SameName(column.Field->Name, zName)) {
        found.push_back(&column);
      }
    }
  }
  return found;
}

void TableLoader::Run(const std::string& zvText) const {
  const int lResult = sqlite3_exec(m_oDatabase, zvText.c_str(), nullptr, nullptr, nullptr);
  if (lResult != SQLITE_OK) {
    throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
  }
}

}  // namespace qm_ordering::ado::dbase
