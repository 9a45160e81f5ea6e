#pragma once

#include <string>

namespace host {

// The content of a file of the user's, or of standard input for "-". Raises UsageError, which names file and
// cause, when it cannot be read.
std::string ReadWholeFile(const std::string& zvFile);

// Writes a file whole or not at all: a temporary file beside it, flushed to the disk, then renamed. Readable
// by its user alone; a symbolic link is followed. Raises failure 75, which names file and cause.
void WriteWholeFile(const std::string& zvFile, const std::string& zvContent);

}  // namespace host
