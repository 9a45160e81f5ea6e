#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "qm_ordering/foundation/LibraryObject.h"
#include "qm_ordering/order/CreditCardDetails.h"

namespace qm_ordering {

// How an order is paid. A plain value object: setters store what they are given. Texts are UTF-8.
class QM_ORDERING_API PaymentInformation : public LibraryObject {
 public:
  PaymentInformation();

  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "PaymentInformation";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // 0: on account with the vendor; any other value: by card
  std::int32_t Method() const { return m_lMethod; }
  void Method(std::int32_t lvMethod) { m_lMethod = lvMethod; }
  // the purchaser's account with the vendor
  const std::string& MorvaneAccountNumber() const { return m_zMorvaneAccountNumber; }
  void MorvaneAccountNumber(const std::string& zvMorvaneAccountNumber) {
    m_zMorvaneAccountNumber = zvMorvaneAccountNumber;
  }

  // The card; one object, made with this one and the same at every call.
  std::shared_ptr<qm_ordering::CreditCardDetails> CreditCardDetails() const { return m_oCreditCardDetails; }

  // On account: the account number is not blank. By card: CreditCardDetails::Validate.
  bool Validate() const;

  // The "paymentinformation" element with its "creditcarddetails", both whatever the method, the card number
  // in full. Raises -1072896760 when a text holds what XML cannot.
  std::string GetXML() const;

 private:
  std::int32_t m_lMethod = 0;
  std::string m_zMorvaneAccountNumber;
  std::shared_ptr<qm_ordering::CreditCardDetails> m_oCreditCardDetails;
};

}  // namespace qm_ordering
