#include "tests/support/OrderValues.h"

#include <charconv>
#include <stdexcept>
#include <string_view>

#include "tests/support/OrderFields.h"

namespace test {

namespace {

// "SIZE:BYTES,"
void AppendTo(std::string& zrText, const std::string& zvPart) {
  zrText += std::to_string(zvPart.size()) + ":" + zvPart + ",";
}

std::string TakeFrom(std::string_view& zrText) {
  std::size_t lSize = 0;
  const auto [pEnd, error] = std::from_chars(zrText.data(), zrText.data() + zrText.size(), lSize);
  const auto lStart = static_cast<std::size_t>(pEnd - zrText.data()) + 1;
  if (error != std::errc() || zrText.size() < lStart + lSize + 1) {
    throw std::runtime_error("these are no values of an order: " + std::string(zrText.substr(0, 200)));
  }
  std::string zPart(zrText.substr(lStart, lSize));
  zrText.remove_prefix(lStart + lSize + 1);
  return zPart;
}

}  // namespace

OrderValues ValuesOf(const qm_ordering::OrderDetails& order) {
  OrderValues values;
  for (const auto& field : HeaderFields()) {
    values.emplace_back(field.Column, field.Get(order));
  }
  int lLine = 0;
  for (const auto& oItem : *order.OrderItems()) {
    const std::string zLine = "line " + std::to_string(++lLine) + " ";
    for (const auto& field : LineFields()) {
      values.emplace_back(zLine + field.Column, field.Get(*oItem));
    }
  }
  return values;
}

std::string ToText(const OrderValues& values) {
  std::string zText;
  for (const auto& [zName, zValue] : values) {
    AppendTo(zText, zName);
    AppendTo(zText, zValue);
  }
  return zText;
}

OrderValues FromText(const std::string& zvText) {
  OrderValues values;
  std::string_view zRest = zvText;
  while (!zRest.empty()) {
    std::string zName = TakeFrom(zRest);
    std::string zValue = TakeFrom(zRest);
    values.emplace_back(std::move(zName), std::move(zValue));
  }
  return values;
}

}  // namespace test
