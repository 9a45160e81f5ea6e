#include "qm_ordering/order/CurrentOrder.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Record.h"

namespace qm_ordering {

const ClassInfo& CurrentOrder::ClassMembers() {
  using Class = CurrentOrder;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadOnly(QM_MEMBER(Error))
        .ReadOnly(QM_MEMBER(OrderDetails))
        .Method(QM_MEMBER(LoadSummary))
        .Method(QM_MEMBER(LoadItems), "lvSortOrder")
        .Method(QM_MEMBER(AddItem), "ovOrderItem")
        .Method(QM_MEMBER(UpdateItems), "ovOrderItems")
        .Method(QM_MEMBER(RemoveItem), "zvItemNumber")
        .Method(QM_MEMBER(ClearItems))
        .Method(QM_MEMBER(ItemCount))
        .Method(QM_MEMBER(ItemExists), "zvItemNumber")
        .Method(QM_MEMBER(SaveSummary))
        .Method(QM_MEMBER(SavePONumber))
        .Method(QM_MEMBER(SaveToHistory))
        .Method(QM_MEMBER(ApplyRegistrationSettings))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
