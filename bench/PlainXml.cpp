#include "bench/PlainXml.h"

#include <cstdio>
#include <utility>

namespace bench {

namespace {

class Writer : public pugi::xml_writer {
 public:
  void write(const void* pData, std::size_t lSize) override {
    Text.append(static_cast<const char*>(pData), lSize);
  }
  std::string Text;
};

}  // namespace

void Set(pugi::xml_node& element, const char* zvName, const std::string& zvValue) {
  element.append_attribute(zvName).set_value(zvValue.data(), zvValue.size());
}

void Set(pugi::xml_node& element, const char* zvName, std::int64_t lvValue) {
  element.append_attribute(zvName).set_value(static_cast<long long>(lvValue));
}

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

void AppendItem(pugi::xml_node& parent, const Line& line) {
  pugi::xml_node element = parent.append_child("orderitem");
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

std::string TextOf(const pugi::xml_document& document) {
  Writer writer;
  document.print(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return std::move(writer.Text);
}

}  // namespace bench
