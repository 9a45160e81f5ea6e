#pragma once

#include <string>

#include "qm_ordering/foundation/LibraryObject.h"

namespace qm_ordering {

// What the purchaser's own organisation needs on the paperwork of an order. A plain value object: setters
// store what they are given. Texts are UTF-8. The purchase-order number itself belongs to OrderDetails.
class QM_ORDERING_API OrderInformation : public LibraryObject {
 public:
  // The class's name for who makes or uses objects by name.
  static constexpr const char* kClassName = "OrderInformation";
  const char* ClassName() const noexcept override { return kClassName; }
  // What Members answers, without an object.
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // release number of a blanket purchase order
  const std::string& PORelease() const { return m_zPORelease; }
  void PORelease(const std::string& zvPORelease) { m_zPORelease = zvPORelease; }
  // project or job that the order is charged to
  const std::string& ProjectOrJobNumber() const { return m_zProjectOrJobNumber; }
  void ProjectOrJobNumber(const std::string& zvProjectOrJobNumber) {
    m_zProjectOrJobNumber = zvProjectOrJobNumber;
  }
  // requisition number or name of the approver
  const std::string& RequisitionOrApprovalName() const { return m_zRequisitionOrApprovalName; }
  void RequisitionOrApprovalName(const std::string& zvRequisitionOrApprovalName) {
    m_zRequisitionOrApprovalName = zvRequisitionOrApprovalName;
  }
  // department that orders
  const std::string& Department() const { return m_zDepartment; }
  void Department(const std::string& zvDepartment) { m_zDepartment = zvDepartment; }
  // person to whom the order is addressed
  const std::string& Attention() const { return m_zAttention; }
  void Attention(const std::string& zvAttention) { m_zAttention = zvAttention; }
  // the purchaser's telephone
  const std::string& PhoneNumber() const { return m_zPhoneNumber; }
  void PhoneNumber(const std::string& zvPhoneNumber) { m_zPhoneNumber = zvPhoneNumber; }
  // the purchaser's e-mail address
  const std::string& Email() const { return m_zEmail; }
  void Email(const std::string& zvEmail) { m_zEmail = zvEmail; }
  // whether the purchaser is exempt from tax
  bool IsTaxExempt() const { return m_bIsTaxExempt; }
  void IsTaxExempt(bool bvIsTaxExempt) { m_bIsTaxExempt = bvIsTaxExempt; }
  // the purchaser's tax number
  const std::string& TaxIDNumber() const { return m_zTaxIDNumber; }
  void TaxIDNumber(const std::string& zvTaxIDNumber) { m_zTaxIDNumber = zvTaxIDNumber; }

  // The "orderinformation" element. Its "ponumber" attribute is always there and always empty: consumers of
  // the element look for it. Raises -1072896760 when a text holds what XML cannot.
  std::string GetXML() const;

 private:
  std::string m_zPORelease;
  std::string m_zProjectOrJobNumber;
  std::string m_zRequisitionOrApprovalName;
  std::string m_zDepartment;
  std::string m_zAttention;
  std::string m_zPhoneNumber;
  std::string m_zEmail;
  bool m_bIsTaxExempt = false;
  std::string m_zTaxIDNumber;
};

}  // namespace qm_ordering
