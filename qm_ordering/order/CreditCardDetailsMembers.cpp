#include "qm_ordering/order/CreditCardDetails.h"

#include "qm_ordering/foundation/members/MemberTable.h"

namespace qm_ordering {

const ClassInfo& CreditCardDetails::ClassMembers() {
  using Class = CreditCardDetails;
  return MembersOnce<Class>(kClassName, [](auto& members) {
    members.ReadWrite(QM_PROPERTY(CardType))
        .ReadWrite(QM_PROPERTY(AccountNumber))
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
        .ReadWrite(QM_PROPERTY(CardNumber))
        .ReadWrite(QM_PROPERTY(ExpiryMonth))
        .ReadWrite(QM_PROPERTY(ExpiryYear))
        .ReadWrite(QM_PROPERTY(CardHoldersRef))
        .ReadWrite(QM_PROPERTY(Comment1))
        .ReadWrite(QM_PROPERTY(Comment2))
        .ReadWrite(QM_PROPERTY(Comment3))
        .ReadWrite(QM_PROPERTY(Comment4))
        .Method(QM_MEMBER(Validate));
  });
}

}  // namespace qm_ordering
