#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace qm_ordering::file {

// What takes the next part of a file's content.
using TakePart = std::function<void(std::string_view)>;

// Puts a file with that content in the place of the one of that name, or of none: the old file stays until
// the new one is on disk, and stays for good when anything fails but the flush of the folder, which comes
// last. The new one is readable by its user alone. zvFile is absolute. Who replaces the same file at the
// same time waits. content is called once, to hand over all parts; what it raises rises. Raises
// failure::kPathNotFound when the file's folder is not there, failure::kFileAccess for everything else.
void ReplaceFile(const std::string& zvFile, const std::function<void(const TakePart&)>& content);

}  // namespace qm_ordering::file
