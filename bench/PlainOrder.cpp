#include "bench/PlainOrder.h"

#include <cctype>
#include <cstdio>
#include <pugixml.hpp>
#include <utility>

namespace bench {

namespace {

std::string Lower(std::string zvText) {
  for (char& c : zvText) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return zvText;
}

// Two decimals, half away from zero, with commas between the thousands.
std::string Amount(std::int64_t lvScaled) {
  const std::int64_t lCents = (lvScaled + (lvScaled < 0 ? -50 : 50)) / 100;
  char zDigits[32];
  const int lLength =
      std::snprintf(zDigits, sizeof zDigits, "%lld.%02lld", static_cast<long long>(lCents / 100),
                    static_cast<long long>(lCents < 0 ? -lCents % 100 : lCents % 100));
  std::string zText(zDigits, static_cast<std::size_t>(lLength));
  for (std::size_t i = zText.size() - 3; i > 3 + (lCents < 0 ? 1U : 0U);) {
    i -= 3;
    zText.insert(i, 1, ',');
  }
  return zText;
}

class Writer : public pugi::xml_writer {
 public:
  void write(const void* pData, std::size_t lSize) override {
    Text.append(static_cast<const char*>(pData), lSize);
  }
  std::string Text;
};

void Set(pugi::xml_node& element, const char* zvName, const std::string& zvValue) {
  element.append_attribute(zvName).set_value(zvValue.data(), zvValue.size());
}

void Set(pugi::xml_node& element, const char* zvName, std::int64_t lvValue) {
  element.append_attribute(zvName).set_value(static_cast<long long>(lvValue));
}

}  // namespace

void PlainOrder::Clear() {
  HeaderTexts.clear();
  HeaderNumbers.clear();
  m_oLines.clear();
  m_oPositions.clear();
}

void PlainOrder::Add(Line line) {
  line.ValidQuantity = line.Quantity % line.SellQuantity == 0;
  m_oPositions.emplace(Lower(line.ItemNumber), m_oLines.size());
  m_oLines.push_back(std::move(line));
}

const Line* PlainOrder::Find(const std::string& zvItemNumber) const {
  const auto found = m_oPositions.find(Lower(zvItemNumber));
  return found == m_oPositions.end() ? nullptr : &m_oLines[found->second];
}

std::string PlainOrder::Document() const {
  pugi::xml_document document;
  pugi::xml_node items = document.append_child("orderitems");
  for (const Line& line : m_oLines) {
    pugi::xml_node element = items.append_child("orderitem");
    Set(element, "itemnumber", line.ItemNumber);
    Set(element, "quantity", line.Quantity);
    Set(element, "validquantity", line.ValidQuantity ? 1 : 0);
    Set(element, "description", line.Description);
    Set(element, "manufacturer", line.Manufacturer);
    Set(element, "model", line.Model);
    Set(element, "sellquantity", line.SellQuantity);
    Set(element, "shipquantity", line.ShipQuantity);
    Set(element, "usuallyships", line.UsuallyShips);
    Set(element, "istaxable", line.IsTaxable ? 1 : 0);
    Set(element, "price", Amount(line.Price));
    Set(element, "extendedprice", Amount(line.ExtendedPrice));
    Set(element, "ispricemodified", line.IsPriceModified ? 1 : 0);
    Set(element, "customerpartnumber", line.CustomerPartNumber);
    Set(element, "customernotes", line.CustomerNotes);
    Set(element, "hasnotes", line.HasNotes ? 1 : 0);
    Set(element, "hascontractitem", line.HasContractItem ? 1 : 0);
    Set(element, "haspartsinfo", line.HasPartsInfo ? 1 : 0);
  }
  Writer writer;
  document.print(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return std::move(writer.Text);
}

}  // namespace bench
