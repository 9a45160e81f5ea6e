#include "qm_ordering/platform/text/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace qm_ordering::text {

namespace {

constexpr unsigned char kFirstNonASCII = 0x80;

unsigned char ByteAt(std::string_view zvText, std::size_t lvPosition) {
  return static_cast<unsigned char>(zvText[lvPosition]);
}

bool IsContinuation(std::string_view zvText, std::size_t lvPosition) {
  return lvPosition < zvText.size() && (ByteAt(zvText, lvPosition) & 0xC0) == 0x80;
}

// The length of the code point that begins at the position; 0 when a broken byte stands there.
std::size_t Decode(std::string_view zvText, std::size_t lvPosition, utf8proc_int32_t& lrCodePoint) noexcept {
  const auto* pStart = reinterpret_cast<const utf8proc_uint8_t*>(zvText.data()) + lvPosition;
  const auto lLength =
      utf8proc_iterate(pStart, static_cast<utf8proc_ssize_t>(zvText.size() - lvPosition), &lrCodePoint);
  return lLength > 0 ? static_cast<std::size_t>(lLength) : 0;
}

utf8proc_int32_t LookUpFolding(utf8proc_int32_t lvCodePoint) noexcept {
  // The only letter whose lower-case form is not its simple folding: it has none.
  constexpr utf8proc_int32_t kCapitalIWithDot = 0x130;
  std::array<utf8proc_int32_t, 4> lFolded{};
  int lUnused = 0;
  const auto lCount =
      utf8proc_decompose_char(lvCodePoint, lFolded.data(), static_cast<utf8proc_ssize_t>(lFolded.size()),
                              UTF8PROC_CASEFOLD, &lUnused);
  if (lCount == 1) {
    return lFolded[0];
  }
  return lvCodePoint == kCapitalIWithDot ? lvCodePoint : utf8proc_tolower(lvCodePoint);
}

utf8proc_int32_t FoldCodePoint(utf8proc_int32_t lvCodePoint) noexcept {
  // Latin, Greek and Cyrillic, kept at hand because every comparison of the store comes here.
  static const auto kNear = [] {
    std::array<utf8proc_int32_t, 0x530> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
      table[i] = LookUpFolding(static_cast<utf8proc_int32_t>(i));
    }
    return table;
  }();
  const auto lIndex = static_cast<std::size_t>(lvCodePoint);
  return lIndex < kNear.size() ? kNear[lIndex] : LookUpFolding(lvCodePoint);
}

unsigned char FoldASCII(unsigned char vByte) noexcept {
  return vByte >= 'A' && vByte <= 'Z' ? static_cast<unsigned char>(vByte + ('a' - 'A')) : vByte;
}

// Gives the folded text byte by byte. A broken byte is a unit of its own and folds to itself. Since a folded
// code point never begins with a continuation byte, nothing that is broken becomes whole by folding.
class FoldedBytes {
 public:
  explicit FoldedBytes(std::string_view zvText) noexcept : m_zText(zvText) {}

  static constexpr int kEnd = -1;

  int Next() noexcept {
    if (m_lNext < m_lCount) {
      return m_bytes[m_lNext++];
    }
    if (m_lPosition == m_zText.size()) {
      return kEnd;
    }
    const unsigned char byte = ByteAt(m_zText, m_lPosition);
    if (byte < kFirstNonASCII) {
      ++m_lPosition;
      return FoldASCII(byte);
    }
    utf8proc_int32_t lCodePoint = 0;
    const std::size_t lLength = Decode(m_zText, m_lPosition, lCodePoint);
    if (lLength == 0) {
      ++m_lPosition;
      return byte;
    }
    m_lPosition += lLength;
    m_lCount = static_cast<std::size_t>(utf8proc_encode_char(FoldCodePoint(lCodePoint), m_bytes.data()));
    m_lNext = 1;
    return m_bytes[0];
  }

 private:
  std::string_view m_zText;
  std::size_t m_lPosition = 0;
  std::array<utf8proc_uint8_t, 4> m_bytes{};
  std::size_t m_lCount = 0;
  std::size_t m_lNext = 0;
};

// A number of leading bytes, a multiple of eight, that are ASCII without control characters: most texts are
// that throughout, and eight bytes are looked at in one.
std::size_t PlainStart(std::string_view zvText) {
  constexpr std::uint64_t kEach = 0x0101010101010101;
  constexpr std::uint64_t kTopBits = 0x80 * kEach;
  std::size_t i = 0;
  for (std::uint64_t lBytes = 0; zvText.size() - i >= sizeof lBytes; i += sizeof lBytes) {
    std::memcpy(&lBytes, zvText.data() + i, sizeof lBytes);
    // A byte below the blank borrows its top bit when a blank is taken off; so may one above it, and the text
    // is then looked at byte by byte.
    if (((lBytes | (lBytes - ' ' * kEach)) & kTopBits) != 0) {
      break;
    }
  }
  return i;
}

}  // namespace

std::optional<std::size_t> FindBrokenUTF8(std::string_view zvText) {
  for (std::size_t i = 0; i < zvText.size();) {
    if (ByteAt(zvText, i) < kFirstNonASCII) {
      ++i;
      continue;
    }
    utf8proc_int32_t lCodePoint = 0;
    const std::size_t lLength = Decode(zvText, i, lCodePoint);
    if (lLength == 0) {
      return i;
    }
    i += lLength;
  }
  return std::nullopt;
}

std::optional<std::size_t> FindNonXML(std::string_view zvText) {
  std::size_t i = PlainStart(zvText);
  while (i < zvText.size()) {
    const unsigned char byte = ByteAt(zvText, i);
    if (byte < kFirstNonASCII) {
      if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
        return i;
      }
      ++i;
      continue;
    }
    utf8proc_int32_t lCodePoint = 0;
    const std::size_t lLength = Decode(zvText, i, lCodePoint);
    if (lLength == 0 || lCodePoint == 0xFFFE || lCodePoint == 0xFFFF) {
      return i;
    }
    i += lLength;
  }
  return std::nullopt;
}

std::string Fold(std::string_view zvText) {
  std::string zFolded;
  zFolded.reserve(zvText.size());
  std::size_t lASCII = 0;
  for (; lASCII < zvText.size() && ByteAt(zvText, lASCII) < kFirstNonASCII; ++lASCII) {
    zFolded.push_back(static_cast<char>(FoldASCII(ByteAt(zvText, lASCII))));
  }
  FoldedBytes bytes(zvText.substr(lASCII));
  for (int lByte = bytes.Next(); lByte != FoldedBytes::kEnd; lByte = bytes.Next()) {
    zFolded.push_back(static_cast<char>(lByte));
  }
  return zFolded;
}

int CompareFolded(std::string_view zvLeft, std::string_view zvRight) noexcept {
  // What is equal as it stands is equal folded. The walk begins anew at the character in which the texts
  // part; a byte that continues no other begins a character in both.
  const std::size_t lShorter = std::min(zvLeft.size(), zvRight.size());
  auto lStart = static_cast<std::size_t>(
      std::mismatch(zvLeft.begin(), zvLeft.begin() + static_cast<std::ptrdiff_t>(lShorter), zvRight.begin())
          .first -
      zvLeft.begin());
  while (lStart > 0 && (IsContinuation(zvLeft, lStart) || IsContinuation(zvRight, lStart))) {
    --lStart;
  }
  FoldedBytes left(zvLeft.substr(lStart));
  FoldedBytes right(zvRight.substr(lStart));
  while (true) {
    const int lLeft = left.Next();
    const int lRight = right.Next();
    if (lLeft != lRight) {
      return lLeft < lRight ? -1 : 1;
    }
    if (lLeft == FoldedBytes::kEnd) {
      return 0;
    }
  }
}

const char* FoldingVersion() {
  return utf8proc_unicode_version();
}

std::string_view TrimSpaces(std::string_view zvText) {
  const std::size_t lFirst = zvText.find_first_not_of(' ');
  if (lFirst == std::string_view::npos) {
    return {};
  }
  return zvText.substr(lFirst, zvText.find_last_not_of(' ') - lFirst + 1);
}

}  // namespace qm_ordering::text
