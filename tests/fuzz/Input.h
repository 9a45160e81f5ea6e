#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

// An input of two texts: its first line, without the line feed, and all that follows it.
struct TwoTexts {
  TwoTexts(const std::uint8_t* pData, std::size_t lSize) {
    const std::string_view zInput(reinterpret_cast<const char*>(pData), lSize);
    const std::size_t lLineFeed = zInput.find('\n');
    First = zInput.substr(0, lLineFeed);
    Second = lLineFeed == std::string_view::npos ? "" : zInput.substr(lLineFeed + 1);
  }

  std::string First;
  std::string Second;
};

}  // namespace fuzz
