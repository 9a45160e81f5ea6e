#include "host/CommandLine.h"

#include <algorithm>

#include "host/Demo.h"
#include "host/Errors.h"
#include "host/HistoryCommands.h"
#include "host/ImportCommand.h"
#include "host/ListCommands.h"
#include "host/NearestNames.h"
#include "host/OrderCommands.h"
#include "host/SettingsCommands.h"
#include "host/StoreCommands.h"

namespace host {

namespace {

constexpr const char* kFooter = R"(Data goes to standard output, messages go to standard error.
Exit codes: 0 good; 1 an error that the library recorded, a check that found something, or an order
that is not ready; 2 wrong usage; 3 a failure that the library raised, or output that could not be written.
Errors are shown as "error NUMBER: DESCRIPTION".

To begin:  qm-ordering store create
           qm-ordering order add --catalogue FILE.csv ITEM QTY
           qm-ordering order show
Or have it shown to you:  qm-ordering demo)";

// The parser takes "[a,b]" as a list of values. An item number may look like that, so such an argument gets a
// mark at its end, which is taken off again when the option is read.
constexpr char kMark = '\x1F';

std::string Marked(const std::string& zvArgument) {
  return zvArgument.starts_with('[') ? zvArgument + kMark : zvArgument;
}

std::string Unmarked(std::string zvArgument) {
  if (zvArgument.starts_with('[') && zvArgument.ends_with(kMark)) {
    zvArgument.pop_back();
  }
  return zvArgument;
}

// Last first, as the parser wants them.
std::vector<std::string> Arguments(int lvCount, char** zvArguments) {
  std::vector<std::string> arguments;
  for (int i = lvCount - 1; i > 0; --i) {
    arguments.push_back(Marked(zvArguments[i]));
  }
  return arguments;
}

// The parser says only that a command is missing where a mistyped one stands. Answers what to say of the
// mistyped one; empty when there is none.
std::string MistypedCommand(const CLI::App& app) {
  const CLI::App* group = &app;
  while (!group->get_subcommands().empty()) {
    group = group->get_subcommands().front();
  }
  const std::vector<std::string> words = app.remaining(true);
  if (group->get_require_subcommand_min() == 0 || words.empty() || words.front().starts_with('-')) {
    return {};
  }
  std::vector<std::string> names;
  for (const CLI::App* command : group->get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  const std::string zWord = Unmarked(words.front());
  return "There is no command \"" + zWord + "\"." + DidYouMean(zWord, names);
}

}  // namespace

CLI::Option* AddText(CLI::App& command, const std::string& zvName, std::string& value,
                     const std::string& zvHelp) {
  return command.add_option(zvName, value, zvHelp)->transform(Unmarked);
}

CLI::Option* AddTexts(CLI::App& command, const std::string& zvName, std::vector<std::string>& values,
                      const std::string& zvHelp) {
  return command.add_option(zvName, values, zvHelp)->transform(Unmarked);
}

bool ReadCommandLine(int lvCount, char** zvArguments, Context& context, Command& chosen, int& lrExitCode) {
  CLI::App app(
      "Builds the order of a product catalogue, and keeps lists and submitted orders for ordering again.",
      "qm-ordering");
  app.footer(kFooter);
  app.require_subcommand(1);
  app.get_formatter()->label("REQUIRED", "(required)");
  // The global options may stand behind the command too.
  app.fallthrough();
  AddText(
      app, "--settings", context.SettingsFile,
      "The settings file; without it\n$QK_COMMON_SETTINGS, else $XDG_CONFIG_HOME/qk_common/settings.ini,\n"
      "else ~/.config/qk_common/settings.ini")
      ->type_name("FILE");
  bool bJson = false;
  const CLI::Option* oJson = app.add_flag("--json", bJson, "Data and messages as JSON");
  app.set_version_flag("--version", "qm-ordering " QM_ORDERING_VERSION "\n", "Print the version and exit");
  AddStoreCommands(app, chosen);
  AddSettingsCommands(app, chosen);
  AddOrderCommands(app, chosen);
  AddListCommands(app, chosen);
  AddHistoryCommands(app, chosen);
  AddImportCommand(app, chosen);
  AddDemo(app, chosen);

  try {
    app.parse(Arguments(lvCount, zvArguments));
  } catch (const CLI::CallForHelp&) {
    context.Out.Text(app.help());
    lrExitCode = kGood;
    return false;
  } catch (const CLI::CallForVersion& version) {
    context.Out.Text(version.what());
    lrExitCode = kGood;
    return false;
  } catch (const CLI::ParseError& error) {
    if (oJson->count() > 0) {
      context.Out.UseJson();
    }
    const std::string zMistyped = MistypedCommand(app);
    context.Out.UsageError((zMistyped.empty() ? std::string(error.what()) + "." : zMistyped) +
                           " Add --help to see how it is used.");
    lrExitCode = kUsage;
    return false;
  }
  if (bJson) {
    context.Out.UseJson();
  }
  return true;
}

}  // namespace host
