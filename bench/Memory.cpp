#include "bench/Memory.h"

#include <malloc.h>

#include <stdexcept>

namespace bench {

namespace {

std::size_t BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

template <typename Load>
std::size_t BytesOf(std::int32_t lvSize, Load load) {
  const auto lSize = static_cast<std::size_t>(lvSize);
  const std::size_t lBefore = BytesInUse();
  if (load() != lSize) {
    throw std::runtime_error("What was to be loaded is not there.");
  }
  return (BytesInUse() - lBefore) / lSize;
}

}  // namespace

std::size_t BytesOfLine(OrderProgram& program, std::int32_t lvSize) {
  program.ShowOrder();
  return BytesOf(lvSize, [&] { return program.LoadLines(); });
}

std::size_t BytesOfOrder(OrderProgram& program, std::int32_t lvSize) {
  program.ShowHistory();
  return BytesOf(lvSize, [&] { return program.LoadHistory(); });
}

}  // namespace bench
