#include "tests/support/OrderFields.h"

#include <cstdint>
#include <type_traits>

namespace test {

namespace {

using qm_ordering::CreditCardDetails;
using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::DeliveryInformation;
using qm_ordering::OrderDetails;
using qm_ordering::OrderInformation;
using qm_ordering::OrderItem;
using qm_ordering::PaymentInformation;

std::string ToText(const std::string& zvValue) {
  return zvValue;
}
std::string ToText(std::int32_t lvValue) {
  return std::to_string(lvValue);
}
std::string ToText(bool bvValue) {
  return bvValue ? "-1" : "0";
}
std::string ToText(Currency cvValue) {
  return std::to_string(cvValue.Scaled());
}
std::string ToText(const Date& datvValue) {
  return datvValue.IsZero() ? "NULL" : datvValue.ToStoreText();
}

template <typename Value>
Value FromText(const std::string& zvText);
template <>
std::string FromText(const std::string& zvText) {
  return zvText;
}
template <>
std::int32_t FromText(const std::string& zvText) {
  return std::stoi(zvText);
}
template <>
bool FromText(const std::string& zvText) {
  return zvText == "-1";
}
template <>
Currency FromText(const std::string& zvText) {
  return Currency::FromScaled(std::stoll(zvText));
}
template <>
Date FromText(const std::string& zvText) {
  return zvText == "NULL" ? Date() : Date::ParseStoreText(zvText).value();
}

// The part of an order that holds a header field.
OrderInformation* Information(const OrderDetails& order) {
  return order.OrderInformation().get();
}
DeliveryInformation* Delivery(const OrderDetails& order) {
  return order.DeliveryInformation().get();
}
PaymentInformation* Payment(const OrderDetails& order) {
  return order.PaymentInformation().get();
}
CreditCardDetails* Card(const OrderDetails& order) {
  return order.PaymentInformation()->CreditCardDetails().get();
}

// A field by the property that holds it: the overloads that read and write it.
template <typename Object, typename Result, typename Argument>
StoredField<Object> Field(const char* zvColumn, Result (Object::*pGet)() const,
                          void (Object::*pSet)(Argument)) {
  using Value = std::remove_cvref_t<Argument>;
  return {zvColumn, [=](const Object& object) { return ToText((object.*pGet)()); },
          [=](Object& object, const std::string& zvText) { (object.*pSet)(FromText<Value>(zvText)); }};
}

// The same of a part of an order.
template <typename Part, typename Result, typename Argument>
StoredField<OrderDetails> Field(const char* zvColumn, Part* (*pPart)(const OrderDetails&),
                                Result (Part::*pGet)() const, void (Part::*pSet)(Argument)) {
  using Value = std::remove_cvref_t<Argument>;
  return {zvColumn, [=](const OrderDetails& order) { return ToText((pPart(order)->*pGet)()); },
          [=](OrderDetails& order, const std::string& zvText) {
            (pPart(order)->*pSet)(FromText<Value>(zvText));
          }};
}

std::vector<StoredField<OrderDetails>> MakeHeaderFields() {
  using OD = OrderDetails;
  using OI = OrderInformation;
  using PI = PaymentInformation;
  using CC = CreditCardDetails;
  using DI = DeliveryInformation;
  return {
      Field("lOrderID", &OD::OrderID, &OD::OrderID),
      Field("cTotalPrice", &OD::TotalPrice, &OD::TotalPrice),
      Field("zPurchaseOrderNumber", &OD::PurchaseOrderNumber, &OD::PurchaseOrderNumber),
      Field("datSubmitDate", &OD::SubmitDate, &OD::SubmitDate),
      {"bIsCurrent", [](const OD& order) { return ToText(order.IsCurrentOrder()); }, nullptr},
      Field("bOIIsTaxExempt", Information, &OI::IsTaxExempt, &OI::IsTaxExempt),
      Field("zOIAttention", Information, &OI::Attention, &OI::Attention),
      Field("zOIDepartment", Information, &OI::Department, &OI::Department),
      Field("zOIPhoneNumber", Information, &OI::PhoneNumber, &OI::PhoneNumber),
      Field("zOIProjectOrJobNumber", Information, &OI::ProjectOrJobNumber, &OI::ProjectOrJobNumber),
      Field("zPOReleaseNumber", Information, &OI::PORelease, &OI::PORelease),
      Field("zOIRequisitionOrApprovalName", Information, &OI::RequisitionOrApprovalName,
            &OI::RequisitionOrApprovalName),
      Field("zOIEmail", Information, &OI::Email, &OI::Email),
      Field("zOITaxIDNumber", Information, &OI::TaxIDNumber, &OI::TaxIDNumber),
      Field("lPIPaymentMethod", Payment, &PI::Method, &PI::Method),
      Field("zPIMorvaneAccountNumber", Payment, &PI::MorvaneAccountNumber, &PI::MorvaneAccountNumber),
      Field("zCCAddress1", Card, &CC::Address1, &CC::Address1),
      Field("zCCAddress2", Card, &CC::Address2, &CC::Address2),
      Field("zCCCity", Card, &CC::City, &CC::City),
      Field("zCCComment1", Card, &CC::Comment1, &CC::Comment1),
      Field("zCCComment2", Card, &CC::Comment2, &CC::Comment2),
      Field("zCCComment3", Card, &CC::Comment3, &CC::Comment3),
      Field("zCCComment4", Card, &CC::Comment4, &CC::Comment4),
      Field("zCCCompanyName", Card, &CC::CompanyName, &CC::CompanyName),
      Field("zCCCountry", Card, &CC::Country, &CC::Country),
      Field("zCCFax", Card, &CC::Fax, &CC::Fax),
      Field("zCCAccountNumber", Card, &CC::AccountNumber, &CC::AccountNumber),
      Field("zCCFirstName", Card, &CC::FirstName, &CC::FirstName),
      Field("zCCLastName", Card, &CC::LastName, &CC::LastName),
      Field("zCCPhoneExt", Card, &CC::PhoneExt, &CC::PhoneExt),
      Field("zCCPhoneNumber", Card, &CC::PhoneNumber, &CC::PhoneNumber),
      Field("zCCState", Card, &CC::State, &CC::State),
      Field("zCCStateOr", Card, &CC::StateOr, &CC::StateOr),
      Field("zCCZipOrPostcode", Card, &CC::ZipOrPostCode, &CC::ZipOrPostCode),
      Field("lDIDeliveryMethod", Delivery, &DI::DeliveryMethod, &DI::DeliveryMethod),
      Field("lDIShippingMethod", Delivery, &DI::ShippingMethod, &DI::ShippingMethod),
      Field("zDIAddress1", Delivery, &DI::Address1, &DI::Address1),
      Field("zDIAddress2", Delivery, &DI::Address2, &DI::Address2),
      Field("zDICity", Delivery, &DI::City, &DI::City),
      Field("zDICompanyName", Delivery, &DI::CompanyName, &DI::CompanyName),
      Field("zDICountry", Delivery, &DI::Country, &DI::Country),
      Field("zDIFax", Delivery, &DI::Fax, &DI::Fax),
      Field("zDIFirstName", Delivery, &DI::FirstName, &DI::FirstName),
      Field("zDILastName", Delivery, &DI::LastName, &DI::LastName),
      Field("zDIPhoneExt", Delivery, &DI::PhoneExt, &DI::PhoneExt),
      Field("zDIPhoneNumber", Delivery, &DI::PhoneNumber, &DI::PhoneNumber),
      Field("zDIState", Delivery, &DI::State, &DI::State),
      Field("zDIStateOr", Delivery, &DI::StateOr, &DI::StateOr),
      Field("zDIZipOrPostcode", Delivery, &DI::ZipOrPostCode, &DI::ZipOrPostCode),
      Field("zDINotes", Delivery, &DI::Notes, &DI::Notes),
      Field("zDICallAttention", Delivery, &DI::CallAttention, &DI::CallAttention),
      Field("zDICallBranchNumber", Delivery, &DI::CallBranchNumber, &DI::CallBranchNumber),
      Field("zDICallPhoneExt", Delivery, &DI::CallPhoneExt, &DI::CallPhoneExt),
      Field("zDICallPhoneNumber", Delivery, &DI::CallPhoneNumber, &DI::CallPhoneNumber),
  };
}

std::vector<StoredField<OrderItem>> MakeLineFields() {
  using Item = OrderItem;
  return {
      Field("lOrderID", &Item::OrderID, &Item::OrderID),
      Field("zItemNumber", &Item::ItemNumber, &Item::ItemNumber),
      Field("zCustomerNotes", &Item::CustomerNotes, &Item::CustomerNotes),
      Field("zCustomerPartNumber", &Item::CustomerPartNumber, &Item::CustomerPartNumber),
      Field("zDescription", &Item::Description, &Item::Description),
      Field("zShortDescription", &Item::ShortDescription, &Item::ShortDescription),
      Field("cExtendedPrice", &Item::ExtendedPrice, &Item::ExtendedPrice),
      Field("bIsPriceModified", &Item::IsPriceModified, &Item::IsPriceModified),
      Field("bIsTaxable", &Item::IsTaxable, &Item::IsTaxable),
      Field("zManufacturer", &Item::Manufacturer, &Item::Manufacturer),
      Field("zModel", &Item::Model, &Item::Model),
      Field("lSellQuantity", &Item::SellQuantity, &Item::SellQuantity),
      Field("lShipQuantity", &Item::ShipQuantity, &Item::ShipQuantity),
      Field("cPrice", &Item::Price, &Item::Price),
      Field("lQuantity", &Item::Quantity, &Item::Quantity),
      Field("zUsuallyShips", &Item::UsuallyShips, &Item::UsuallyShips),
      Field("bHasContractItem", &Item::HasContractItem, &Item::HasContractItem),
      Field("bHasNotes", &Item::HasNotes, &Item::HasNotes),
      {"bImported", [](const Item& item) { return ToText(item.Imported()); }, nullptr},
      Field("bHasPartsInfo", &Item::HasPartsInfo, &Item::HasPartsInfo),
  };
}

}  // namespace

const std::vector<StoredField<OrderDetails>>& HeaderFields() {
  static const std::vector<StoredField<OrderDetails>> fields = MakeHeaderFields();
  return fields;
}

const std::vector<StoredField<OrderItem>>& LineFields() {
  static const std::vector<StoredField<OrderItem>> fields = MakeLineFields();
  return fields;
}

std::string SampleValue(const std::string& zvColumn, int lvMark) {
  if (zvColumn.starts_with("dat")) {
    return "200" + std::to_string(lvMark) + "-02-03 14:05:06";
  }
  switch (zvColumn.front()) {
    case 'z':
      return zvColumn + " it's " + std::to_string(lvMark);
    case 'b':
      return lvMark % 2 == 0 ? "0" : "-1";
    default:
      break;
  }
  // Any number will do that no other column of the two tables has.
  std::int32_t lNumber = lvMark;
  for (const char cLetter : zvColumn) {
    lNumber = (lNumber * 31 + cLetter) % 10007;
  }
  return std::to_string(lNumber + 100);
}

void FillHeader(OrderDetails& orOrder, int lvMark) {
  for (const StoredField<OrderDetails>& field : HeaderFields()) {
    if (field.Set && field.Column != "lOrderID") {
      field.Set(orOrder, SampleValue(field.Column, lvMark));
    }
  }
}

}  // namespace test
