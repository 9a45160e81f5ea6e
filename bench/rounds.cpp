// One work of one program, some rounds of it: to be looked at with a profiler, or counted with callgrind.
//
//   bench_rounds make FOLDER SIZE WORK
//   bench_rounds run FOLDER SIZE WORK PROGRAM ROUNDS
//   bench_rounds peak FOLDER SIZE WORK PROGRAM
//
// "run" takes each round back before the next one, and leaves the last. "peak" does one round and prints the
// most memory that the process had.
#include <cstring>
#include <fstream>
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

// "VmHWM:     1234 kB", as the system writes it.
std::string PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string zLine; std::getline(status, zLine);) {
    if (zLine.starts_with("VmHWM:")) {
      return zLine;
    }
  }
  throw std::runtime_error("The system does not say how much memory was used.");
}

int Run(const std::vector<std::string>& zvArguments) {
  const auto is = [&](const char* zvVerb, std::size_t lvArguments) {
    return zvArguments.size() == lvArguments && zvArguments[0] == zvVerb;
  };
  const bool bMake = is("make", 4);
  const bool bPeak = is("peak", 5);
  if (!bMake && !bPeak && !is("run", 6)) {
    std::cerr
        << "bench_rounds make FOLDER SIZE WORK | run FOLDER SIZE WORK PROGRAM ROUNDS | peak FOLDER SIZE "
           "WORK PROGRAM\n";
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
  const int lRounds = bPeak ? 1 : std::stoi(zvArguments[5]);
  std::vector<Line> lines;
  for (int i = 0; i < lRounds; ++i) {
    if (i > 0) {
      work.After(*oProgram, lines);
    }
    lines = work.Entered(lSize);
    oProgram->Enter(lines);
    work.Measured(*oProgram);
  }
  if (bPeak) {
    std::cout << PeakMemory() << "\n";
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
