#include "qm_ordering/foundation/members/Texts.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

const std::string& Texts::Item(std::int32_t lvPosition) const {
  if (lvPosition < 1 || lvPosition > Count()) {
    throw Failure(failure::kIndexOutOfBounds, "There is no text " + std::to_string(lvPosition) + ", but " +
                                                  std::to_string(Count()) + " of them.");
  }
  return m_zTexts[static_cast<std::size_t>(lvPosition - 1)];
}

const ClassInfo& Texts::ClassMembers() {
  using Class = Texts;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(Item), "lvPosition")
        .Default("Item")
        .ReadOnly(QM_MEMBER(Count))
        .Enumerates(QM_MEMBER(NewEnum));
  });
}

}  // namespace qm_ordering
