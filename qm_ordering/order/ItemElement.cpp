#include "qm_ordering/order/ItemElement.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/platform/text/NumberFormat.h"

namespace qm_ordering {

xml::Element ItemElement(xml::Document& oDocument, const OrderItem& item) {
  xml::Element element = oDocument.CreateElement("orderitem");
  element.SetAttribute("itemnumber", item.ItemNumber());
  element.SetAttribute("quantity", std::to_string(item.Quantity()));
  element.SetAttribute("validquantity", BooleanDigit(item.ValidQuantity()));
  element.SetAttribute("description", item.Description());
  element.SetAttribute("manufacturer", item.Manufacturer());
  element.SetAttribute("model", item.Model());
  element.SetAttribute("sellquantity", std::to_string(item.SellQuantity()));
  element.SetAttribute("shipquantity", std::to_string(item.ShipQuantity()));
  element.SetAttribute("usuallyships", item.UsuallyShips());
  element.SetAttribute("istaxable", BooleanDigit(item.IsTaxable()));
  element.SetAttribute("price", text::FormatAmount(item.Price()));
  element.SetAttribute("extendedprice", text::FormatAmount(item.ExtendedPrice()));
  element.SetAttribute("ispricemodified", BooleanDigit(item.IsPriceModified()));
  element.SetAttribute("customerpartnumber", item.CustomerPartNumber());
  element.SetAttribute("customernotes", item.CustomerNotes());
  element.SetAttribute("hasnotes", BooleanDigit(item.HasNotes()));
  element.SetAttribute("hascontractitem", BooleanDigit(item.HasContractItem()));
  element.SetAttribute("haspartsinfo", BooleanDigit(item.HasPartsInfo()));
  return element;
}

}  // namespace qm_ordering
