#include "qm_ordering/order/OrderItem.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/foundation/members/Record.h"

namespace qm_ordering {

const ClassInfo& OrderItem::ClassMembers() {
  using Class = OrderItem;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(OrderID))
        .ReadWrite(QM_PROPERTY(ItemNumber))
        .ReadWrite(QM_PROPERTY(Quantity))
        .ReadWrite(QM_PROPERTY(Description))
        .ReadWrite(QM_PROPERTY(ShortDescription))
        .ReadWrite(QM_PROPERTY(Manufacturer))
        .ReadWrite(QM_PROPERTY(Model))
        .ReadWrite(QM_PROPERTY(ShipQuantity))
        .ReadWrite(QM_PROPERTY(SellQuantity))
        .ReadWrite(QM_PROPERTY(UsuallyShips))
        .ReadWrite(QM_PROPERTY(IsTaxable))
        .ReadWrite(QM_PROPERTY(Price))
        .ReadWrite(QM_PROPERTY(ExtendedPrice))
        .ReadWrite(QM_PROPERTY(IsPriceModified))
        .ReadWrite(QM_PROPERTY(CustomerPartNumber))
        .ReadWrite(QM_PROPERTY(CustomerNotes))
        .ReadWrite(QM_PROPERTY(HasContractItem))
        .ReadWrite(QM_PROPERTY(HasNotes))
        .ReadWrite(QM_PROPERTY(HasPartsInfo))
        .ReadOnly(QM_MEMBER(Error))
        .ReadOnly(QM_MEMBER(ValidQuantity))
        .ReadOnly(QM_MEMBER(Imported))
        .Method(QM_MEMBER(Validate), "lvDeliveryMethod")
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
