#include "qm_ordering/platform/ado/StatementTrace.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/ado/TraceStatement.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

struct Trace {
  std::function<void(const std::string&)> Show;
};

bool TraceToStderr() {
  static const bool bOn = [] {
    const char* zValue = std::getenv("QM_ORDERING_TRACE");
    return zValue != nullptr && std::string_view(zValue) == "1";
  }();
  return bOn;
}

}  // namespace

void SetStatementTrace(std::function<void(const std::string& zvSQL)> trace) {
  if (Trace* pTrace = PerThread<Trace>::Get()) {
    pTrace->Show.swap(trace);
  }
}

void ado::TraceStatement(const std::string& zvSQL) {
  if (TraceToStderr()) {
    const std::string zLine = zvSQL + "\n";
    std::fwrite(zLine.data(), 1, zLine.size(), stderr);
  }
  const Trace* pTrace = PerThread<Trace>::Get();
  if (pTrace == nullptr || !pTrace->Show) {
    return;
  }
  // The trace may install another while it runs.
  const auto trace = pTrace->Show;
  try {
    trace(zvSQL);
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw Failure(failure::kOutOfMemory, "The statement trace ran out of memory; it stopped a statement.");
  } catch (const std::exception& error) {
    throw Failure(failure::kInvalidCall,
                  std::string("The statement trace stopped a statement: ") + error.what());
  } catch (...) {
    throw Failure(failure::kInvalidCall, "The statement trace stopped a statement.");
  }
}

}  // namespace qm_ordering
