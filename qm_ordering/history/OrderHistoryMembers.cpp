#include "qm_ordering/history/OrderHistory.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& OrderHistory::ClassMembers() {
  using Class = OrderHistory;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(LoadOrders), ParameterName("lvSortOrder", 0))
        .Method(QM_MEMBER(DeleteOrder), "lvOrderID")
        .Method(QM_MEMBER(ItemExists), "zvPONumber")
        .Method(QM_MEMBER(Item), "lvOrderID")
        .Default("Item")
        .ReadOnly(QM_MEMBER(Count))
        .Enumerates(QM_MEMBER(NewEnum))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
