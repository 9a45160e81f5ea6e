#pragma once

#include <string>
#include <string_view>

namespace qm_ordering::file {

// The name completed with the current folder when it is relative; nothing else changes. Raises
// failure::kPathNotFound when there is no current folder, or the name holds a zero byte (the system would cut
// it there and reach another file).
std::string AbsolutePath(std::string_view zvName);

// The system's path for a file name that was built by appending, for example, "\Orders.mdb" to a folder
// setting: backslashes become the system's separator, and a relative name is completed with the current
// folder. Nothing else changes: "~" is a name like any other. Raises as AbsolutePath does, and
// failure::kPathNotFound when nothing stands before the first backslash (zvSetting, the name of the setting
// that is not set, goes into the message): such a name would otherwise reach the root folder.
std::string SystemPath(std::string_view zvBuiltName, std::string_view zvSetting);

}  // namespace qm_ordering::file
