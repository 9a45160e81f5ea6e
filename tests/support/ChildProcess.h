#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace test {

// Runs a function in a forked process. The function's text is the outcome; where it throws, "NUMBER TEXT" of
// the failure or the text of another exception.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<std::string()>& run);
  // Kills the process when nobody waited for it.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Waits for the end and answers the outcome. A process that died answers how.
  std::string Outcome();
  // Kills the process as a power cut would, and waits for its end. Answers as Outcome does: one that had not
  // ended by itself answers kKilled.
  std::string Kill();

  static constexpr const char* kKilled = "the process died with status 9";

 private:
  pid_t m_lProcess = -1;
  int m_lPipe = -1;
};

// To be called in a child process only: from here on it has no rights of its own on other users' files.
void DropPrivileges();

// Makes the file or folder the one of the user that DropPrivileges turns to. Without privileges that is the
// user who runs the tests already.
void GiveToUnprivileged(const std::string& zvPath);

}  // namespace test
