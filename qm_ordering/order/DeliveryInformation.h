#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/foundation/LibraryObject.h"

namespace qm_ordering {

// How an order reaches the purchaser: delivered to an address, or collected at a branch. A plain value
// object: setters store what they are given, any integer included. Texts are UTF-8.
class QM_ORDERING_API DeliveryInformation : public LibraryObject {
 public:
  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "DeliveryInformation";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // 0: collected at a branch (the four Call fields apply); any other value: delivered to the address
  std::int32_t DeliveryMethod() const { return m_lDeliveryMethod; }
  void DeliveryMethod(std::int32_t lvDeliveryMethod) { m_lDeliveryMethod = lvDeliveryMethod; }
  // the recipient's first name
  const std::string& FirstName() const { return m_zFirstName; }
  void FirstName(const std::string& zvFirstName) { m_zFirstName = zvFirstName; }
  // the recipient's last name
  const std::string& LastName() const { return m_zLastName; }
  void LastName(const std::string& zvLastName) { m_zLastName = zvLastName; }
  // the recipient's company
  const std::string& CompanyName() const { return m_zCompanyName; }
  void CompanyName(const std::string& zvCompanyName) { m_zCompanyName = zvCompanyName; }
  // first line of the delivery address
  const std::string& Address1() const { return m_zAddress1; }
  void Address1(const std::string& zvAddress1) { m_zAddress1 = zvAddress1; }
  // second line of the address; optional
  const std::string& Address2() const { return m_zAddress2; }
  void Address2(const std::string& zvAddress2) { m_zAddress2 = zvAddress2; }
  // town of the delivery address
  const std::string& City() const { return m_zCity; }
  void City(const std::string& zvCity) { m_zCity = zvCity; }
  // state of the address, one of those that the host lists
  const std::string& State() const { return m_zState; }
  void State(const std::string& zvState) { m_zState = zvState; }
  // state, province or region written out, where State is not used
  const std::string& StateOr() const { return m_zStateOr; }
  void StateOr(const std::string& zvStateOr) { m_zStateOr = zvStateOr; }
  // ZIP or post code of the delivery address
  const std::string& ZipOrPostCode() const { return m_zZipOrPostCode; }
  void ZipOrPostCode(const std::string& zvZipOrPostCode) { m_zZipOrPostCode = zvZipOrPostCode; }
  // country of the delivery address, free text
  const std::string& Country() const { return m_zCountry; }
  void Country(const std::string& zvCountry) { m_zCountry = zvCountry; }
  // the recipient's telephone
  const std::string& PhoneNumber() const { return m_zPhoneNumber; }
  void PhoneNumber(const std::string& zvPhoneNumber) { m_zPhoneNumber = zvPhoneNumber; }
  // extension of the telephone; optional
  const std::string& PhoneExt() const { return m_zPhoneExt; }
  void PhoneExt(const std::string& zvPhoneExt) { m_zPhoneExt = zvPhoneExt; }
  // fax number; optional
  const std::string& Fax() const { return m_zFax; }
  void Fax(const std::string& zvFax) { m_zFax = zvFax; }
  // notes for the delivery; optional
  const std::string& Notes() const { return m_zNotes; }
  void Notes(const std::string& zvNotes) { m_zNotes = zvNotes; }
  // 0 to 9, see ShippingMethodName
  std::int32_t ShippingMethod() const { return m_lShippingMethod; }
  void ShippingMethod(std::int32_t lvShippingMethod) { m_lShippingMethod = lvShippingMethod; }
  // branch at which the order is collected
  const std::string& CallBranchNumber() const { return m_zCallBranchNumber; }
  void CallBranchNumber(const std::string& zvCallBranchNumber) { m_zCallBranchNumber = zvCallBranchNumber; }
  // person at the branch
  const std::string& CallAttention() const { return m_zCallAttention; }
  void CallAttention(const std::string& zvCallAttention) { m_zCallAttention = zvCallAttention; }
  // telephone for the collection at the branch
  const std::string& CallPhoneNumber() const { return m_zCallPhoneNumber; }
  void CallPhoneNumber(const std::string& zvCallPhoneNumber) { m_zCallPhoneNumber = zvCallPhoneNumber; }
  // extension of that telephone; optional
  const std::string& CallPhoneExt() const { return m_zCallPhoneExt; }
  void CallPhoneExt(const std::string& zvCallPhoneExt) { m_zCallPhoneExt = zvCallPhoneExt; }

  // The display name of ShippingMethod; empty for a code outside 0 to 9.
  std::string ShippingMethodName() const;

  // Whether what the delivery method needs is there. Delivery: names, company, first address line, city, post
  // code, country and telephone are not blank (spaces count as blank), and State or StateOr is not empty
  // (here spaces count as filled). Collection: branch number, attention and telephone are not blank.
  bool Validate() const;

  // The "deliveryinformation" element, every field in it whatever the method. Raises -1072896760 when a text
  // holds what XML cannot.
  std::string GetXML() const;

 private:
  std::int32_t m_lDeliveryMethod = 0;
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
  std::string m_zNotes;
  std::int32_t m_lShippingMethod = 0;
  std::string m_zCallBranchNumber;
  std::string m_zCallAttention;
  std::string m_zCallPhoneNumber;
  std::string m_zCallPhoneExt;
};

}  // namespace qm_ordering
