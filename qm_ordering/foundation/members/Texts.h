#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/members/Late.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// A row of texts as a collection, for who uses it by name.
class Texts : public Object {
 public:
  static constexpr const char* kClassName = "Texts";
  explicit Texts(std::vector<std::string> zvTexts) : m_zTexts(std::move(zvTexts)) {}
  const char* ClassName() const noexcept override { return kClassName; }
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  // The text at that position, from 1. Raises 9 for any other.
  const std::string& Item(std::int32_t lvPosition) const;
  // The number of texts.
  std::int32_t Count() const { return static_cast<std::int32_t>(m_zTexts.size()); }

  class Iterator {
   public:
    explicit Iterator(const std::vector<std::string>& zvTexts) : m_zTexts(&zvTexts) {}
    std::string operator*() const { return (*m_zTexts)[m_lIndex]; }
    void operator++() { ++m_lIndex; }
    bool operator==(std::default_sentinel_t) const { return m_lIndex >= m_zTexts->size(); }

   private:
    const std::vector<std::string>* m_zTexts;
    std::size_t m_lIndex = 0;
  };
  struct Enumerator {
    const std::vector<std::string>& Texts;
    Iterator begin() const { return Iterator(Texts); }
  };
  // The texts in their order.
  Enumerator NewEnum() const { return {m_zTexts}; }

 private:
  std::vector<std::string> m_zTexts;
};

template <>
struct Late<std::vector<std::string>> {
  static const char* Type() { return Texts::kClassName; }
  static Variant ToVariant(std::vector<std::string> zvTexts) {
    return Variant(std::make_shared<Texts>(std::move(zvTexts)));
  }
};

}  // namespace qm_ordering
