#include "host/Context.h"

namespace host {

using namespace qm_ordering;

std::string Setting(const Context& context, const std::string& zvKey) {
  return context.Settings->CreateUserSettings()->Get(zvKey);
}

void SetSetting(const Context& context, const std::string& zvKey, const std::string& zvValue) {
  const auto oDefaults = context.Settings->CreateOrderDefaults();
  oDefaults->Set(zvKey, zvValue);
  oDefaults->Save();
}

void NoteWhenNoStoreIsSet(Context& context) {
  if (Setting(context, UserSettingConstants::ORDERINGDATABASEPATH).empty()) {
    context.Out.Note("There is no store yet: `qm-ordering store create` makes one.");
  }
}

}  // namespace host
