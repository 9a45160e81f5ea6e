#include "qm_ordering/platform/ado/dbase/CodePage.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::dbase {

namespace {

constexpr std::string_view kNoCharacter = "\xEF\xBF\xBD";

class Conversion {
 public:
  explicit Conversion(const char* zvFrom) : m_oHandle(iconv_open("UTF-8", zvFrom)) {
    if (reinterpret_cast<std::intptr_t>(m_oHandle) == -1) {
      if (errno == ENOMEM) {
        throw OutOfMemory();
      }
      throw Failure(failure::kStoreUnavailable, std::string("This system cannot convert texts from ") +
                                                    zvFrom + " (" + file::SystemErrorText(errno) + ").");
    }
  }
  ~Conversion() { iconv_close(m_oHandle); }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  // The size of the character in zvTo; 0 when the byte has none.
  std::size_t Convert(char c, char* zvTo, std::size_t lvRoom) {
    char* pFrom = &c;
    std::size_t lFrom = 1;
    std::size_t lLeft = lvRoom;
    if (iconv(m_oHandle, &pFrom, &lFrom, &zvTo, &lLeft) == static_cast<std::size_t>(-1)) {
      // Back to the state before the byte.
      iconv(m_oHandle, nullptr, nullptr, nullptr, nullptr);
      return 0;
    }
    return lvRoom - lLeft;
  }

 private:
  iconv_t m_oHandle;
};

}  // namespace

const char* CodePageOf(std::uint8_t lvLanguage) noexcept {
  switch (lvLanguage) {
    case 0x01:  // United States
    case 0x09:  // Dutch
    case 0x0B:  // Finnish
    case 0x0D:  // French
    case 0x0F:  // German
    case 0x11:  // Italian
    case 0x15:  // Swedish
    case 0x18:  // Spanish
    case 0x19:  // British
    case 0x1B:  // United States
      return "CP437";
    case 0x02:  // international
    case 0x0A:  // Dutch
    case 0x0E:  // French
    case 0x10:  // German
    case 0x12:  // Italian
    case 0x14:  // Spanish
    case 0x16:  // Swedish
    case 0x1A:  // British
    case 0x1D:  // French
    case 0x25:  // Portuguese
    case 0x37:  // United States
      return "CP850";
    case 0x1F:  // Czech
    case 0x22:  // Hungarian
    case 0x23:  // Polish
    case 0x40:  // Romanian
    case 0x64:  // Eastern Europe
    case 0x87:  // Slovenian
      return "CP852";
    case 0xC8:  // Eastern Europe
      return "CP1250";
    case 0xC9:  // Cyrillic
      return "CP1251";
    case 0x00:
    case 0x03:  // Western Europe
    case 0x57:  // the system's own, which was this one where nothing else was known
    case 0x58:  // Western Europe
    case 0x59:  // Spanish
      return "CP1252";
    default:
      return nullptr;
  }
}

CodePage::CodePage(const char* zvName) {
  Conversion conversion(zvName);
  int lByte = 128;
  for (Character& character : m_oUpper) {
    character.Size = static_cast<std::uint8_t>(
        conversion.Convert(static_cast<char>(lByte), character.Bytes.data(), character.Bytes.size()));
    if (character.Size == 0) {
      std::ranges::copy(kNoCharacter, character.Bytes.begin());
      character.Size = kNoCharacter.size();
    }
    ++lByte;
  }
}

void CodePage::Append(std::string_view zvBytes, std::string& zvText) const {
  for (const char c : zvBytes) {
    const auto lByte = static_cast<unsigned char>(c);
    if (lByte < 128) {
      zvText += c;
    } else {
      const Character& character = m_oUpper[lByte - 128U];
      zvText.append(character.Bytes.data(), character.Size);
    }
  }
}

}  // namespace qm_ordering::ado::dbase
