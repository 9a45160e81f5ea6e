#pragma once

#include <string>

namespace bench {

// Keeps the 45 defaults of the next order, every text of them zvText, in a file of "key = value" lines: other
// keys stay, other writers are kept away meanwhile, and the file is replaced as a whole and is on disk at the
// end. As a program would do it that reads the standard library's manual.
void KeepDefaults(const std::string& zvFile, const std::string& zvText);

}  // namespace bench
