#include "qm_ordering/foundation/members/Record.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

template <>
const ClassInfo& Record<ErrorInfo>::ClassMembers() {
  using Class = ErrorInfo;
  return MembersOnce<Record>(kClassName, [](auto& members) {
    members.ReadOnly(QM_MEMBER(Number)).ReadOnly(QM_MEMBER(Description));
  });
}

}  // namespace qm_ordering
