#pragma once

#include "qm_ordering/foundation/members/Record.h"
#include "qm_ordering/history/OrderHistoryImporter.h"

namespace qm_ordering {

template <>
inline const char* const Record<ImportPreview>::kClassName = "ImportPreview";
template <>
struct Late<ImportPreview> : LateRecord<ImportPreview> {};
template <>
const ClassInfo& Record<ImportPreview>::ClassMembers();

}  // namespace qm_ordering
