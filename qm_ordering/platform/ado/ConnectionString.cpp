#include "qm_ordering/platform/ado/ConnectionString.h"

#include <algorithm>
#include <iterator>

#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

namespace {

// The text stays out of the message: it may hold a password.
[[noreturn]] void RaiseMalformed(const char* zvWhy) {
  throw Failure(failure::kStoreUnavailable, std::string("The connection string cannot be read: ") + zvWhy +
                                                ". The folder that it names (of the store, that in the "
                                                "setting OrderingDatabasePath) must not hold a "
                                                "semicolon or begin with a brace.");
}

}  // namespace

ConnectionString::ConnectionString(std::string_view zvText) {
  std::string_view zRest = zvText;
  while (!zRest.empty()) {
    const std::size_t lEquals = zRest.find('=');
    const std::size_t lEnd = zRest.find(';');
    if (lEquals == std::string_view::npos || lEnd < lEquals) {
      RaiseMalformed("a part has no \"=\"");
    }
    const std::string_view zKey = text::TrimSpaces(zRest.substr(0, lEquals));
    if (zKey.empty()) {
      RaiseMalformed("a part has no name");
    }
    zRest.remove_prefix(lEquals + 1);
    std::string zValue;
    if (zRest.starts_with('{')) {
      std::size_t i = 1;
      for (;; ++i) {
        if (i >= zRest.size()) {
          RaiseMalformed("a brace is not closed");
        }
        if (zRest[i] == '}') {
          if (i + 1 < zRest.size() && zRest[i + 1] == '}') {
            ++i;
          } else {
            break;
          }
        }
        zValue += zRest[i];
      }
      zRest.remove_prefix(i + 1);
      if (!zRest.empty() && zRest.front() != ';') {
        RaiseMalformed("text follows a closing brace");
      }
    } else {
      zValue = zRest.substr(0, zRest.find(';'));
      zRest.remove_prefix(zValue.size());
    }
    if (!zRest.empty()) {
      zRest.remove_prefix(1);
    }
    m_oParts.emplace_back(zKey, std::move(zValue));
  }
}

std::string ConnectionString::Value(std::string_view zvKey) const {
  const auto found =
      std::ranges::find_if(m_oParts, [&](const auto& oPart) { return SameName(oPart.first, zvKey); });
  return found == m_oParts.end() ? std::string() : found->second;
}

bool ConnectionString::HoldsOnly(std::initializer_list<std::string_view> zvKeys) const {
  const auto lNamed = std::ranges::count_if(zvKeys, [this](std::string_view zvKey) {
    return std::ranges::any_of(m_oParts, [&](const auto& oPart) { return SameName(oPart.first, zvKey); });
  });
  return lNamed == std::ssize(m_oParts);
}

}  // namespace qm_ordering::ado
