#pragma once

#include <string>

namespace bench {

// Puts a file with that content in the place of the one of that name: it is replaced as a whole and is on
// disk at the end. As a program would do it that reads the standard library's manual.
void ReplaceFile(const std::string& zvFile, const std::string& zvContent);

}  // namespace bench
