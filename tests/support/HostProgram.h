#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace test {

// What the program said and how it ended.
struct HostRun {
  int ExitCode = -1;  // of a program that died by a signal: 128 and the signal
  std::string Out;
  std::string Err;

  // The data of a run with --json. Fails the test when it is none.
  nlohmann::json Data() const;
  // The messages of a run with --json, each a line.
  std::vector<nlohmann::json> Messages() const;
};

// Where the standard streams of a run go instead of into its result, and which program it is.
struct HostStreams {
  std::string Input = {};       // the text of standard input
  std::string OutputFile = {};  // opened for writing, "/dev/full" for example
  int OutputDescriptor = -1;
  int ErrorDescriptor = -1;
  std::string Program = {};  // a copy of the program, instead of the one that the build made
};

// The program that the build made.
std::string HostProgramPath();

// Runs qm-ordering as a process of its own.
HostRun RunHost(const std::vector<std::string>& zvArguments, const HostStreams& streams = {});

}  // namespace test
