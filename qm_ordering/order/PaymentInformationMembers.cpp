#include "qm_ordering/order/PaymentInformation.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& PaymentInformation::ClassMembers() {
  using Class = PaymentInformation;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(Method))
        .ReadWrite(QM_PROPERTY(MorvaneAccountNumber))
        .ReadOnly(QM_MEMBER(CreditCardDetails))
        .Method(QM_MEMBER(Validate))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
