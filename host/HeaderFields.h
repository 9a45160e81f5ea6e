#pragma once

#include <functional>
#include <string>
#include <vector>

#include "qm_ordering/qm_ordering.h"

namespace host {

// One stored header value of an order that a user may set, by the name of its property.
struct HeaderField {
  // The objects that lead to it from the order: "", "OrderInformation", "DeliveryInformation",
  // "PaymentInformation" or "PaymentInformation.CreditCardDetails".
  std::string Group;
  std::string Name;
  // The kind of its values: String, Integer or Boolean.
  qm_ordering::VariantKind Kind;
  std::function<qm_ordering::Variant(const qm_ordering::OrderDetails&)> Get;
  std::function<void(qm_ordering::OrderDetails&, const qm_ordering::Variant&)> Set;

  std::string FullName() const { return Group.empty() ? Name : Group + "." + Name; }
};

// All of them, group by group. They need an order whose summary was loaded.
const std::vector<HeaderField>& HeaderFields();

// The field of that full name, in any letter case; "CreditCardDetails.X" is short for
// "PaymentInformation.CreditCardDetails.X". Raises UsageError, which names the nearest, when there is none,
// and with the reason for what an order holds but nobody may set.
const HeaderField& FindHeaderField(const std::string& zvName);

// The text as a value of the field. Raises UsageError when it is none.
qm_ordering::Variant ParseHeaderValue(const HeaderField& field, const std::string& zvText);

// What a card file may hold: the properties of CreditCardDetails that are never stored.
const std::vector<std::string>& CardFieldNames();

}  // namespace host
