#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/foundation/LibraryObject.h"

namespace qm_ordering {

// A payment card and its holder's billing address. A plain value object: setters store what they are given.
// Card type, card number, expiry and holder's reference live in memory alone: no member of the library stores
// them. Texts are UTF-8.
class QM_ORDERING_API CreditCardDetails : public LibraryObject {
 public:
  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "CreditCardDetails";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // kind of card, free text
  const std::string& CardType() const { return m_zCardType; }
  void CardType(const std::string& zvCardType) { m_zCardType = zvCardType; }
  // an account number of the card holder's, free text
  const std::string& AccountNumber() const { return m_zAccountNumber; }
  void AccountNumber(const std::string& zvAccountNumber) { m_zAccountNumber = zvAccountNumber; }
  // the card holder's first name
  const std::string& FirstName() const { return m_zFirstName; }
  void FirstName(const std::string& zvFirstName) { m_zFirstName = zvFirstName; }
  // the card holder's last name
  const std::string& LastName() const { return m_zLastName; }
  void LastName(const std::string& zvLastName) { m_zLastName = zvLastName; }
  // the card holder's company
  const std::string& CompanyName() const { return m_zCompanyName; }
  void CompanyName(const std::string& zvCompanyName) { m_zCompanyName = zvCompanyName; }
  // first line of the billing address
  const std::string& Address1() const { return m_zAddress1; }
  void Address1(const std::string& zvAddress1) { m_zAddress1 = zvAddress1; }
  // second line of the address; optional
  const std::string& Address2() const { return m_zAddress2; }
  void Address2(const std::string& zvAddress2) { m_zAddress2 = zvAddress2; }
  // town of the billing address
  const std::string& City() const { return m_zCity; }
  void City(const std::string& zvCity) { m_zCity = zvCity; }
  // state of the address, one of those that the host lists
  const std::string& State() const { return m_zState; }
  void State(const std::string& zvState) { m_zState = zvState; }
  // state, province or region written out, where State is not used
  const std::string& StateOr() const { return m_zStateOr; }
  void StateOr(const std::string& zvStateOr) { m_zStateOr = zvStateOr; }
  // ZIP or post code of the billing address
  const std::string& ZipOrPostCode() const { return m_zZipOrPostCode; }
  void ZipOrPostCode(const std::string& zvZipOrPostCode) { m_zZipOrPostCode = zvZipOrPostCode; }
  // country of the billing address, free text
  const std::string& Country() const { return m_zCountry; }
  void Country(const std::string& zvCountry) { m_zCountry = zvCountry; }
  // the card holder's telephone
  const std::string& PhoneNumber() const { return m_zPhoneNumber; }
  void PhoneNumber(const std::string& zvPhoneNumber) { m_zPhoneNumber = zvPhoneNumber; }
  // extension of the telephone; optional
  const std::string& PhoneExt() const { return m_zPhoneExt; }
  void PhoneExt(const std::string& zvPhoneExt) { m_zPhoneExt = zvPhoneExt; }
  // fax number; optional
  const std::string& Fax() const { return m_zFax; }
  void Fax(const std::string& zvFax) { m_zFax = zvFax; }
  // the number of the card, as entered
  const std::string& CardNumber() const { return m_zCardNumber; }
  void CardNumber(const std::string& zvCardNumber) { m_zCardNumber = zvCardNumber; }
  // month in which the card expires, 1 to 12; 0 for none
  std::int32_t ExpiryMonth() const { return m_lExpiryMonth; }
  void ExpiryMonth(std::int32_t lvExpiryMonth) { m_lExpiryMonth = lvExpiryMonth; }
  // year in which the card expires, as entered, not checked
  std::int32_t ExpiryYear() const { return m_lExpiryYear; }
  void ExpiryYear(std::int32_t lvExpiryYear) { m_lExpiryYear = lvExpiryYear; }
  // the card holder's own reference for the purchase
  const std::string& CardHoldersRef() const { return m_zCardHoldersRef; }
  void CardHoldersRef(const std::string& zvCardHoldersRef) { m_zCardHoldersRef = zvCardHoldersRef; }
  // a comment of the purchaser, free text
  const std::string& Comment1() const { return m_zComment1; }
  void Comment1(const std::string& zvComment1) { m_zComment1 = zvComment1; }
  // a second comment
  const std::string& Comment2() const { return m_zComment2; }
  void Comment2(const std::string& zvComment2) { m_zComment2 = zvComment2; }
  // a third comment
  const std::string& Comment3() const { return m_zComment3; }
  void Comment3(const std::string& zvComment3) { m_zComment3 = zvComment3; }
  // a fourth comment
  const std::string& Comment4() const { return m_zComment4; }
  void Comment4(const std::string& zvComment4) { m_zComment4 = zvComment4; }

  // Whether names, company, first address line, city, post code, country, telephone and card number are not
  // blank (spaces count as blank), State or StateOr is not empty (here spaces count as filled) and
  // ExpiryMonth is 1 to 12. Neither the card number nor the year is examined: an expired card validates.
  bool Validate() const;

 private:
  std::string m_zCardType;
  std::string m_zAccountNumber;
  std::string m_zFirstName;
  std::string m_zLastName;
  std::string m_zCompanyName;
  std::string m_zAddress1;
  std::string m_zAddress2;
  std::string m_zCity;
  std::string m_zState;
  std::string m_zStateOr;
  std::string m_zZipOrPostCode;
  std::string m_zCountry;
  std::string m_zPhoneNumber;
  std::string m_zPhoneExt;
  std::string m_zFax;
  std::string m_zCardNumber;
  std::int32_t m_lExpiryMonth = 0;
  std::int32_t m_lExpiryYear = 0;
  std::string m_zCardHoldersRef;
  std::string m_zComment1;
  std::string m_zComment2;
  std::string m_zComment3;
  std::string m_zComment4;
};

}  // namespace qm_ordering
