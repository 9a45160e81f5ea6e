#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "qm_ordering/platform/xml/Document.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::xml::Document;
using qm_ordering::xml::Element;

struct CommandResult {
  int Status = -1;
  std::string Output;
};

// Runs xmllint with the options on the text. A program that is missing answers status 127, which no test here
// takes for an answer.
CommandResult Lint(const std::string& zvOptions, const std::string& zvText) {
  const test::TempFolder folder;
  test::WriteFile(folder.File("document.xml"), zvText);
  CommandResult result;
  FILE* pPipe = popen(("xmllint " + zvOptions + " '" + folder.File("document.xml") + "' 2>&1").c_str(), "r");
  if (pPipe == nullptr) {
    ADD_FAILURE() << "xmllint cannot be started";
    return result;
  }
  std::array<char, 65536> buffer{};
  while (const std::size_t lRead = fread(buffer.data(), 1, buffer.size(), pPipe)) {
    result.Output.append(buffer.data(), lRead);
  }
  const int lStatus = pclose(pPipe);
  result.Status = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : -1;
  EXPECT_NE(result.Status, 127) << "xmllint is missing: " << result.Output;
  return result;
}

// An element whose attribute holds the value is accepted by the strict parser, which reads that value.
void ExpectReadStrictly(const std::string& zvValue) {
  Document document;
  Element element = document.CreateElement("orderitem");
  element.SetAttribute("before", "");
  element.SetAttribute("text", zvValue);
  Element parent = document.CreateElement("orderitems");
  parent.AppendChild(element);
  const std::string zText = parent.XML();
  const CommandResult accepted = Lint("--noout", zText);
  EXPECT_EQ(accepted.Status, 0) << accepted.Output;
  EXPECT_EQ(accepted.Output, "");
  const CommandResult read = Lint("--xpath 'string(/orderitems/orderitem/@text)'", zText);
  EXPECT_EQ(read.Status, 0);
  EXPECT_TRUE(read.Output == zvValue + "\n") << zText.substr(0, 200) << "\n" << read.Output.substr(0, 200);
}

TEST(StrictParser, TellsGoodDocumentsFromBadOnes) {
  EXPECT_EQ(Lint("--noout", "<a b=\"1\"/>").Status, 0);
  EXPECT_NE(Lint("--noout", "<a b=\"\x01\"/>").Status, 0);
  EXPECT_NE(Lint("--noout", "<a b=\"\xC3\"/>").Status, 0);
  EXPECT_NE(Lint("--noout", "<a b=\"<\"/>").Status, 0);
}

TEST(StrictParser, ReadsMarkupInTexts) {
  ExpectReadStrictly("O'Brien \"& Sons\" <b>&amp;&#0;</b> ]]> <!-- --> <?x?> <![CDATA[");
}

TEST(StrictParser, ReadsBlanksTabsAndLineEndsInTexts) {
  ExpectReadStrictly("  two \t tabs\t\t\nline\r\nline\rend \r\n \t ");
}

TEST(StrictParser, ReadsEveryCharacterBelowTheSurrogates) {
  std::string zAll = "\t\n\r";
  for (int lByte = 0x20; lByte < 0x80; ++lByte) {
    zAll.push_back(static_cast<char>(lByte));
  }
  for (int lCode = 0x80; lCode < 0x800; ++lCode) {
    zAll.push_back(static_cast<char>(0xC0 | lCode >> 6));
    zAll.push_back(static_cast<char>(0x80 | (lCode & 0x3F)));
  }
  for (int lCode = 0x800; lCode < 0xD800; ++lCode) {
    zAll.push_back(static_cast<char>(0xE0 | lCode >> 12));
    zAll.push_back(static_cast<char>(0x80 | (lCode >> 6 & 0x3F)));
    zAll.push_back(static_cast<char>(0x80 | (lCode & 0x3F)));
  }
  ExpectReadStrictly(zAll);
}

TEST(StrictParser, ReadsTheEdgesOfTheHigherPlanes) {
  ExpectReadStrictly(
      "\xEE\x80\x80 \xEF\xB7\x90 \xEF\xBB\xBF \xEF\xBF\xBD \xF0\x90\x80\x80 \xF0\x9F\xBF\xBE "
      "\xF0\x9F\xBF\xBF "
      "\xF0\xA0\x80\x80 \xF3\xA0\x80\x81 \xF4\x8F\xBF\xBF");
}

TEST(StrictParser, ReadsAnEmptyText) {
  ExpectReadStrictly("");
}

TEST(StrictParser, ReadsAWholeDocumentOfManyElements) {
  Document document;
  Element items = document.CreateElement("orderitems");
  for (int l = 0; l < 1000; ++l) {
    Element item = document.CreateElement("orderitem");
    item.SetAttribute("itemnumber", std::to_string(l) + "&'\"<>\n");
    items.AppendChild(item);
  }
  document.AppendChild(items);
  const CommandResult accepted = Lint("--noout", document.XML());
  EXPECT_EQ(accepted.Status, 0) << accepted.Output;
  EXPECT_EQ(Lint("--xpath 'count(/orderitems/orderitem)'", document.XML()).Output, "1000\n");
}

}  // namespace
