#include "host/OrderCheck.h"

#include "host/HeaderFields.h"
#include "host/Packs.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

namespace {

bool IsBlank(const std::string& zvText) {
  return zvText.find_first_not_of(' ') == std::string::npos;
}

// Those of the fields that are blank, with the group in front.
std::vector<std::string> BlankFields(const OrderDetails& order, const std::string& zvGroup,
                                     const std::vector<const char*>& zvNames) {
  std::vector<std::string> blank;
  for (const char* zName : zvNames) {
    const std::string zFullName = zvGroup + "." + zName;
    if (IsBlank(FindHeaderField(zFullName).Get(order).ToString())) {
      blank.push_back(zFullName);
    }
  }
  return blank;
}

// One of the two states must be filled; spaces count as filled there.
void AddMissingState(const std::string& zvState, const std::string& zvStateOr, const std::string& zvGroup,
                     std::vector<std::string>& zrMissing) {
  if (zvState.empty() && zvStateOr.empty()) {
    zrMissing.push_back(zvGroup + ".State or StateOr");
  }
}

std::vector<std::string> MissingOfDelivery(const OrderDetails& order) {
  const DeliveryInformation& delivery = *order.DeliveryInformation();
  if (delivery.DeliveryMethod() == 0) {
    return BlankFields(order, "DeliveryInformation",
                       {"CallBranchNumber", "CallAttention", "CallPhoneNumber"});
  }
  std::vector<std::string> missing = BlankFields(order, "DeliveryInformation",
                                                 {"FirstName", "LastName", "CompanyName", "Address1", "City",
                                                  "ZipOrPostCode", "Country", "PhoneNumber"});
  AddMissingState(delivery.State(), delivery.StateOr(), "DeliveryInformation", missing);
  return missing;
}

std::vector<std::string> MissingOfPayment(const OrderDetails& order) {
  const PaymentInformation& payment = *order.PaymentInformation();
  if (payment.Method() == 0) {
    return BlankFields(order, "PaymentInformation", {"MorvaneAccountNumber"});
  }
  const CreditCardDetails& card = *payment.CreditCardDetails();
  std::vector<std::string> missing = BlankFields(order, "CreditCardDetails",
                                                 {"FirstName", "LastName", "CompanyName", "Address1", "City",
                                                  "ZipOrPostCode", "Country", "PhoneNumber"});
  AddMissingState(card.State(), card.StateOr(), "CreditCardDetails", missing);
  return missing;
}

std::vector<std::string> MissingOfCard(const OrderDetails& order) {
  std::vector<std::string> missing;
  if (order.PaymentInformation()->Method() != 0) {
    const CreditCardDetails& card = *order.PaymentInformation()->CreditCardDetails();
    if (IsBlank(card.CardNumber())) {
      missing.emplace_back("CardNumber, in the card file");
    }
    if (card.ExpiryMonth() < 1 || card.ExpiryMonth() > 12) {
      missing.emplace_back("ExpiryMonth from 1 to 12, in the card file");
    }
  }
  return missing;
}

std::string Part(const char* zvName, bool bvValid, const std::vector<std::string>& zvMissing) {
  if (bvValid) {
    return std::string(zvName) + "complete\n";
  }
  std::string zText = std::string(zvName) + "not complete; missing:\n";
  for (const std::string& zName : zvMissing) {
    zText += "            " + zName + "\n";
  }
  return zText;
}

}  // namespace

std::vector<std::string> OrderCheck::AllPaymentMissing() const {
  std::vector<std::string> missing = PaymentMissing;
  missing.insert(missing.end(), CardMissing.begin(), CardMissing.end());
  return missing;
}

std::string OrderCheck::LinesText() const {
  if (LineCount == 0) {
    return "The order has no lines.";
  }
  if (!QuantitiesChecked) {
    return "The quantities cannot be checked, since a line has a pack size of 0.";
  }
  if (LinesValid) {
    return "Every quantity is a whole number of packs.";
  }
  return Counted(Misfits.size(), "line").append(Misfits.size() == 1 ? " has" : " have") +
         " a quantity that does not fit the pack.";
}

std::string OrderCheck::Text() const {
  std::string zText = "Quantities  " +
                      (LinesValid ? Counted(LineCount, "line") + ", every quantity fits its pack"
                                  : "not valid: " + LinesText()) +
                      "\n";
  for (const Misfit& misfit : Misfits) {
    zText +=
        "            " + Shown(misfit.ItemNumber) + ": " + MisfitText(misfit.Quantity, misfit.Pack) + "\n";
  }
  return zText + Part("Delivery    ", DeliveryValid, DeliveryMissing) +
         Part("Payment     ", PaymentValid, AllPaymentMissing()) +
         (XmlProblem ? "XML         " + (XmlProblem->empty() ? "complete" : Shown(*XmlProblem)) + "\n" : "");
}

Json OrderCheck::ToJson() const {
  Json misfits = Json::array();
  for (const Misfit& misfit : Misfits) {
    misfits.push_back({{"ItemNumber", misfit.ItemNumber},
                       {"Quantity", misfit.Quantity},
                       {"Pack", misfit.Pack},
                       {"NearestQuantities", NearestJson(misfit.Quantity, misfit.Pack)}});
  }
  Json check = {
      {"valid", AllValid()},
      {"lines",
       {{"valid", LinesValid}, {"count", LineCount}, {"checked", QuantitiesChecked}, {"misfits", misfits}}},
      {"delivery", {{"valid", DeliveryValid}, {"missing", DeliveryMissing}}},
      {"payment", {{"valid", PaymentValid}, {"missing", AllPaymentMissing()}}}};
  if (XmlProblem) {
    check["xml"] = {{"valid", XmlProblem->empty()}, {"problem", *XmlProblem}};
  }
  return check;
}

OrderCheck CheckOrder(const OrderDetails& order, bool bvChecked) {
  OrderCheck check;
  check.LineCount = static_cast<std::size_t>(order.OrderItems()->Count());
  check.QuantitiesChecked = bvChecked;
  check.LinesValid = check.LineCount > 0 && bvChecked && !order.HasInvalidQuantities();
  if (bvChecked) {
    const std::int32_t lMethod = order.DeliveryInformation()->DeliveryMethod();
    for (const auto& oItem : *order.OrderItems()) {
      if (!oItem->ValidQuantity()) {
        check.Misfits.push_back({oItem->ItemNumber(), oItem->Quantity(), PackOf(*oItem, lMethod)});
      }
    }
  }
  check.DeliveryValid = order.DeliveryInformation()->Validate();
  check.DeliveryMissing = MissingOfDelivery(order);
  check.PaymentValid = order.PaymentInformation()->Validate();
  check.PaymentMissing = MissingOfPayment(order);
  check.CardMissing = MissingOfCard(order);
  return check;
}

}  // namespace host
