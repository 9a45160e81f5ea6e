#include "qm_ordering/lists/PersonalLists.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& PersonalLists::ClassMembers() {
  using Class = PersonalLists;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(GetName), "lvListID")
        .Method(QM_MEMBER(ListExists), "zvName")
        .Method(QM_MEMBER(CreateList), "zvName")
        .Method(QM_MEMBER(RenameList), "lvListID", "zvNewListName")
        .Method(QM_MEMBER(RemoveList), "lvListID")
        .Method(QM_MEMBER(RemoveListByName), "zvListName")
        .Method(QM_MEMBER(LoadLists))
        .Method(QM_MEMBER(Item), "lvListID")
        .Default("Item")
        .ReadOnly(QM_MEMBER(Count))
        .Enumerates(QM_MEMBER(NewEnum))
        .Method(QM_MEMBER(GetXML))
        .Method(QM_MEMBER(SaveAsXML));
  });
}

}  // namespace qm_ordering
