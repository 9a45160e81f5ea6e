#include "qm_ordering/platform/text/NumberFormat.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/text/Unicode.h"

namespace qm_ordering::text {

namespace {

std::string_view LocaleName() {
  for (const char* zVariable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
    const char* zName = std::getenv(zVariable);
    if (zName != nullptr && *zName != '\0') {
      return zName;
    }
  }
  return {};
}

bool SaysNothing(std::string_view zvName) {
  return zvName.empty() || zvName == "C" || zvName == "POSIX" || zvName.starts_with("C.");
}

// Nothing when the text cannot be converted.
std::optional<std::string> ToUTF8(std::string zvText, const char* zvCharset) {
  // A separator is one or two characters. While the converter is open nothing is allocated that could fail.
  std::string zConverted(64, '\0');
  iconv_t converter = iconv_open("UTF-8", zvCharset);
  // The value that stands for a failure is -1 in the guise of a pointer.
  if (converter == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr)
    return std::nullopt;
  }
  char* pIn = zvText.data();
  std::size_t lIn = zvText.size();
  char* pOut = zConverted.data();
  std::size_t lOut = zConverted.size();
  const std::size_t lResult = iconv(converter, &pIn, &lIn, &pOut, &lOut);
  iconv_close(converter);
  if (lResult == static_cast<std::size_t>(-1)) {
    return std::nullopt;
  }
  zConverted.resize(zConverted.size() - lOut);
  return zConverted;
}

NumberSigns ReadSigns(const std::string& zvName) {
  if (SaysNothing(zvName)) {
    return {};
  }
  const locale_t locale = newlocale(LC_NUMERIC_MASK | LC_CTYPE_MASK, zvName.c_str(), nullptr);
  if (locale == nullptr) {
    return {};
  }
  const std::string zCharset = nl_langinfo_l(CODESET, locale);
  const std::string zPoint = nl_langinfo_l(RADIXCHAR, locale);
  const std::string zSeparator = nl_langinfo_l(THOUSEP, locale);
  const std::string zGrouping = nl_langinfo_l(GROUPING, locale);
  freelocale(locale);
  const auto point = ToUTF8(zPoint, zCharset.c_str());
  const auto separator = ToUTF8(zSeparator, zCharset.c_str());
  if (!point || !separator) {
    return {};
  }
  return {*point, *separator, zGrouping};
}

// The signs of the locale that was asked for last.
struct KnownSigns {
  std::string Name;
  NumberSigns Signs;
};

// Environment variables can change between two calls; reading a locale costs much more than comparing a name.
NumberSigns CurrentSigns() {
  const std::string_view zName = LocaleName();
  KnownSigns* pKnown = PerThread<KnownSigns>::Get();
  if (pKnown == nullptr) {
    // The thread can keep none.
    return ReadSigns(std::string(zName));
  }
  if (zName != pKnown->Name) {
    *pKnown = KnownSigns{std::string(zName), ReadSigns(std::string(zName))};
  }
  return pKnown->Signs;
}

std::string Group(const std::string& zvDigits, const NumberSigns& signs) {
  if (signs.Separator.empty()) {
    return zvDigits;
  }
  std::string zGrouped;
  std::size_t lEnd = zvDigits.size();
  std::size_t lGroup = 0;
  while (lGroup < signs.Grouping.size()) {
    // The bytes that end the grouping are 127 and 255 in this reading: more digits than an amount has.
    const auto lSize = static_cast<std::size_t>(static_cast<unsigned char>(signs.Grouping[lGroup]));
    if (lEnd <= lSize) {
      break;
    }
    lEnd -= lSize;
    zGrouped.insert(0, signs.Separator + zvDigits.substr(lEnd, lSize));
    if (lGroup + 1 < signs.Grouping.size()) {
      ++lGroup;
    }
  }
  return zvDigits.substr(0, lEnd) + zGrouped;
}

}  // namespace

AmountFormat::AmountFormat() : m_oSigns(CurrentSigns()) {}

std::string AmountFormat::Text(Currency cvAmount) const {
  const std::int64_t lScaled = cvAmount.Scaled();
  // The lowest amount has no positive counterpart in 64 bits with a sign.
  const std::uint64_t lMagnitude =
      lScaled < 0 ? 0 - static_cast<std::uint64_t>(lScaled) : static_cast<std::uint64_t>(lScaled);
  const std::uint64_t lHundredths = (lMagnitude + 50) / 100;
  const std::string zDecimals = std::to_string(lHundredths % 100);
  return (lScaled < 0 && lHundredths != 0 ? "-" : "") + Group(std::to_string(lHundredths / 100), m_oSigns) +
         m_oSigns.Point + std::string(2 - zDecimals.size(), '0') + zDecimals;
}

}  // namespace qm_ordering::text
