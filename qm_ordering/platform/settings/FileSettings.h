#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/platform/settings/Settings.h"

namespace qm_ordering {

// The library's own settings component: one readable UTF-8 file with a line KEY=VALUE for each setting. A
// line that begins with # or ; is a comment, one that begins with [ a section title without a meaning of its
// own; both stay. A value is taken as it stands, without surrounding blanks; one that begins with a double
// quote is a quoted text in which \\ \" \n \r \t \0 and \xHH (one byte) stand for the characters that a line
// cannot hold. Keys are compared without regard to letter case, and each stands in the file once.
//
// An object of the component reads the file once, when it is created. A file that does not exist counts as
// empty, and its folders are made when it is first written. Save writes it whole and at once (a temporary
// file beside it, flushed, renamed), readable by its user alone, and carries over whatever another process
// has saved in the meantime under other keys; a file FILE.lock beside it keeps two of them apart. A symbolic
// link is followed. Failures: 75 for a file that cannot be read, parsed or written, with its full path, the
// line and the cause, and the old file stays; 5 when a key is set that no line can hold.

// $QK_COMMON_SETTINGS, else $XDG_CONFIG_HOME/qk_common/settings.ini, else ~/.config/qk_common/settings.ini.
// Raises 76 when none of the three variables (HOME for the last) is set.
QM_ORDERING_API std::string DefaultSettingsFile();

// A component over that file; a host passes it to InstallSettings. An empty name is DefaultSettingsFile().
QM_ORDERING_API std::shared_ptr<SettingsComponent> CreateFileSettings(const std::string& zvFile = {});

// The keys that the file holds, in its order. Raises 75 as above.
QM_ORDERING_API std::vector<std::string> FileSettingsKeys(const std::string& zvFile = {});

}  // namespace qm_ordering
