#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchStore.h"
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

// What a work is done on.
struct StoreKind {
  const char* Counted;  // what its size is a number of
  void (*Make)(const std::string& zvFolder, std::int32_t lvSize);
};

inline constexpr StoreKind kOrder{"lines", MakeOrder};
inline constexpr StoreKind kLists{"lines of lists", MakeLists};
inline constexpr StoreKind kHistory{"orders", MakeHistory};
inline constexpr StoreKind kImport{"lines to import", MakeImport};

struct Work {
  const char* Name;
  StoreKind On;
  std::vector<std::int32_t> Sizes;
  int Rounds;           // in a repetition, with a size of up to 1,000
  bool IsOfOrderAlone;  // the store has no part in it
  // What the user has entered, for that size.
  std::function<std::vector<Line>(std::int32_t)> Entered;
  // What is measured.
  std::function<void(OrderProgram&)> Measured;
  // Takes it back.
  std::function<void(OrderProgram&, const std::vector<Line>&)> After = [](OrderProgram&,
                                                                          const std::vector<Line>&) {};
};

const std::vector<Work>& Works();

}  // namespace bench
