#pragma once

#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "qm_ordering/foundation/members/Late.h"
#include "qm_ordering/platform/value/Object.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// A walk over a collection for who uses it by name. It keeps the collection alive; members that are added
// during the walk are met at its end.
class Enumeration : public Object {
 public:
  static constexpr const char* kClassName = "Enumeration";
  const char* ClassName() const noexcept override { return kClassName; }
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The next member; a missing value when there are no more, at this moment.
  virtual Variant Next() = 0;
};

// Over what the range of a collection C walks over.
template <typename C, typename Range>
class EnumerationOf : public Enumeration {
 public:
  EnumerationOf(std::shared_ptr<C> ovCollection, Range (C::*newEnum)() const)
      : m_oCollection(std::move(ovCollection)), m_oNext(((*m_oCollection).*newEnum)().begin()) {}

  Variant Next() override {
    if (m_oNext == std::default_sentinel) {
      return Variant::Missing();
    }
    using Member = std::remove_cvref_t<decltype(*m_oNext)>;
    Variant vMember = Late<Member>::ToVariant(*m_oNext);
    ++m_oNext;
    return vMember;
  }

 private:
  std::shared_ptr<C> m_oCollection;
  decltype(std::declval<Range>().begin()) m_oNext;
};

}  // namespace qm_ordering
