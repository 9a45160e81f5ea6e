#pragma once

#include <cstdint>
#include <string>

#include "host/CommandLine.h"

namespace host {

// `qm-ordering lists ...`
void AddListCommands(CLI::App& app, Command& chosen);

// `lists from-order`: keeps the lines of the current order as a list of that name. An existing list is
// replaced only when bvReplace says so, by a list that is whole. Answers the list's id. Raises Refusal where
// there is nothing to keep, or a list of that name.
std::int32_t KeepOrderAsList(Context& context, const std::string& zvName, bool bvReplace);

// A list with its loaded items, for a person to read.
std::string ListText(const qm_ordering::PersonalList& list);

// `lists export`: writes loaded lists with their items to PersonalLists.xml and answers where that is. Raises
// RecordError.
std::string ExportLists(qm_ordering::PersonalLists& lists);

}  // namespace host
