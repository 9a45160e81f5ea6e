#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Names that differ in the case of the letters A to Z alone are one name: the rule for keys, columns, classes
// and members.
namespace qm_ordering::text {

constexpr char LowerLetter(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Whether both are one name.
constexpr bool SameName(std::string_view zvLeft, std::string_view zvRight) noexcept {
  return std::equal(zvLeft.begin(), zvLeft.end(), zvRight.begin(), zvRight.end(),
                    [](char a, char b) { return LowerLetter(a) == LowerLetter(b); });
}

// For an unordered map by name that is asked with a string_view.
struct HashName {
  using is_transparent = void;
  std::size_t operator()(std::string_view zvName) const noexcept {
    std::uint64_t lHash = 1469598103934665603U;
    for (const char c : zvName) {
      lHash = (lHash ^ static_cast<unsigned char>(LowerLetter(c))) * 1099511628211U;
    }
    return static_cast<std::size_t>(lHash);
  }
};
struct EqualName {
  using is_transparent = void;
  bool operator()(std::string_view zvLeft, std::string_view zvRight) const noexcept {
    return SameName(zvLeft, zvRight);
  }
};

}  // namespace qm_ordering::text
