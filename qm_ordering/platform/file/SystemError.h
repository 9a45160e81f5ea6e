#pragma once

#include <string>

namespace qm_ordering::file {

// The text of an errno number, for the description of a failure: "No such file or directory". In English
// whatever the locale of the process is, since descriptions are English and UTF-8.
std::string SystemErrorText(int lvError);

}  // namespace qm_ordering::file
