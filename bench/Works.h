#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/OrderProgram.h"

namespace bench {

struct Contestant {
  const char* Name;
  std::unique_ptr<OrderProgram> (*Make)(const std::string& zvFolder);
  // Its order is the hand-written program's; it differs in how it talks to the engine.
  bool IsLikeHandWritten;
};

// The first is the hand-written program, which the others are compared with; the second is the library.
inline constexpr Contestant kContestants[] = {
    {"hand-written", EngineProgram, false},
    {"library", LibraryProgram, false},
    {"SQLiteCpp", SqliteCppProgram, true},
    {"SOCI", SociProgram, true},
};

struct Work {
  const char* Name;
  std::vector<std::int32_t> Sizes;  // lines of the order
  int Rounds;                       // in a repetition, with an order of up to 1,000 lines
  bool IsOfOrderAlone;              // the store has no part in it
  // What the user has entered, for an order of that many lines.
  std::function<std::vector<Line>(std::int32_t)> Entered;
  // What is measured.
  std::function<void(OrderProgram&)> Measured;
  // Takes it back.
  std::function<void(OrderProgram&, const std::vector<Line>&)> After = [](OrderProgram&,
                                                                          const std::vector<Line>&) {};
};

const std::vector<Work>& Works();

}  // namespace bench
