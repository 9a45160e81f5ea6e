#include "qm_ordering/history/OrderHistoryImporter.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Texts.h"
#include "qm_ordering/history/ImportPreviewRecord.h"

namespace qm_ordering {

template <>
const ClassInfo& Record<ImportPreview>::ClassMembers() {
  using Class = ImportPreview;
  return MembersOnce<Record>(kClassName, [](auto& members) {
    members.ReadOnly(QM_MEMBER(Orders))
        .ReadOnly(QM_MEMBER(Lines))
        .ReadOnly(QM_MEMBER(MarkedLines))
        .ReadOnly(QM_MEMBER(AlreadyImported))
        .ReadOnly(QM_MEMBER(FailingRows))
        .ReadOnly(QM_MEMBER(Failures));
  });
}

const ClassInfo& OrderHistoryImporter::ClassMembers() {
  using Class = OrderHistoryImporter;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(ApplyImports), "zvUserDataPath", ParameterName("bvWriteLog", false))
        .ReadOnly(QM_MEMBER(LogHeader))
        .ReadOnly(QM_MEMBER(LogBody))
        .Method(QM_MEMBER(PreviewImports), "zvUserDataPath");
  });
}

}  // namespace qm_ordering
