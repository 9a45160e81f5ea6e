#include "qm_ordering/platform/value/ThreadNumber.h"

#include <pthread.h>

#include <atomic>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

constinit std::atomic<std::uint64_t> g_lNext{1};
constinit std::atomic<std::uint64_t> g_lFirstOfProcess{1};
constinit thread_local std::uint64_t t_lNumber = 0;

[[maybe_unused]] const int g_lHandler = pthread_atfork(nullptr, nullptr, [] {
  g_lFirstOfProcess.store(g_lNext.load());
  t_lNumber = 0;
});

}  // namespace

std::uint64_t ThisThread() noexcept {
  if (t_lNumber == 0) {
    t_lNumber = g_lNext.fetch_add(1);
  }
  return t_lNumber;
}

bool IsThread(std::uint64_t lvNumber) noexcept {
  return lvNumber > 0 && lvNumber < g_lNext.load();
}

bool IsThreadOfThisProcess(std::uint64_t lvThread) noexcept {
  return lvThread >= g_lFirstOfProcess.load() && lvThread < g_lNext.load();
}

void RequireThisThread(std::uint64_t lvThread) {
  if (lvThread == ThisThread()) {
    return;
  }
  if (lvThread < g_lFirstOfProcess.load()) {
    throw Failure(
        failure::kWrongThread,
        "The object was made before this process was forked and cannot be used in it. Make a new one, "
        "in a program of its own (exec) when it is to use the order store.");
  }
  throw Failure(failure::kWrongThread,
                "The object belongs to another thread. Use it on the thread that made it, or make one here.");
}

}  // namespace qm_ordering
