#include "host/StoreCommands.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;
using UserSettingConstants::ORDERINGDATABASEPATH;

struct CreateOptions {
  std::string Folder;
};

std::string Environment(const char* zvName) {
  const char* zValue = std::getenv(zvName);
  return zValue == nullptr ? std::string() : std::string(zValue);
}

// Where data of a user's programs goes; a relative XDG_DATA_HOME does not count.
std::string DefaultFolder() {
  const std::string zData = Environment("XDG_DATA_HOME");
  if (zData.starts_with('/')) {
    return zData + "/qm_ordering";
  }
  const std::string zHome = Environment("HOME");
  if (zHome.empty()) {
    throw UsageError(
        "Neither XDG_DATA_HOME nor HOME is set, so there is no default folder. Give the folder.");
  }
  return zHome + "/.local/share/qm_ordering";
}

// The folder with its full path and without a slash at its end, as the setting wants it.
std::string FullFolder(const std::string& zvFolder) {
  std::string zFolder = std::filesystem::absolute(zvFolder).lexically_normal().string();
  while (zFolder.size() > 1 && zFolder.ends_with('/')) {
    zFolder.pop_back();
  }
  return zFolder;
}

void RefuseUnusableFolder(const std::string& zvFolder) {
  if (zvFolder.find_first_of(";\\") != std::string::npos) {
    throw UsageError(
        "The folder \"" + zvFolder +
        "\" holds a semicolon or a backslash, which the setting OrderingDatabasePath cannot hold "
        "as part of a folder's name. Choose another folder.");
  }
}

std::string HowToUse(const std::string& zvFolder) {
  return "`qm-ordering settings set " + std::string(ORDERINGDATABASEPATH) + " \"" + zvFolder + "\"`";
}

int Create(Context& context, const CreateOptions& options) {
  const std::string zSetting = Setting(context, ORDERINGDATABASEPATH);
  std::string zFolder = options.Folder;
  if (zFolder.empty()) {
    zFolder = zSetting.empty() ? DefaultFolder() : zSetting;
  }
  if (zFolder != zSetting) {
    zFolder = FullFolder(zFolder);
    RefuseUnusableFolder(zFolder);
  }
  const std::string zPath = zFolder + "/Orders.mdb";
  if (zSetting.empty() && std::filesystem::exists(zPath)) {
    context.Out.Note("To use what is there already: " + HowToUse(zFolder));
  }
  CreateOrderStore(zFolder);
  if (zSetting.empty()) {
    SetSetting(context, ORDERINGDATABASEPATH, zFolder);
    context.Out.Note(std::string(ORDERINGDATABASEPATH) + " is now " + zFolder + ".");
  } else if (zFolder != zSetting && zFolder != FullFolder(zSetting)) {
    context.Out.Note(std::string(ORDERINGDATABASEPATH) + " is still " + zSetting +
                     ", so the new store is not the one in use. To use it: " + HowToUse(zFolder));
  }
  context.Out.MarkChange();
  context.Out.Text("Created " + Shown(zPath) + "\n");
  context.Out.Data({{"path", zPath}, {"OrderingDatabasePath", Setting(context, ORDERINGDATABASEPATH)}});
  return kGood;
}

int Check(Context& context) {
  NoteWhenNoStoreIsSet(context);
  const std::vector<std::string> findings = CheckOrderStore();
  for (const std::string& zFinding : findings) {
    context.Out.Text(Shown(zFinding) + "\n");
  }
  if (findings.empty()) {
    context.Out.Text("The store is whole.\n");
  }
  context.Out.Data({{"path", OrderStorePath()}, {"whole", findings.empty()}, {"findings", findings}});
  return findings.empty() ? kGood : kNotGood;
}

int Path(Context& context) {
  NoteWhenNoStoreIsSet(context);
  const std::string zPath = OrderStorePath();
  context.Out.Text(zPath + "\n");
  context.Out.Data({{"path", zPath}});
  return kGood;
}

}  // namespace

void AddStoreCommands(CLI::App& app, Command& chosen) {
  CLI::App& group = *app.add_subcommand("store", "The file that holds the orders");
  group.require_subcommand(1);

  auto options = std::make_shared<CreateOptions>();
  CLI::App& create = AddCommand(group, chosen, "create", "Make a new, empty order store", options, Create);
  AddText(
      create, "FOLDER", options->Folder,
      "Where to make it; without it the folder of the setting\nOrderingDatabasePath, or when that is unset "
      "$XDG_DATA_HOME/qm_ordering,\nelse ~/.local/share/qm_ordering")
      ->type_name("");
  create.footer(
      "Makes the folder and in it the file Orders.mdb; an existing file is never touched. When the "
      "setting\n"
      "OrderingDatabasePath is unset, it is set to the folder, so that all other commands use the new "
      "store.");

  AddCommand(group, chosen, "check", "Examine the store and change nothing", Check)
      .footer(
          "Examines the file, its tables, the current order, and every order's total against its lines. "
          "Each\n"
          "finding is a line; exit code 1 when there are any.");

  AddCommand(group, chosen, "path", "Show where the store is", Path);
}

}  // namespace host
