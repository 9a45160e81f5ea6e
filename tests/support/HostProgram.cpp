#include "tests/support/HostProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "tests/support/TempFolder.h"

namespace test {

namespace {

constexpr const char* kProgram = QM_ORDERING_BINARY_DIR "/host/qm-ordering";

// In the child process: the standard streams, then the program. Never comes back.
[[noreturn]] void Become(const std::string& zvProgram, const std::vector<std::string>& zvArguments,
                         const std::string& zvInput, const std::string& zvOutput, const std::string& zvError,
                         const HostStreams& streams) {
  const int lInput = open(zvInput.c_str(), O_RDONLY);
  const int lOutput = streams.OutputDescriptor >= 0
                          ? streams.OutputDescriptor
                          : open(zvOutput.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int lError = streams.ErrorDescriptor >= 0 ? streams.ErrorDescriptor
                                                  : open(zvError.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (dup2(lInput, STDIN_FILENO) < 0 || dup2(lOutput, STDOUT_FILENO) < 0 || dup2(lError, STDERR_FILENO) < 0) {
    _exit(125);
  }
  std::vector<std::string> texts = {zvProgram};
  texts.insert(texts.end(), zvArguments.begin(), zvArguments.end());
  std::vector<char*> arguments;
  for (std::string& zText : texts) {
    arguments.push_back(zText.data());
  }
  arguments.push_back(nullptr);
  execv(zvProgram.c_str(), arguments.data());
  _exit(126);
}

}  // namespace

nlohmann::json HostRun::Data() const {
  const auto data = nlohmann::json::parse(Out, nullptr, false);
  EXPECT_FALSE(data.is_discarded()) << "stdout is not JSON: " << Out << "\nstderr: " << Err;
  return data;
}

std::vector<nlohmann::json> HostRun::Messages() const {
  std::vector<nlohmann::json> messages;
  std::istringstream lines(Err);
  for (std::string zLine; std::getline(lines, zLine);) {
    messages.push_back(nlohmann::json::parse(zLine, nullptr, false));
    EXPECT_FALSE(messages.back().is_discarded()) << "stderr is not JSON: " << zLine;
  }
  return messages;
}

std::string HostProgramPath() {
  return kProgram;
}

HostRun RunHost(const std::vector<std::string>& zvArguments, const HostStreams& streams) {
  const std::string zProgram = streams.Program.empty() ? HostProgramPath() : streams.Program;
  EXPECT_TRUE(std::filesystem::exists(zProgram)) << zProgram << " is not built";
  const TempFolder folder;
  const std::string zInput = folder.File("in");
  const std::string zOutput = streams.OutputFile.empty() ? folder.File("out") : streams.OutputFile;
  const std::string zError = folder.File("err");
  WriteFile(zInput, streams.Input);
  const pid_t lProcess = fork();
  if (lProcess == 0) {
    Become(zProgram, zvArguments, zInput, zOutput, zError, streams);
  }
  int lStatus = 0;
  EXPECT_EQ(lProcess, waitpid(lProcess, &lStatus, 0));
  HostRun run;
  run.ExitCode = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : 128 + WTERMSIG(lStatus);
  if (streams.OutputDescriptor < 0 && streams.OutputFile.empty()) {
    run.Out = ReadFile(zOutput);
  }
  if (streams.ErrorDescriptor < 0) {
    run.Err = ReadFile(zError);
  }
  return run;
}

}  // namespace test
