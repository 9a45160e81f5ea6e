#include "host/StoreCommands.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/Progress.h"
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

struct FileOptions {
  std::string File;
};

// Shows how far a copy is. The bar begins with the first step, which tells how long it is.
class CopyProgress {
 public:
  CopyProgress(const Output& out, std::string zvWhat) : m_oOut(out), m_zWhat(std::move(zvWhat)) {}
  void Show(std::int64_t lvDone, std::int64_t lvAll) {
    if (!m_oBar) {
      m_oBar.emplace(m_oOut, m_zWhat, static_cast<std::size_t>(lvAll));
    }
    m_oBar->Done(static_cast<std::size_t>(lvDone));
  }

 private:
  const Output& m_oOut;
  std::string m_zWhat;
  std::optional<Progress> m_oBar;
};

// Totals that do not fit their lines do not keep a store from being backed up.
void WarnOfTotals(Context& context, const std::vector<std::string>& findings) {
  for (const std::string& zFinding : findings) {
    context.Out.Warning(zFinding + ". `qm-ordering store repair` puts it right where its lines allow.");
  }
}

int Backup(Context& context, const FileOptions& options) {
  NoteWhenNoStoreIsSet(context);
  std::vector<std::string> findings;
  {
    CopyProgress progress(context.Out, "Copying pages");
    findings = BackupOrderStore(options.File,
                                [&](std::int64_t lDone, std::int64_t lAll) { progress.Show(lDone, lAll); });
  }
  WarnOfTotals(context, findings);
  const std::string zFile = std::filesystem::absolute(options.File).string();
  context.Out.MarkChange();
  context.Out.Text("Backed up " + Shown(OrderStorePath()) + " to " + Shown(zFile) + "\n");
  context.Out.Data({{"path", OrderStorePath()}, {"backup", zFile}, {"findings", findings}});
  return kGood;
}

int Restore(Context& context, const FileOptions& options) {
  NoteWhenNoStoreIsSet(context);
  std::string zKept;
  {
    CopyProgress progress(context.Out, "Copying pages");
    zKept = RestoreOrderStore(options.File,
                              [&](std::int64_t lDone, std::int64_t lAll) { progress.Show(lDone, lAll); });
  }
  const std::string zFile = std::filesystem::absolute(options.File).string();
  context.Out.MarkChange();
  WarnOfTotals(context, CheckOrderStore());
  context.Out.Text("Restored " + Shown(OrderStorePath()) + " from " + Shown(zFile) + "\n" +
                   (zKept.empty() ? "There was no store to keep.\n"
                                  : "What it replaced is kept as " + Shown(zKept) + "\n"));
  context.Out.Data(
      {{"path", OrderStorePath()}, {"backup", zFile}, {"kept", zKept.empty() ? Json(nullptr) : Json(zKept)}});
  return kGood;
}

int Repair(Context& context) {
  NoteWhenNoStoreIsSet(context);
  const std::vector<std::string> changes = RepairOrderStore();
  if (!changes.empty()) {
    context.Out.MarkChange();
  }
  // What a repair cannot put right stays a finding.
  const std::vector<std::string> findings = CheckOrderStore();
  for (const std::string& zChange : changes) {
    context.Out.Text(Shown(zChange) + "\n");
  }
  if (changes.empty() && findings.empty()) {
    context.Out.Text("There was nothing to repair.\n");
  }
  for (const std::string& zFinding : findings) {
    context.Out.Warning(zFinding + ".");
  }
  context.Out.Data({{"path", OrderStorePath()},
                    {"changes", changes},
                    {"whole", findings.empty()},
                    {"findings", findings}});
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

  auto backupOptions = std::make_shared<FileOptions>();
  CLI::App& backup = AddCommand(group, chosen, "backup", "Copy the store into a file, while it is in use",
                                backupOptions, Backup);
  AddText(backup, "FILE", backupOptions->File, "The backup; an earlier one of that name is replaced")
      ->required()
      ->type_name("");
  backup.footer(
      "The copy is checked as `store check` does before it gets its name; a store with findings is not "
      "copied,\n"
      "and an earlier backup stays. A file that is no order store is never replaced.");

  auto restoreOptions = std::make_shared<FileOptions>();
  CLI::App& restore =
      AddCommand(group, chosen, "restore", "Put a backup in the place of the store", restoreOptions, Restore);
  AddText(restore, "FILE", restoreOptions->File, "The backup, which stays as it is")
      ->required()
      ->type_name("");
  restore.footer(
      "The store that is replaced is kept beside the new one as Orders.mdb.replaced-DATE-TIME, which is "
      "yours to\n"
      "delete. The backup is checked first, and one with findings is refused. End every program that has the "
      "store\n"
      "open before: it would go on with orders that are others by then, so the command refuses.");

  AddCommand(group, chosen, "repair", "Set totals that do not fit their lines", Repair)
      .footer(
          "Each change is a line, and each finding that is left a warning; exit code 1 when there are any. A "
          "damaged\n"
          "store is not touched: restore a backup.");

  AddCommand(group, chosen, "path", "Show where the store is", Path);
}

}  // namespace host
