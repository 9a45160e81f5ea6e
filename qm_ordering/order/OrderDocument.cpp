#include "qm_ordering/order/OrderDocument.h"

#include "qm_ordering/foundation/Formatting.h"
#include "qm_ordering/foundation/Strings.h"
#include "qm_ordering/order/ItemElement.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/RequireObject.h"
#include "qm_ordering/platform/clock/Clock.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/platform/xml/Document.h"

namespace qm_ordering {

std::string OrderDocument(const OrderDetails& order) {
  const auto oPayment = RequireObject(order.PaymentInformation(), "the payment information");
  const auto oInformation = RequireObject(order.OrderInformation(), "the order's information");
  const auto oDelivery = RequireObject(order.DeliveryInformation(), "the delivery information");
  const std::string zToday = ShortDate(clock::Current().Now());

  const text::AmountFormat amounts;
  xml::Document document;
  xml::Element root = document.CreateElement("order");
  root.SetAttribute("orderid", std::to_string(order.OrderID()));
  root.SetAttribute("purchaseordernumber", order.PurchaseOrderNumber());
  root.SetAttribute("totalprice", amounts.Text(order.TotalPrice()));
  root.SetAttribute("submitdate", order.IsCurrentOrder() ? zToday : ShortDateOrEmpty(order.SubmitDate()));
  root.SetAttribute("currentdate", zToday);
  root.SetAttribute("paymentmethod", std::to_string(oPayment->Method()));
  root.SetAttribute("deliverymethod", std::to_string(oDelivery->DeliveryMethod()));
  root.SetAttribute("timestamp", XMLTimestamp());
  document.AppendChild(root);

  GraftElement(root, oPayment->GetXML(), "paymentinformation");
  GraftElement(root, oInformation->GetXML(), "orderinformation");
  GraftElement(root, oDelivery->GetXML(), "deliveryinformation");

  xml::Element items = document.CreateElement("orderitems");
  AppendItemElements(document, items, *order.OrderItems(), amounts);
  root.AppendChild(items);
  return document.XML();
}

}  // namespace qm_ordering
