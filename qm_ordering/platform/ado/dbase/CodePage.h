#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qm_ordering::ado::dbase {

// The name, as iconv(3) has it, of the code page that the language byte of a table's header stands for; null
// for a byte that stands for none that is read. No language (0) is taken as Windows-1252.
const char* CodePageOf(std::uint8_t lvLanguage) noexcept;

// The characters of a code page in UTF-8. Below 128 they are those of ASCII; a byte that has no character
// becomes U+FFFD.
class CodePage {
 public:
  // By its name in iconv(3). Raises kStoreUnavailable where the system does not have it.
  explicit CodePage(const char* zvName);

  void Append(std::string_view zvBytes, std::string& zvText) const;

 private:
  struct Character {
    std::array<char, 4> Bytes{};
    std::uint8_t Size = 0;
  };
  std::array<Character, 128> m_oUpper;
};

}  // namespace qm_ordering::ado::dbase
