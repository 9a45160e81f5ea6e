#include "host/OrderCommands.h"

#include <cstdint>
#include <string>

#include "host/CardFile.h"
#include "host/CommandLine.h"
#include "host/Document.h"
#include "host/Errors.h"
#include "host/OrderCheck.h"
#include "host/OrderHeaderCommands.h"
#include "host/OrderLineCommands.h"
#include "host/OrderReport.h"
#include "host/OrderSession.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

constexpr const char* kCardFileHelp =
    "The card data that is never stored, - for standard input: lines\n"
    "NAME=VALUE with CardType, CardNumber, ExpiryMonth, ExpiryYear,\nCardHoldersRef";

struct ShowOptions {
  std::int32_t Sort = 0;
};

struct ValidateOptions {
  std::string CardFile;
};

struct XmlOptions {
  std::string CardFile;
  std::string Output;
};

struct SubmitOptions {
  bool Force = false;
};

void TakeCard(Context& context, const std::string& zvCardFile, const CurrentOrder& order) {
  if (!zvCardFile.empty()) {
    ReadCardFile(zvCardFile, *order.OrderDetails()->PaymentInformation()->CreditCardDetails(), context.Out);
  }
}

int Show(Context& context, const ShowOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  const bool bChecked = LoadCheckedLines(context, *oOrder, options.Sort);
  context.Out.Text(OrderText(*oOrder->OrderDetails(), bChecked));
  context.Out.Data(OrderJson(*oOrder->OrderDetails(), bChecked));
  return bChecked ? kGood : kNotGood;
}

// Why the order cannot be exported; empty when it can.
std::string XmlProblem(CurrentOrder& order, bool bvChecked) {
  if (!bvChecked) {
    return "The document says of each quantity whether it is valid, which cannot be checked.";
  }
  try {
    order.GetXML();
    return {};
  } catch (const Failure& failure) {
    return failure.Description();
  }
}

int Validate(Context& context, const ValidateOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  TakeCard(context, options.CardFile, *oOrder);
  const bool bChecked = LoadCheckedLines(context, *oOrder, 0);
  OrderCheck check = CheckOrder(*oOrder->OrderDetails(), bChecked);
  check.XmlProblem = XmlProblem(*oOrder, bChecked);
  context.Out.Text(check.Text());
  context.Out.Data(check.ToJson());
  return check.AllValid() ? kGood : kNotGood;
}

int Xml(Context& context, const XmlOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  TakeCard(context, options.CardFile, *oOrder);
  // The document says of each line whether its quantity is valid, so it needs the check.
  if (!LoadCheckedLines(context, *oOrder, 0)) {
    return kNotGood;
  }
  GiveDocument(context, oOrder->GetXML(), options.Output);
  return kGood;
}

void CheckBeforeSubmission(Context& context, const OrderCheck& check, bool bvForce) {
  if (!check.LinesValid) {
    if (!bvForce) {
      throw Refusal("Nothing was submitted. " + check.LinesText() +
                    " `qm-ordering order validate` tells more; --force submits the order all the same.");
    }
    context.Out.Warning(check.LinesText() + " Submitted all the same.");
  }
  if (!check.DeliveryMissing.empty()) {
    context.Out.Warning(
        "The delivery information is not complete; missing: " + Listed(check.DeliveryMissing) + ".");
  }
  if (!check.PaymentMissing.empty()) {
    context.Out.Warning("The payment information is not complete; missing: " + Listed(check.PaymentMissing) +
                        ".");
  }
}

int Submit(Context& context, const SubmitOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  const bool bChecked =
      LoadCheckedLines(context, *oOrder, 0, options.Force ? Uncheckable::Warning : Uncheckable::Error);
  CheckBeforeSubmission(context, CheckOrder(*oOrder->OrderDetails(), bChecked), options.Force);
  const std::int32_t lSubmitted = oOrder->OrderDetails()->OrderID();
  const std::string zNumber = oOrder->OrderDetails()->PurchaseOrderNumber();
  oOrder->SaveToHistory();
  CheckRecord(oOrder->Error());
  // The object still names the submitted order: from here on the next one is meant.
  oOrder->LoadSummary();
  CheckRecord(oOrder->Error());
  oOrder->LoadItems(0);
  const std::int32_t lCurrent = oOrder->OrderDetails()->OrderID();
  context.Out.MarkChange();
  context.Out.Text("Submitted order " + std::to_string(lSubmitted) + ", PO number " +
                   (zNumber.empty() ? "none" : Shown(zNumber)) + ".\nThe current order is now order " +
                   std::to_string(lCurrent) + ".\n");
  context.Out.Data(
      {{"SubmittedOrderID", lSubmitted}, {"PurchaseOrderNumber", zNumber}, {"OrderID", lCurrent}});
  return kGood;
}

}  // namespace

void AddOrderCommands(CLI::App& app, Command& chosen) {
  CLI::App& group = *app.add_subcommand("order", "The current order");
  group.require_subcommand(1);

  auto showOptions = std::make_shared<ShowOptions>();
  CLI::App& show = AddCommand(group, chosen, "show", "Show the order", showOptions, Show);
  show.add_option("--sort", showOptions->Sort, "The order of the lines, see below")
      ->type_name("N")
      ->check(CLI::Range(0, 6));
  show.footer(
      "The lines stand in the order of --sort: 0 entry (without the option), 1 item number, 2 "
      "description,\n"
      "3 manufacturer, 4 model, 5 usual shipping time, 6 price. A * marks a quantity that is not a whole "
      "number\n"
      "of packs. With --json every stored field is there; money is text, so that no digit is lost.");

  AddOrderLineCommands(group, chosen);
  AddOrderHeaderCommands(group, chosen);

  auto validateOptions = std::make_shared<ValidateOptions>();
  CLI::App& validate =
      AddCommand(group, chosen, "validate", "Check whether the order is ready to be submitted",
                 validateOptions, Validate);
  AddText(validate, "--card-file", validateOptions->CardFile, kCardFileHelp)->type_name("FILE");
  validate.footer(
      "Looks at the quantities of the lines, the delivery information and the payment information, names "
      "what is\n"
      "missing, and tries whether the order can be exported. Exit code 1 when a check fails. A payment by "
      "card needs --card-file: card number and\n"
      "expiry are never stored.");

  auto xmlOptions = std::make_shared<XmlOptions>();
  CLI::App& xml = AddCommand(group, chosen, "xml", "Export the order as an XML document", xmlOptions, Xml);
  AddText(xml, "--output", xmlOptions->Output, "Write a file instead of standard output")->type_name("FILE");
  AddText(xml, "--card-file", xmlOptions->CardFile, kCardFileHelp)->type_name("FILE");
  xml.footer(
      "The file appears whole or not at all, and replaces one of that name; only you may read it. With\n"
      "--card-file the document holds the card number in full.");

  auto submitOptions = std::make_shared<SubmitOptions>();
  CLI::App& submit =
      AddCommand(group, chosen, "submit", "Submit the order and begin the next one", submitOptions, Submit);
  submit.add_flag(
      "--force", submitOptions->Force,
      "Submit an order without lines, or with quantities that do not\nfit their packs, all the same");
  submit.footer(
      "The order moves into the history with the date of today, and a new current order takes its place,\n"
      "filled from the order defaults. Without --force an order without lines, or with a quantity that does "
      "not\n"
      "fit its pack, is refused with exit code 1. Delivery or payment information that is not complete is "
      "only\n"
      "warned of: `order validate` checks it.");
}

}  // namespace host
