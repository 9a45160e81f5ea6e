#include "qm_ordering/lists/PersonalList.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Record.h"

namespace qm_ordering {

const ClassInfo& PersonalList::ClassMembers() {
  using Class = PersonalList;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(Name))
        .ReadWrite(QM_PROPERTY(ListID))
        .ReadWrite(QM_PROPERTY(OrderItems))
        .ReadOnly(QM_MEMBER(Error))
        .Method(QM_MEMBER(AddItem), "ovOrderItem", ParameterName("vvListID", Variant::Missing()))
        .Method(QM_MEMBER(LoadSummary), ParameterName("vvListID", Variant::Missing()))
        .Method(QM_MEMBER(LoadItems), ParameterName("vvListID", Variant::Missing()));
  });
}

}  // namespace qm_ordering
