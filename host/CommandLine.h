#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/Context.h"

namespace host {

// A command of the command line: when the user chooses it, it becomes the chosen one. Options holds what its
// options are bound to, for as long as the command lives.
template <typename Options>
CLI::App& AddCommand(CLI::App& parent, Command& chosen, const std::string& zvName, const std::string& zvHelp,
                     const std::shared_ptr<Options>& options, int (*run)(Context&, const Options&)) {
  CLI::App& command = *parent.add_subcommand(zvName, zvHelp);
  command.callback([&chosen, options, run] {
    chosen.Run = [options, run](Context& context) { return run(context, *options); };
  });
  return command;
}

inline CLI::App& AddCommand(CLI::App& parent, Command& chosen, const std::string& zvName,
                            const std::string& zvHelp, int (*run)(Context&)) {
  CLI::App& command = *parent.add_subcommand(zvName, zvHelp);
  command.callback([&chosen, run] { chosen.Run = run; });
  return command;
}

// Options whose values are taken exactly as the user typed them.
CLI::Option* AddText(CLI::App& command, const std::string& zvName, std::string& value,
                     const std::string& zvHelp);
CLI::Option* AddTexts(CLI::App& command, const std::string& zvName, std::vector<std::string>& values,
                      const std::string& zvHelp);

// Reads the command line into context and chosen command. Answers true when there is a command to run;
// otherwise everything is said (the help, or what is wrong) and lrExitCode is the program's.
bool ReadCommandLine(int lvCount, char** zvArguments, Context& context, Command& chosen, int& lrExitCode);

}  // namespace host
