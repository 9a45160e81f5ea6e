#include "host/CsvRows.h"

#include <csv.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

#include "host/Errors.h"

namespace host {

namespace {

// Blanks belong to their field.
int NoCharacter(unsigned char) {
  return 0;
}

// The first line of a text that is not empty, with its end. A CR alone ends one too, as it ends a row.
std::size_t LineLength(std::string_view zvText) {
  const std::size_t lEnd = std::min(zvText.find_first_of("\r\n"), zvText.size() - 1);
  return lEnd + (zvText.substr(lEnd, 2) == "\r\n" ? 2 : 1);
}

class Parser {
 public:
  explicit Parser(const std::string& zvFile) : m_zFile(zvFile) {
    if (csv_init(&m_oParser, CSV_STRICT | CSV_STRICT_FINI) != 0) {
      throw std::bad_alloc();
    }
    csv_set_space_func(&m_oParser, NoCharacter);
  }
  ~Parser() { csv_free(&m_oParser); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  // The next line of the text, with its end: the parser does not count them.
  void Feed(std::string_view zvLine) {
    ++m_lLine;
    if (!m_bInRow && zvLine.find_first_not_of("\r\n") != std::string_view::npos) {
      m_bInRow = true;
      m_oRow.Line = m_lLine;
    }
    if (csv_parse(&m_oParser, zvLine.data(), zvLine.size(), OnField, OnRow, this) != zvLine.size()) {
      Raise(m_lLine,
            "a quote stands in a field that does not begin with one, or text follows a closing quote");
    }
  }

  std::vector<CsvRow> Finish() {
    if (csv_fini(&m_oParser, OnField, OnRow, this) != 0) {
      Raise(m_oRow.Line, "the quoted field that begins in this row never ends");
    }
    return std::move(m_oRows);
  }

 private:
  [[noreturn]] void Raise(int lvLine, const char* zvWhy) {
    if (csv_error(&m_oParser) == CSV_ENOMEM) {
      throw std::bad_alloc();
    }
    throw UsageError(m_zFile + ", line " + std::to_string(lvLine) + ": " + zvWhy + ".");
  }

  static void OnField(void* pBytes, std::size_t lvSize, void* pParser) {
    static_cast<Parser*>(pParser)->m_oRow.Fields.emplace_back(static_cast<const char*>(pBytes), lvSize);
  }

  static void OnRow(int, void* pParser) {
    auto& parser = *static_cast<Parser*>(pParser);
    parser.m_oRows.push_back(std::move(parser.m_oRow));
    parser.m_oRow = {parser.m_lLine, {}};
    parser.m_bInRow = false;
  }

  const std::string& m_zFile;
  csv_parser m_oParser{};
  int m_lLine = 0;
  bool m_bInRow = false;
  CsvRow m_oRow{0, {}};
  std::vector<CsvRow> m_oRows;
};

}  // namespace

std::vector<CsvRow> ParseCsv(const std::string& zvText, const std::string& zvFile) {
  Parser parser(zvFile);
  std::string_view zRest = zvText;
  while (!zRest.empty()) {
    const std::size_t lLine = LineLength(zRest);
    parser.Feed(zRest.substr(0, lLine));
    zRest.remove_prefix(lLine);
  }
  return parser.Finish();
}

}  // namespace host
