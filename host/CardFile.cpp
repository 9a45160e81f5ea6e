#include "host/CardFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "host/Errors.h"
#include "host/HeaderFields.h"
#include "host/NearestNames.h"
#include "host/Text.h"
#include "host/WholeFile.h"

namespace host {

namespace {

using qm_ordering::CreditCardDetails;

void WarnWhenOthersMayRead(const std::string& zvFile, Output& out) {
  struct stat status {};
  if (zvFile != "-" && stat(zvFile.c_str(), &status) == 0 && (status.st_mode & (S_IRGRP | S_IROTH)) != 0) {
    out.Warning("Other users may read the card file " + zvFile + ". `chmod 600` keeps it to yourself.");
  }
}

std::string KnownName(std::string_view zvName, const std::string& zvPlace) {
  const auto found = std::ranges::find_if(
      CardFieldNames(), [&](const std::string& zKnown) { return SameName(zKnown, zvName); });
  if (found == CardFieldNames().end()) {
    // Not shown: a line that was put together wrongly may begin with the card number.
    throw UsageError(zvPlace + "what stands before the = is not a part of a card." +
                     DidYouMean(zvName, CardFieldNames()) + " The parts are " + Listed(CardFieldNames()) +
                     ".");
  }
  return *found;
}

std::int32_t Number(const std::string& zvName, std::string_view zvValue, const std::string& zvPlace) {
  const auto lNumber = ParseInteger(zvValue);
  if (!lNumber) {
    throw UsageError(zvPlace + "the value of " + zvName + " is not a number.");
  }
  return *lNumber;
}

void Put(CreditCardDetails& card, const std::string& zvName, std::string_view zvValue,
         const std::string& zvPlace) {
  if (!IsUtf8(zvValue)) {
    throw UsageError(zvPlace + "the value of " + zvName + " is not UTF-8 text.");
  }
  if (zvName == "CardType") {
    card.CardType(std::string(zvValue));
  } else if (zvName == "CardNumber") {
    card.CardNumber(std::string(zvValue));
  } else if (zvName == "CardHoldersRef") {
    card.CardHoldersRef(std::string(zvValue));
  } else if (zvName == "ExpiryMonth") {
    card.ExpiryMonth(Number(zvName, zvValue, zvPlace));
  } else {
    card.ExpiryYear(Number(zvName, zvValue, zvPlace));
  }
}

// The next line of the text, without its end.
std::string_view TakeLine(std::string_view& zrText) {
  const std::size_t lEnd = std::min(zrText.find('\n'), zrText.size());
  std::string_view zLine = zrText.substr(0, lEnd);
  zrText.remove_prefix(std::min(lEnd + 1, zrText.size()));
  if (zLine.ends_with('\r')) {
    zLine.remove_suffix(1);
  }
  return zLine;
}

}  // namespace

void ReadCardFile(const std::string& zvFile, CreditCardDetails& card, Output& out) {
  const std::string zContent = ReadWholeFile(zvFile);
  WarnWhenOthersMayRead(zvFile, out);
  std::string_view zRest = zContent;
  if (zRest.starts_with("\xEF\xBB\xBF")) {
    zRest.remove_prefix(3);
  }
  std::set<std::string> given;
  for (int lLine = 1; !zRest.empty(); ++lLine) {
    const std::string_view zLine = Trimmed(TakeLine(zRest));
    if (zLine.empty() || zLine.starts_with('#')) {
      continue;
    }
    const std::string zPlace =
        (zvFile == "-" ? "standard input" : zvFile) + std::string(", line ") + std::to_string(lLine) + ": ";
    const std::size_t lEquals = zLine.find('=');
    if (lEquals == std::string_view::npos) {
      // The line itself may be a card number, so it is not shown.
      throw UsageError(zPlace + "this is not NAME=VALUE.");
    }
    const std::string zName = KnownName(Trimmed(zLine.substr(0, lEquals)), zPlace);
    if (!given.insert(zName).second) {
      throw UsageError(zPlace + zName + " is given a second time.");
    }
    Put(card, zName, Trimmed(zLine.substr(lEquals + 1)), zPlace);
  }
}

}  // namespace host
