#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/platform/value/Currency.h"

namespace qm_ordering {

// One line of an order or of a personal list. A plain value object: a setter stores what it is given, without
// trimming, checking or touching another field. Texts are UTF-8.
class QM_ORDERING_API OrderItem : public LibraryObject {
 public:
  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderItem";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // the order (or the personal list) that owns the line
  std::int32_t OrderID() const { return m_lOrderID; }
  void OrderID(std::int32_t lvOrderID) { m_lOrderID = lvOrderID; }
  // catalogue item number; the key of the line
  const std::string& ItemNumber() const { return m_zItemNumber; }
  void ItemNumber(std::string zvItemNumber) { m_zItemNumber = std::move(zvItemNumber); }
  // number of units; Validate tells whether it fits the packs
  std::int32_t Quantity() const { return m_lQuantity; }
  void Quantity(std::int32_t lvQuantity) { m_lQuantity = lvQuantity; }
  // what the item is
  const std::string& Description() const { return m_zDescription; }
  void Description(std::string zvDescription) { m_zDescription = std::move(zvDescription); }
  // short form of the description; not part of the XML
  const std::string& ShortDescription() const { return m_zShortDescription; }
  void ShortDescription(std::string zvShortDescription) {
    m_zShortDescription = std::move(zvShortDescription);
  }
  // who makes the item
  const std::string& Manufacturer() const { return m_zManufacturer; }
  void Manufacturer(std::string zvManufacturer) { m_zManufacturer = std::move(zvManufacturer); }
  // the manufacturer's model
  const std::string& Model() const { return m_zModel; }
  void Model(std::string zvModel) { m_zModel = std::move(zvModel); }
  // pack size in which the item ships
  std::int32_t ShipQuantity() const { return m_lShipQuantity; }
  void ShipQuantity(std::int32_t lvShipQuantity) { m_lShipQuantity = lvShipQuantity; }
  // pack size in which the item sells
  std::int32_t SellQuantity() const { return m_lSellQuantity; }
  void SellQuantity(std::int32_t lvSellQuantity) { m_lSellQuantity = lvSellQuantity; }
  // lead time, free text: "TODAY", "1-3 DAYS", "SPECIAL ORDER"
  const std::string& UsuallyShips() const { return m_zUsuallyShips; }
  void UsuallyShips(std::string zvUsuallyShips) { m_zUsuallyShips = std::move(zvUsuallyShips); }
  // whether the item is taxed
  bool IsTaxable() const { return m_bIsTaxable; }
  void IsTaxable(bool bvIsTaxable) { m_bIsTaxable = bvIsTaxable; }
  // price of one unit
  Currency Price() const { return m_cPrice; }
  void Price(Currency cvPrice) { m_cPrice = cvPrice; }
  // price of the line; kept as given, never computed here
  Currency ExtendedPrice() const { return m_cExtendedPrice; }
  void ExtendedPrice(Currency cvExtendedPrice) { m_cExtendedPrice = cvExtendedPrice; }
  // whether the user has changed the price
  bool IsPriceModified() const { return m_bIsPriceModified; }
  void IsPriceModified(bool bvIsPriceModified) { m_bIsPriceModified = bvIsPriceModified; }
  // the customer's own number for the item
  const std::string& CustomerPartNumber() const { return m_zCustomerPartNumber; }
  void CustomerPartNumber(std::string zvCustomerPartNumber) {
    m_zCustomerPartNumber = std::move(zvCustomerPartNumber);
  }
  // the customer's notes on the item
  const std::string& CustomerNotes() const { return m_zCustomerNotes; }
  void CustomerNotes(std::string zvCustomerNotes) { m_zCustomerNotes = std::move(zvCustomerNotes); }
  // whether the item is under a contract; read from the store, never written to it
  bool HasContractItem() const { return m_bHasContractItem; }
  void HasContractItem(bool bvHasContractItem) { m_bHasContractItem = bvHasContractItem; }
  // whether the line carries notes
  bool HasNotes() const { return m_bHasNotes; }
  void HasNotes(bool bvHasNotes) { m_bHasNotes = bvHasNotes; }
  // whether the line carries the customer's part information
  bool HasPartsInfo() const { return m_bHasPartsInfo; }
  void HasPartsInfo(bool bvHasPartsInfo) { m_bHasPartsInfo = bvHasPartsInfo; }

  // Always clear: neither Validate nor GetXML sets it.
  ErrorInfo Error() const { return {}; }

  // What the last Validate answered; true before the first. Changing a quantity does not change it.
  bool ValidQuantity() const { return m_bValidQuantity; }

  // The line came from the import of an older program's orders.
  bool Imported() const { return m_bImported; }

  // Whether Quantity is a whole number of packs: of SellQuantity when lvDeliveryMethod is 0 (collected at a
  // branch), else of ShipQuantity. Zero is valid, and so is a negative multiple. The answer stays in
  // ValidQuantity. Raises 11 when that pack size is 0; ValidQuantity is then unchanged.
  bool Validate(std::int32_t lvDeliveryMethod);

  // The line as one "orderitem" element. Prices have two decimals in the number format of the user's locale.
  // Raises -1072896760 when a text holds what XML cannot (control characters, broken UTF-8).
  std::string GetXML() const;

 private:
  friend struct LibraryAccess;

  std::int32_t m_lOrderID = 0;
  std::string m_zItemNumber;
  std::int32_t m_lQuantity = 0;
  std::string m_zDescription;
  std::string m_zShortDescription;
  std::string m_zManufacturer;
  std::string m_zModel;
  std::int32_t m_lShipQuantity = 0;
  std::int32_t m_lSellQuantity = 0;
  std::string m_zUsuallyShips;
  bool m_bIsTaxable = false;
  Currency m_cPrice;
  Currency m_cExtendedPrice;
  bool m_bIsPriceModified = false;
  std::string m_zCustomerPartNumber;
  std::string m_zCustomerNotes;
  bool m_bHasContractItem = false;
  bool m_bHasNotes = false;
  bool m_bHasPartsInfo = false;
  bool m_bValidQuantity = true;
  bool m_bImported = false;
};

}  // namespace qm_ordering
