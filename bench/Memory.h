#pragma once

#include <cstddef>
#include <cstdint>

#include "bench/OrderProgram.h"

namespace bench {

// The bytes of memory that a program keeps for each line of the order, or order of the history, after it has
// loaded lvSize of them. What the engine and the program keep whether they are loaded or not does not count:
// each has loaded them before.
std::size_t BytesOfLine(OrderProgram& program, std::int32_t lvSize);
std::size_t BytesOfOrder(OrderProgram& program, std::int32_t lvSize);

}  // namespace bench
