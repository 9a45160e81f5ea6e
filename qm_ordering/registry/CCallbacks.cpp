#include "qm_ordering/registry/CCallbacks.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "qm_ordering/platform/settings/Settings.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/registry/CValues.h"

// What a callback answers.
struct qm_ordering_reply {
  std::string Text;
  bool IsMemoryAtEnd = false;
};

int32_t qm_ordering_answer(qm_ordering_reply* reply, const char* data, size_t length) {
  using namespace qm_ordering;
  if (reply == nullptr || (data == nullptr && length > 0)) {
    return failure::kInvalidCall;
  }
  try {
    reply->Text.assign(c_interface::TextOf(data, length));
    return 0;
  } catch (...) {
    reply->IsMemoryAtEnd = true;
    return failure::kOutOfMemory;
  }
}

namespace qm_ordering::c_interface {

namespace {

// Runs a callback and answers its reply.
template <typename Callback>
std::string ReplyOf(const char* zvCallback, Callback callback) {
  qm_ordering_reply reply;
  const int32_t lNumber = callback(&reply);
  if (reply.IsMemoryAtEnd) {
    throw OutOfMemory();
  }
  if (lNumber != 0) {
    throw Failure(lNumber, !reply.Text.empty()
                               ? reply.Text
                               : std::string("The host's function ") + zvCallback + " failed with number " +
                                     std::to_string(lNumber) + " and did not say why.");
  }
  return std::move(reply.Text);
}

// The host's component, as long as something of it is in use.
class Component {
 public:
  Component(const qm_ordering_settings& settings, void* payload)
      : m_oSettings(settings), m_pPayload(payload) {}
  ~Component() {
    if (m_bOwned && m_oSettings.dispose != nullptr) {
      m_oSettings.dispose(m_pPayload);
    }
  }
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  // From now on the component disposes of the payload.
  void Own() noexcept { m_bOwned = true; }

  using Reader = int32_t (*)(const char*, qm_ordering_reply*, void*);

  std::string UserSetting(const char* zvKey) const {
    return Read("user_setting", m_oSettings.user_setting, zvKey);
  }
  std::string OrderDefault(const char* zvKey) const {
    return Read("order_default", m_oSettings.order_default, zvKey);
  }
  std::string Registration(const char* zvField) const {
    return Read("registration", m_oSettings.registration, zvField);
  }
  void SetOrderDefault(const std::string& zvKey, const std::string& zvValue) const {
    if (m_oSettings.set_order_default != nullptr) {
      ReplyOf("set_order_default", [&](qm_ordering_reply* reply) {
        return m_oSettings.set_order_default(zvKey.c_str(), zvValue.data(), zvValue.size(), reply,
                                             m_pPayload);
      });
    }
  }
  void SaveOrderDefaults() const {
    if (m_oSettings.save_order_defaults != nullptr) {
      ReplyOf("save_order_defaults",
              [&](qm_ordering_reply* reply) { return m_oSettings.save_order_defaults(reply, m_pPayload); });
    }
  }

 private:
  std::string Read(const char* zvCallback, Reader reader, const char* zvKey) const {
    if (reader == nullptr) {
      return {};
    }
    return ReplyOf(zvCallback, [&](qm_ordering_reply* reply) { return reader(zvKey, reply, m_pPayload); });
  }

  qm_ordering_settings m_oSettings;
  void* m_pPayload;
  bool m_bOwned = false;
};

struct Reader : UserSettings {
  explicit Reader(std::shared_ptr<const Component> oComponent) : Host(std::move(oComponent)) {}
  std::string Get(const std::string& zvKey) override { return Host->UserSetting(zvKey.c_str()); }
  std::shared_ptr<const Component> Host;
};

struct Defaults : OrderDefaults {
  explicit Defaults(std::shared_ptr<const Component> oComponent) : Host(std::move(oComponent)) {}
  std::string Get(const std::string& zvKey) override { return Host->OrderDefault(zvKey.c_str()); }
  void Set(const std::string& zvKey, const std::string& zvValue) override {
    Host->SetOrderDefault(zvKey, zvValue);
  }
  void Save() override { Host->SaveOrderDefaults(); }
  std::shared_ptr<const Component> Host;
};

struct Field {
  const char* Name;
  std::string RegistrationDetails::*Value;
};
#define QM_FIELD(name)                \
  Field {                             \
#name, &RegistrationDetails::name \
  }
constexpr std::array kFields = {QM_FIELD(City),         QM_FIELD(CompanyName),   QM_FIELD(Address1),
                                QM_FIELD(Address2),     QM_FIELD(Fax),           QM_FIELD(Telephone),
                                QM_FIELD(TelephoneExt), QM_FIELD(Country),       QM_FIELD(Email),
                                QM_FIELD(FirstName),    QM_FIELD(LastName),      QM_FIELD(State),
                                QM_FIELD(StateOr),      QM_FIELD(ZipOrPostCode), QM_FIELD(AccountNumber)};

class HostSettings : public SettingsComponent {
 public:
  explicit HostSettings(std::shared_ptr<const Component> oComponent) : m_oHost(std::move(oComponent)) {}

  std::unique_ptr<UserSettings> CreateUserSettings() override { return std::make_unique<Reader>(m_oHost); }
  std::unique_ptr<OrderDefaults> CreateOrderDefaults() override {
    return std::make_unique<Defaults>(m_oHost);
  }
  RegistrationDetails ReadRegistration() override {
    RegistrationDetails details;
    for (const Field& field : kFields) {
      details.*field.Value = m_oHost->Registration(field.Name);
    }
    return details;
  }

 private:
  std::shared_ptr<const Component> m_oHost;
};

}  // namespace

void Install(const qm_ordering_settings& settings, void* payload) {
  if (settings.user_setting == nullptr) {
    throw Failure(failure::kObjectNotSet, "The settings component has no function user_setting.");
  }
  const auto oComponent = std::make_shared<Component>(settings, payload);
  InstallSettings(std::make_shared<HostSettings>(oComponent));
  oComponent->Own();
}

std::function<void(const std::string&)> TraceOf(qm_ordering_trace trace, void* payload) {
  if (trace == nullptr) {
    return {};
  }
  return [trace, payload](const std::string& zvSQL) {
    ReplyOf("trace",
            [&](qm_ordering_reply* reply) { return trace(zvSQL.data(), zvSQL.size(), reply, payload); });
  };
}

std::function<bool(const ImportProgress&)> ProgressOf(qm_ordering_import_progress progress, void* payload) {
  if (progress == nullptr) {
    return {};
  }
  return [progress, payload](const ImportProgress& done) {
    int32_t lGoOn = 1;
    ReplyOf("progress", [&](qm_ordering_reply* reply) {
      return progress(done.Orders, done.Lines, done.LinesInAll, &lGoOn, reply, payload);
    });
    return lGoOn != 0;
  };
}

StoreProgress ProgressOf(qm_ordering_store_progress progress, void* payload) {
  if (progress == nullptr) {
    return {};
  }
  return [progress, payload](std::int64_t lvDone, std::int64_t lvAll) {
    ReplyOf("progress", [&](qm_ordering_reply* reply) { return progress(lvDone, lvAll, reply, payload); });
  };
}

}  // namespace qm_ordering::c_interface
