#include "host/OrderReport.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/HeaderFields.h"
#include "host/Packs.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

namespace {

// What a code means, in words.
std::string MeaningOf(const OrderDetails& order, const std::string& zvFullName) {
  const DeliveryInformation& delivery = *order.DeliveryInformation();
  if (zvFullName == "DeliveryInformation.DeliveryMethod") {
    return delivery.DeliveryMethod() == 0 ? "collected at a branch" : "delivered to the address";
  }
  if (zvFullName == "DeliveryInformation.ShippingMethod") {
    return delivery.ShippingMethodName();
  }
  if (zvFullName == "PaymentInformation.Method") {
    return order.PaymentInformation()->Method() == 0 ? "on account" : "by card";
  }
  return {};
}

bool IsFilled(const Variant& vvValue) {
  switch (vvValue.Kind()) {
    case VariantKind::String:
      return !vvValue.ToString().empty();
    case VariantKind::Boolean:
      return vvValue.ToBoolean();
    default:
      return true;
  }
}

std::string Heading(const std::string& zvGroup) {
  return zvGroup.empty() ? "" : zvGroup.substr(zvGroup.rfind('.') + 1) + "\n";
}

// The decimals that show every amount of a column.
int DecimalsOf(const OrderDetails& order, Currency (OrderItem::*amount)() const) {
  int lDecimals = 2;
  for (const auto& oItem : *order.OrderItems()) {
    lDecimals = std::max(lDecimals, host::DecimalsOf((*oItem.*amount)()));
  }
  return lDecimals;
}

// A text of an order, or a dash where there is none.
std::string OrDash(const std::string& zvText) {
  return zvText.empty() ? "-" : zvText;
}

Json LineJson(const OrderItem& item, std::int32_t lvDeliveryMethod, bool bvChecked) {
  Json line = {
      {"OrderID", item.OrderID()},
      {"ItemNumber", item.ItemNumber()},
      {"Quantity", item.Quantity()},
      {"Description", item.Description()},
      {"ShortDescription", item.ShortDescription()},
      {"Manufacturer", item.Manufacturer()},
      {"Model", item.Model()},
      {"ShipQuantity", item.ShipQuantity()},
      {"SellQuantity", item.SellQuantity()},
      {"UsuallyShips", item.UsuallyShips()},
      {"IsTaxable", item.IsTaxable()},
      {"Price", item.Price().ToString()},
      {"ExtendedPrice", item.ExtendedPrice().ToString()},
      {"IsPriceModified", item.IsPriceModified()},
      {"CustomerPartNumber", item.CustomerPartNumber()},
      {"CustomerNotes", item.CustomerNotes()},
      {"HasContractItem", item.HasContractItem()},
      {"HasNotes", item.HasNotes()},
      {"HasPartsInfo", item.HasPartsInfo()},
      {"Imported", item.Imported()},
      {"ValidQuantity", nullptr},
  };
  if (bvChecked) {
    line["ValidQuantity"] = item.ValidQuantity();
    if (!item.ValidQuantity()) {
      line["NearestQuantities"] = NearestJson(item.Quantity(), PackOf(item, lvDeliveryMethod));
    }
  }
  return line;
}

}  // namespace

std::string HeaderText(const OrderDetails& order) {
  std::size_t lWidest = 0;
  for (const HeaderField& field : HeaderFields()) {
    lWidest = std::max(lWidest, field.Name.size());
  }
  std::string zText;
  std::string zGroup;
  for (const HeaderField& field : HeaderFields()) {
    const Variant vValue = field.Get(order);
    if (field.Group.empty() || !IsFilled(vValue)) {
      continue;
    }
    if (field.Group != zGroup) {
      zGroup = field.Group;
      zText += (zText.empty() ? "" : "\n") + Heading(zGroup);
    }
    const std::string zMeaning = MeaningOf(order, field.FullName());
    const std::string zValue = Shown(vValue.ToString()) + (zMeaning.empty() ? "" : "  (" + zMeaning + ")");
    const std::size_t lIndent = lWidest + 4;
    std::string zLabel = "  " + field.Name;
    for (const std::string& zLine : Wrapped(zValue, Output::Width() - lIndent)) {
      zText.append(zLabel).append(lIndent - zLabel.size(), ' ').append(zLine).append("\n");
      zLabel.clear();
    }
  }
  return zText;
}

std::string LinesText(const OrderDetails& order, bool bvChecked) {
  const std::int32_t lMethod = order.DeliveryInformation()->DeliveryMethod();
  const int lPriceDecimals = DecimalsOf(order, &OrderItem::Price);
  const int lExtendedDecimals =
      std::max(DecimalsOf(order, &OrderItem::ExtendedPrice), host::DecimalsOf(order.TotalPrice()));
  constexpr auto kRight = Table::Align::Right;
  Table table({{"item"},
               {"description", Table::Align::Left, true},
               {"qty", kRight},
               {""},
               {"pack", kRight},
               {"ships"},
               {"price", kRight},
               {"extended", kRight}});
  std::string zMisfits;
  for (const auto& oItem : *order.OrderItems()) {
    const std::int32_t lPack = PackOf(*oItem, lMethod);
    const bool bMarked = bvChecked && !oItem->ValidQuantity();
    table.Add({oItem->ItemNumber(), oItem->Description(), std::to_string(oItem->Quantity()),
               bMarked ? "*" : "", std::to_string(lPack), oItem->UsuallyShips(),
               MoneyText(oItem->Price(), lPriceDecimals),
               MoneyText(oItem->ExtendedPrice(), lExtendedDecimals)});
    if (bMarked) {
      zMisfits += "* " + Shown(oItem->ItemNumber()) + ": " + MisfitText(oItem->Quantity(), lPack) + ".\n";
    }
  }
  const std::string zTotal = "Total " + MoneyText(order.TotalPrice(), lExtendedDecimals) + "\n";
  if (order.OrderItems()->Count() == 0) {
    return "No lines.\n" + zTotal;
  }
  return table.Text(Output::Width()) + "\n" + zTotal + zMisfits;
}

std::string OrderText(const OrderDetails& order, bool bvChecked) {
  const auto lLines = static_cast<std::size_t>(order.OrderItems()->Count());
  return "Order " + std::to_string(order.OrderID()) +
         (order.IsCurrentOrder() ? ", the current order"
                                 : ", submitted " + order.SubmitDate().ToGeneralText()) +
         "    PO number: " + OrDash(Shown(order.PurchaseOrderNumber())) + "    " + Counted(lLines, "line") +
         "\n\n" + HeaderText(order) + "\n" + LinesText(order, bvChecked);
}

Json ValueJson(const Variant& vvValue) {
  switch (vvValue.Kind()) {
    case VariantKind::Boolean:
      return vvValue.ToBoolean();
    case VariantKind::Integer:
      return vvValue.ToInteger();
    default:
      return vvValue.ToString();
  }
}

Json HeaderJson(const OrderDetails& order) {
  Json header = {{"OrderID", order.OrderID()}};
  header["IsCurrentOrder"] = order.IsCurrentOrder();
  header["SubmitDate"] = order.SubmitDate().IsZero() ? Json() : Json(order.SubmitDate().ToStoreText());
  header["TotalPrice"] = order.TotalPrice().ToString();
  for (const HeaderField& field : HeaderFields()) {
    // "A.B" leads to the member B of the member A.
    Json* group = &header;
    std::string zPath = field.Group;
    while (!zPath.empty()) {
      const std::size_t lPoint = zPath.find('.');
      group = &(*group)[zPath.substr(0, lPoint)];
      zPath.erase(0, lPoint == std::string::npos ? lPoint : lPoint + 1);
    }
    (*group)[field.Name] = ValueJson(field.Get(order));
  }
  header["DeliveryInformation"]["ShippingMethodName"] = order.DeliveryInformation()->ShippingMethodName();
  return header;
}

Json OrderJson(const OrderDetails& order, bool bvChecked) {
  Json json = HeaderJson(order);
  json["QuantitiesChecked"] = bvChecked;
  json["HasInvalidQuantities"] = bvChecked ? Json(order.HasInvalidQuantities()) : Json();
  Json& lines = json["OrderItems"] = Json::array();
  for (const auto& oItem : *order.OrderItems()) {
    lines.push_back(LineJson(*oItem, order.DeliveryInformation()->DeliveryMethod(), bvChecked));
  }
  return json;
}

}  // namespace host
