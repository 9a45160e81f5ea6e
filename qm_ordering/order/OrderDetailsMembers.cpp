#include "qm_ordering/order/OrderDetails.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Record.h"

namespace qm_ordering {

const ClassInfo& OrderDetails::ClassMembers() {
  using Class = OrderDetails;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(OrderID))
        .ReadWrite(QM_PROPERTY(TotalPrice))
        .ReadWrite(QM_PROPERTY(SubmitDate))
        .ReadOnly(QM_MEMBER(IsCurrentOrder))
        .ReadWrite(QM_PROPERTY(PurchaseOrderNumber))
        .ReadOnly(QM_MEMBER(OrderInformation))
        .ReadOnly(QM_MEMBER(PaymentInformation))
        .ReadOnly(QM_MEMBER(DeliveryInformation))
        .ReadOnly(QM_MEMBER(OrderItems))
        .ReadOnly(QM_MEMBER(Error))
        .ReadOnly(QM_MEMBER(HasInvalidQuantities))
        .Method(QM_MEMBER(LoadSummary), ParameterName("bvIsLoadCurrent", false))
        .Method(QM_MEMBER(LoadItems), ParameterName("lvSortType", 0), ParameterName("bvIsLoadCurrent", false),
                ParameterName("bvValidate", false))
        .Method(QM_MEMBER(SaveSummary), ParameterName("bvIsSaveCurrent", false))
        .Method(QM_MEMBER(SavePONumber))
        .Method(QM_MEMBER(AddItem), "ovOrderItem")
        .Method(QM_MEMBER(UpdateItems), "ovOrderIems")
        .Method(QM_MEMBER(RemoveItem), "zvItemNumber")
        .Method(QM_MEMBER(ClearItems))
        .Method(QM_MEMBER(SaveToHistory))
        .Method(QM_MEMBER(ItemCount))
        .Method(QM_MEMBER(ItemExists), "zvItemNumber")
        .Method(QM_MEMBER(ApplyRegistrationSettings))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
