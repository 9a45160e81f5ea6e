#include "qm_ordering/order/CurrentOrder.h"

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/store/Database.h"

namespace qm_ordering {

CurrentOrder::CurrentOrder()
    : m_oOrder(OrOutOfMemory([] { return std::make_shared<qm_ordering::OrderDetails>(); })) {
  LoadSummary();
  ClearError(m_oError);
}

void CurrentOrder::LoadSummary() {
  m_bSummaryLoaded = false;
  m_oOrder->LoadSummary(true);
  CopyError();
  m_bSummaryLoaded = m_oError.Number == 0;
}

void CurrentOrder::LoadItems(std::int32_t lvSortOrder) {
  m_oOrder->LoadItems(lvSortOrder, true, true);
  m_bItemsLoaded = true;
}

void CurrentOrder::AddItem(const std::shared_ptr<OrderItem>& ovOrderItem) {
  m_oOrder->AddItem(ovOrderItem);
  CopyError();
}

void CurrentOrder::UpdateItems(const std::shared_ptr<OrderItems>& ovOrderItems) {
  m_oOrder->UpdateItems(ovOrderItems);
}

void CurrentOrder::RemoveItem(const std::string& zvItemNumber) {
  m_oOrder->RemoveItem(zvItemNumber);
}

void CurrentOrder::ClearItems() {
  m_oOrder->ClearItems();
}

std::int32_t CurrentOrder::ItemCount() {
  return m_oOrder->ItemCount();
}

bool CurrentOrder::ItemExists(const std::string& zvItemNumber) const {
  return m_oOrder->ItemExists(zvItemNumber);
}

void CurrentOrder::SaveSummary() {
  m_oOrder->SaveSummary(false);
  CopyError();
}

void CurrentOrder::SavePONumber() {
  m_oOrder->SavePONumber();
  CopyError();
}

void CurrentOrder::SaveToHistory() {
  m_oOrder->SaveToHistory();
  CopyError();
}

void CurrentOrder::ApplyRegistrationSettings() {
  m_oOrder->ApplyRegistrationSettings();
  LoadSummary();
}

std::string CurrentOrder::GetXML() const {
  return m_oOrder->GetXML();
}

void CurrentOrder::CopyError() {
  OrOutOfMemory([&] { m_oError = m_oOrder->Error(); });
}

void CurrentOrder::UpdateCustPartInfo(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                      const std::string& zvCustomerPartNumber,
                                      const std::string& zvCustomerNotes) {
  Database().UpdateCustPartInfo({zvItemNumber}, {zvCustomerPartNumber}, {zvCustomerNotes}, lvOrderID);
}

void CurrentOrder::DeleteCustPartInfo(const std::string& zvCustomerPartNumber, std::int32_t lvOrderID) {
  Database().deleteCustPartInfo({zvCustomerPartNumber}, lvOrderID);
}

}  // namespace qm_ordering
