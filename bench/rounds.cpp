// One work of one program, some rounds of it: to be looked at with a profiler, or counted with callgrind.
//
//   bench_rounds make FOLDER SIZE WORK
//   bench_rounds run FOLDER SIZE WORK PROGRAM ROUNDS
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <string>

#include "bench/Works.h"

namespace bench {

namespace {

const Contestant& ContestantOf(const std::string& zvName) {
  for (const Contestant& contestant : kContestants) {
    if (contestant.Name == zvName) {
      return contestant;
    }
  }
  throw std::runtime_error("There is no program " + zvName + ".");
}

const Work& WorkOf(const std::string& zvName) {
  for (const Work& work : Works()) {
    if (work.Name == zvName) {
      return work;
    }
  }
  throw std::runtime_error("There is no work " + zvName + ".");
}

int Run(const std::vector<std::string>& zvArguments) {
  const bool bMake = zvArguments.size() == 4 && zvArguments[0] == "make";
  if (!bMake && (zvArguments.size() != 6 || zvArguments[0] != "run")) {
    std::cerr << "bench_rounds make FOLDER SIZE WORK | run FOLDER SIZE WORK PROGRAM ROUNDS\n";
    return 2;
  }
  const std::int32_t lSize = std::stoi(zvArguments[2]);
  const Work& work = WorkOf(zvArguments[3]);
  if (bMake) {
    work.On.Make(zvArguments[1], lSize);
    return 0;
  }
  const auto oProgram = ContestantOf(zvArguments[4]).Make(zvArguments[1]);
  if (work.IsOfOrderAlone) {
    oProgram->LoadLines();
  }
  for (int i = 0; i < std::stoi(zvArguments[5]); ++i) {
    const std::vector<Line> lines = work.Entered(lSize);
    oProgram->Enter(lines);
    work.Measured(*oProgram);
    work.After(*oProgram, lines);
  }
  return 0;
}

}  // namespace

}  // namespace bench

int main(int lvArguments, char** zvArguments) try {
  return bench::Run({zvArguments + 1, zvArguments + lvArguments});
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
