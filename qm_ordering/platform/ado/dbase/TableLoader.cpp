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

constexpr std::string_view kPadding("\0 ", 2);
constexpr std::size_t kMostShown = 40;  // bytes of a value in a message

constexpr std::int64_t kMillisecondsOfADay = 86'400'000;
// The number that FoxPro gives to 1 January 1970, and to the last day of the year 9999.
constexpr std::int64_t kFirstDayOf1970 = 2'440'588;
constexpr std::int64_t kLastDayOf9999 = 5'373'484;

std::string Quoted(std::string_view zvName) {
  std::string zQuoted = "\"";
  for (const char c : zvName) {
    zQuoted.append(c == '"' ? 2 : 1, c);
  }
  return zQuoted + '"';
}

std::string_view WithoutPaddingBehind(std::string_view zvBytes) {
  return zvBytes.substr(0, zvBytes.find_last_not_of(kPadding) + 1);
}

bool IsAscii(std::string_view zvBytes) {
  unsigned char lAll = 0;
  for (const char c : zvBytes) {
    lAll |= static_cast<unsigned char>(c);
  }
  return lAll < 128;
}

// FoxPro's number of a day and milliseconds of it, to the nearest second.
std::optional<Date> MomentOf(std::int64_t lvDay, std::int64_t lvMilliseconds) {
  if (lvMilliseconds < 0 || lvMilliseconds >= kMillisecondsOfADay || lvDay < 0 || lvDay > kLastDayOf9999) {
    return std::nullopt;
  }
  using namespace std::chrono;
  const sys_seconds moment =
      sys_days(days(lvDay - kFirstDayOf1970)) + round<seconds>(milliseconds(lvMilliseconds));
  const sys_days day = floor<days>(moment);
  const year_month_day date(day);
  const hh_mm_ss time(moment - day);
  const int lYear = static_cast<int>(date.year());
  if (lYear < 100 || lYear > 9999) {
    return std::nullopt;
  }
  return Date(lYear, static_cast<int>(static_cast<unsigned>(date.month())),
              static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(time.hours().count()),
              static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
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
      Bind(pStatement, ++lPosition, *pColumn, pRecord, lRecord);
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

void TableLoader::Bind(sqlite3_stmt* pStatement, int lvPosition, Column& column, const char* pvRecord,
                       std::int32_t lvRecord) {
  const TableField& field = *column.Field;
  const std::string_view zBytes(pvRecord + field.Offset, field.Length);
  const bool bBlank = zBytes.find_first_not_of(kPadding) == std::string_view::npos;
  int lResult = SQLITE_OK;
  if (m_oTable.IsNull(field, pvRecord)) {
    lResult = sqlite3_bind_null(pStatement, lvPosition);
  } else {
    switch (field.Type) {
      case 'C':
        lResult = BindText(pStatement, lvPosition, column, WithoutPaddingBehind(zBytes));
        break;
      case 'N':
      case 'F': {
        const std::string_view zNumber = WithoutPaddingBehind(zBytes);
        lResult = BindText(pStatement, lvPosition, column,
                           zNumber.substr(std::min(zNumber.find_first_not_of(kPadding), zNumber.size())));
        break;
      }
      case 'D':
        if (bBlank || zBytes == "00000000") {
          lResult = sqlite3_bind_null(pStatement, lvPosition);
          break;
        }
        column.Text.assign(zBytes.substr(0, 4)).append("-").append(zBytes.substr(4, 2));
        column.Text.append("-").append(zBytes.substr(6));
        if (!Date::ParseStoreText(column.Text)) {
          throw BadValue(column, lvRecord, "\"" + Shown(zBytes) + "\" is no date");
        }
        column.Text.append(" 00:00:00");
        lResult = sqlite3_bind_text(pStatement, lvPosition, column.Text.data(),
                                    static_cast<int>(column.Text.size()), SQLITE_STATIC);
        break;
      case 'T': {
        if (bBlank) {
          lResult = sqlite3_bind_null(pStatement, lvPosition);
          break;
        }
        const std::optional<Date> datValue =
            MomentOf(static_cast<std::int32_t>(LittleEndian(zBytes.data(), 4)),
                     static_cast<std::int32_t>(LittleEndian(&zBytes[4], 4)));
        if (!datValue) {
          throw BadValue(column, lvRecord, "it holds no date and time");
        }
        column.Text = datValue->ToStoreText();
        lResult = sqlite3_bind_text(pStatement, lvPosition, column.Text.data(),
                                    static_cast<int>(column.Text.size()), SQLITE_STATIC);
        break;
      }
      case 'L':
        if (bBlank || zBytes == "?") {
          lResult = sqlite3_bind_null(pStatement, lvPosition);
        } else if (std::string_view("TtYy").find(zBytes[0]) != std::string_view::npos) {
          lResult = sqlite3_bind_int64(pStatement, lvPosition, -1);
        } else if (std::string_view("FfNn").find(zBytes[0]) != std::string_view::npos) {
          lResult = sqlite3_bind_int64(pStatement, lvPosition, 0);
        } else {
          throw BadValue(column, lvRecord, "\"" + Shown(zBytes) + "\" is neither true nor false");
        }
        break;
      case 'I':
        lResult = sqlite3_bind_int64(pStatement, lvPosition,
                                     static_cast<std::int32_t>(LittleEndian(zBytes.data(), zBytes.size())));
        break;
      case 'Y':
        lResult = sqlite3_bind_int64(pStatement, lvPosition,
                                     static_cast<std::int64_t>(LittleEndian(zBytes.data(), zBytes.size())));
        break;
      case 'B':
        if (m_oTable.IsFoxPro()) {
          const auto dNumber = std::bit_cast<double>(LittleEndian(zBytes.data(), zBytes.size()));
          if (!std::isfinite(dNumber)) {
            throw BadValue(column, lvRecord, "it holds no number");
          }
          lResult = sqlite3_bind_double(pStatement, lvPosition, dNumber);
          break;
        }
        [[fallthrough]];
      default:
        lResult = sqlite3_bind_null(pStatement, lvPosition);
    }
  }
  if (lResult != SQLITE_OK) {
    throw EngineAnswer(m_oDatabase, lResult, m_oTable.Path());
  }
}

int TableLoader::BindText(sqlite3_stmt* pStatement, int lvPosition, Column& column,
                          std::string_view zvBytes) {
  if (zvBytes.empty()) {
    return sqlite3_bind_null(pStatement, lvPosition);
  }
  if (!IsAscii(zvBytes)) {
    column.Text.clear();
    m_oTable.Characters().Append(zvBytes, column.Text);
    zvBytes = column.Text;
  }
  // The bytes of the record and of the column stay where they are until the row is in the table.
  return sqlite3_bind_text(pStatement, lvPosition, zvBytes.data(), static_cast<int>(zvBytes.size()),
                           SQLITE_STATIC);
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
