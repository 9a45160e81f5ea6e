#include "qm_ordering/history/PreviousOrder.h"

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

constexpr const char* kOrder = "the order details";

}  // namespace

std::shared_ptr<OrderDetails> PreviousOrder::OrderDetails() const {
  if (!m_oOrderDetails) {
    OrOutOfMemory([&] {
      const auto oOrderDetails = std::make_shared<qm_ordering::OrderDetails>();
      oOrderDetails->OrderID(m_lOrderID);
      m_oOrderDetails = oOrderDetails;
    });
  }
  return *m_oOrderDetails;
}

void PreviousOrder::OrderID(std::int32_t lvOrderID) {
  if (m_oOrderDetails) {
    RequireObject(*m_oOrderDetails, kOrder)->OrderID(lvOrderID);
  }
  m_lOrderID = lvOrderID;
}

void PreviousOrder::LoadSummary(const Variant& vvOrderID) {
  OrOutOfMemory([&] {
    if (vvOrderID.IsMissing() && m_lOrderID == -1) {
      SetError(m_oError, OrderingError::errOrderIDNotSet, "");
      return;
    }
    if (!vvOrderID.IsMissing()) {
      m_lOrderID = vvOrderID.ToInteger();
    }
    const auto oOrder = RequireObject(OrderDetails(), kOrder);
    qm_ordering::OrderDetails& order = *oOrder;
    order.OrderID(m_lOrderID);
    order.LoadSummary(false);
    m_zPurchaseOrderNumber = order.PurchaseOrderNumber();
    m_datSubmitDate = order.SubmitDate();
    m_cOrderTotal = order.TotalPrice();
  });
}

std::string PreviousOrder::GetXML() const {
  return RequireObject(OrderDetails(), kOrder)->GetXML();
}

}  // namespace qm_ordering
