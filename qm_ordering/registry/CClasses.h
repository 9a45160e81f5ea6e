#pragma once

#include <span>
#include <string>

#include "qm_ordering/qm_ordering_c.h"

// What the classes offer, in the form of the C interface. Made at the first call of the process, and there as
// long as the library.
namespace qm_ordering::c_interface {

std::span<const qm_ordering_class* const> Classes();

// Raises kCannotCreateObject for a class that there is not.
const qm_ordering_class& Describe(const std::string& zvClassName);

}  // namespace qm_ordering::c_interface
