#include "qm_ordering/order/DeliveryInformation.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& DeliveryInformation::ClassMembers() {
  using Class = DeliveryInformation;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(DeliveryMethod))
        .ReadWrite(QM_PROPERTY(FirstName))
        .ReadWrite(QM_PROPERTY(LastName))
        .ReadWrite(QM_PROPERTY(CompanyName))
        .ReadWrite(QM_PROPERTY(Address1))
        .ReadWrite(QM_PROPERTY(Address2))
        .ReadWrite(QM_PROPERTY(City))
        .ReadWrite(QM_PROPERTY(State))
        .ReadWrite(QM_PROPERTY(StateOr))
        .ReadWrite(QM_PROPERTY(ZipOrPostCode))
        .ReadWrite(QM_PROPERTY(Country))
        .ReadWrite(QM_PROPERTY(PhoneNumber))
        .ReadWrite(QM_PROPERTY(PhoneExt))
        .ReadWrite(QM_PROPERTY(Fax))
        .ReadWrite(QM_PROPERTY(Notes))
        .ReadWrite(QM_PROPERTY(ShippingMethod))
        .ReadWrite(QM_PROPERTY(CallBranchNumber))
        .ReadWrite(QM_PROPERTY(CallAttention))
        .ReadWrite(QM_PROPERTY(CallPhoneNumber))
        .ReadWrite(QM_PROPERTY(CallPhoneExt))
        .ReadOnly(QM_MEMBER(ShippingMethodName))
        .Method(QM_MEMBER(Validate))
        .Method(QM_MEMBER(GetXML));
  });
}

}  // namespace qm_ordering
