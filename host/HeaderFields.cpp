#include "host/HeaderFields.h"

#include <algorithm>
#include <utility>

#include "host/Errors.h"
#include "host/NearestNames.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

constexpr const char* kCard = "PaymentInformation.CreditCardDetails";

// The object of an order that holds a group's values, and the group's name.
template <typename Group>
struct GroupOf;

template <>
struct GroupOf<OrderDetails> {
  static constexpr const char* kName = "";
  static const OrderDetails& In(const OrderDetails& order) { return order; }
  static OrderDetails& In(OrderDetails& order) { return order; }
};

template <>
struct GroupOf<OrderInformation> {
  static constexpr const char* kName = "OrderInformation";
  static OrderInformation& In(const OrderDetails& order) { return *order.OrderInformation(); }
};

template <>
struct GroupOf<DeliveryInformation> {
  static constexpr const char* kName = "DeliveryInformation";
  static DeliveryInformation& In(const OrderDetails& order) { return *order.DeliveryInformation(); }
};

template <>
struct GroupOf<PaymentInformation> {
  static constexpr const char* kName = "PaymentInformation";
  static PaymentInformation& In(const OrderDetails& order) { return *order.PaymentInformation(); }
};

template <>
struct GroupOf<CreditCardDetails> {
  static constexpr const char* kName = kCard;
  static CreditCardDetails& In(const OrderDetails& order) {
    return *order.PaymentInformation()->CreditCardDetails();
  }
};

// A property is a pair of overloads; the types of the parameters choose the two.
template <typename Group>
HeaderField Text(const char* zvName, const std::string& (Group::*get)() const,
                 void (Group::*set)(const std::string&)) {
  return {GroupOf<Group>::kName, zvName, VariantKind::String,
          [get](const OrderDetails& order) { return Variant((GroupOf<Group>::In(order).*get)()); },
          [set](OrderDetails& order, const Variant& vvValue) {
            (GroupOf<Group>::In(order).*set)(vvValue.ToString());
          }};
}

template <typename Group>
HeaderField Integer(const char* zvName, std::int32_t (Group::*get)() const,
                    void (Group::*set)(std::int32_t)) {
  return {GroupOf<Group>::kName, zvName, VariantKind::Integer,
          [get](const OrderDetails& order) { return Variant((GroupOf<Group>::In(order).*get)()); },
          [set](OrderDetails& order, const Variant& vvValue) {
            (GroupOf<Group>::In(order).*set)(vvValue.ToInteger());
          }};
}

template <typename Group>
HeaderField Boolean(const char* zvName, bool (Group::*get)() const, void (Group::*set)(bool)) {
  return {GroupOf<Group>::kName, zvName, VariantKind::Boolean,
          [get](const OrderDetails& order) { return Variant((GroupOf<Group>::In(order).*get)()); },
          [set](OrderDetails& order, const Variant& vvValue) {
            (GroupOf<Group>::In(order).*set)(vvValue.ToBoolean());
          }};
}

std::vector<HeaderField> MakeHeaderFields() {
  using Info = OrderInformation;
  using Delivery = DeliveryInformation;
  using Payment = PaymentInformation;
  using Card = CreditCardDetails;
  return {
      Text<OrderDetails>("PurchaseOrderNumber", &OrderDetails::PurchaseOrderNumber,
                         &OrderDetails::PurchaseOrderNumber),

      Text<Info>("PORelease", &Info::PORelease, &Info::PORelease),
      Text<Info>("ProjectOrJobNumber", &Info::ProjectOrJobNumber, &Info::ProjectOrJobNumber),
      Text<Info>("RequisitionOrApprovalName", &Info::RequisitionOrApprovalName,
                 &Info::RequisitionOrApprovalName),
      Text<Info>("Department", &Info::Department, &Info::Department),
      Text<Info>("Attention", &Info::Attention, &Info::Attention),
      Text<Info>("PhoneNumber", &Info::PhoneNumber, &Info::PhoneNumber),
      Text<Info>("Email", &Info::Email, &Info::Email),
      Boolean<Info>("IsTaxExempt", &Info::IsTaxExempt, &Info::IsTaxExempt),
      Text<Info>("TaxIDNumber", &Info::TaxIDNumber, &Info::TaxIDNumber),

      Integer<Delivery>("DeliveryMethod", &Delivery::DeliveryMethod, &Delivery::DeliveryMethod),
      Text<Delivery>("FirstName", &Delivery::FirstName, &Delivery::FirstName),
      Text<Delivery>("LastName", &Delivery::LastName, &Delivery::LastName),
      Text<Delivery>("CompanyName", &Delivery::CompanyName, &Delivery::CompanyName),
      Text<Delivery>("Address1", &Delivery::Address1, &Delivery::Address1),
      Text<Delivery>("Address2", &Delivery::Address2, &Delivery::Address2),
      Text<Delivery>("City", &Delivery::City, &Delivery::City),
      Text<Delivery>("State", &Delivery::State, &Delivery::State),
      Text<Delivery>("StateOr", &Delivery::StateOr, &Delivery::StateOr),
      Text<Delivery>("ZipOrPostCode", &Delivery::ZipOrPostCode, &Delivery::ZipOrPostCode),
      Text<Delivery>("Country", &Delivery::Country, &Delivery::Country),
      Text<Delivery>("PhoneNumber", &Delivery::PhoneNumber, &Delivery::PhoneNumber),
      Text<Delivery>("PhoneExt", &Delivery::PhoneExt, &Delivery::PhoneExt),
      Text<Delivery>("Fax", &Delivery::Fax, &Delivery::Fax),
      Text<Delivery>("Notes", &Delivery::Notes, &Delivery::Notes),
      Integer<Delivery>("ShippingMethod", &Delivery::ShippingMethod, &Delivery::ShippingMethod),
      Text<Delivery>("CallBranchNumber", &Delivery::CallBranchNumber, &Delivery::CallBranchNumber),
      Text<Delivery>("CallAttention", &Delivery::CallAttention, &Delivery::CallAttention),
      Text<Delivery>("CallPhoneNumber", &Delivery::CallPhoneNumber, &Delivery::CallPhoneNumber),
      Text<Delivery>("CallPhoneExt", &Delivery::CallPhoneExt, &Delivery::CallPhoneExt),

      Integer<Payment>("Method", &Payment::Method, &Payment::Method),
      Text<Payment>("MorvaneAccountNumber", &Payment::MorvaneAccountNumber, &Payment::MorvaneAccountNumber),

      Text<Card>("AccountNumber", &Card::AccountNumber, &Card::AccountNumber),
      Text<Card>("FirstName", &Card::FirstName, &Card::FirstName),
      Text<Card>("LastName", &Card::LastName, &Card::LastName),
      Text<Card>("CompanyName", &Card::CompanyName, &Card::CompanyName),
      Text<Card>("Address1", &Card::Address1, &Card::Address1),
      Text<Card>("Address2", &Card::Address2, &Card::Address2),
      Text<Card>("City", &Card::City, &Card::City),
      Text<Card>("State", &Card::State, &Card::State),
      Text<Card>("StateOr", &Card::StateOr, &Card::StateOr),
      Text<Card>("ZipOrPostCode", &Card::ZipOrPostCode, &Card::ZipOrPostCode),
      Text<Card>("Country", &Card::Country, &Card::Country),
      Text<Card>("PhoneNumber", &Card::PhoneNumber, &Card::PhoneNumber),
      Text<Card>("PhoneExt", &Card::PhoneExt, &Card::PhoneExt),
      Text<Card>("Fax", &Card::Fax, &Card::Fax),
      Text<Card>("Comment1", &Card::Comment1, &Card::Comment1),
      Text<Card>("Comment2", &Card::Comment2, &Card::Comment2),
      Text<Card>("Comment3", &Card::Comment3, &Card::Comment3),
      Text<Card>("Comment4", &Card::Comment4, &Card::Comment4),
  };
}

// The name with the card's group written out.
std::string WrittenOut(const std::string& zvName) {
  constexpr std::string_view kShort = "CreditCardDetails.";
  return SameName(std::string_view(zvName).substr(0, kShort.size()), kShort) ? "PaymentInformation." + zvName
                                                                             : zvName;
}

void RefuseCardData(const std::string& zvName) {
  const std::string zLastPart = zvName.substr(zvName.rfind('.') + 1);
  for (const std::string& zCardField : CardFieldNames()) {
    if (SameName(zLastPart, zCardField)) {
      throw UsageError(zCardField +
                       " is never stored, so it cannot be set: card type, card number, expiry and holder's "
                       "reference belong in no file of the program. Hand them to `order validate` or `order "
                       "xml` with --card-file FILE, or --card-file - for standard input.");
    }
  }
}

void RefuseReadOnly(const std::string& zvName) {
  static const std::vector<std::pair<const char*, const char*>> kReadOnly = {
      {"OrderID", "the store gives it"},
      {"TotalPrice", "it is the sum of the lines"},
      {"SubmitDate", "`order submit` sets it"},
      {"IsCurrentOrder", "`order submit` changes it"},
      {"DeliveryInformation.ShippingMethodName", "it follows from DeliveryInformation.ShippingMethod"}};
  for (const auto& [zName, zReason] : kReadOnly) {
    if (SameName(zvName, zName)) {
      throw UsageError(std::string(zName) + " cannot be set: " + zReason + ".");
    }
  }
}

}  // namespace

const std::vector<HeaderField>& HeaderFields() {
  static const std::vector<HeaderField> kFields = MakeHeaderFields();
  return kFields;
}

const std::vector<std::string>& CardFieldNames() {
  static const std::vector<std::string> kNames = {"CardType", "CardNumber", "ExpiryMonth", "ExpiryYear",
                                                  "CardHoldersRef"};
  return kNames;
}

const HeaderField& FindHeaderField(const std::string& zvName) {
  const std::string zName = WrittenOut(zvName);
  const auto found = std::ranges::find_if(
      HeaderFields(), [&](const HeaderField& field) { return SameName(field.FullName(), zName); });
  if (found != HeaderFields().end()) {
    return *found;
  }
  RefuseCardData(zName);
  RefuseReadOnly(zName);
  std::vector<std::string> names;
  for (const HeaderField& field : HeaderFields()) {
    names.push_back(field.FullName());
  }
  throw UsageError("An order has no property \"" + zvName + "\"." + DidYouMean(zName, names) +
                   " `qm-ordering order set --help` shows all of them.");
}

Variant ParseHeaderValue(const HeaderField& field, const std::string& zvText) {
  if (field.Kind == VariantKind::Integer) {
    if (const auto lNumber = ParseInteger(zvText)) {
      return *lNumber;
    }
    throw UsageError("The value of " + field.FullName() + " is an integer; \"" + zvText + "\" is none.");
  }
  if (field.Kind == VariantKind::Boolean) {
    if (const auto bFlag = ParseBoolean(zvText)) {
      return *bFlag;
    }
    throw UsageError("The value of " + field.FullName() + " is true, false, 1 or 0; \"" + zvText +
                     "\" is none of them.");
  }
  if (!IsUtf8(zvText)) {
    throw UsageError("The value of " + field.FullName() + " is not UTF-8 text.");
  }
  return zvText;
}

}  // namespace host
