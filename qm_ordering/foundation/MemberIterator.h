#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace qm_ordering {

// Walks a collection by position, so that members added during a walk are met at its end. Valid while its
// collection lives.
template <typename T>
class MemberIterator {
 public:
  // What the standard library asks of an iterator.
  using iterator_category = std::input_iterator_tag;
  using value_type = std::shared_ptr<T>;
  using difference_type = std::ptrdiff_t;
  using pointer = const value_type*;
  using reference = value_type;

  // Belongs to no collection and may only be assigned to.
  MemberIterator() = default;
  // At the first of these members.
  explicit MemberIterator(const std::vector<std::shared_ptr<T>>& oMembers) : m_oMembers(&oMembers) {}
  // The member at this position.
  reference operator*() const { return (*m_oMembers)[m_lIndex]; }
  // Goes on to the next member.
  MemberIterator& operator++() {
    ++m_lIndex;
    return *this;
  }
  // Goes on to the next member, and answers where it was.
  MemberIterator operator++(int) {
    MemberIterator before = *this;
    ++m_lIndex;
    return before;
  }
  // Whether there are no more members, at this moment.
  bool operator==(std::default_sentinel_t) const { return m_lIndex >= m_oMembers->size(); }

 private:
  const std::vector<std::shared_ptr<T>>* m_oMembers = nullptr;
  std::size_t m_lIndex = 0;
};

// What NewEnum answers: an enumeration for a range-for, valid while its collection lives.
template <typename T>
class MemberEnumerator {
 public:
  // Begins there.
  explicit MemberEnumerator(MemberIterator<T> oFirst) : m_oFirst(oFirst) {}
  // At the first member.
  MemberIterator<T> begin() const { return m_oFirst; }
  // Behind the last member.
  std::default_sentinel_t end() const { return {}; }

 private:
  MemberIterator<T> m_oFirst;
};

}  // namespace qm_ordering
