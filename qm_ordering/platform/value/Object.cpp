#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

Object::~Object() = default;

}  // namespace qm_ordering
