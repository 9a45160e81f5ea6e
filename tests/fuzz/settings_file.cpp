// Any text as a settings file, any key and value set in it: the text stays as it is until then, the key has
// the value afterwards, also when the new text is parsed, and every other key keeps its own.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "qm_ordering/platform/settings/SettingsText.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;
using qm_ordering::Failure;
using qm_ordering::settings::SettingsText;
namespace failure = qm_ordering::failure;

// The values by their folded keys.
std::map<std::string, std::string> ValuesOf(const SettingsText& text) {
  std::map<std::string, std::string> values;
  for (const std::string& zKey : text.Keys()) {
    Require(values.emplace(qm_ordering::text::Fold(zKey), text.Get(zKey)).second, "a key stands there once");
  }
  return values;
}

SettingsText ParsedAgain(const std::string& zvText) {
  try {
    return {zvText, "settings.ini"};
  } catch (const Failure& failure) {
    Require(false, "a text that was written can be read: " + failure.Description());
    throw;
  }
}

void SetAndRequire(SettingsText& text, const std::string& zvKey, const std::string& zvValue) {
  const std::string zBefore = text.Text();
  std::map<std::string, std::string> expected = ValuesOf(text);
  const bool bSame = expected.contains(qm_ordering::text::Fold(zvKey)) && text.Get(zvKey) == zvValue;
  try {
    text.Set(zvKey, zvValue);
  } catch (const Failure& failure) {
    Require(failure.Number() == failure::kInvalidCall, "only a key is refused: " + failure.Description());
    Require(text.Text() == zBefore, "a key that is refused changes nothing");
    return;
  }
  Require(text.Get(zvKey) == zvValue, "a key has the value that was set");
  Require(!bSame || text.Text() == zBefore, "a value that stays the same changes nothing");
  expected[qm_ordering::text::Fold(zvKey)] = zvValue;
  Require(ValuesOf(text) == expected, "every other key keeps its value");
  const SettingsText again = ParsedAgain(text.Text());
  Require(again.Text() == text.Text(), "a text that was written stays as it is");
  Require(again.Keys() == text.Keys() && ValuesOf(again) == expected,
          "a text that was written holds the same: " + text.Text());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  // Key and value each end with a backslash and one more byte that is none; a backslash is written twice.
  FuzzedDataProvider input(pData, lSize);
  const std::string zKey = input.ConsumeRandomLengthString();
  const std::string zValue = input.ConsumeRandomLengthString();
  const std::string zFile = input.ConsumeRemainingBytesAsString();
  try {
    SettingsText text(zFile, "settings.ini");
    Require(text.Text() == zFile, "a text stays as it is");
    SetAndRequire(text, zKey, zValue);
    SetAndRequire(text, zValue, zKey);
  } catch (const Failure& failure) {
    Require(failure.Number() == failure::kFileAccess,
            "a text that is no settings file is refused as a file: " + failure.Description());
  }
  SettingsText empty("", "settings.ini");
  SetAndRequire(empty, zKey, zValue);
  SetAndRequire(empty, zKey, zFile);
  return 0;
}
