#include "qm_ordering/history/PreviousOrder.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& PreviousOrder::ClassMembers() {
  using Class = PreviousOrder;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(OrderID))
        .ReadWrite(QM_PROPERTY(OrderDetails))
        .ReadOnly(QM_MEMBER(PurchaseOrderNumber))
        .ReadOnly(QM_MEMBER(SubmitDate))
        .ReadOnly(QM_MEMBER(OrderTotal))
        .Method(QM_MEMBER(LoadSummary), ParameterName("vvOrderID", Variant::Missing()))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
