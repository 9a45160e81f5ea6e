#include "qm_ordering/history/OrderHistory.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/platform/xml/Document.h"
#include "qm_ordering/store/Database.h"

namespace qm_ordering {

namespace {

xml::Element OrderElement(xml::Document& oDocument, const PreviousOrder& order,
                          const text::AmountFormat& amounts) {
  xml::Element element = oDocument.CreateElement("previousorder");
  try {
    element.AddAttribute("orderid", std::to_string(order.OrderID()));
    element.AddAttribute("purchaseordernumber", order.PurchaseOrderNumber());
    element.AddAttribute("submitdate", ShortDateOrEmpty(order.SubmitDate()));
    element.AddAttribute("ordertotal", amounts.Text(order.OrderTotal()));
  } catch (const Failure& failure) {
    throw Failure(failure.Number(),
                  "Order " + std::to_string(order.OrderID()) + ": " + failure.Description());
  }
  return element;
}

}  // namespace

OrderHistory::OrderHistory() = default;

OrderHistory::~OrderHistory() = default;

Database& OrderHistory::Store() {
  if (m_oStore == nullptr) {
    m_oStore = std::make_unique<Database>();
  }
  return *m_oStore;
}

void OrderHistory::LoadOrders(std::int32_t lvSortOrder) {
  OrOutOfMemory([&] {
    const auto rows = Store().OrderHistory_GetOrders(lvSortOrder);
    if (rows->AtEnd()) {
      return;
    }
    const ado::Field number = rows->Fields("zPurchaseOrderNumber");
    const ado::Field date = rows->Fields("datSubmitDate");
    const ado::Field total = rows->Fields("cTotalPrice");
    const ado::Field id = rows->Fields("lOrderID");
    for (; !rows->AtEnd(); rows->MoveNext()) {
      const auto oOrder = std::make_shared<PreviousOrder>();
      // A row without them hides no other one.
      oOrder->PurchaseOrderNumber(NullTo(number.Value(), "").ToString());
      oOrder->SubmitDate(NullTo(date.Value(), Date()).ToDate());
      oOrder->OrderTotal(NullTo(total.Value(), Currency()).ToCurrency());
      oOrder->OrderID(id.Value().ToInteger());
      m_oOrders.Add(oOrder->OrderID(), oOrder, "OrderHistory.LoadOrders");
    }
  });
}

void OrderHistory::DeleteOrder(std::int32_t lvOrderID) {
  OrOutOfMemory([&] { Store().OrderHistory_DeleteOrder(lvOrderID); });
}

Variant OrderHistory::ItemExists(const std::string& zvPONumber) {
  return OrOutOfMemory([&] { return Store().OrderHistory_ItemExists(zvPONumber); });
}

std::shared_ptr<PreviousOrder> OrderHistory::Item(std::int32_t lvOrderID) const {
  return OrOutOfMemory([&] { return m_oOrders.Item(lvOrderID, "OrderHistory.Item"); });
}

std::string OrderHistory::GetXML() const {
  return OrOutOfMemory([&] {
    const text::AmountFormat amounts;
    xml::Document document;
    xml::Element root = document.CreateElement("orderhistory");
    xml::Element orders = document.CreateElement("previousorders");
    root.AppendChild(orders);
    for (const auto& oOrder : *this) {
      orders.AppendChild(OrderElement(document, *oOrder, amounts));
    }
    document.AppendChild(root);
    return document.XML();
  });
}

}  // namespace qm_ordering
