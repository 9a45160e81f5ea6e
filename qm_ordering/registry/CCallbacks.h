#pragma once

#include <functional>
#include <string>

#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/qm_ordering_c.h"
#include "qm_ordering/store/OrderStore.h"

// The functions that a host hands over in C, as the library's own kinds of callback. A number that they
// answer is raised as a Failure with the reply as its text.
namespace qm_ordering::c_interface {

// Installs the component. Raises kObjectNotSet when it has no user_setting, and what InstallSettings raises;
// the payload stays the host's then.
void Install(const qm_ordering_settings& settings, void* payload);

// Each is empty for a null function.
std::function<void(const std::string&)> TraceOf(qm_ordering_trace trace, void* payload);
std::function<bool(const ImportProgress&)> ProgressOf(qm_ordering_import_progress progress, void* payload);
StoreProgress ProgressOf(qm_ordering_store_progress progress, void* payload);

}  // namespace qm_ordering::c_interface
