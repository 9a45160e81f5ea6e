#include "qm_ordering/order/ItemFields.h"

#include <utility>

namespace qm_ordering {

std::string TextOf(const ado::Field& field) {
  Variant vValue = field.Value();
  return vValue.IsNull() ? std::string() : std::move(vValue).ToString();
}

ItemFields::ItemFields(const ado::Recordset& rows, const char* zvOwnerColumn)
    : m_oOwner(rows.Fields(zvOwnerColumn)),
      m_oItemNumber(rows.Fields("zItemNumber")),
      m_oCustomerNotes(rows.Fields("zCustomerNotes")),
      m_oCustomerPartNumber(rows.Fields("zCustomerPartNumber")),
      m_oDescription(rows.Fields("zDescription")),
      m_oShortDescription(rows.Fields("zShortDescription")),
      m_oIsTaxable(rows.Fields("bIsTaxable")),
      m_oManufacturer(rows.Fields("zManufacturer")),
      m_oModel(rows.Fields("zModel")),
      m_oSellQuantity(rows.Fields("lSellQuantity")),
      m_oShipQuantity(rows.Fields("lShipQuantity")),
      m_oQuantity(rows.Fields("lQuantity")),
      m_oUsuallyShips(rows.Fields("zUsuallyShips")),
      m_oHasPartsInfo(rows.Fields("bHasPartsInfo")) {}

std::shared_ptr<OrderItem> ItemFields::MakeItem(std::string zvItemNumber) const {
  auto oItem = std::make_shared<OrderItem>();
  oItem->OrderID(m_oOwner.Value().ToInteger());
  oItem->ItemNumber(std::move(zvItemNumber));
  oItem->CustomerNotes(TextOf(m_oCustomerNotes));
  oItem->CustomerPartNumber(TextOf(m_oCustomerPartNumber));
  oItem->Description(TextOf(m_oDescription));
  oItem->ShortDescription(TextOf(m_oShortDescription));
  oItem->IsTaxable(m_oIsTaxable.Value().ToBoolean());
  oItem->Manufacturer(TextOf(m_oManufacturer));
  oItem->Model(TextOf(m_oModel));
  oItem->SellQuantity(m_oSellQuantity.Value().ToInteger());
  oItem->ShipQuantity(m_oShipQuantity.Value().ToInteger());
  oItem->Quantity(m_oQuantity.Value().ToInteger());
  oItem->UsuallyShips(TextOf(m_oUsuallyShips));
  oItem->HasPartsInfo(m_oHasPartsInfo.Value().ToBoolean());
  return oItem;
}

}  // namespace qm_ordering
