#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// Whether an order is ready to be submitted, and what is missing. The verdicts are the library's; it does not
// say what is missing, so that is worked out here from the same rules.
struct OrderCheck {
  struct Misfit {
    std::string ItemNumber;
    std::int32_t Quantity;
    std::int32_t Pack;
  };

  std::size_t LineCount = 0;
  bool QuantitiesChecked = true;
  bool LinesValid = false;
  std::vector<Misfit> Misfits;
  bool DeliveryValid = false;
  std::vector<std::string> DeliveryMissing;  // names of properties
  bool PaymentValid = false;
  std::vector<std::string> PaymentMissing;  // of what the store keeps
  std::vector<std::string> CardMissing;     // of what a card file gives

  // Why the order cannot be exported, asked of an order that is checked whole; else nothing.
  std::optional<std::string> XmlProblem;

  bool AllValid() const {
    return LinesValid && DeliveryValid && PaymentValid && XmlProblem.value_or("").empty();
  }
  std::vector<std::string> AllPaymentMissing() const;
  // Why the lines are not valid, in a sentence.
  std::string LinesText() const;
  std::string Text() const;
  Json ToJson() const;
};

// Of an order whose summary and lines were loaded; bvChecked as LoadCheckedLines answered it. An order
// without lines is not valid.
OrderCheck CheckOrder(const qm_ordering::OrderDetails& order, bool bvChecked);

}  // namespace host
