#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "qm_ordering/foundation/MemberIterator.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

// The members of a collection whose keys are the ids of the store, in the order in which they were added.
template <typename T>
class MembersById {
 public:
  // Appends the member. Raises 457, naming zvCollection, when the id is there already; nothing is changed
  // then.
  void Add(std::int32_t lvID, const std::shared_ptr<T>& ovMember, const char* zvCollection) {
    const auto [position, bNew] = m_oPositions.try_emplace(lvID, m_oMembers.size());
    if (!bNew) {
      throw Failure(failure::kDuplicateKey, std::string(zvCollection) +
                                                ": the collection already has a member with the key \"" +
                                                std::to_string(lvID) + "\"");
    }
    try {
      m_oMembers.push_back(ovMember);
    } catch (...) {
      m_oPositions.erase(position);
      throw;
    }
  }

  // The member with that id. Raises 5, naming zvCollection, when there is none.
  std::shared_ptr<T> Item(std::int32_t lvID, const char* zvCollection) const {
    const auto found = m_oPositions.find(lvID);
    if (found == m_oPositions.end()) {
      throw Failure(failure::kInvalidCall, std::string(zvCollection) +
                                               ": the collection has no member with the key \"" +
                                               std::to_string(lvID) + "\"");
    }
    return m_oMembers[found->second];
  }

  // The number of members.
  std::int32_t Count() const { return static_cast<std::int32_t>(m_oMembers.size()); }

  // At the first member.
  MemberIterator<T> begin() const { return MemberIterator<T>(m_oMembers); }

 private:
  std::vector<std::shared_ptr<T>> m_oMembers;
  std::unordered_map<std::int32_t, std::size_t> m_oPositions;
};

}  // namespace qm_ordering
