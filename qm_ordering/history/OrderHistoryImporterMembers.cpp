#include "qm_ordering/history/OrderHistoryImporter.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Texts.h"
#include "qm_ordering/history/ImportPreviewRecord.h"

namespace qm_ordering {

template <>
const ClassInfo& Record<ImportPreview>::ClassMembers() {
  using Class = ImportPreview;
  static const ClassTable<Record> table(kClassName, [](auto& members) {
    members.ReadOnly(QM_MEMBER(Orders))
        .ReadOnly(QM_MEMBER(Lines))
        .ReadOnly(QM_MEMBER(MarkedLines))
        .ReadOnly(QM_MEMBER(AlreadyImported))
        .ReadOnly(QM_MEMBER(FailingRows))
        .ReadOnly(QM_MEMBER(Failures));
  });
  return table.Info();
}

const ClassInfo& OrderHistoryImporter::ClassMembers() {
  using Class = OrderHistoryImporter;
  static const ClassTable<Class> table(kClassName, [](auto& members) {
    members.Method(QM_MEMBER(ApplyImports), "zvUserDataPath", ParameterName("bvWriteLog", false))
        .ReadOnly(QM_MEMBER(LogHeader))
        .ReadOnly(QM_MEMBER(LogBody))
        .Method(QM_MEMBER(PreviewImports), "zvUserDataPath");
  });
  return table.Info();
}

}  // namespace qm_ordering
