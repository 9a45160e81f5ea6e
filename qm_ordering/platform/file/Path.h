#pragma once

#include <string>
#include <string_view>

namespace qm_ordering::file {

// The name completed with the current folder when it is relative; nothing else changes. Raises
// failure::kPathNotFound when there is no current folder, or the name holds a zero byte (the system would cut
// it there and reach another file).
std::string AbsolutePath(std::string_view zvName);

// The absolute name without a symbolic link in it, the last part included. That part need not exist. Raises
// failure::kPathNotFound when the folder does not exist or cannot be searched, or the name is a link that
// leads nowhere; and as AbsolutePath does.
std::string RealPath(std::string_view zvName);

// Whether the two paths end in the same name.
bool IsSameName(const std::string& zvLeft, const std::string& zvRight);

// Whether both names lead to one file; the same name does also when there is none.
bool IsSameFile(const std::string& zvLeft, const std::string& zvRight);

// The system's path for a file name that was built by appending, for example, "\Orders.mdb" to a folder
// setting: backslashes become the system's separator, and a relative name is completed with the current
// folder. Nothing else changes: "~" is a name like any other. Raises as AbsolutePath does, and
// failure::kPathNotFound when nothing stands before the first backslash (zvSetting, the name of the setting
// that is not set, goes into the message): such a name would otherwise reach the root folder.
std::string SystemPath(std::string_view zvBuiltName, std::string_view zvSetting);

}  // namespace qm_ordering::file
