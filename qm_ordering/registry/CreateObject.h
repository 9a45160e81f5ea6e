#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/ClassInfo.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// Makes an object of a public class by its name, "QM_Ordering.CurrentOrder" or "CurrentOrder", in any letter
// case; the thread's start-up runs first. std::dynamic_pointer_cast gives the class itself. Raises 429 for a
// name that is no public class, and what the start-up raises.
QM_ORDERING_API std::shared_ptr<Object> CreateObject(const std::string& zvClassName);

// The names of the classes that CreateObject makes, without the prefix, in alphabetical order.
QM_ORDERING_API std::vector<std::string> ClassNames();

// The names of the classes of objects that only members answer: "ErrorInfo", "ImportPreview" and the like.
QM_ORDERING_API std::vector<std::string> AnsweredClassNames();

// What a class of either kind offers by name. Runs no start-up. Raises 429 for any other name.
QM_ORDERING_API const ClassInfo& DescribeClass(const std::string& zvClassName);

}  // namespace qm_ordering
