// qm-ordering: the order of a product catalogue from the command line. A host of the ordering library: it
// uses the library's public headers alone.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>

#include "host/CommandLine.h"
#include "host/Context.h"
#include "host/Errors.h"

namespace {

using namespace qm_ordering;

// A file must never be opened under the number of a standard stream that the caller has closed: what is
// written to the stream would go into the file. Nothing can be written to what takes its place here, so that
// the loss is noticed.
void HoldStandardStreams() {
  for (int lStream = STDIN_FILENO; lStream <= STDERR_FILENO; ++lStream) {
    if (fcntl(lStream, F_GETFD) == -1) {
      open("/dev/null", O_RDONLY);
    }
  }
}

int RunChosen(host::Context& context, const host::Command& chosen) {
  try {
    if (!chosen.MakesOwnSettings) {
      context.Settings = CreateFileSettings(context.SettingsFile);
      InstallSettings(context.Settings);
    }
    // Some members show nothing of a failure; this is how a host learns of it.
    ClearLastFailure();
    const int lExitCode = chosen.Run(context);
    const LastFailureInfo swallowed = LastFailure();
    if (swallowed.Number == 0) {
      return lExitCode;
    }
    context.Out.Error(swallowed.Number, swallowed.Description);
    return host::kNotGood;
  } catch (const host::UsageError& error) {
    context.Out.UsageError(error.what());
    return host::kUsage;
  } catch (const host::Refusal& refusal) {
    context.Out.UsageError(refusal.what());
    return host::kNotGood;
  } catch (const host::RecordError& error) {
    context.Out.Error(error.Number(), error.what(), LastFailure());
    return host::kNotGood;
  } catch (const Failure& failure) {
    context.Out.Error(failure.Number(), failure.Description());
    return host::kRaised;
  } catch (const std::exception& error) {
    context.Out.Error(failure::kInvalidCall, error.what());
    return host::kRaised;
  }
}

}  // namespace

int main(int lvCount, char** zvArguments) {
  HoldStandardStreams();
  // A reader that goes away is a write error, which ends the program with a message.
  std::signal(SIGPIPE, SIG_IGN);
  host::Context context;
  context.Program = zvArguments[0];
  host::Command chosen;
  int lExitCode = host::kGood;
  if (host::ReadCommandLine(lvCount, zvArguments, context, chosen, lExitCode)) {
    lExitCode = RunChosen(context, chosen);
  }
  return context.Out.Finish() ? lExitCode : static_cast<int>(host::kRaised);
}
