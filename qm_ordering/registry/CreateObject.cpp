#include "qm_ordering/registry/CreateObject.h"

#include <array>
#include <string_view>

#include "qm_ordering/foundation/members/Enumeration.h"
#include "qm_ordering/foundation/members/Record.h"
#include "qm_ordering/foundation/members/Texts.h"
#include "qm_ordering/history/ImportPreviewRecord.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/history/PreviousOrder.h"
#include "qm_ordering/lists/PersonalList.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/order/CreditCardDetails.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/DeliveryInformation.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderInformation.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/order/PaymentInformation.h"
#include "qm_ordering/platform/text/Names.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

template <typename T>
std::shared_ptr<Object> Make() {
  return std::make_shared<T>();
}

struct PublicClass {
  const char* Name;
  std::shared_ptr<Object> (*Make)();
  const ClassInfo& (*Members)();
};

template <typename T>
constexpr PublicClass Class() {
  return {T::kClassName, Make<T>, T::ClassMembers};
}

constexpr std::array kClasses = {
    Class<CreditCardDetails>(),  Class<CurrentOrder>(), Class<DeliveryInformation>(),
    Class<OrderDetails>(),       Class<OrderHistory>(), Class<OrderHistoryImporter>(),
    Class<OrderInformation>(),   Class<OrderItem>(),    Class<OrderItems>(),
    Class<PaymentInformation>(), Class<PersonalList>(), Class<PersonalLists>(),
    Class<PreviousOrder>(),
};

// Those of objects that only the library makes.
constexpr std::array kAnsweredClasses = {Enumeration::ClassMembers, Record<ErrorInfo>::ClassMembers,
                                         Record<ImportPreview>::ClassMembers, Texts::ClassMembers};

std::string_view WithoutPrefix(std::string_view zvClassName) {
  constexpr std::string_view kPrefix = "QM_Ordering.";
  if (text::SameName(zvClassName.substr(0, kPrefix.size()), kPrefix)) {
    zvClassName.remove_prefix(kPrefix.size());
  }
  return zvClassName;
}

[[noreturn]] void RaiseUnknown(const std::string& zvClassName) {
  throw Failure(failure::kCannotCreateObject, "The library has no class \"" + zvClassName + "\".");
}

}  // namespace

std::shared_ptr<Object> CreateObject(const std::string& zvClassName) {
  return OrOutOfMemory([&] {
    const std::string_view zName = WithoutPrefix(zvClassName);
    for (const PublicClass& publicClass : kClasses) {
      if (text::SameName(zName, publicClass.Name)) {
        return publicClass.Make();
      }
    }
    RaiseUnknown(zvClassName);
  });
}

std::vector<std::string> ClassNames() {
  return OrOutOfMemory([] {
    std::vector<std::string> zNames;
    zNames.reserve(kClasses.size());
    for (const PublicClass& publicClass : kClasses) {
      zNames.emplace_back(publicClass.Name);
    }
    return zNames;
  });
}

std::vector<std::string> AnsweredClassNames() {
  return OrOutOfMemory([] {
    std::vector<std::string> zNames;
    zNames.reserve(kAnsweredClasses.size());
    for (const auto members : kAnsweredClasses) {
      zNames.emplace_back(members().Name);
    }
    return zNames;
  });
}

const ClassInfo& DescribeClass(const std::string& zvClassName) {
  return OrOutOfMemory([&]() -> const ClassInfo& {
    const std::string_view zName = WithoutPrefix(zvClassName);
    for (const PublicClass& publicClass : kClasses) {
      if (text::SameName(zName, publicClass.Name)) {
        return publicClass.Members();
      }
    }
    for (const auto members : kAnsweredClasses) {
      if (text::SameName(zName, members().Name)) {
        return members();
      }
    }
    RaiseUnknown(zvClassName);
  });
}

}  // namespace qm_ordering
