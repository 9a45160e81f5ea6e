#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Names that differ in the case of the letters A to Z alone are one name: the rule for keys, columns, classes
// and members.
namespace qm_ordering::text {

constexpr char LowerLetter(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Whether both are one name.
constexpr bool SameName(std::string_view zvLeft, std::string_view zvRight) noexcept {
  // Most names are written as they are.
  return zvLeft == zvRight || std::equal(zvLeft.begin(), zvLeft.end(), zvRight.begin(), zvRight.end(),
                                         [](char a, char b) { return LowerLetter(a) == LowerLetter(b); });
}

// For an unordered map by name that is asked with a string_view.
struct HashName {
  using is_transparent = void;
  // The beginning and the end tell most names apart, and are looked at eight letters at once.
  std::size_t operator()(std::string_view zvName) const noexcept {
    constexpr std::size_t kAtOnce = sizeof(std::uint64_t);
    // Set, this bit makes a capital letter a small one.
    constexpr std::uint64_t kSmall = 0x2020202020202020U;
    std::uint64_t lBeginning = 0;
    std::uint64_t lEnd = 0;
    if (zvName.size() >= kAtOnce) {
      std::memcpy(&lBeginning, zvName.data(), kAtOnce);
      std::memcpy(&lEnd, zvName.data() + zvName.size() - kAtOnce, kAtOnce);
    } else {
      for (const char c : zvName) {
        lBeginning = lBeginning << 8U | static_cast<unsigned char>(c);
      }
    }
    const std::uint64_t lHash = ((lBeginning | kSmall) * 0x9E3779B97F4A7C15U) ^
                                ((lEnd | kSmall) * 0xC2B2AE3D27D4EB4FU) ^ zvName.size();
    return static_cast<std::size_t>(lHash ^ lHash >> 32U);
  }
};
struct EqualName {
  using is_transparent = void;
  bool operator()(std::string_view zvLeft, std::string_view zvRight) const noexcept {
    return SameName(zvLeft, zvRight);
  }
};

}  // namespace qm_ordering::text
