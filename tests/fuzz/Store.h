#pragma once

#include <string>

namespace fuzz {

// The path of a new order store in a folder that goes with the process.
std::string NewStore();

}  // namespace fuzz
