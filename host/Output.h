#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "qm_ordering/qm_ordering.h"

namespace host {

// Keeps the order in which members are added.
using Json = nlohmann::ordered_json;

// Where a command says what it has to say: data on stdout, messages on stderr. A command hands over both the
// text and the JSON form of its data; the one that the user asked for is written. With JSON each message is
// one JSON object on a line of its own.
class Output {
 public:
  void UseJson() { m_bJson = true; }
  bool IsJson() const { return m_bJson; }

  // The columns to fill: the terminal's, or 100 where stdout is none.
  static std::size_t Width();
  // Whether a progress bar on stderr would be seen and disturb nobody.
  bool ShowsProgress() const;

  void Text(std::string_view zvText);
  void Data(const Json& data);

  void Note(const std::string& zvText);
  void Warning(const std::string& zvText);
  void UsageError(const std::string& zvText);
  // The cause is a failure that the library caught on the way; it is shown where it tells more.
  void Error(std::int32_t lvNumber, const std::string& zvDescription,
             const qm_ordering::LastFailureInfo& cause = {});

  // The data tells of a change that was made, which stays even when the data cannot be written.
  void MarkChange() { m_bChange = true; }

  // Writes what is still in memory. False, with an error on stderr, when not all of the data could be
  // written.
  bool Finish();

 private:
  void Write(std::string_view zvText);
  void Message(const std::string& zvKind, const std::string& zvText);

  bool m_bJson = false;
  bool m_bChange = false;
  int m_lWriteError = 0;
};

}  // namespace host
