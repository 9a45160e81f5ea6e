#include "qm_ordering/order/ItemElement.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

xml::Element ItemElement(xml::Document& oDocument, const OrderItem& item, const text::AmountFormat& amounts) {
  xml::Element element = oDocument.CreateElement("orderitem");
  element.AddAttribute("itemnumber", item.ItemNumber());
  element.AddAttribute("quantity", std::to_string(item.Quantity()));
  element.AddAttribute("validquantity", BooleanDigit(item.ValidQuantity()));
  element.AddAttribute("description", item.Description());
  element.AddAttribute("manufacturer", item.Manufacturer());
  element.AddAttribute("model", item.Model());
  element.AddAttribute("sellquantity", std::to_string(item.SellQuantity()));
  element.AddAttribute("shipquantity", std::to_string(item.ShipQuantity()));
  element.AddAttribute("usuallyships", item.UsuallyShips());
  element.AddAttribute("istaxable", BooleanDigit(item.IsTaxable()));
  element.AddAttribute("price", amounts.Text(item.Price()));
  element.AddAttribute("extendedprice", amounts.Text(item.ExtendedPrice()));
  element.AddAttribute("ispricemodified", BooleanDigit(item.IsPriceModified()));
  element.AddAttribute("customerpartnumber", item.CustomerPartNumber());
  element.AddAttribute("customernotes", item.CustomerNotes());
  element.AddAttribute("hasnotes", BooleanDigit(item.HasNotes()));
  element.AddAttribute("hascontractitem", BooleanDigit(item.HasContractItem()));
  element.AddAttribute("haspartsinfo", BooleanDigit(item.HasPartsInfo()));
  return element;
}

void AppendItemElements(xml::Document& oDocument, xml::Element& orParent, const OrderItems& items,
                        const text::AmountFormat& amounts) {
  int lLine = 0;
  for (const auto& oItem : items) {
    ++lLine;
    try {
      orParent.AppendChild(ItemElement(oDocument, *oItem, amounts));
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), "Line " + std::to_string(lLine) + ", item " + oItem->ItemNumber() +
                                          ": " + failure.Description());
    }
  }
}

}  // namespace qm_ordering
