#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/ClassInfo.h"
#include "qm_ordering/platform/value/Object.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// The use of objects by the names of their members, for hosts that know them at run time only; ClassInfo says
// what there is. Names are found in any case of the letters A to Z; an empty name is the default member, Item
// of the collections. Arguments are in their order; one that may be left out is so at the end, or as a
// missing value. Each argument is converted to what the member takes, as Variant converts.
//
// These raise 91 for a null object, -2147417842 for an object (an argument's, too) of another thread or of
// the process that this one was forked from, 438 for a member that there is not, 450 for too many arguments,
// 449 for one that is needed, a conversion's failure (13, 6 or 94) that names member and argument, 7 when
// memory ends, and what the member raises.

// What a property holds. Of a method that answers something: what it answers.
QM_ORDERING_API Variant GetProperty(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                                    std::span<const Variant> vvArguments = {});

// Gives a property that value, a reference when its class says so. Raises 383, too, when it can only be read.
QM_ORDERING_API void PutProperty(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                                 const Variant& vvValue);

// What a method answers; empty when it answers nothing. Of a property: what it holds.
QM_ORDERING_API Variant CallMethod(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                                   std::span<const Variant> vvArguments = {});

// A walk over a collection: an object whose method Next answers the next member, and a missing value when
// there are no more. It keeps the collection alive; members that are added meanwhile are met at its end.
QM_ORDERING_API std::shared_ptr<Object> Enumerate(const std::shared_ptr<Object>& ovObject);

}  // namespace qm_ordering
