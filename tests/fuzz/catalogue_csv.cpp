// Any bytes as a catalogue file: the host's reader takes it whole, or refuses it with its own error, which
// names the file.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "host/Catalogue.h"
#include "host/CsvRows.h"
#include "host/Errors.h"
#include "host/Output.h"
#include "host/Text.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;

// A file in memory, which has a name all the same.
class MemoryFile {
 public:
  MemoryFile() : m_lDescriptor(memfd_create("catalogue", 0)) {
    Require(m_lDescriptor >= 0, "a file can be made in memory");
  }
  ~MemoryFile() { close(m_lDescriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Name() const { return "/proc/self/fd/" + std::to_string(m_lDescriptor); }

  void Write(const std::string& zvContent) {
    const auto lSize = static_cast<ssize_t>(zvContent.size());
    Require(ftruncate(m_lDescriptor, 0) == 0 &&
                pwrite(m_lDescriptor, zvContent.data(), zvContent.size(), 0) == lSize,
            "a file in memory can be written");
  }

 private:
  int m_lDescriptor;
};

std::string Quoted(const std::string& zvField) {
  std::string zQuoted = "\"";
  for (const char c : zvField) {
    zQuoted.append(c == '"' ? 2 : 1, c);
  }
  return zQuoted + "\"";
}

// Rows that were read, written anew with every field in quotes, are the same rows.
void RequireRowsComeBack(const std::string& zvText) {
  std::vector<host::CsvRow> rows;
  try {
    rows = host::ParseCsv(zvText, "catalogue");
  } catch (const host::UsageError& error) {
    Require(std::string(error.what()).starts_with("catalogue, line "), "the error names file and line");
    return;
  }
  std::string zWritten;
  int lLine = 0;
  for (const host::CsvRow& row : rows) {
    Require(row.Line > lLine && !row.Fields.empty(), "each row has a line of its own, and fields");
    lLine = row.Line;
    for (const std::string& zField : row.Fields) {
      zWritten += (&zField == &row.Fields.front() ? "" : ",") + Quoted(zField);
    }
    zWritten += "\r\n";
  }
  const std::vector<host::CsvRow> again = host::ParseCsv(zWritten, "catalogue");
  Require(again.size() == rows.size(), "there are as many rows");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Require(again[i].Fields == rows[i].Fields, "a row comes back: " + zWritten);
  }
}

void RequireItemsAreComplete(const host::Catalogue& catalogue) {
  std::int32_t lItems = 0;
  for (const auto& oItem : catalogue.Items()) {
    ++lItems;
    Require(catalogue.Find(oItem->ItemNumber()) == oItem, "each item is found by its number");
    Require(!host::Trimmed(oItem->ItemNumber()).empty(), "each item has a number");
    Require(oItem->SellQuantity() >= 1 && oItem->ShipQuantity() >= 1, "each pack holds something");
    Require(host::IsUtf8(oItem->Description()), "each text is UTF-8");
  }
  Require(lItems > 0, "a catalogue has items");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The reader's warnings of columns that it does not know would fill the log.
  stderr = std::fopen("/dev/null", "w");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static MemoryFile file;
  static host::Output out;
  const std::string zText(reinterpret_cast<const char*>(pData), lSize);
  RequireRowsComeBack(zText);
  file.Write(zText);
  try {
    const host::Catalogue catalogue(file.Name(), out);
    RequireItemsAreComplete(catalogue);
    static_cast<void>(catalogue.Find(zText.substr(0, 16)));
  } catch (const host::UsageError& error) {
    Require(std::string(error.what()).find(file.Name()) != std::string::npos, "the error names the file");
  }
  return 0;
}
