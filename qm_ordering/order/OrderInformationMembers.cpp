#include "qm_ordering/order/OrderInformation.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& OrderInformation::ClassMembers() {
  using Class = OrderInformation;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(PORelease))
        .ReadWrite(QM_PROPERTY(ProjectOrJobNumber))
        .ReadWrite(QM_PROPERTY(RequisitionOrApprovalName))
        .ReadWrite(QM_PROPERTY(Department))
        .ReadWrite(QM_PROPERTY(Attention))
        .ReadWrite(QM_PROPERTY(PhoneNumber))
        .ReadWrite(QM_PROPERTY(Email))
        .ReadWrite(QM_PROPERTY(IsTaxExempt))
        .ReadWrite(QM_PROPERTY(TaxIDNumber))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
