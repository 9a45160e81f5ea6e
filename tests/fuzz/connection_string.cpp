// Any text as a connection string, as a folder of the ordering settings, and as a value in braces: it is
// refused with a failure, or names the file that it says.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/Session.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/fuzz/Input.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;
using qm_ordering::Failure;
using qm_ordering::ado::ConnectionString;
namespace failure = qm_ordering::failure;

void RequireStoreFailure(const Failure& failure) {
  Require(failure.Number() == failure::kStoreUnavailable || failure.Number() == failure::kPathNotFound,
          "what names no store is refused as a store or as a path: " + failure.Description());
}

void RequireFilePath(const std::string& zvPath) {
  Require(zvPath.starts_with('/') && zvPath.find('\0') == std::string::npos &&
              zvPath.find('\\') == std::string::npos,
          "a store's path is whole and in the system's form: " + zvPath);
}

void ReadAny(const std::string& zvText, const std::string& zvKey) {
  try {
    const ConnectionString parts(zvText);
    Require(zvText.find(parts.Value(zvKey)) != std::string::npos ||
                parts.Value(zvKey).find('}') != std::string::npos,
            "a value stands in the text");
  } catch (const Failure& failure) {
    Require(failure.Number() == failure::kStoreUnavailable,
            "a text of another form is refused as a store: " + failure.Description());
  }
  try {
    RequireFilePath(qm_ordering::ado::StoreFileOf(zvText));
  } catch (const Failure& failure) {
    RequireStoreFailure(failure);
  }
}

// The string as the start-up builds it from a folder.
void ReadFolder(const std::string& zvFolder) {
  std::string zPath;
  try {
    zPath = qm_ordering::ado::StoreFileOf("Driver=Microsoft Access Driver (*.mdb);DBQ=" + zvFolder +
                                          "\\Orders.mdb");
  } catch (const Failure& failure) {
    RequireStoreFailure(failure);
    Require(zvFolder.empty() || zvFolder.find_first_of(std::string_view(";\0", 2)) != std::string::npos ||
                zvFolder.starts_with('{') || zvFolder.starts_with('\\'),
            "a folder that can be named is not refused: " + failure.Description());
    return;
  }
  RequireFilePath(zPath);
  std::string zExpected = zvFolder + "/Orders.mdb";
  for (char& c : zExpected) {
    c = c == '\\' ? '/' : c;
  }
  Require(zPath.ends_with(zExpected), "the store lies in its folder: " + zPath);
}

// A value in braces may hold anything.
void ReadValueInBraces(const std::string& zvValue) {
  std::string zDoubled;
  for (const char c : zvValue) {
    zDoubled.append(c == '}' ? 2 : 1, c);
  }
  const ConnectionString parts("First={" + zDoubled + "};Second=2");
  Require(parts.Value("first") == zvValue && parts.Value("SECOND") == "2", "a value in braces comes back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  const auto [zFirst, zSecond] = fuzz::TwoTexts(pData, lSize);
  ReadAny(zSecond, zFirst);
  ReadFolder(zFirst);
  ReadFolder(zSecond);
  ReadValueInBraces(zFirst);
  return 0;
}
