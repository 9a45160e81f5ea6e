#include "qm_ordering/foundation/members/Enumeration.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& Enumeration::ClassMembers() {
  using Class = Enumeration;
  return MembersOnce<Class>(kClassName, [](auto& members) { members.Method(QM_MEMBER(Next)); });
}

}  // namespace qm_ordering
