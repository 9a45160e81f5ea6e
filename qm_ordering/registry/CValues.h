#pragma once

#include <string>
#include <string_view>

#include "qm_ordering/platform/value/Variant.h"
#include "qm_ordering/qm_ordering_c.h"

// What goes through the C interface.
namespace qm_ordering::c_interface {

// Raises kInvalidCall for the pointer that zvWhat names.
[[noreturn]] void RaiseNullPointer(const char* zvWhat);
// A name or path, zero-terminated, that must be there. Raises kInvalidCall for a null pointer.
std::string_view Required(const char* zvText, const char* zvWhat);
// What a pointer leads to, the place for the answer unless it is named; raises that failure.
template <typename T>
T& RequiredPlace(T* place, const char* zvWhat = "place for the answer") {
  if (place == nullptr) {
    RaiseNullPointer(zvWhat);
  }
  return *place;
}

// The text, of which the bytes are not looked at. Raises kInvalidCall for a null pointer with a length.
std::string_view TextOf(const char* data, size_t length);

// A copy of the value; its object is one of this thread's. Raises kInvalidCall for a kind that there is not,
// a date that is none, and what ThreadObjects::Find raises.
Variant FromC(const qm_ordering_value& value);

// The value as the host's own: its text is a copy, its object has a reference more.
qm_ordering_value ToC(Variant&& vvValue);
qm_ordering_value TextToC(std::string_view zvText);
// Ends such a value.
void Clear(qm_ordering_value& orValue);

}  // namespace qm_ordering::c_interface
