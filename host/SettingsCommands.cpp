#include "host/SettingsCommands.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/NearestNames.h"
#include "host/Table.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;
using UserSettingConstants::ALL_KEYS;

struct ListOptions {
  bool All = false;
};

struct KeyOptions {
  std::string Key;
  std::string Value;
};

// The key in its own spelling.
std::string KnownKey(const std::string& zvKey) {
  const auto found = std::ranges::find_if(ALL_KEYS, [&](const char* zKey) { return SameName(zKey, zvKey); });
  if (found == ALL_KEYS.end()) {
    throw UsageError("There is no setting \"" + zvKey + "\"." +
                     DidYouMean(zvKey, {ALL_KEYS.begin(), ALL_KEYS.end()}) +
                     " `qm-ordering settings list --all` shows all of them.");
  }
  return *found;
}

bool IsKnown(const std::string& zvKey) {
  return std::ranges::any_of(ALL_KEYS, [&](const char* zKey) { return SameName(zKey, zvKey); });
}

std::string FileName(const Context& context) {
  return context.SettingsFile.empty() ? DefaultSettingsFile() : context.SettingsFile;
}

int List(Context& context, const ListOptions& options) {
  const auto oSettings = context.Settings->CreateUserSettings();
  Table table({{"setting"}, {"value", Table::Align::Left, true}, {""}});
  Json known = Json::object();
  for (const char* zKey : ALL_KEYS) {
    const std::string zValue = oSettings->Get(zKey);
    if (options.All || !zValue.empty()) {
      table.Add({zKey, zValue, ""});
      known[zKey] = zValue;
    }
  }
  Json unknown = Json::object();
  for (const std::string& zKey : FileSettingsKeys(context.SettingsFile)) {
    if (!IsKnown(zKey)) {
      const std::string zValue = oSettings->Get(zKey);
      table.Add({zKey, zValue, "(unknown)"});
      unknown[zKey] = zValue;
    }
  }
  if (known.empty() && unknown.empty()) {
    context.Out.Note("No setting is set in " + FileName(context) + ".");
  } else {
    context.Out.Text(table.Text(Output::Width()));
  }
  context.Out.Data({{"file", FileName(context)}, {"settings", known}, {"unknown", unknown}});
  return kGood;
}

int Get(Context& context, const KeyOptions& options) {
  const std::string zKey = KnownKey(options.Key);
  const std::string zValue = Setting(context, zKey);
  context.Out.Text(zValue + "\n");
  context.Out.Data({{"key", zKey}, {"value", zValue}});
  return kGood;
}

// The library names the store in a connection string, where a semicolon ends the name and a brace at its
// beginning quotes it.
void RefuseUnusableStoreFolder(const std::string& zvFolder) {
  if (zvFolder.find(';') != std::string::npos || zvFolder.starts_with('{')) {
    throw UsageError("The folder \"" + zvFolder + "\" " +
                     (zvFolder.starts_with('{') ? "begins with a brace" : "holds a semicolon") +
                     ", so a connection string could not name it. Nothing was set.");
  }
}

int Set(Context& context, const KeyOptions& options) {
  const std::string zKey = KnownKey(options.Key);
  if (zKey == UserSettingConstants::ORDERINGDATABASEPATH) {
    RefuseUnusableStoreFolder(options.Value);
  }
  SetSetting(context, zKey, options.Value);
  context.Out.MarkChange();
  context.Out.Text(zKey + " = " + Shown(options.Value) + "\n");
  context.Out.Data({{"key", zKey}, {"value", options.Value}});
  if (zKey == UserSettingConstants::ORDERINGDATABASEPATH && !options.Value.empty() &&
      !options.Value.starts_with('/')) {
    context.Out.Warning("\"" + options.Value +
                        "\" is a relative folder: each program takes it from the folder that it runs in.");
  }
  return kGood;
}

}  // namespace

void AddSettingsCommands(CLI::App& app, Command& chosen) {
  CLI::App& group = *app.add_subcommand("settings", "Where the store is, registration, order defaults");
  group.require_subcommand(1);

  auto listOptions = std::make_shared<ListOptions>();
  AddCommand(group, chosen, "list", "Show the settings that are set", listOptions, List)
      .add_flag("--all", listOptions->All, "Those that are not set too");

  auto getOptions = std::make_shared<KeyOptions>();
  CLI::App& get = AddCommand(group, chosen, "get", "Show the value of one setting", getOptions, Get);
  AddText(get, "KEY", getOptions->Key, "The setting, in any letter case")->required()->type_name("");
  get.footer("An unset setting shows an empty line.");

  auto setOptions = std::make_shared<KeyOptions>();
  CLI::App& set = AddCommand(group, chosen, "set", "Change one setting", setOptions, Set);
  AddText(set, "KEY", setOptions->Key, "The setting, in any letter case")->required()->type_name("");
  AddText(set, "VALUE", setOptions->Value, "Its new value; \"\" unsets it")->required()->type_name("");
  set.footer(
      "The settings DEFAULT_... are what a new order starts with; `order set` and a saved order write "
      "them.\n"
      "The settings Reg_... are the user's registration, which `order apply-registration` uses.");
}

}  // namespace host
