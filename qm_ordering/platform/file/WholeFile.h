#pragma once

#include <string>
#include <string_view>

namespace qm_ordering::file {

// Puts a file with that content in the place of the one of that name, or of none: the old file stays until
// the new one is on disk, and stays for good when anything fails but the flush of the folder, which comes
// last. The new one is readable by its user alone. zvFile is absolute. Who replaces the same file at the
// same time waits. Raises failure::kPathNotFound when its folder is not there, failure::kFileAccess for
// everything else.
void ReplaceFile(const std::string& zvFile, std::string_view zvContent);

}  // namespace qm_ordering::file
