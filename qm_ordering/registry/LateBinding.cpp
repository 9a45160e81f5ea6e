#include "qm_ordering/registry/LateBinding.h"

#include "qm_ordering/foundation/members/MemberTable.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

const MemberTable& TableOf(const std::shared_ptr<Object>& ovObject) {
  if (!ovObject) {
    throw Failure(failure::kObjectNotSet, "There is no object whose member could be used.");
  }
  ovObject->RequireThisThread();
  return MemberTable::Of(*ovObject);
}

}  // namespace

Variant GetProperty(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                    std::span<const Variant> vvArguments) {
  return OrOutOfMemory([&] { return TableOf(ovObject).Get(ovObject, zvMember, vvArguments); });
}

void PutProperty(const std::shared_ptr<Object>& ovObject, std::string_view zvMember, const Variant& vvValue) {
  OrOutOfMemory([&] { TableOf(ovObject).Put(ovObject, zvMember, vvValue); });
}

Variant CallMethod(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                   std::span<const Variant> vvArguments) {
  return OrOutOfMemory([&] { return TableOf(ovObject).Invoke(ovObject, zvMember, vvArguments); });
}

std::shared_ptr<Object> Enumerate(const std::shared_ptr<Object>& ovObject) {
  return OrOutOfMemory([&] { return TableOf(ovObject).Enumerate(ovObject); });
}

}  // namespace qm_ordering
