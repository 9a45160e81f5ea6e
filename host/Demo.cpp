#include "host/Demo.h"

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/Catalogue.h"
#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/HistoryCommands.h"
#include "host/ListCommands.h"
#include "host/ListSession.h"
#include "host/OrderCheck.h"
#include "host/OrderReport.h"
#include "host/Packs.h"
#include "host/Reorder.h"
#include "host/Text.h"
#include "host/WholeFile.h"

namespace host {

namespace {

using namespace qm_ordering;

struct DemoOptions {
  std::string CatalogueFile;  // empty: the example that was installed with the program
};

// What the order is made of. The item that comes in packs is asked for in a number that is none of them.
constexpr const char* kItemInPacks = "FX-2040";
const std::vector<std::pair<const char*, std::int32_t>> kLines = {
    {"HT-1010", 2}, {kItemInPacks, 130}, {"SF-3020", 24}, {"SF-3050", 3}, {"CL-4010", 12}, {"PT-5020", 1}};

constexpr const char* kList = "Halle 3";

constexpr std::size_t kXmlLinesShown = 9;

// A step's title, and the command that does the same.
void Heading(Context& context, const std::string& zvText, const std::string& zvCommand = {}) {
  context.Out.Text("\n" + zvText + "\n" + Repeated("\u2550", DisplayWidth(zvText)) + "\n");
  if (!zvCommand.empty()) {
    context.Out.Text("$ qm-ordering " + zvCommand + "\n\n");
  }
}

std::string MakeFolder() {
  std::string zFolder = (std::filesystem::temp_directory_path() / "qm_ordering_demo.XXXXXX").string();
  if (mkdtemp(zFolder.data()) == nullptr) {
    throw Failure(failure::kPathNotFound, "The folder " + zFolder + " cannot be made: " +
                                              std::generic_category().message(errno) + ".");
  }
  return zFolder;
}

// It is found from the place of the program, so that an installation can be anywhere: beside a program that
// is not installed, else in the data folder.
std::string ExampleCatalogue() {
  std::error_code unknown;
  const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path();
  const std::filesystem::path beside = folder / "catalogue.csv";
  if (std::filesystem::exists(beside, unknown)) {
    return beside.string();
  }
  return (folder / QM_ORDERING_DATA_DIR / "catalogue.csv").lexically_normal().string();
}

std::string CatalogueFile(const DemoOptions& options) {
  std::string zFile = options.CatalogueFile.empty() ? ExampleCatalogue() : options.CatalogueFile;
  if (!std::filesystem::exists(zFile)) {
    throw UsageError("The example catalogue " + zFile +
                     " is not there. Give the place of catalogue.csv with --catalogue FILE.");
  }
  return zFile;
}

// A store and a settings file of the demonstration's own. This comes before the first object of the library,
// which reads from the settings where the store is.
void MakeStore(Context& context, const std::string& zvFolder) {
  context.SettingsFile = zvFolder + "/settings.ini";
  context.Settings = CreateFileSettings(context.SettingsFile);
  InstallSettings(context.Settings);
  CreateOrderStore(zvFolder);
  SetSetting(context, UserSettingConstants::ORDERINGDATABASEPATH, zvFolder);
  Heading(context, "1. A new store", "store create FOLDER");
  context.Out.Text("An empty order store, " + zvFolder + "/Orders.mdb\n");
}

void FillOrder(Context& context, CurrentOrder& order, const Catalogue& catalogue) {
  Heading(context, "2. An order from a catalogue",
          "order add --catalogue catalogue.csv HT-1010 2 FX-2040 130 ...");
  for (const auto& [zNumber, lQuantity] : kLines) {
    const auto oItem = catalogue.Find(zNumber);
    oItem->Quantity(lQuantity);
    order.AddItem(oItem);
    CheckRecord(order.Error());
  }
  // Loading checks the quantities.
  order.LoadItems(0);
  context.Out.Text(
      "The catalogue has " + Counted(static_cast<std::size_t>(catalogue.Items().Count()), "item") +
      "; these go into the order. Each line is stored at once.\n\n" + LinesText(*order.OrderDetails(), true));
}

void CorrectQuantity(Context& context, CurrentOrder& order) {
  Heading(context, "3. A quantity that fits its pack", "order quantity FX-2040 150");
  const auto oItem = order.OrderDetails()->OrderItems()->Item(kItemInPacks);
  const std::int32_t lPack = PackOf(*oItem, order.OrderDetails()->DeliveryInformation()->DeliveryMethod());
  const std::int32_t lBefore = oItem->Quantity();
  const std::int32_t lQuantity = NearestThatFit(lBefore, lPack).Above.value();
  oItem->Quantity(lQuantity);
  oItem->ExtendedPrice(oItem->Price() * lQuantity);
  const auto oChanged = std::make_shared<OrderItems>();
  oChanged->Add(oItem, oItem->ItemNumber());
  order.UpdateItems(oChanged);
  order.LoadItems(0);
  context.Out.Text("Of " + std::string(kItemInPacks) + " the buyer takes " + std::to_string(lQuantity) +
                   " instead of " + std::to_string(lBefore) + ", " + std::to_string(lQuantity / lPack) +
                   " full packs:\n\n" + LinesText(*order.OrderDetails(), true));
}

void SetHeader(Context& context, CurrentOrder& order) {
  Heading(context, "4. Header details", "order validate");
  OrderDetails& details = *order.OrderDetails();
  context.Out.Text("Before the order can go out:\n\n" + CheckOrder(details, true).Text());

  details.PurchaseOrderNumber("PO-7");
  details.OrderInformation()->ProjectOrJobNumber("Halle 3");
  details.OrderInformation()->RequisitionOrApprovalName("Zo\u00EB O'Hara");
  details.OrderInformation()->Email("achats@champagne-lefevre.example");
  DeliveryInformation& delivery = *details.DeliveryInformation();
  delivery.DeliveryMethod(1);
  delivery.ShippingMethod(2);
  delivery.FirstName("Ana\u00EFs");
  delivery.LastName("Lef\u00E8vre");
  delivery.CompanyName("Champagne Lef\u00E8vre & Fils");
  delivery.Address1("12, rue de l'\u00C9glise");
  delivery.City("Reims");
  delivery.StateOr("Grand Est");
  delivery.ZipOrPostCode("51100");
  delivery.Country("France");
  delivery.PhoneNumber("+33 3 26 00 00 00");
  delivery.Notes("Gate 2, ring twice.");
  details.PaymentInformation()->MorvaneAccountNumber("M-204417");
  order.SaveSummary();
  CheckRecord(order.Error());
  // Delivered orders come in shipping packs: the quantities are checked anew.
  order.LoadItems(0);
  context.Out.Text(
      "\n$ qm-ordering order set PurchaseOrderNumber=PO-7 DeliveryInformation.City=Reims ...\n\n"
      "Saved, and kept as the defaults of the next order:\n\n" +
      CheckOrder(details, true).Text() + "\n" + HeaderText(details));
}

// The document's elements on a line each, cut to the width of the screen.
std::string Shortened(const std::string& zvDocument) {
  std::string zShown;
  std::size_t lLines = 0;
  std::size_t lDepth = 0;
  for (std::size_t lStart = 0; lStart < zvDocument.size();) {
    const std::size_t lEnd = std::min(zvDocument.find("><", lStart), zvDocument.size() - 1) + 1;
    const std::string zElement = zvDocument.substr(lStart, lEnd - lStart);
    lStart = lEnd;
    const bool bCloses = zElement.starts_with("</");
    lDepth -= bCloses ? 1U : 0U;
    if (lLines++ < kXmlLinesShown) {
      const std::string zLine = std::string(2 * lDepth, ' ') + Shown(zElement);
      const std::size_t lWidth = Output::Width() - 2;
      zShown += DisplayWidth(zLine) > lWidth ? Wrapped(zLine, lWidth).front() + " \u2026\n" : zLine + "\n";
    }
    lDepth += bCloses || zElement.ends_with("/>") ? 0U : 1U;
  }
  return lLines > kXmlLinesShown
             ? zShown + "... and " + Counted(lLines - kXmlLinesShown, "more element") + "\n"
             : zShown;
}

void ExportXml(Context& context, const CurrentOrder& order, const std::string& zvFile) {
  Heading(context, "5. The order as XML", "order xml --output order.xml");
  const std::string zDocument = order.GetXML();
  WriteWholeFile(zvFile, zDocument + "\n");
  context.Out.Text(Shortened(zDocument) + "\nThe whole document: " + zvFile + "\n");
}

void KeepList(Context& context) {
  Heading(context, "6. A list for ordering again", "lists from-order \"" + std::string(kList) + "\"");
  KeepOrderAsList(context, kList, false);
  context.Out.Text(ListText(*OpenList(context, kList)) + "\n$ qm-ordering lists export\n\n");
  context.Out.Text("All lists, for other programs to read: " + ExportLists(*OpenLists(context)) + "\n");
}

void Submit(Context& context, CurrentOrder& order) {
  Heading(context, "7. Submission", "order submit");
  const std::int32_t lSubmitted = order.OrderDetails()->OrderID();
  order.SaveToHistory();
  CheckRecord(order.Error());
  // The object still names the submitted order: from here on the next one is meant.
  order.LoadSummary();
  CheckRecord(order.Error());
  order.LoadItems(0);
  context.Out.Text("Order " + std::to_string(lSubmitted) +
                   " is in the history. The next one has begun, with the details of the last filled in:\n\n" +
                   OrderText(*order.OrderDetails(), true));
}

void ShowHistory(Context& context) {
  Heading(context, "8. The history", "history show");
  OrderHistory history;
  history.LoadOrders();
  context.Out.Text(HistoryText(history));
}

void OrderAgain(Context& context, const std::string& zvCatalogueFile) {
  Heading(context, "9. Ordering again",
          "lists order \"" + std::string(kList) + "\" --catalogue catalogue.csv");
  context.Out.Text("A list holds no prices: those of today come from the catalogue.\n\n");
  ReorderList(context, *OpenList(context, kList), zvCatalogueFile);
}

void ShowWhereItIs(Context& context, const std::string& zvFolder, const std::string& zvCatalogue) {
  Heading(context, "Where it is, and how to go on");
  const std::string zCommand = "  " + context.Program + " --settings " + context.SettingsFile;
  context.Out.Text("Store     " + OrderStorePath() + "\nSettings  " + context.SettingsFile + "\nXML       " +
                   zvFolder + "/order.xml\nCatalogue " + zvCatalogue + "\n\nTo work on with this store:\n" +
                   zCommand + " order show\n" + zCommand + " order add --catalogue " + zvCatalogue +
                   " HT-1030 2\n\nTo remove it:\n  rm -r " + zvFolder +
                   "\n\nTo begin with a store of your own:\n  " + context.Program + " store create\n");
}

int Run(Context& context, const DemoOptions& options) {
  if (context.Out.IsJson() || !context.SettingsFile.empty()) {
    throw UsageError(
        "The demonstration is for a person to read and makes its own settings file, so it takes neither "
        "--json "
        "nor --settings.");
  }
  const std::string zCatalogueFile = CatalogueFile(options);
  const std::string zFolder = MakeFolder();
  context.Out.Text(
      "One order, from an empty store to its submission, and a list that orders it again, in a temporary\n"
      "folder of its own. Below each title stands the command that does the same.\n");
  MakeStore(context, zFolder);
  const Catalogue catalogue(zCatalogueFile, context.Out);
  CurrentOrder order;
  CheckRecord(order.OrderDetails()->Error());
  FillOrder(context, order, catalogue);
  CorrectQuantity(context, order);
  SetHeader(context, order);
  ExportXml(context, order, zFolder + "/order.xml");
  KeepList(context);
  Submit(context, order);
  ShowHistory(context);
  OrderAgain(context, zCatalogueFile);
  ShowWhereItIs(context, zFolder, zCatalogueFile);
  return kGood;
}

}  // namespace

void AddDemo(CLI::App& app, Command& chosen) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App& demo = *app.add_subcommand(
      "demo", "Show all of it: one order from an empty store to its submission, and once again");
  demo.callback([&chosen, options] {
    chosen.Run = [options](Context& context) { return Run(context, *options); };
    chosen.MakesOwnSettings = true;
  });
  AddText(demo, "--catalogue", options->CatalogueFile,
          "The catalogue, instead of the example that is installed")
      ->type_name("FILE");
  demo.footer(
      "Works in a new temporary folder and touches nothing else. The folder stays, so that you can look "
      "at\n"
      "what is in it; the last lines say where it is and how to remove it.");
}

}  // namespace host
