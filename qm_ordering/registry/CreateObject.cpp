#include "qm_ordering/registry/CreateObject.h"

#include <array>
#include <string_view>

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
#include "qm_ordering/platform/text/Unicode.h"
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
};

constexpr std::array<PublicClass, 13> kClasses = {{
    {"CreditCardDetails", Make<CreditCardDetails>},
    {"CurrentOrder", Make<CurrentOrder>},
    {"DeliveryInformation", Make<DeliveryInformation>},
    {"OrderDetails", Make<OrderDetails>},
    {"OrderHistory", Make<OrderHistory>},
    {"OrderHistoryImporter", Make<OrderHistoryImporter>},
    {"OrderInformation", Make<OrderInformation>},
    {"OrderItem", Make<OrderItem>},
    {"OrderItems", Make<OrderItems>},
    {"PaymentInformation", Make<PaymentInformation>},
    {"PersonalList", Make<PersonalList>},
    {"PersonalLists", Make<PersonalLists>},
    {"PreviousOrder", Make<PreviousOrder>},
}};

}  // namespace

std::shared_ptr<Object> CreateObject(const std::string& zvClassName) {
  constexpr std::string_view kPrefix = "QM_Ordering.";
  std::string_view zName = zvClassName;
  if (text::CompareFolded(zName.substr(0, kPrefix.size()), kPrefix) == 0) {
    zName.remove_prefix(kPrefix.size());
  }
  for (const PublicClass& publicClass : kClasses) {
    if (text::CompareFolded(zName, publicClass.Name) == 0) {
      return OrOutOfMemory(publicClass.Make);
    }
  }
  throw Failure(failure::kCannotCreateObject, "The library has no class \"" + zvClassName + "\".");
}

}  // namespace qm_ordering
