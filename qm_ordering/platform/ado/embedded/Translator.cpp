#include "qm_ordering/platform/ado/embedded/Translator.h"

#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

enum class TokenKind { Word, Number, Text, Sign };

struct Token {
  TokenKind Kind;
  std::string_view Text;  // a text literal with its quotes
};

[[noreturn]] void RaiseBadStatement(const std::string& zvWhy) {
  throw Failure(failure::kStoreCommand, "The statement cannot be run: " + zvWhy + ".");
}

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsWord(const Token& token, std::string_view zvWord) {
  return token.Kind == TokenKind::Word && SameName(token.Text, zvWord);
}

bool IsSign(const Token& token, std::string_view zvSign) {
  return token.Kind == TokenKind::Sign && token.Text == zvSign;
}

bool IsComparison(const Token& token) {
  static constexpr std::array<std::string_view, 6> kComparisons = {"=", "<>", "<", ">", "<=", ">="};
  if (token.Kind != TokenKind::Sign) {
    return false;
  }
  for (const std::string_view zSign : kComparisons) {
    if (token.Text == zSign) {
      return true;
    }
  }
  return false;
}

bool IsBoolean(const Token& token) {
  return IsWord(token, "True") || IsWord(token, "False");
}

bool IsLiteral(const Token& token) {
  return token.Kind == TokenKind::Number || token.Kind == TokenKind::Text || IsBoolean(token);
}

std::size_t EndOfTextLiteral(std::string_view zvSQL, std::size_t lStart) {
  for (std::size_t i = lStart + 1; i < zvSQL.size(); ++i) {
    if (zvSQL[i] == '\'') {
      if (i + 1 < zvSQL.size() && zvSQL[i + 1] == '\'') {
        ++i;
      } else {
        return i + 1;
      }
    }
  }
  RaiseBadStatement("a text literal has no closing quote");
}

std::size_t EndOfNumber(std::string_view zvSQL, std::size_t lStart) {
  std::size_t i = lStart;
  while (i < zvSQL.size() && IsDigit(zvSQL[i])) {
    ++i;
  }
  if (i + 1 < zvSQL.size() && zvSQL[i] == '.' && IsDigit(zvSQL[i + 1])) {
    ++i;
    while (i < zvSQL.size() && IsDigit(zvSQL[i])) {
      ++i;
    }
  }
  return i;
}

// A minus is a sign of its own only between two operands; elsewhere it belongs to the number behind it.
bool MinusBelongsToNumber(const std::vector<Token>& tokens) {
  return !tokens.empty() && tokens.back().Kind == TokenKind::Sign && tokens.back().Text != ")";
}

std::vector<Token> Split(std::string_view zvSQL) {
  std::vector<Token> tokens;
  tokens.reserve(zvSQL.size() / 6 + 8);
  std::size_t i = 0;
  while (i < zvSQL.size()) {
    const char c = zvSQL[i];
    const std::size_t lStart = i;
    TokenKind kind = TokenKind::Sign;
    if (IsBlank(c)) {
      ++i;
      continue;
    }
    if (IsLetter(c)) {
      kind = TokenKind::Word;
      while (i < zvSQL.size() && (IsLetter(zvSQL[i]) || IsDigit(zvSQL[i]))) {
        ++i;
      }
    } else if (IsDigit(c)) {
      kind = TokenKind::Number;
      i = EndOfNumber(zvSQL, i);
    } else if (c == '\'') {
      kind = TokenKind::Text;
      i = EndOfTextLiteral(zvSQL, i);
    } else if (c == '-' && i + 1 < zvSQL.size() && IsDigit(zvSQL[i + 1]) && MinusBelongsToNumber(tokens)) {
      kind = TokenKind::Number;
      i = EndOfNumber(zvSQL, i + 1);
    } else if (zvSQL.substr(i, 2) == "<>" || zvSQL.substr(i, 2) == "<=" || zvSQL.substr(i, 2) == ">=") {
      i += 2;
    } else if (std::string_view("=<>()+-*/,.;").find(c) != std::string_view::npos) {
      ++i;
    } else {
      RaiseBadStatement("it holds a character that stands for nothing, at position " + std::to_string(i + 1));
    }
    tokens.push_back({kind, zvSQL.substr(lStart, i - lStart)});
  }
  return tokens;
}

std::string Unquote(std::string_view zvLiteral) {
  const std::string_view zInner = zvLiteral.substr(1, zvLiteral.size() - 2);
  std::string zText;
  zText.reserve(zInner.size());
  for (std::size_t i = 0; i < zInner.size(); ++i) {
    zText += zInner[i];
    if (zInner[i] == '\'') {
      ++i;  // the second one of a doubled quote
    }
  }
  return zText;
}

std::int64_t WholeNumber(std::string_view zvNumber) {
  std::int64_t lNumber = 0;
  const char* pEnd = zvNumber.data() + zvNumber.size();
  const auto [pStop, error] = std::from_chars(zvNumber.data(), pEnd, lNumber);
  if (error != std::errc() || pStop != pEnd) {
    RaiseBadStatement("the number " + std::string(zvNumber) + " does not fit its place");
  }
  return lNumber;
}

[[noreturn]] void RaiseMismatch(const Token& token, const char* zvColumn) {
  RaiseBadStatement("the literal " + std::string(token.Text.substr(0, 40)) + " does not fit " + zvColumn);
}

Parameter TextParameter(const Token& token, std::optional<ColumnKind> kind) {
  std::string zText = Unquote(token.Text);
  if (!kind || *kind == ColumnKind::Text) {
    return zText;
  }
  if (*kind != ColumnKind::Date) {
    RaiseMismatch(token, "a column of numbers");
  }
  const std::optional<Date> datValue = Date::ParseStoreText(zText);
  if (!datValue) {
    RaiseMismatch(token, "a date column");
  }
  return datValue->ToStoreText();
}

Parameter NumberParameter(const Token& token, std::optional<ColumnKind> kind) {
  if (!kind) {
    return WholeNumber(token.Text);
  }
  switch (*kind) {
    case ColumnKind::Integer: {
      const std::int64_t lNumber = WholeNumber(token.Text);
      if (!std::in_range<std::int32_t>(lNumber)) {
        RaiseBadStatement("the number " + std::string(token.Text) + " is out of range");
      }
      return lNumber;
    }
    case ColumnKind::Boolean:
      return WholeNumber(token.Text) == 0 ? 0 : -1;
    case ColumnKind::Currency:
      return Currency::Parse(token.Text).Scaled();
    default:
      RaiseMismatch(token, "a column of texts or dates");
  }
}

Parameter BooleanParameter(const Token& token, std::optional<ColumnKind> kind) {
  const std::int64_t lValue = IsWord(token, "True") ? -1 : 0;
  if (kind && *kind != ColumnKind::Boolean && *kind != ColumnKind::Integer) {
    RaiseMismatch(token, "its column");
  }
  return lValue;
}

Parameter MakeParameter(const Token& token, std::optional<ColumnKind> kind) {
  switch (token.Kind) {
    case TokenKind::Text:
      return TextParameter(token, kind);
    case TokenKind::Number:
      return NumberParameter(token, kind);
    default:
      return BooleanParameter(token, kind);
  }
}

// Walks the tokens of one statement and knows, at each literal, which column it meets.
class Walk {
 public:
  Walk(const std::vector<Token>& tokens, const ColumnKinds& kinds) : m_oTokens(tokens), m_oKinds(kinds) {}

  // To be called for each token in turn.
  void Step(std::size_t i) {
    const Token& token = m_oTokens[i];
    if (IsWord(token, "where")) {
      m_bInCondition = true;
    } else if (IsWord(token, "values")) {
      m_bInValues = true;
    } else if (IsSign(token, "(")) {
      ++m_lDepth;
      if (i > 0 && IsWord(m_oTokens[i - 1], "in")) {
        m_lListDepth = m_lDepth;
        m_zListColumn = WordBefore(i - 1);
      } else if (m_lDepth == 1 && m_bInValues) {
        m_lValue = 0;
      } else if (m_lDepth == 1 && IsWord(m_oTokens.front(), "insert")) {
        m_bInColumns = true;
      }
    } else if (IsSign(token, ")")) {
      if (m_lDepth == m_lListDepth) {
        m_lListDepth = -1;
      }
      if (--m_lDepth < 0) {
        RaiseBadStatement("a closing parenthesis has no opening one");
      }
      m_bInColumns = false;
    } else if (IsSign(token, ",") && m_bInValues && m_lDepth == 1) {
      ++m_lValue;
    } else if (m_bInColumns && token.Kind == TokenKind::Word) {
      m_oInsertColumns.push_back(token.Text);
    }
  }

  std::optional<ColumnKind> KindOfLiteral(std::size_t i) const {
    const std::string_view zColumn = ColumnOfLiteral(i);
    return zColumn.empty() ? std::nullopt : m_oKinds(zColumn);
  }

  bool InCondition() const { return m_bInCondition; }
  bool InList() const { return m_lListDepth >= 0; }

 private:
  std::string_view WordBefore(std::size_t i) const {
    return i > 0 && m_oTokens[i - 1].Kind == TokenKind::Word ? m_oTokens[i - 1].Text : std::string_view();
  }

  std::string_view ColumnOfLiteral(std::size_t i) const {
    if (m_bInValues && m_lDepth == 1) {
      return m_lValue < m_oInsertColumns.size() ? m_oInsertColumns[m_lValue] : std::string_view();
    }
    if (InList()) {
      return m_zListColumn;
    }
    if (i < 2) {
      return {};
    }
    const Token& before = m_oTokens[i - 1];
    const bool bPaired = IsComparison(before) || IsSign(before, "+") || IsSign(before, "-");
    return bPaired ? WordBefore(i - 1) : std::string_view();
  }

  const std::vector<Token>& m_oTokens;
  const ColumnKinds& m_oKinds;
  std::vector<std::string_view> m_oInsertColumns;
  std::string_view m_zListColumn;
  std::size_t m_lValue = 0;
  int m_lDepth = 0;
  int m_lListDepth = -1;
  bool m_bInColumns = false;
  bool m_bInValues = false;
  bool m_bInCondition = false;
};

// sum(COLUMN), max(COLUMN), min(COLUMN) have the column's kind, count(...) is a number.
std::optional<ColumnKind> KindOfExpression(const Token* pFirst, const Token* pEnd, const ColumnKinds& kinds) {
  if (pEnd - pFirst < 4 || !IsSign(pFirst[1], "(")) {
    return std::nullopt;
  }
  if (IsWord(pFirst[0], "count")) {
    return ColumnKind::Integer;
  }
  const bool bOfColumn = IsWord(pFirst[0], "sum") || IsWord(pFirst[0], "max") || IsWord(pFirst[0], "min");
  return bOfColumn && pFirst[2].Kind == TokenKind::Word ? kinds(pFirst[2].Text) : std::nullopt;
}

std::vector<std::optional<ColumnKind>> FindResultKinds(const std::vector<Token>& tokens,
                                                       const ColumnKinds& kinds) {
  std::vector<std::optional<ColumnKind>> oKinds;
  if (!IsWord(tokens.front(), "select")) {
    return oKinds;
  }
  int lDepth = 0;
  std::size_t lStart = 1;
  for (std::size_t i = 1; i < tokens.size(); ++i) {
    const bool bFrom = lDepth == 0 && IsWord(tokens[i], "from");
    if (bFrom || (lDepth == 0 && IsSign(tokens[i], ","))) {
      oKinds.push_back(KindOfExpression(tokens.data() + lStart, tokens.data() + i, kinds));
      lStart = i + 1;
    }
    if (bFrom) {
      break;
    }
    lDepth += IsSign(tokens[i], "(") ? 1 : IsSign(tokens[i], ")") ? -1 : 0;
  }
  return oKinds;
}

// Fills the list behind IN, whose values are the parameters from lvFirst on, up with its last one to a power
// of two: lists of many lengths come down to few texts. A long one is rare and stays as it is.
void FillList(Translation& orResult, std::size_t lvFirst) {
  constexpr std::size_t kLongestFilled = 1024;
  const std::size_t lValues = orResult.Parameters.size() - lvFirst;
  if (lValues > kLongestFilled) {
    orResult.VariableLength = true;
    return;
  }
  for (std::size_t i = lValues; lValues > 0 && i < std::bit_ceil(lValues); ++i) {
    orResult.Text += " , ?";
    orResult.Parameters.push_back(Parameter(orResult.Parameters.back()));
  }
}

}  // namespace

std::optional<ColumnKind> KindOfDeclaredType(std::string_view zvType) {
  static constexpr std::array<std::pair<std::string_view, ColumnKind>, 6> kTypes = {{
      {"INTEGER", ColumnKind::Integer},
      {"YESNO INTEGER", ColumnKind::Boolean},
      {"CURRENCY INTEGER", ColumnKind::Currency},
      {"TEXT", ColumnKind::Text},
      {"MEMO TEXT", ColumnKind::Text},
      {"DATETIME TEXT", ColumnKind::Date},
  }};
  for (const auto& [zName, kind] : kTypes) {
    if (SameName(zName, zvType)) {
      return kind;
    }
  }
  return std::nullopt;
}

Translation Translate(std::string_view zvSQL, const ColumnKinds& kinds, std::string_view zvHiddenColumn) {
  if (const auto lBroken = text::FindBrokenUTF8(zvSQL)) {
    RaiseBadStatement("it is not UTF-8, at byte " + std::to_string(*lBroken + 1) +
                      "; texts must be UTF-8 to be stored");
  }
  std::vector<Token> tokens = Split(zvSQL);
  if (!tokens.empty() && IsSign(tokens.back(), ";")) {
    tokens.pop_back();
  }
  if (tokens.empty()) {
    RaiseBadStatement("it is empty");
  }
  const Token& first = tokens.front();
  if (!IsWord(first, "select") && !IsWord(first, "insert") && !IsWord(first, "update") &&
      !IsWord(first, "delete")) {
    RaiseBadStatement("it does not begin with select, insert, update or delete");
  }

  Translation result;
  result.Text.reserve(zvSQL.size());
  Walk walk(tokens, kinds);
  std::size_t lListStart = 0;
  bool bListOfValues = false;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (IsSign(token, ";")) {
      RaiseBadStatement("something follows its closing semicolon");
    }
    const bool bWasInList = walk.InList();
    walk.Step(i);
    if (!bWasInList && walk.InList()) {
      lListStart = result.Parameters.size();
      bListOfValues = true;
    } else if (bWasInList && walk.InList()) {
      bListOfValues = bListOfValues && (IsLiteral(token) || IsSign(token, ","));
    } else if (bWasInList && bListOfValues) {
      FillList(result, lListStart);
    }
    if (IsWord(token, "from") && result.Table.empty() && i + 1 < tokens.size()) {
      result.Table = tokens[i + 1].Text;
    }
    if (i > 0) {
      result.Text += ' ';
    }
    if (!IsLiteral(token)) {
      result.Text += token.Text;
    } else if (IsBoolean(token) && walk.InCondition()) {
      // As a constant, so that the engine can use the index on the one current order.
      result.Text += IsWord(token, "True") ? "-1" : "0";
    } else {
      result.Parameters.push_back(MakeParameter(token, walk.KindOfLiteral(i)));
      result.Text += '?';
    }
    if (i == 0 && !zvHiddenColumn.empty()) {
      result.Text.append(" ").append(zvHiddenColumn).append(" ,");
    }
  }
  result.ResultKinds = FindResultKinds(tokens, kinds);
  return result;
}

}  // namespace qm_ordering::ado::embedded
