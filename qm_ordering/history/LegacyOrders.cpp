#include "qm_ordering/history/LegacyOrders.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

constexpr const char* kJoin = "FROM PODTLHIS INNER JOIN POHDRHIS ON PODTLHIS.DATETIME = POHDRHIS.DATETIME ";

std::string Statement() {
  return std::string(
             " SELECT PODTLHIS.DATETIME, POHDRHIS.PONUM, POHDRHIS.STADDRESS1,  "
             "POHDRHIS.STADDRESS2, POHDRHIS.STADDRESS3,  "
             "POHDRHIS.STCITY, POHDRHIS.STSTATE, POHDRHIS.STZIP, "
             "POHDRHIS.STATTN, POHDRHIS.BTADDRESS1, POHDRHIS.BTADDRESS2, "
             "POHDRHIS.BTADDRESS3, POHDRHIS.BTCITY, POHDRHIS.BTSTATE, "
             "POHDRHIS.BTZIP, POHDRHIS.BTATTN, POHDRHIS.SPECIALINS, "
             "POHDRHIS.STATUS, POHDRHIS.ORDDATE, POHDRHIS.VENDOR, "
             "POHDRHIS.POTOTAL, POHDRHIS.TAXNO, POHDRHIS.ORDRDBY, "
             "POHDRHIS.BTTELEPHON, POHDRHIS.STTELEPHON, "
             "POHDRHIS.ACCTNUMBER, POHDRHIS.TAXFLAG, POHDRHIS.SHIPORPICK, "
             "POHDRHIS.CREDITCARD, POHDRHIS.EXPIREDATE, POHDRHIS.PORELEASE, "
             "POHDRHIS.DEPARTMENT, POHDRHIS.PROJECTJOB, "
             "POHDRHIS.REQAPPNAME, POHDRHIS.ORDBYPHEXT, "
             "POHDRHIS.CCTYPE, POHDRHIS.COMMENTS1, POHDRHIS.COMMENTS2, "
             "POHDRHIS.PROCREFNO, POHDRHIS.PROCCOMMT1, "
             "POHDRHIS.PROCCOMMT2, POHDRHIS.PROCCOMMT3, "
             "POHDRHIS.PROCCOMMT4, POHDRHIS.PADATE, POHDRHIS.PATIME, "
             "POHDRHIS.BTPROVINCE, POHDRHIS.STPROVINCE, "
             "POHDRHIS.BTCOUNTRY, POHDRHIS.STCOUNTRY, POHDRHIS.POTYPE, "
             "PODTLHIS.ITEMNUM, PODTLHIS.QUANTITY, PODTLHIS.UNITPRICE, "
             "PODTLHIS.EXTPRICE, PODTLHIS.DESC, PODTLHIS.LINENUM, "
             "PODTLHIS.DATE, PODTLHIS.MSDS, PODTLHIS.TAXABLE, PODTLHIS.CUSTNUMBER, "
             "PODTLHIS.ITEMMEMO, PODTLHIS.COMMENTS1, PODTLHIS.COMMENTS2, "
             "PODTLHIS.MODELNUM , PODTLHIS.MFGNAME ") +
         kJoin + " ORDER BY POHDRHIS.DATETIME, PODTLHIS.ITEMNUM;";
}

std::string TextOf(const Variant& vvValue) {
  return NullTo(vvValue, "").ToString();
}

// Whether it is the text as it is written. The texts of a table have no blanks behind them; one that is blank
// is null.
bool Equals(const Variant& vvValue, std::string_view zvText) {
  return vvValue.Kind() == VariantKind::String && vvValue.ToString() == zvText;
}

bool IsDigit(char cv) {
  return cv >= '0' && cv <= '9';
}

// "1,234,567" without its commas; nothing when they do not stand between groups of three, for such a comma
// may be a decimal one.
std::optional<std::string> WithoutGroups(std::string_view zvDigits) {
  std::string zPlain;
  std::size_t lInGroup = 0;
  bool bGrouped = false;
  for (const char c : zvDigits) {
    if (c == ',') {
      if (lInGroup == 0 || lInGroup > 3 || (bGrouped && lInGroup != 3)) {
        return std::nullopt;
      }
      bGrouped = true;
      lInGroup = 0;
    } else if (IsDigit(c)) {
      zPlain += c;
      ++lInGroup;
    } else {
      return std::nullopt;
    }
  }
  return lInGroup == 3 ? std::optional(zPlain) : std::nullopt;
}

// A number as a person wrote it, without what a conversion would not read: the sign of the currency and the
// groups of thousands.
std::string PlainNumber(std::string_view zvText) {
  std::string zSign;
  const auto takeSign = [&] {
    zvText = text::TrimSpaces(zvText);
    if (zSign.empty() && (zvText.starts_with('-') || zvText.starts_with('+'))) {
      zSign = zvText.front();
      zvText.remove_prefix(1);
    }
  };
  takeSign();
  if (zvText.starts_with('$')) {
    zvText.remove_prefix(1);
    takeSign();
  }
  const std::string_view zWhole = zvText.substr(0, zvText.find('.'));
  if (zWhole.find(',') != std::string_view::npos) {
    if (const auto zPlain = WithoutGroups(zWhole)) {
      return zSign + *zPlain + std::string(zvText.substr(zWhole.size()));
    }
  }
  return zSign + std::string(zvText);
}

Variant Number(const Variant& vvValue) {
  if (vvValue.IsNull()) {
    return 0;
  }
  return vvValue.Kind() == VariantKind::String ? Variant(PlainNumber(vvValue.ToString())) : vvValue;
}

std::optional<int> TakeNumber(std::string_view& orText, std::size_t lvMost) {
  int lNumber = 0;
  const char* pEnd = orText.data() + std::min(lvMost, orText.size());
  const auto [pStop, error] = std::from_chars(orText.data(), pEnd, lNumber);
  if (error != std::errc() || !IsDigit(orText.front())) {
    return std::nullopt;
  }
  orText.remove_prefix(static_cast<std::size_t>(pStop - orText.data()));
  return lNumber;
}

bool TakeSlash(std::string_view& orText) {
  const bool bSlash = orText.starts_with('/');
  orText.remove_prefix(bSlash ? 1 : 0);
  return bSlash;
}

// The year of 7/4/03.
int FullYear(int lvYear, std::size_t lvDigits) {
  if (lvDigits > 2) {
    return lvYear;
  }
  return lvYear < 30 ? 2000 + lvYear : 1900 + lvYear;
}

// 20030704
std::optional<std::array<int, 3>> ParseDigits(std::string_view zvText) {
  std::string_view zText = zvText;
  if (zText.size() != 8) {
    return std::nullopt;
  }
  const auto lYear = TakeNumber(zText, 4);
  const auto lMonth = zText.size() == 4 ? TakeNumber(zText, 2) : std::nullopt;
  const auto lDay = zText.size() == 2 ? TakeNumber(zText, 2) : std::nullopt;
  if (!lYear || !lMonth || !lDay || !zText.empty()) {
    return std::nullopt;
  }
  return std::array{*lYear, *lMonth, *lDay};
}

// 7/4/2003, 7/4/03
std::optional<std::array<int, 3>> ParseSlashes(std::string_view zvText) {
  std::string_view zText = zvText;
  const auto lMonth = TakeNumber(zText, 2);
  if (!lMonth || !TakeSlash(zText)) {
    return std::nullopt;
  }
  const auto lDay = TakeNumber(zText, 2);
  if (!lDay || !TakeSlash(zText) || (zText.size() != 2 && zText.size() != 4)) {
    return std::nullopt;
  }
  const std::size_t lDigits = zText.size();
  const auto lYear = TakeNumber(zText, 4);
  if (!lYear || !zText.empty()) {
    return std::nullopt;
  }
  return std::array{FullYear(*lYear, lDigits), *lMonth, *lDay};
}

std::optional<Date> ParseDate(std::string_view zvText) {
  if (auto datValue = Date::ParseStoreText(zvText)) {
    return datValue;
  }
  auto parts = ParseDigits(zvText);
  if (!parts) {
    parts = ParseSlashes(zvText);
  }
  if (!parts) {
    return std::nullopt;
  }
  try {
    return Date((*parts)[0], (*parts)[1], (*parts)[2]);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

// The rules by which a value goes into a column of the store. The second value is that of a second column,
// where the rule takes one.
using Rule = Variant (*)(const Variant& vvValue, const Variant& vvSecond);

Variant Copied(const Variant& vvValue, const Variant&) {
  return vvValue.IsNull() ? vvValue : Variant(vvValue.ToString());
}

Variant WithSecond(const Variant& vvValue, const Variant& vvSecond) {
  return vvSecond.IsNull() ? Copied(vvValue, vvSecond) : Variant(TextOf(vvValue) + ", " + TextOf(vvSecond));
}

// The two parts of "Mary Ann Smith". A second space behind the first belongs to the last name.
Variant FirstName(const Variant& vvValue, const Variant&) {
  if (vvValue.IsNull()) {
    return vvValue;
  }
  const std::string zAttention = vvValue.ToString();
  const std::string_view zName = text::TrimSpaces(zAttention);
  return zName.substr(0, zName.find(' '));
}

Variant LastName(const Variant& vvValue, const Variant&) {
  if (vvValue.IsNull()) {
    return vvValue;
  }
  const std::string zAttention = vvValue.ToString();
  const std::string_view zName = text::TrimSpaces(zAttention);
  const std::size_t lSpace = zName.find(' ');
  return lSpace == std::string_view::npos ? std::string_view() : zName.substr(lSpace + 1);
}

Variant DateOf(const Variant& vvValue, const Variant&) {
  if (vvValue.IsNull()) {
    return Variant::Null();
  }
  if (vvValue.Kind() != VariantKind::String) {
    return vvValue.ToDate();
  }
  const std::string zText = vvValue.ToString();
  const auto datValue = ParseDate(text::TrimSpaces(zText));
  if (!datValue) {
    throw Failure(failure::kTypeMismatch, "\"" + zText + "\" is no date.");
  }
  return *datValue;
}

Variant Amount(const Variant& vvValue, const Variant&) {
  return Number(vvValue).ToCurrency();
}

Variant QuantityOf(const Variant& vvValue, const Variant&) {
  return Number(vvValue).ToInteger();
}

Variant IsN(const Variant& vvValue, const Variant&) {
  return Equals(vvValue, "N");
}

Variant IsY(const Variant& vvValue, const Variant&) {
  return Equals(vvValue, "Y");
}

Variant DeliveryMethod(const Variant& vvValue, const Variant&) {
  return Equals(vvValue, "SHIP") ? 1 : 0;
}

// A column of the store, and the older program's that fill it.
struct Mapping {
  const char* Store;
  const char* Legacy;
  Rule Convert = Copied;
  const char* Second = nullptr;
};

constexpr Mapping kOrder[] = {
    {"zPurchaseOrderNumber", "PONUM"},
    {"zDIAddress1", "STADDRESS1"},
    {"zDIAddress2", "STADDRESS2", WithSecond, "STADDRESS3"},
    {"zDICity", "STCITY"},
    {"zDIState", "STSTATE"},
    {"zDIZipOrPostcode", "STZIP"},
    {"zOIAttention", "SPECIALINS"},
    {"zDIFirstName", "STATTN", FirstName},
    {"zDILastName", "STATTN", LastName},
    {"zCCFirstName", "BTATTN", FirstName},
    {"zCCLastName", "BTATTN", LastName},
    {"zCCAddress1", "BTADDRESS1"},
    {"zCCAddress2", "BTADDRESS2", WithSecond, "BTADDRESS3"},
    {"zCCCity", "BTCITY"},
    {"zCCState", "BTSTATE"},
    {"zCCZipOrPostcode", "BTZIP"},
    {"datSubmitDate", "ORDDATE", DateOf},
    {"cTotalPrice", "POTOTAL", Amount},
    {"zOITaxIDNumber", "TAXNO"},
    {"zCCPhoneNumber", "BTTELEPHON"},
    {"zDIPhoneNumber", "STTELEPHON"},
    {"zPIMorvaneAccountNumber", "ACCTNUMBER"},
    {"bOIIsTaxExempt", "TAXFLAG", IsN},
    {"lDIDeliveryMethod", "SHIPORPICK", DeliveryMethod},
    {"zOIDepartment", "DEPARTMENT"},
    {"zOIProjectOrJobNumber", "PROJECTJOB"},
    {"zOIRequisitionOrApprovalName", "REQAPPNAME"},
    {"zCCComment1", "PROCCOMMT1"},
    {"zCCComment2", "PROCCOMMT2"},
    {"zCCComment3", "PROCCOMMT3"},
    {"zCCComment4", "PROCCOMMT4"},
    {"zCCCountry", "BTCOUNTRY"},
    {"zDICountry", "STCOUNTRY"},
};

constexpr Mapping kLine[] = {
    {"lQuantity", "QUANTITY", QuantityOf},
    {"cPrice", "UNITPRICE", Amount},
    {"cExtendedPrice", "EXTPRICE", Amount},
    {"zShortDescription", "DESC"},
    {"zDescription", "DESC"},
    {"bIsTaxable", "TAXABLE", IsY},
    {"zCustomerPartNumber", "CUSTNUMBER"},
    {"zModel", "MODELNUM"},
    {"zManufacturer", "MFGNAME"},
};

template <std::size_t lSize>
constexpr std::array<const char*, lSize> StoreColumns(const Mapping (&mappings)[lSize]) {
  std::array<const char*, lSize> zColumns{};
  for (std::size_t i = 0; i < lSize; ++i) {
    zColumns[i] = mappings[i].Store;
  }
  return zColumns;
}

// The fields that a mapping takes, two for each of its entries; the second is the first where it needs none.
std::vector<ado::Field> FieldsOf(std::span<const Mapping> mappings, const ado::Recordset& rows) {
  std::vector<ado::Field> fields;
  for (const Mapping& mapping : mappings) {
    fields.push_back(rows.Fields(mapping.Legacy));
    fields.push_back(rows.Fields(mapping.Second == nullptr ? mapping.Legacy : mapping.Second));
  }
  return fields;
}

std::vector<Variant> Values(std::span<const Mapping> mappings, const std::vector<ado::Field>& fields,
                            const LegacyOrders& orders) {
  std::vector<Variant> values;
  values.reserve(mappings.size());
  for (std::size_t i = 0; i < mappings.size(); ++i) {
    const Mapping& mapping = mappings[i];
    try {
      const Variant vSecond = mapping.Second == nullptr ? Variant() : fields[2 * i + 1].Value();
      values.push_back(mapping.Convert(fields[2 * i].Value(), vSecond));
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), "The purchase order " + orders.PurchaseOrderNumber() + " (" +
                                          orders.OrderKey() + "), item " + orders.ItemNumber() + ", column " +
                                          mapping.Legacy + ": " + failure.Description());
    }
  }
  return values;
}

}  // namespace

std::span<const char* const> LegacyOrderColumns() {
  static constexpr auto kColumns = StoreColumns(kOrder);
  return kColumns;
}

std::span<const char* const> LegacyLineColumns() {
  static constexpr auto kColumns = StoreColumns(kLine);
  return kColumns;
}

LegacyOrders::LegacyOrders(const std::string& zvFolder) {
  m_oConnection.Open("DRIVER=Microsoft dBase Driver (*.dbf);DBQ=" + zvFolder + ";DefaultDir=" + zvFolder);
  m_oRows = m_oConnection.Execute(Statement());
  m_oOrderFields = FieldsOf(kOrder, *m_oRows);
  m_oLineFields = FieldsOf(kLine, *m_oRows);
  for (const char* zColumn : {"DATETIME", "PONUM", "ITEMNUM", "DESC"}) {
    m_oTextFields.push_back(m_oRows->Fields(zColumn));
  }
}

std::int64_t LegacyOrders::Count() {
  const auto rows = m_oConnection.Execute(std::string("SELECT COUNT(*) ") + kJoin);
  return rows->Fields(std::size_t{0}).Value().ToInteger();
}

std::string LegacyOrders::OrderKey() const {
  return TextOf(m_oTextFields[0].Value());
}

std::string LegacyOrders::PurchaseOrderNumber() const {
  return TextOf(m_oTextFields[1].Value());
}

std::string LegacyOrders::ItemNumber() const {
  return TextOf(m_oTextFields[2].Value());
}

std::string LegacyOrders::Description() const {
  return TextOf(m_oTextFields[3].Value());
}

std::vector<Variant> LegacyOrders::OrderValues() const {
  return Values(kOrder, m_oOrderFields, *this);
}

std::vector<Variant> LegacyOrders::LineValues() const {
  return Values(kLine, m_oLineFields, *this);
}

}  // namespace qm_ordering
