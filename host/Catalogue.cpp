#include "host/Catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "host/CsvRows.h"
#include "host/Errors.h"
#include "host/NearestNames.h"
#include "host/Text.h"
#include "host/WholeFile.h"

namespace host {

namespace {

using namespace qm_ordering;

Currency Price(const std::string& zvText) {
  const std::string_view zPrice = Trimmed(zvText);
  const std::size_t lPoint = zPrice.find('.');
  if (lPoint != std::string_view::npos && zPrice.size() - lPoint - 1 > Currency::kDecimals) {
    throw UsageError("the price \"" + zvText + "\" has more than four decimals");
  }
  try {
    return Currency::Parse(zPrice);
  } catch (const Failure& failure) {
    throw UsageError("\"" + zvText + "\" is not a price" +
                     (failure.Number() == failure::kOverflow ? " within the range of money" : "") +
                     "; prices are written like 12.5");
  }
}

std::int32_t Pack(const std::string& zvText) {
  const std::string_view zPack = Trimmed(zvText);
  if (zPack.empty()) {
    return 0;
  }
  const auto lPack = ParseInteger(zPack);
  if (!lPack || *lPack < 0) {
    throw UsageError("\"" + zvText + "\" is not a pack size, which is a whole number of units");
  }
  return *lPack;
}

bool Taxable(const std::string& zvText) {
  const std::string_view zFlag = Trimmed(zvText);
  const std::optional<bool> bTaxable = zFlag.empty() ? false : ParseBoolean(zFlag);
  if (!bTaxable) {
    throw UsageError("\"" + zvText +
                     "\" does not say whether the item is taxable; write true, false, 1 or 0");
  }
  return *bTaxable;
}

std::string ItemNumber(const std::string& zvText) {
  if (Trimmed(zvText).empty()) {
    throw UsageError("the item number is blank");
  }
  return zvText;
}

struct Column {
  const char* Name;
  bool IsRequired;
  void (*Put)(OrderItem& item, const std::string& zvText);
};

constexpr std::array<Column, 10> kColumns = {{
    {"ItemNumber", true, [](OrderItem& item, const std::string& z) { item.ItemNumber(ItemNumber(z)); }},
    {"Price", true, [](OrderItem& item, const std::string& z) { item.Price(Price(z)); }},
    {"Description", false, [](OrderItem& item, const std::string& z) { item.Description(z); }},
    {"ShortDescription", false, [](OrderItem& item, const std::string& z) { item.ShortDescription(z); }},
    {"Manufacturer", false, [](OrderItem& item, const std::string& z) { item.Manufacturer(z); }},
    {"Model", false, [](OrderItem& item, const std::string& z) { item.Model(z); }},
    {"SellQuantity", false, [](OrderItem& item, const std::string& z) { item.SellQuantity(Pack(z)); }},
    {"ShipQuantity", false, [](OrderItem& item, const std::string& z) { item.ShipQuantity(Pack(z)); }},
    {"UsuallyShips", false, [](OrderItem& item, const std::string& z) { item.UsuallyShips(z); }},
    {"Taxable", false, [](OrderItem& item, const std::string& z) { item.IsTaxable(Taxable(z)); }},
}};

std::vector<std::string> ColumnNames() {
  std::vector<std::string> names;
  names.reserve(kColumns.size());
  for (const Column& column : kColumns) {
    names.emplace_back(column.Name);
  }
  return names;
}

std::string Place(const std::string& zvFile, const CsvRow& row) {
  return zvFile + ", line " + std::to_string(row.Line) + ": ";
}

void CheckTexts(const CsvRow& row, const std::string& zvFile) {
  for (const std::string& zField : row.Fields) {
    if (!IsUtf8(zField)) {
      throw UsageError(Place(zvFile, row) + "\"" + Shown(zField) + "\" is not UTF-8 text.");
    }
    if (zField.find('\0') != std::string::npos) {
      throw UsageError(Place(zvFile, row) + "\"" + Shown(zField) + "\" holds a zero byte.");
    }
  }
}

// The column that each field of a row belongs to; none for those that are not used.
using Columns = std::vector<const Column*>;

Columns ReadHeader(const CsvRow& header, const std::string& zvFile, Output& out) {
  CheckTexts(header, zvFile);
  Columns columns;
  for (const std::string& zField : header.Fields) {
    const std::string zName(Trimmed(zField));
    const auto found =
        std::ranges::find_if(kColumns, [&](const Column& column) { return SameName(column.Name, zName); });
    if (found == kColumns.end()) {
      out.Warning(Place(zvFile, header) + "the column \"" + zName + "\" is not used." +
                  DidYouMean(zName, ColumnNames()));
      columns.push_back(nullptr);
      continue;
    }
    if (std::ranges::find(columns, &*found) != columns.end()) {
      throw UsageError(Place(zvFile, header) + "the column " + found->Name + " is there twice.");
    }
    columns.push_back(&*found);
  }
  for (const Column& column : kColumns) {
    if (column.IsRequired && std::ranges::find(columns, &column) == columns.end()) {
      throw UsageError(Place(zvFile, header) + "there is no column " + column.Name +
                       ". The first row names the columns: " + Listed(ColumnNames()) + ".");
    }
  }
  return columns;
}

std::shared_ptr<OrderItem> ReadItem(const CsvRow& row, const Columns& columns, const std::string& zvFile) {
  CheckTexts(row, zvFile);
  if (row.Fields.size() != columns.size()) {
    throw UsageError(Place(zvFile, row) + "the row has " + Counted(row.Fields.size(), "field") +
                     ", the first row names " + Counted(columns.size(), "column") + ".");
  }
  auto oItem = std::make_shared<OrderItem>();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == nullptr) {
      continue;
    }
    try {
      columns[i]->Put(*oItem, row.Fields[i]);
    } catch (const UsageError& error) {
      throw UsageError(Place(zvFile, row) + columns[i]->Name + ": " + error.what() + ".");
    }
  }
  return oItem;
}

// Answers whether a pack size was counted as 1.
bool CompletePacks(OrderItem& item) {
  const bool bIncomplete = item.SellQuantity() == 0 || item.ShipQuantity() == 0;
  item.SellQuantity(std::max(item.SellQuantity(), 1));
  item.ShipQuantity(std::max(item.ShipQuantity(), 1));
  return bIncomplete;
}

std::string WithoutByteOrderMark(const std::string& zvText) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return zvText.starts_with(kMark) ? zvText.substr(kMark.size()) : zvText;
}

}  // namespace

Catalogue::Catalogue(const std::string& zvFile, Output& out)
    : m_zFile(zvFile), m_oItems(std::make_shared<OrderItems>()) {
  const std::vector<CsvRow> rows = ParseCsv(WithoutByteOrderMark(ReadWholeFile(zvFile)), zvFile);
  if (rows.empty()) {
    throw UsageError(zvFile + " is empty. Its first row names the columns: " + Listed(ColumnNames()) + ".");
  }
  if (rows.size() == 1) {
    throw UsageError(zvFile + " holds no items, only the names of the columns.");
  }
  const Columns columns = ReadHeader(rows.front(), zvFile, out);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto oItem = ReadItem(rows[i], columns, zvFile);
    if (CompletePacks(*oItem)) {
      m_oWithoutPack.insert(oItem.get());
    }
    try {
      m_oItems->Add(oItem, oItem->ItemNumber());
    } catch (const Failure& failure) {
      if (failure.Number() != failure::kDuplicateKey) {
        throw;
      }
      throw UsageError(Place(zvFile, rows[i]) + "the item number " + oItem->ItemNumber() +
                       " is in the catalogue already; letter case makes no difference.");
    }
  }
}

std::shared_ptr<OrderItem> Catalogue::Find(const std::string& zvItemNumber) const {
  if (auto oItem = m_oItems->Item(zvItemNumber)) {
    return oItem;
  }
  std::vector<std::string> numbers;
  for (const auto& oItem : *m_oItems) {
    numbers.push_back(oItem->ItemNumber());
  }
  throw UsageError("There is no item " + zvItemNumber + " in the catalogue " + m_zFile + "." +
                   DidYouMean(zvItemNumber, numbers));
}

bool Catalogue::HadNoPack(const OrderItem& item) const {
  return m_oWithoutPack.contains(&item);
}

}  // namespace host
