#include "host/ImportCommand.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/Errors.h"
#include "host/Progress.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

struct ImportOptions {
  std::string Folder;
  bool Log = false;
  bool Preview = false;
  bool Again = false;
};

std::string Counted(std::int64_t lvCount, const std::string& zvNoun) {
  return host::Counted(static_cast<std::size_t>(lvCount), zvNoun);
}

std::string PreviewText(const ImportPreview& preview) {
  std::string zText = Counted(preview.Orders, "purchase order") + " with " + Counted(preview.Lines, "line") +
                      "\n" + Counted(preview.MarkedLines, "line") + " to be marked as a duplicate\n" +
                      Counted(preview.AlreadyImported, "purchase order") +
                      " in the history already (same number, date and total)\n" +
                      Counted(preview.FailingRows, "row") + " that would fail" +
                      (preview.FailingRows == 0 ? "" : ", and the whole import with the first of them") +
                      "\n";
  for (const std::string& zFailure : preview.Failures) {
    zText += "  " + Shown(zFailure) + "\n";
  }
  return zText + "Nothing was imported.\n";
}

Json PreviewJson(const ImportPreview& preview) {
  return {{"PurchaseOrders", preview.Orders},   {"Lines", preview.Lines},
          {"MarkedLines", preview.MarkedLines}, {"AlreadyImported", preview.AlreadyImported},
          {"FailingRows", preview.FailingRows}, {"Failures", preview.Failures}};
}

void RefuseSecondImport(const ImportPreview& preview) {
  if (preview.AlreadyImported > 0) {
    throw Refusal("In the history already, with the same number, date and total: " +
                  std::to_string(preview.AlreadyImported) + " of " +
                  Counted(preview.Orders, "purchase order") +
                  ". Nothing was imported; --preview tells more, --again imports all of them a second time.");
  }
}

int Import(Context& context, const ImportOptions& options) {
  NoteWhenNoStoreIsSet(context);
  OrderHistoryImporter importer;
  if (options.Preview || !options.Again) {
    const ImportPreview preview = importer.PreviewImports(options.Folder);
    if (options.Preview) {
      context.Out.Text(PreviewText(preview));
      context.Out.Data(PreviewJson(preview));
      return preview.FailingRows == 0 ? kGood : kNotGood;
    }
    RefuseSecondImport(preview);
  }
  std::int64_t lLines = 0;
  std::int32_t lOrders = 0;
  {
    std::optional<Progress> bar;
    importer.OnProgress([&](const ImportProgress& progress) {
      if (!bar) {
        bar.emplace(context.Out, "Importing lines", static_cast<std::size_t>(progress.LinesInAll));
      }
      lLines = progress.Lines;
      bar->Done(static_cast<std::size_t>(progress.Lines));
      return true;
    });
    lOrders = importer.ApplyImports(options.Folder, options.Log);
  }
  if (lOrders == 0) {
    CheckRecord({LastFailure().Number, LastFailure().Description});
    context.Out.Text("The old history is empty: there was nothing to import.\n");
    context.Out.Data({{"PurchaseOrders", 0}, {"Lines", 0}});
    return kGood;
  }
  context.Out.MarkChange();
  context.Out.Text("Imported " + Counted(lOrders, "purchase order") + " with " + Counted(lLines, "line") +
                   ". `qm-ordering history show` shows them.\n");
  context.Out.Data({{"PurchaseOrders", lOrders}, {"Lines", lLines}});
  return kGood;
}

}  // namespace

void AddImportCommand(CLI::App& app, Command& chosen) {
  auto options = std::make_shared<ImportOptions>();
  CLI::App& import = AddCommand(app, chosen, "import",
                                "Bring in the purchase orders of an older program, once", options, Import);
  AddText(import, "FOLDER", options->Folder, "The folder of POHDRHIS.DBF and PODTLHIS.DBF")
      ->required()
      ->type_name("");
  import.add_flag("--preview", options->Preview, "Say what would come, and write nothing");
  import.add_flag("--log", options->Log,
                  "Write Order_History_Import_Log.txt into the folder of the\nsetting LogPath");
  import.add_flag("--again", options->Again, "Import orders that are in the history already a second time");
  import.footer(
      "Each purchase order becomes a submitted order of the history. An item number that the store has "
      "already\n"
      "is stored with the marker DUP behind it. All of it is imported or, on a failure, nothing. Orders "
      "that\n"
      "are in the history already, with the same number, date and total, are not imported again without\n"
      "--again. With --preview the exit code is 1 when a row would fail.");
}

}  // namespace host
