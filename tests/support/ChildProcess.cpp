#include "tests/support/ChildProcess.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "qm_ordering/platform/value/Failure.h"

namespace test {

namespace {

constexpr uid_t kNobody = 65534;

std::string Run(const std::function<std::string()>& run) {
  try {
    return run();
  } catch (const qm_ordering::Failure& failure) {
    return std::to_string(failure.Number()) + " " + failure.Description();
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

ChildProcess::ChildProcess(const std::function<std::string()>& run) {
  int lEnds[2] = {};
  if (pipe(lEnds) != 0) {
    throw std::runtime_error("no pipe");
  }
  m_lProcess = fork();
  if (m_lProcess == 0) {
    const std::string zOutcome = Run(run);
    const ssize_t lWritten = write(lEnds[1], zOutcome.data(), zOutcome.size());
    // Nothing of the parent's runs its end here.
    _exit(lWritten == static_cast<ssize_t>(zOutcome.size()) ? 0 : 1);
  }
  close(lEnds[1]);
  m_lPipe = lEnds[0];
  if (m_lProcess < 0) {
    close(m_lPipe);
    throw std::runtime_error("no process");
  }
}

ChildProcess::~ChildProcess() {
  if (m_lProcess >= 0) {
    Kill();
  }
}

std::string ChildProcess::Outcome() {
  std::string zOutcome;
  char buffer[4096];
  for (ssize_t lRead = 0; (lRead = read(m_lPipe, buffer, sizeof buffer)) > 0;) {
    zOutcome.append(buffer, static_cast<std::size_t>(lRead));
  }
  close(m_lPipe);
  int lStatus = 0;
  waitpid(m_lProcess, &lStatus, 0);
  m_lProcess = -1;
  return lStatus == 0 ? zOutcome : "the process died with status " + std::to_string(lStatus);
}

std::string ChildProcess::Kill() {
  kill(m_lProcess, SIGKILL);
  return Outcome();
}

void DropPrivileges() {
  if (geteuid() != 0) {
    return;
  }
  if (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
      setresuid(kNobody, kNobody, kNobody) != 0) {
    throw std::runtime_error("privileges cannot be dropped");
  }
}

void GiveToUnprivileged(const std::string& zvPath) {
  if (geteuid() == 0) {
    ASSERT_EQ(0, chown(zvPath.c_str(), kNobody, kNobody)) << zvPath;
  }
}

}  // namespace test
