#include "qm_ordering/order/OrderItems.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& OrderItems::ClassMembers() {
  using Class = OrderItems;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(Add), "ovOrderItem", "zvItemNumber")
        .Method(QM_MEMBER(Item), "vvKey")
        .Default("Item")
        .ReadOnly(QM_MEMBER(Count))
        .Enumerates(QM_MEMBER(NewEnum));
  });
}

}  // namespace qm_ordering
