#include "qm_ordering/platform/ado/Recordset.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

namespace {

[[noreturn]] void RaiseClosed() {
  throw Failure(failure::kClosedObject, "The result set is closed: its connection was closed or used again.");
}

[[noreturn]] void RaiseNoRow() {
  throw Failure(failure::kNoCurrentRow, "The result set has no current row.");
}

// A date as one number, for a cell of a detached set.
std::int64_t PackDate(const Date& datvDate) {
  std::int64_t lPacked = datvDate.Year();
  lPacked = lPacked * 16 + datvDate.Month();
  lPacked = lPacked * 32 + datvDate.Day();
  lPacked = lPacked * 32 + datvDate.Hour();
  lPacked = lPacked * 64 + datvDate.Minute();
  return lPacked * 64 + datvDate.Second();
}

Date UnpackDate(std::int64_t lvPacked) {
  const auto lNext = [&lvPacked](std::int64_t lSize) {
    const auto lPart = static_cast<int>(lvPacked % lSize);
    lvPacked /= lSize;
    return lPart;
  };
  const int lSecond = lNext(64);
  const int lMinute = lNext(64);
  const int lHour = lNext(32);
  const int lDay = lNext(32);
  const int lMonth = lNext(16);
  return {static_cast<int>(lvPacked), lMonth, lDay, lHour, lMinute, lSecond};
}

class LiveRecordset : public Recordset {
 public:
  explicit LiveRecordset(std::unique_ptr<Cursor> oCursor) : m_oCursor(std::move(oCursor)) {
    m_bAtEnd = m_oCursor == nullptr || !m_oCursor->Next();
    m_bAtBeginning = m_bAtEnd;
  }

  bool AtBeginning() const override {
    RequireOpen();
    return m_bAtBeginning;
  }
  bool AtEnd() const override {
    RequireOpen();
    return m_bAtEnd;
  }
  void MoveNext() override {
    RequireOpen();
    if (m_bAtEnd) {
      RaiseNoRow();
    }
    m_bAtEnd = !m_oCursor->Next();
  }
  void Close() noexcept override { m_oCursor.reset(); }

 protected:
  const ColumnNames& Columns() const override {
    RequireOpen();
    return *m_oCursor->Columns();
  }
  Variant ValueAt(std::size_t lvColumn) const override {
    if (m_oCursor == nullptr || m_bAtEnd) {
      RequireOpen();
      RaiseNoRow();
    }
    return m_oCursor->Value(lvColumn);
  }

 private:
  void RequireOpen() const {
    if (m_oCursor == nullptr || !m_oCursor->IsOpen()) {
      RaiseClosed();
    }
  }

  std::unique_ptr<Cursor> m_oCursor;
  bool m_bAtBeginning = false;
  bool m_bAtEnd = false;
};

// The cells of all rows in one array of numbers, with the texts behind each other in one buffer: a history
// may have hundreds of thousands of rows.
class DetachedRecordset : public Recordset {
 public:
  explicit DetachedRecordset(Cursor& oCursor) : m_oColumns(oCursor.Columns()) {
    while (oCursor.Next()) {
      for (std::size_t i = 0; i < m_oColumns->Count(); ++i) {
        Append(oCursor.Value(i));
      }
      ++m_lRows;
    }
    m_oCells.shrink_to_fit();
    m_zTexts.shrink_to_fit();
  }

  bool AtBeginning() const override {
    RequireOpen();
    return m_lRows == 0;
  }
  bool AtEnd() const override {
    RequireOpen();
    return m_lRow >= m_lRows;
  }
  void MoveNext() override {
    if (AtEnd()) {
      RaiseNoRow();
    }
    ++m_lRow;
  }
  void Close() noexcept override {
    m_bOpen = false;
    m_oCells = {};
    m_zTexts = {};
  }

 protected:
  const ColumnNames& Columns() const override {
    RequireOpen();
    return *m_oColumns;
  }

  Variant ValueAt(std::size_t lvColumn) const override {
    if (AtEnd()) {
      RaiseNoRow();
    }
    const Cell& cell = m_oCells[m_lRow * m_oColumns->Count() + lvColumn];
    switch (cell.Kind) {
      case VariantKind::Boolean:
        return cell.Number != 0;
      case VariantKind::Integer:
        return cell.Number;
      case VariantKind::Double:
        return std::bit_cast<double>(cell.Number);
      case VariantKind::Currency:
        return Currency::FromScaled(cell.Number);
      case VariantKind::Date:
        return UnpackDate(cell.Number);
      case VariantKind::String: {
        const auto lStart = static_cast<std::size_t>(cell.Number);
        return std::string_view(m_zTexts).substr(lStart, cell.Length);
      }
      default:
        return Variant::Null();
    }
  }

 private:
  struct Cell {
    std::int64_t Number = 0;
    std::uint32_t Length = 0;
    VariantKind Kind = VariantKind::Null;
  };

  void Append(const Variant& vvValue) {
    Cell cell;
    cell.Kind = vvValue.Kind();
    switch (cell.Kind) {
      case VariantKind::Boolean:
        cell.Number = vvValue.ToBoolean() ? 1 : 0;
        break;
      case VariantKind::Integer:
        cell.Number = vvValue.ToInteger();
        break;
      case VariantKind::Double:
        cell.Number = std::bit_cast<std::int64_t>(vvValue.ToDouble());
        break;
      case VariantKind::Currency:
        cell.Number = vvValue.ToCurrency().Scaled();
        break;
      case VariantKind::Date:
        cell.Number = PackDate(vvValue.ToDate());
        break;
      case VariantKind::String: {
        const std::string zText = vvValue.ToString();
        cell.Number = static_cast<std::int64_t>(m_zTexts.size());
        cell.Length = static_cast<std::uint32_t>(zText.size());
        m_zTexts += zText;
        break;
      }
      default:
        cell.Kind = VariantKind::Null;
        break;
    }
    m_oCells.push_back(cell);
  }

  void RequireOpen() const {
    if (!m_bOpen) {
      RaiseClosed();
    }
  }

  std::shared_ptr<const ColumnNames> m_oColumns;
  std::vector<Cell> m_oCells;
  std::string m_zTexts;
  std::size_t m_lRows = 0;
  std::size_t m_lRow = 0;
  bool m_bOpen = true;
};

}  // namespace

Variant Field::Value() const {
  return m_oOwner->ValueAt(m_lColumn);
}

std::unique_ptr<Recordset> Recordset::Live(std::unique_ptr<Cursor> oCursor) {
  return std::make_unique<LiveRecordset>(std::move(oCursor));
}

std::unique_ptr<Recordset> Recordset::Detached(std::unique_ptr<Cursor> oCursor) {
  if (oCursor == nullptr) {
    RaiseClosed();
  }
  return std::make_unique<DetachedRecordset>(*oCursor);
}

Field Recordset::Fields(std::string_view zvName) const {
  return {this, Columns().Find(zvName)};
}

Field Recordset::Fields(std::size_t lvColumn) const {
  if (lvColumn >= Columns().Count()) {
    throw Failure(failure::kUnknownField, "The result set has no column " + std::to_string(lvColumn) + ".");
  }
  return {this, lvColumn};
}

std::int64_t TableRecordset::AddRow(std::span<const char* const> zvColumns,
                                    std::span<const Variant> vvValues) {
  if (m_oRows == nullptr || !std::ranges::equal(zvColumns, m_zColumns)) {
    m_oRows = m_oSession.OpenRows(m_zTable, zvColumns);
    m_zColumns.assign(zvColumns.begin(), zvColumns.end());
  }
  return m_oRows->Add(vvValues);
}

bool TableRecordset::Find(const std::string& zvCriterion) const {
  const std::size_t lEquals = zvCriterion.find('=');
  const std::size_t lFirst = zvCriterion.find('\'');
  const std::size_t lLast = zvCriterion.rfind('\'');
  const std::size_t lNameEnd = zvCriterion.find_last_not_of(' ', lEquals - 1);
  if (lEquals == std::string::npos || lEquals == 0 || lNameEnd == std::string::npos || lFirst < lEquals ||
      lFirst == lLast || zvCriterion.find_first_not_of(' ', lEquals + 1) != lFirst ||
      lLast + 1 != zvCriterion.size()) {
    throw Failure(failure::kBadCriterion,
                  "The search criterion " + zvCriterion + " has not the form COLUMN = 'value'.");
  }
  return m_oSession.HasRow(m_zTable, zvCriterion.substr(0, lNameEnd + 1),
                           std::string_view(zvCriterion).substr(lFirst + 1, lLast - lFirst - 1));
}

BatchRecordset::BatchRecordset(Session& oSession, const std::string& zvSQL)
    : m_oSession(oSession), m_oKeyset(oSession.ReadKeyset(zvSQL)) {}

void BatchRecordset::MoveNext() {
  RequireRow();
  ++m_lRow;
}

void BatchRecordset::RequireRow() const {
  if (AtEnd()) {
    RaiseNoRow();
  }
}

std::size_t BatchRecordset::Column(std::string_view zvName) const {
  return m_oKeyset.Columns->Find(zvName);
}

const Variant& BatchRecordset::Value(std::size_t lvColumn) const {
  RequireRow();
  return m_oKeyset.Rows[m_lRow].Changed[lvColumn];
}

void BatchRecordset::Value(std::size_t lvColumn, Variant vvValue) {
  RequireRow();
  m_oKeyset.Rows[m_lRow].Changed[lvColumn] = std::move(vvValue);
}

void BatchRecordset::UpdateBatch() {
  m_oSession.WriteKeyset(m_oKeyset);
}

}  // namespace qm_ordering::ado
