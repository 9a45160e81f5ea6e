#include "host/OrderHeaderCommands.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Errors.h"
#include "host/HeaderFields.h"
#include "host/OrderReport.h"
#include "host/OrderSession.h"
#include "host/Text.h"

namespace host {

namespace {

using namespace qm_ordering;

struct SetOptions {
  std::vector<std::string> Assignments;
};

struct ApplyOptions {
  bool Yes = false;
};

using Assignment = std::pair<const HeaderField*, Variant>;

// The arguments NAME=VALUE as fields and their values.
std::vector<Assignment> ParseAssignments(const std::vector<std::string>& zvArguments) {
  std::vector<Assignment> assignments;
  for (const std::string& zArgument : zvArguments) {
    const std::size_t lEquals = zArgument.find('=');
    if (lEquals == std::string::npos) {
      throw UsageError("\"" + zArgument + "\" is not NAME=VALUE, like DeliveryInformation.City=Reims.");
    }
    const HeaderField& field = FindHeaderField(zArgument.substr(0, lEquals));
    for (const auto& [other, vValue] : assignments) {
      if (other == &field) {
        throw UsageError(field.FullName() + " is set twice.");
      }
    }
    assignments.emplace_back(&field, ParseHeaderValue(field, zArgument.substr(lEquals + 1)));
  }
  return assignments;
}

int Set(Context& context, const SetOptions& options) {
  // All of it is checked before anything is set.
  const std::vector<Assignment> assignments = ParseAssignments(options.Assignments);
  const auto oOrder = OpenCurrentOrder(context);
  std::string zText;
  Json set = Json::object();
  for (const auto& [field, vValue] : assignments) {
    field->Set(*oOrder->OrderDetails(), vValue);
    zText += field->FullName() + " = " + Shown(vValue.ToString()) + "\n";
    set[field->FullName()] = ValueJson(vValue);
  }
  oOrder->SaveSummary();
  CheckRecord(oOrder->Error());
  context.Out.MarkChange();
  context.Out.Text(zText);
  context.Out.Data({{"set", set}});
  return kGood;
}

int ApplyRegistration(Context& context, const ApplyOptions& options) {
  const auto oOrder = OpenCurrentOrder(context);
  if (!options.Yes) {
    OrderHistory history;
    history.LoadOrders();
    if (history.Count() > 0) {
      throw UsageError("There " + std::string(history.Count() == 1 ? "is " : "are ") +
                       Counted(static_cast<std::size_t>(history.Count()), "submitted order") +
                       ", and apply-registration rewrites the contact data of every order, submitted ones "
                       "included. Nothing was changed; --yes does it.");
    }
  }
  // Asked of the order itself: the record of CurrentOrder would tell of the reload alone.
  oOrder->OrderDetails()->ApplyRegistrationSettings();
  CheckRecord(oOrder->OrderDetails()->Error());
  oOrder->LoadSummary();
  CheckRecord(oOrder->Error());
  context.Out.MarkChange();
  context.Out.Text("The order's details are now:\n\n" + HeaderText(*oOrder->OrderDetails()));
  context.Out.Data(HeaderJson(*oOrder->OrderDetails()));
  return kGood;
}

// The names that `order set` takes, one group after the other.
std::string NamesText() {
  std::string zText;
  std::string zGroup;
  std::string zLine;
  for (const HeaderField& field : HeaderFields()) {
    if (field.Group != zGroup) {
      zGroup = field.Group;
      zText.append(zLine).append("\n  ").append(zGroup).append(".\n");
      zLine = "   ";
    }
    if (zLine.size() + field.Name.size() > 95) {
      zText.append(zLine).append("\n");
      zLine = "   ";
    }
    zLine.append(" ").append(field.Name);
  }
  return zText + zLine + "\n";
}

}  // namespace

void AddOrderHeaderCommands(CLI::App& group, Command& chosen) {
  auto setOptions = std::make_shared<SetOptions>();
  CLI::App& set = AddCommand(group, chosen, "set", "Set header details and save them", setOptions, Set);
  AddTexts(set, "NAME=VALUE", setOptions->Assignments,
           "Property and value, as often as needed:\nPurchaseOrderNumber=PO-7 DeliveryInformation.City=Reims")
      ->required()
      ->option_text("...");
  set.footer("The names, in any letter case:\n " + NamesText() + R"(
CreditCardDetails.X is short for PaymentInformation.CreditCardDetails.X. An empty value clears a text.
DeliveryMethod: 0 collected at a branch, else delivered. Method: 0 on account, else by card. ShippingMethod:
0 Standard Shipping, 1 UPS Next Day Air, 2 UPS Second Day Air, 3 UPS Saturday Delivery Air, 4 Standard
Shipping USPS, 5 Fed Ex Standard Overnight, 6 Fed Ex Early Overnight, 7 Fed Ex Collect, 8 Airborne Express,
9 Other. IsTaxExempt: true, false, 1 or 0.

All names and values are checked before anything is set. The values also become the defaults of the next
order. Card type, card number, expiry and holder's reference are never stored and are refused here; hand
them to `order validate` and `order xml` with --card-file.)");

  auto applyOptions = std::make_shared<ApplyOptions>();
  CLI::App& apply = AddCommand(group, chosen, "apply-registration",
                               "Fill contact and account details from the user's registration", applyOptions,
                               ApplyRegistration);
  apply.add_flag("--yes", applyOptions->Yes, "Rewrite submitted orders too");
  apply.footer(
      R"(CAUTION: this rewrites the contact data (telephone, e-mail, delivery address, card holder's address, account
numbers) of ALL orders in the store, submitted ones included. It takes each value from the order defaults
(settings DEFAULT_...), and where a default is blank from the registration (settings Reg_...); where both
are blank the value becomes blank. When there are submitted orders it needs --yes.)");
}

}  // namespace host
