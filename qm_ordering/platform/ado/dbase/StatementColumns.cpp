#include "qm_ordering/platform/ado/dbase/StatementColumns.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"

namespace qm_ordering::ado::dbase {

namespace {

struct Token {
  std::string_view Text;  // a name without its quotes
  bool IsName = false;
};

bool IsOfName(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
         static_cast<unsigned char>(c) >= 128;
}

std::vector<Token> Split(std::string_view zvSQL) {
  std::vector<Token> tokens;
  std::size_t i = 0;
  while (i < zvSQL.size()) {
    const char c = zvSQL[i];
    if (IsOfName(c)) {
      std::size_t lEnd = i;
      while (lEnd < zvSQL.size() && IsOfName(zvSQL[lEnd])) {
        ++lEnd;
      }
      tokens.push_back({zvSQL.substr(i, lEnd - i), c < '0' || c > '9'});
      i = lEnd;
    } else if (c == '"' || c == '[' || c == '`' || c == '\'') {
      const std::size_t lEnd = std::min(zvSQL.find(c == '[' ? ']' : c, i + 1), zvSQL.size());
      tokens.push_back({zvSQL.substr(i + 1, lEnd - i - 1), c != '\''});
      i = lEnd + 1;
    } else {
      if (c != ' ' && c != '\t' && c != '\r' && c != '\n') {
        tokens.push_back({zvSQL.substr(i, 1), false});
      }
      ++i;
    }
  }
  return tokens;
}

class Finder {
 public:
  explicit Finder(std::string_view zvSQL) : m_oTokens(Split(zvSQL)) {}

  StatementColumns Find() {
    bool bSorted = false;
    for (std::size_t i = 0; i < m_oTokens.size(); ++i) {
      if (Is(i, "ORDER") && Is(i + 1, "BY")) {
        bSorted = true;
        ++i;
      } else if (bSorted && IsName(i) && !Is(i + 1, ".") && !Is(i + 1, "(") &&
                 (Is(i - 1, "BY") || Is(i - 1, ",") || Is(i - 1, "."))) {
        Add(m_oColumns.Sorted, i);
      } else if (Is(i, "=") && i > 0 && IsName(i - 1) && IsName(i + 1)) {
        Add(m_oColumns.Keys, i - 1);
        Add(m_oColumns.Keys, Is(i + 2, ".") && IsName(i + 3) ? i + 3 : i + 1);
      }
    }
    return std::move(m_oColumns);
  }

 private:
  bool Is(std::size_t lvToken, std::string_view zvText) const {
    return lvToken < m_oTokens.size() && SameName(m_oTokens[lvToken].Text, zvText);
  }
  bool IsName(std::size_t lvToken) const { return lvToken < m_oTokens.size() && m_oTokens[lvToken].IsName; }

  void Add(std::vector<std::string>& zvNames, std::size_t lvToken) const {
    const std::string_view zName = m_oTokens[lvToken].Text;
    if (std::ranges::none_of(zvNames, [&](const std::string& zOther) { return SameName(zOther, zName); })) {
      zvNames.emplace_back(zName);
    }
  }

  std::vector<Token> m_oTokens;
  StatementColumns m_oColumns;
};

}  // namespace

StatementColumns FindColumns(std::string_view zvSQL) {
  return Finder(zvSQL).Find();
}

}  // namespace qm_ordering::ado::dbase
