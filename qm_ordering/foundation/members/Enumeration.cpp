#include "qm_ordering/foundation/members/Enumeration.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& Enumeration::ClassMembers() {
  using Class = Enumeration;
  static const ClassTable<Class> table(kClassName, [](auto& members) { members.Method(QM_MEMBER(Next)); });
  return table.Info();
}

}  // namespace qm_ordering
