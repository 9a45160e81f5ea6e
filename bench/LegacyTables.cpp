#include "bench/LegacyTables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace bench {

namespace {

constexpr const char* kOrders = "/POHDRHIS.dbf";
constexpr const char* kLines = "/PODTLHIS.dbf";

struct FieldShape {
  const char* Name;
  char Type;
  int Length;
  int Decimals;
};

constexpr FieldShape kOrderShape[] = {
    {"DATETIME", 'C', 20, 0},   {"PONUM", 'C', 20, 0},      {"STADDRESS1", 'C', 30, 0},
    {"STADDRESS2", 'C', 30, 0}, {"STADDRESS3", 'C', 30, 0}, {"STCITY", 'C', 20, 0},
    {"STSTATE", 'C', 2, 0},     {"STZIP", 'C', 10, 0},      {"STATTN", 'C', 30, 0},
    {"BTADDRESS1", 'C', 30, 0}, {"BTADDRESS2", 'C', 30, 0}, {"BTADDRESS3", 'C', 30, 0},
    {"BTCITY", 'C', 20, 0},     {"BTSTATE", 'C', 2, 0},     {"BTZIP", 'C', 10, 0},
    {"BTATTN", 'C', 30, 0},     {"SPECIALINS", 'C', 40, 0}, {"STATUS", 'C', 1, 0},
    {"ORDDATE", 'D', 8, 0},     {"VENDOR", 'C', 20, 0},     {"POTOTAL", 'N', 12, 2},
    {"TAXNO", 'C', 15, 0},      {"ORDRDBY", 'C', 20, 0},    {"BTTELEPHON", 'C', 15, 0},
    {"STTELEPHON", 'C', 15, 0}, {"ACCTNUMBER", 'C', 15, 0}, {"TAXFLAG", 'C', 1, 0},
    {"SHIPORPICK", 'C', 4, 0},  {"CREDITCARD", 'C', 20, 0}, {"EXPIREDATE", 'C', 5, 0},
    {"PORELEASE", 'C', 10, 0},  {"DEPARTMENT", 'C', 15, 0}, {"PROJECTJOB", 'C', 15, 0},
    {"REQAPPNAME", 'C', 20, 0}, {"ORDBYPHEXT", 'C', 5, 0},  {"CCTYPE", 'C', 1, 0},
    {"COMMENTS1", 'C', 40, 0},  {"COMMENTS2", 'C', 40, 0},  {"PROCREFNO", 'C', 10, 0},
    {"PROCCOMMT1", 'C', 40, 0}, {"PROCCOMMT2", 'C', 40, 0}, {"PROCCOMMT3", 'C', 40, 0},
    {"PROCCOMMT4", 'C', 40, 0}, {"PADATE", 'C', 8, 0},      {"PATIME", 'C', 8, 0},
    {"BTPROVINCE", 'C', 15, 0}, {"STPROVINCE", 'C', 15, 0}, {"BTCOUNTRY", 'C', 15, 0},
    {"STCOUNTRY", 'C', 15, 0},  {"POTYPE", 'C', 1, 0},
};
constexpr FieldShape kLineShape[] = {
    {"DATETIME", 'C', 20, 0},  {"ITEMNUM", 'C', 15, 0},    {"QUANTITY", 'N', 6, 0},
    {"UNITPRICE", 'N', 10, 2}, {"EXTPRICE", 'N', 12, 2},   {"DESC", 'C', 40, 0},
    {"LINENUM", 'N', 4, 0},    {"DATE", 'D', 8, 0},        {"MSDS", 'C', 1, 0},
    {"TAXABLE", 'C', 1, 0},    {"CUSTNUMBER", 'C', 15, 0}, {"ITEMMEMO", 'C', 20, 0},
    {"COMMENTS1", 'C', 30, 0}, {"COMMENTS2", 'C', 30, 0},  {"MODELNUM", 'C', 15, 0},
    {"MFGNAME", 'C', 20, 0},
};

// What fills a column of the store.
struct Source {
  const char* Column;
  const char* Field;
};

// The texts that are copied come first; those that are made of fields follow at the positions below.
constexpr Source kOrderTexts[] = {
    {"zPurchaseOrderNumber", "PONUM"},
    {"zDIAddress1", "STADDRESS1"},
    {"zDICity", "STCITY"},
    {"zDIState", "STSTATE"},
    {"zDIZipOrPostCode", "STZIP"},
    {"zOIAttention", "SPECIALINS"},
    {"zCCAddress1", "BTADDRESS1"},
    {"zCCCity", "BTCITY"},
    {"zCCState", "BTSTATE"},
    {"zCCZipOrPostCode", "BTZIP"},
    {"zOITaxIDNumber", "TAXNO"},
    {"zCCPhoneNumber", "BTTELEPHON"},
    {"zDIPhoneNumber", "STTELEPHON"},
    {"zPIMorvaneAccountNumber", "ACCTNUMBER"},
    {"zOIDepartment", "DEPARTMENT"},
    {"zOIProjectOrJobNumber", "PROJECTJOB"},
    {"zOIRequisitionOrApprovalName", "REQAPPNAME"},
    {"zCCComment1", "PROCCOMMT1"},
    {"zCCComment2", "PROCCOMMT2"},
    {"zCCComment3", "PROCCOMMT3"},
    {"zCCComment4", "PROCCOMMT4"},
    {"zCCCountry", "BTCOUNTRY"},
    {"zDICountry", "STCOUNTRY"},
    {"zDIAddress2", "STADDRESS2"},
    {"zCCAddress2", "BTADDRESS2"},
    {"zDIFirstName", "STATTN"},
    {"zDILastName", "STATTN"},
    {"zCCFirstName", "BTATTN"},
    {"zCCLastName", "BTATTN"},
    {"datSubmitDate", "ORDDATE"},
};
enum OrderText : std::size_t {
  kCopiedOrderTexts = 23,
  kShipAddress2 = kCopiedOrderTexts,
  kBillAddress2,
  kShipFirstName,
  kShipLastName,
  kBillFirstName,
  kBillLastName,
  kSubmitDate,
};
constexpr Source kOrderNumbers[] = {
    {"cTotalPrice", "POTOTAL"}, {"bOIIsTaxExempt", "TAXFLAG"}, {"lDIDeliveryMethod", "SHIPORPICK"}};
constexpr const char* kMoreOrderFields[] = {"DATETIME", "STADDRESS3", "BTADDRESS3"};

constexpr Source kLineTexts[] = {
    {"zDescription", "DESC"}, {"zShortDescription", "DESC"}, {"zCustomerPartNumber", "CUSTNUMBER"},
    {"zModel", "MODELNUM"},   {"zManufacturer", "MFGNAME"},
};
// The first is always true, and of no field.
constexpr Source kLineNumbers[] = {{"bImported", "DATETIME"},
                                   {"lQuantity", "QUANTITY"},
                                   {"cPrice", "UNITPRICE"},
                                   {"cExtendedPrice", "EXTPRICE"},
                                   {"bIsTaxable", "TAXABLE"}};
constexpr const char* kMoreLineFields[] = {"DATETIME", "ITEMNUM"};

// A table that is written.
class Writer {
 public:
  template <std::size_t lSize>
  Writer(const std::string& zvFile, const FieldShape (&shape)[lSize]) : m_pTable(DBFCreate(zvFile.c_str())) {
    Require(m_pTable != nullptr);
    for (const FieldShape& field : shape) {
      Require(DBFAddNativeFieldType(m_pTable, field.Name, field.Type, field.Length, field.Decimals) >= 0);
    }
  }
  ~Writer() { DBFClose(m_pTable); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void NextRow() { ++m_lRow; }
  // The writer of texts would take that of a date for a number.
  void Set(const char* zvField, std::string zvValue) {
    Require(DBFWriteAttributeDirectly(m_pTable, m_lRow, FieldOf(m_pTable, zvField), zvValue.data()) != 0);
  }
  void Set(const char* zvField, double dvValue) {
    Require(DBFWriteDoubleAttribute(m_pTable, m_lRow, FieldOf(m_pTable, zvField), dvValue) != 0);
  }

  static int FieldOf(DBFHandle pTable, const char* zvField) {
    const int lField = DBFGetFieldIndex(pTable, zvField);
    Require(lField >= 0);
    return lField;
  }
  static void Require(bool bvDone) {
    if (!bvDone) {
      throw std::runtime_error("A table of the older program cannot be used.");
    }
  }

 private:
  DBFHandle m_pTable;
  int m_lRow = -1;
};

std::string Digits(std::int64_t lvNumber, int lvWidth) {
  char zText[24];
  std::snprintf(zText, sizeof zText, "%0*lld", lvWidth, static_cast<long long>(lvNumber));
  return zText;
}

// The item numbers are spread, since orders are not placed along the catalogue.
std::string ItemNumberOf(std::int64_t lvLine) {
  const std::int64_t lItem = lvLine % 20 == 19 ? lvLine / 2 : lvLine;
  return "4QX" + Digits(lItem * 611'953 % 9'000'000, 7);
}

void WriteOrder(Writer& writer, const std::string& zvKey, std::int32_t lvOrder, double dvTotal) {
  const std::string zNumber = std::to_string(lvOrder);
  writer.NextRow();
  writer.Set("DATETIME", zvKey);
  writer.Set("PONUM", "PO-" + zNumber);
  for (const char* zSide : {"ST", "BT"}) {
    const std::string zOf = zSide;
    writer.Set((zOf + "ADDRESS1").c_str(), zNumber + " Harbour Road");
    writer.Set((zOf + "ADDRESS2").c_str(), "Building " + zNumber);
    if (lvOrder % 4 == 0) {
      writer.Set((zOf + "ADDRESS3").c_str(), std::string("Gate 3"));
    }
    writer.Set((zOf + "CITY").c_str(), std::string("Springfield"));
    writer.Set((zOf + "STATE").c_str(), std::string("IL"));
    writer.Set((zOf + "ZIP").c_str(), Digits(lvOrder % 100'000, 5));
    writer.Set((zOf + "ATTN").c_str(), std::string("Mary Ann Smith"));
    writer.Set((zOf + "TELEPHON").c_str(), "555-" + Digits(lvOrder % 10'000, 4));
  }
  writer.Set("SPECIALINS", std::string("Ring the yard before delivery"));
  writer.Set("ORDDATE",
             "20" + Digits(lvOrder % 5, 2) + Digits(1 + lvOrder % 12, 2) + Digits(1 + lvOrder % 28, 2));
  writer.Set("POTOTAL", dvTotal);
  writer.Set("ACCTNUMBER", "8" + Digits(lvOrder % 1'000, 8));
  writer.Set("TAXFLAG", std::string(lvOrder % 3 == 0 ? "N" : "Y"));
  writer.Set("SHIPORPICK", std::string(lvOrder % 2 == 0 ? "SHIP" : "PICK"));
  writer.Set("DEPARTMENT", std::string("Maintenance"));
  writer.Set("PROJECTJOB", "J-" + zNumber);
  if (lvOrder % 10 == 0) {
    writer.Set("PROCCOMMT1", std::string("Approved by telephone"));
  }
  writer.Set("BTCOUNTRY", std::string("USA"));
}

void WriteLine(Writer& writer, const std::string& zvKey, const std::string& zvItemNumber, std::int32_t lvLine,
               double dvPrice) {
  const int lQuantity = 1 + lvLine % 9;
  writer.NextRow();
  writer.Set("DATETIME", zvKey);
  writer.Set("ITEMNUM", zvItemNumber);
  writer.Set("QUANTITY", static_cast<double>(lQuantity));
  writer.Set("UNITPRICE", dvPrice);
  writer.Set("EXTPRICE", dvPrice * lQuantity);
  writer.Set("DESC", "Hex bolt M8 x " + std::to_string(lvLine) + ", zinc plated");
  writer.Set("TAXABLE", std::string(lvLine % 3 == 0 ? "Y" : "N"));
  if (lvLine % 2 == 0) {
    writer.Set("CUSTNUMBER", "P-" + std::to_string(lvLine));
  }
  writer.Set("MODELNUM", "HB-" + std::to_string(lvLine));
  writer.Set("MFGNAME", std::string("Birchwood & Sons"));
}

template <std::size_t lTexts, std::size_t lNumbers>
std::string InsertInto(std::string zvColumns, std::string zvPlaces, const Source (&texts)[lTexts],
                       const Source (&numbers)[lNumbers], const char* zvTable) {
  const auto add = [&](const Source& source) {
    zvColumns.append(zvColumns.empty() ? "" : ", ").append(source.Column);
    zvPlaces.append(zvPlaces.empty() ? ":" : ", :").append(source.Column);
  };
  std::ranges::for_each(texts, add);
  std::ranges::for_each(numbers, add);
  return std::string("insert into ") + zvTable + " (" + zvColumns + ") values (" + zvPlaces + ")";
}

// The positions in the table of what is read, the further fields behind the texts.
template <typename Fields, std::size_t lTexts, std::size_t lNumbers, std::size_t lMore>
Fields FieldsOf(DBFHandle pTable, const Source (&texts)[lTexts], const Source (&numbers)[lNumbers],
                const char* const (&more)[lMore]) {
  Fields fields;
  for (const Source& source : texts) {
    fields.Texts.push_back(Writer::FieldOf(pTable, source.Field));
  }
  for (const char* zField : more) {
    fields.Texts.push_back(Writer::FieldOf(pTable, zField));
  }
  for (const Source& source : numbers) {
    fields.Numbers.push_back(Writer::FieldOf(pTable, source.Field));
  }
  return fields;
}

// The reader's texts have no blanks at their ends, and stay where they are until the next one.
const char* Text(DBFHandle pTable, int lvRow, int lvField) {
  const char* zText = DBFReadStringAttribute(pTable, lvRow, lvField);
  Writer::Require(zText != nullptr);
  return zText;
}

std::int64_t Amount(DBFHandle pTable, int lvRow, int lvField) {
  return std::llround(DBFReadDoubleAttribute(pTable, lvRow, lvField) * 10'000);
}

void Join(std::string& orText, const char* zvSecond) {
  if (*zvSecond != '\0') {
    orText.append(", ").append(zvSecond);
  }
}

void SplitName(std::string& orFirst, std::string& orLast) {
  const std::size_t lSpace = orFirst.find(' ');
  orLast = lSpace == std::string::npos ? "" : orFirst.substr(lSpace + 1);
  orFirst.resize(std::min(lSpace, orFirst.size()));
}

}  // namespace

void MakeLegacyTables(const std::string& zvFolder, std::int32_t lvLines) {
  constexpr std::int32_t kLinesOfOrder = 5;
  std::filesystem::create_directories(zvFolder);
  Writer orders(zvFolder + kOrders, kOrderShape);
  Writer lines(zvFolder + kLines, kLineShape);
  for (std::int32_t lFirst = 0; lFirst < lvLines; lFirst += kLinesOfOrder) {
    const std::int32_t lOrder = lFirst / kLinesOfOrder;
    const std::string zKey = "20030704" + Digits(lOrder, 8);
    const double dPrice = 1.25 + lOrder % 977;
    WriteOrder(orders, zKey, lOrder, dPrice * kLinesOfOrder);
    std::vector<std::string> zItemNumbers;
    for (std::int32_t i = lFirst; i < std::min(lvLines, lFirst + kLinesOfOrder); ++i) {
      zItemNumbers.push_back(ItemNumberOf(i));
    }
    std::ranges::sort(zItemNumbers);
    for (std::size_t i = 0; i < zItemNumbers.size(); ++i) {
      WriteLine(lines, zKey, zItemNumbers[i], lFirst + static_cast<std::int32_t>(i), dPrice);
    }
  }
}

std::string InsertLegacyOrder() {
  return InsertInto("", "", kOrderTexts, kOrderNumbers, "tblOrder");
}

std::string InsertLegacyLine() {
  return InsertInto("lOrderID, zItemNumber", ":order, :item", kLineTexts, kLineNumbers, "tblOrderItem");
}

void LegacyReader::CloseTable::operator()(DBFInfo* pTable) const {
  DBFClose(pTable);
}

LegacyReader::LegacyReader(const std::string& zvFolder)
    : m_oOrders(DBFOpen((zvFolder + kOrders).c_str(), "rb")),
      m_oLines(DBFOpen((zvFolder + kLines).c_str(), "rb")) {
  Writer::Require(m_oOrders != nullptr && m_oLines != nullptr);
  m_lOrders = DBFGetRecordCount(m_oOrders.get());
  m_lLines = DBFGetRecordCount(m_oLines.get());
  m_oOrderFields = FieldsOf<Fields>(m_oOrders.get(), kOrderTexts, kOrderNumbers, kMoreOrderFields);
  m_oLineFields = FieldsOf<Fields>(m_oLines.get(), kLineTexts, kLineNumbers, kMoreLineFields);
}

LegacyRow LegacyReader::EmptyOrder() {
  LegacyRow row;
  row.Texts.resize(std::size(kOrderTexts));
  row.Numbers.resize(std::size(kOrderNumbers));
  return row;
}

LegacyRow LegacyReader::EmptyLine() {
  LegacyRow row;
  row.Texts.resize(std::size(kLineTexts));
  row.Numbers.resize(std::size(kLineNumbers));
  row.Numbers[0] = -1;
  return row;
}

bool LegacyReader::NextOrder(LegacyRow& orOrder) {
  if (m_lOrder == m_lOrders) {
    return false;
  }
  const std::vector<int>& texts = m_oOrderFields.Texts;
  const std::vector<int>& numbers = m_oOrderFields.Numbers;
  std::vector<std::string>& zTexts = orOrder.Texts;
  const auto text = [&](int lvField) { return Text(m_oOrders.get(), m_lOrder, lvField); };
  for (std::size_t i = 0; i < zTexts.size(); ++i) {
    if (i != kShipLastName && i != kBillLastName) {
      zTexts[i] = text(texts[i]);
    }
  }
  orOrder.Key = text(texts[zTexts.size()]);
  Join(zTexts[kShipAddress2], text(texts[zTexts.size() + 1]));
  Join(zTexts[kBillAddress2], text(texts[zTexts.size() + 2]));
  SplitName(zTexts[kShipFirstName], zTexts[kShipLastName]);
  SplitName(zTexts[kBillFirstName], zTexts[kBillLastName]);
  std::string& zDate = zTexts[kSubmitDate];
  if (zDate.size() == 8) {
    zDate.insert(6, "-").insert(4, "-").append(" 00:00:00");
  }
  orOrder.Numbers[0] = Amount(m_oOrders.get(), m_lOrder, numbers[0]);
  orOrder.Numbers[1] = text(numbers[1]) == std::string_view("N") ? -1 : 0;
  orOrder.Numbers[2] = text(numbers[2]) == std::string_view("SHIP") ? 1 : 0;
  ++m_lOrder;
  return true;
}

bool LegacyReader::NextLine(LegacyRow& orLine) {
  if (m_lLine == m_lLines) {
    return false;
  }
  const std::vector<int>& texts = m_oLineFields.Texts;
  const std::vector<int>& numbers = m_oLineFields.Numbers;
  DBFHandle pTable = m_oLines.get();
  for (std::size_t i = 0; i < orLine.Texts.size(); ++i) {
    orLine.Texts[i] = Text(pTable, m_lLine, texts[i]);
  }
  orLine.Key = Text(pTable, m_lLine, texts[orLine.Texts.size()]);
  orLine.ItemNumber = Text(pTable, m_lLine, texts[orLine.Texts.size() + 1]);
  orLine.Numbers[1] = DBFReadIntegerAttribute(pTable, m_lLine, numbers[1]);
  orLine.Numbers[2] = Amount(pTable, m_lLine, numbers[2]);
  orLine.Numbers[3] = Amount(pTable, m_lLine, numbers[3]);
  orLine.Numbers[4] = Text(pTable, m_lLine, numbers[4]) == std::string_view("Y") ? -1 : 0;
  ++m_lLine;
  return true;
}

}  // namespace bench
