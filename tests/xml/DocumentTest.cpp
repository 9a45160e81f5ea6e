#include "qm_ordering/platform/xml/Document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"

namespace {

using qm_ordering::Failure;
using qm_ordering::xml::Document;
using qm_ordering::xml::Element;
using test::FailureOf;
namespace failure = qm_ordering::failure;

std::string UTF8(char32_t lCode) {
  std::string zText;
  const auto Byte = [&zText](char32_t lByte) { zText.push_back(static_cast<char>(lByte)); };
  if (lCode < 0x80) {
    Byte(lCode);
  } else if (lCode < 0x800) {
    Byte(0xC0 | lCode >> 6);
    Byte(0x80 | (lCode & 0x3F));
  } else if (lCode < 0x10000) {
    Byte(0xE0 | lCode >> 12);
    Byte(0x80 | (lCode >> 6 & 0x3F));
    Byte(0x80 | (lCode & 0x3F));
  } else {
    Byte(0xF0 | lCode >> 18);
    Byte(0x80 | (lCode >> 12 & 0x3F));
    Byte(0x80 | (lCode >> 6 & 0x3F));
    Byte(0x80 | (lCode & 0x3F));
  }
  return zText;
}

// The value as it comes back after writing and reading.
std::string ThroughText(const std::string& zvValue) {
  Document written;
  Element element = written.CreateElement("note");
  element.SetAttribute("text", zvValue);
  Document read;
  if (!read.LoadXML(element.XML())) {
    return "not read back: " + element.XML();
  }
  return read.SelectSingleNode("note").Attribute("text");
}

// A document of that text.
Document Loaded(const std::string& zvText) {
  Document document;
  EXPECT_TRUE(document.LoadXML(zvText)) << zvText;
  return document;
}

TEST(Document, IsEmptyWhenNew) {
  EXPECT_EQ(Document().XML(), "");
}

TEST(Document, WritesAnElementWithoutDeclarationAndIndentation) {
  Document document;
  Element order = document.CreateElement("order");
  Element items = document.CreateElement("orderitems");
  items.AppendChild(document.CreateElement("orderitem"));
  items.AppendChild(document.CreateElement("orderitem"));
  order.AppendChild(items);
  document.AppendChild(order);
  EXPECT_EQ(document.XML(), "<order><orderitems><orderitem/><orderitem/></orderitems></order>");
}

TEST(Document, LeavesOutElementsThatStandNowhere) {
  Document document;
  document.CreateElement("loose");
  EXPECT_EQ(document.XML(), "");
  document.AppendChild(document.CreateElement("order"));
  EXPECT_EQ(document.XML(), "<order/>");
}

TEST(Document, WritesOneElementWithoutItsSurroundings) {
  const Document document = Loaded("<a><b x='1'><c/></b><b x='2'/></a>");
  EXPECT_EQ(document.SelectSingleNode("a/b").XML(), "<b x=\"1\"><c/></b>");
}

TEST(Document, RefusesASecondRoot) {
  Document document;
  document.AppendChild(document.CreateElement("first"));
  Element second = document.CreateElement("second");
  const Failure raised = FailureOf([&] { document.AppendChild(second); });
  EXPECT_EQ(raised.Number(), failure::kXmlFragment);
  EXPECT_NE(raised.Description().find("\"first\""), std::string::npos) << raised.Description();
  EXPECT_NE(raised.Description().find("\"second\""), std::string::npos) << raised.Description();
  EXPECT_EQ(document.XML(), "<first/>");
}

TEST(Document, TakesACopyOfAnotherDocumentsElementAsRoot) {
  Document source = Loaded("<a><b/></a>");
  Element b = source.SelectSingleNode("a/b");
  Document target;
  target.AppendChild(b);
  b.SetAttribute("later", "1");
  EXPECT_EQ(target.XML(), "<b/>");
  EXPECT_EQ(source.XML(), "<a><b later=\"1\"/></a>");
}

TEST(Document, HandsItsTextOverInParts) {
  std::string zText = "<a>";
  for (int i = 0; i < 5'000; ++i) {
    zText += "<b c=\"" + std::to_string(i) + "\"/>";
  }
  zText += "</a>";
  const Document document = Loaded(zText);
  std::string zWritten;
  std::size_t lLongest = 0;
  document.Write([&](std::string_view zvPart) {
    zWritten += zvPart;
    lLongest = std::max(lLongest, zvPart.size());
  });
  EXPECT_TRUE(zWritten == zText);
  EXPECT_LT(lLongest, zText.size() / 2);
}

TEST(Document, PassesOnWhatTheTakerOfItsTextRaises) {
  const Document document = Loaded("<a/>");
  EXPECT_EQ(FailureOf([&] {
              document.Write([](std::string_view) { throw Failure(failure::kOverflow, "no room"); });
            }).Number(),
            failure::kOverflow);
}

TEST(Document, ReadsWhatMayStandAroundTheElement) {
  const std::vector<std::string> texts = {
      "<a/>",
      "  <a />\r\n",
      "<a></a>",
      "<?xml version=\"1.0\"?><a/>",
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<a/>",
      "\xEF\xBB\xBF<a/>",
      "\xEF\xBB\xBF<?xml version=\"1.0\"?><a/>",
      "<!-- & < before --><a><!-- inside --></a><!-- after -->",
      "<?target data?><a/>",
      "<a>\n\t </a>",
  };
  for (const std::string& zText : texts) {
    EXPECT_EQ(Loaded(zText).XML(), "<a/>") << zText;
  }
}

TEST(Document, KeepsTextBetweenTags) {
  EXPECT_EQ(Loaded("<a>x &lt;&#233;<b/><![CDATA[<&#0;>]]></a>").XML(),
            "<a>x &lt;\xC3\xA9<b/><![CDATA[<&#0;>]]></a>");
}

TEST(Document, IsEmptyAfterATextThatItCannotRead) {
  const std::vector<std::pair<const char*, std::string>> texts = {
      {"nothing", ""},
      {"blanks", " \n"},
      {"no root", "<!-- only a comment -->"},
      {"only a declaration", "<?xml version='1.0'?>"},
      {"not closed", "<a>"},
      {"not closed below", "<a><b></a>"},
      {"closed only", "</a>"},
      {"closed twice", "<a/></a>"},
      {"wrong end tag", "<a></b>"},
      {"unfinished tag", "<a b='1'"},
      {"stray bracket", "<a/><"},
      {"two roots", "<a/><b/>"},
      {"text after", "<a/>x"},
      {"text before", "x<a/>"},
      {"text alone", "x"},
      {"no-break space before", "\xC2\xA0<a/>"},
      {"reference beside the root", "<a/>&#32;"},
      {"cdata beside the root", "<a/><![CDATA[x]]>"},
      {"document type", "<!DOCTYPE a><a/>"},
      {"entity declared by the document type", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"},
      {"declaration after a blank", " <?xml version='1.0'?><a/>"},
      {"declaration after a comment", "<!-- --><?xml version='1.0'?><a/>"},
      {"two declarations", "<?xml version='1.0'?><?xml version='1.0'?><a/>"},
      {"declaration in an element", "<a><?xml version='1.0'?></a>"},
      {"declaration in capitals", "<?XML version='1.0'?><a/>"},
      {"same attribute twice", "<a b='1' c='2' b='1'/>"},
      {"same attribute twice below", "<a><c/><d b='1' b='2'/></a>"},
      {"attribute without quotes", "<a b=1/>"},
      {"attribute without value", "<a b/>"},
      {"attributes without a blank between", "<a b='1'c='2'/>"},
      {"open bracket in an attribute", "<a b='<'/>"},
      {"name that begins with a digit", "<1/>"},
      {"attribute name that begins with a digit", "<a 1='x'/>"},
      {"element name that XML forbids", "<a\xC2\xA0/>"},
      {"attribute name that XML forbids", "<a b\xC3\x97='1'/>"},
      {"end of a cdata section in text", "<a>]]></a>"},
      {"lone ampersand in an attribute", "<a b='x & y'/>"},
      {"lone ampersand in text", "<a>x & y</a>"},
      {"unfinished reference", "<a b='&amp'/>"},
      {"empty reference", "<a b='&;'/>"},
      {"unknown entity", "<a b='&nbsp;'/>"},
      {"unknown entity in text", "<a>&nbsp;</a>"},
      {"entity in capitals", "<a b='&LT;'/>"},
      {"reference without digits", "<a b='&#;'/>"},
      {"reference without hexadecimal digits", "<a b='&#x;'/>"},
      {"reference with a capital x", "<a b='&#X41;'/>"},
      {"reference with a wrong digit", "<a b='&#65A;'/>"},
      {"reference with a sign", "<a b='&#-65;'/>"},
      {"reference to zero", "<a b='&#0;'/>"},
      {"space as a reference in text", "<a>x&#32;y</a>"},
      {"tab as a reference in text", "<a>&#9;</a>"},
      {"line feed as a reference in text", "<a>x&#xA;</a>"},
      {"carriage return as a reference in text", "<a>x&#xD;</a>"},
      {"reference to zero in text", "<a>x&#0;y</a>"},
      {"reference to a control character", "<a b='&#1;'/>"},
      {"hexadecimal reference to a control character", "<a b='&#x1F;'/>"},
      {"reference to a surrogate", "<a b='&#xD800;'/>"},
      {"reference to the last surrogate", "<a b='&#xDFFF;'/>"},
      {"reference to U+FFFE", "<a b='&#xFFFE;'/>"},
      {"reference to U+FFFF", "<a b='&#65535;'/>"},
      {"reference beyond Unicode", "<a b='&#x110000;'/>"},
      {"reference beyond 32 bits", "<a b='&#4294967361;'/>"},
      {"zero byte in an attribute", std::string("<a b='x\0y'/>", 12)},
      {"zero byte at the end", std::string("<a/>\0", 5)},
      {"zero byte and more", std::string("<a/>\0<b/>", 9)},
      {"control character", "<a b='\x01'/>"},
      {"control character in a comment", "<a/><!-- \x01 -->"},
      {"broken UTF-8", "<a b='\xC3'/>"},
      {"overlong form", "<a b='\xC0\xBC'/>"},
      {"surrogate in UTF-8", "<a b='\xED\xA0\x80'/>"},
      {"U+FFFE", "<a b='\xEF\xBF\xBE'/>"},
  };
  for (const auto& [zName, zText] : texts) {
    Document document = Loaded("<old/>");
    EXPECT_FALSE(document.LoadXML(zText)) << zName;
    EXPECT_EQ(document.XML(), "") << zName;
    EXPECT_FALSE(document.SelectSingleNode("//*")) << zName;
  }
}

TEST(Document, IsUsableAfterATextThatItCannotRead) {
  Document document;
  ASSERT_FALSE(document.LoadXML("<a>"));
  document.AppendChild(document.CreateElement("b"));
  EXPECT_EQ(document.XML(), "<b/>");
}

TEST(Document, ReplacesItsContentByTheTextThatItReads) {
  Document document = Loaded("<old><b/></old>");
  Element old = document.SelectSingleNode("old");
  ASSERT_TRUE(document.LoadXML("<new/>"));
  EXPECT_EQ(document.XML(), "<new/>");
  EXPECT_FALSE(document.SelectSingleNode("old"));
  // The element taken before still stands on what was replaced.
  old.SetAttribute("x", "1");
  EXPECT_EQ(old.XML(), "<old x=\"1\"><b/></old>");
  document.SelectSingleNode("new").AppendChild(old);
  EXPECT_EQ(document.XML(), "<new><old x=\"1\"><b/></old></new>");
}

TEST(Document, ReadsReferencesInBothForms) {
  const Document document =
      Loaded("<a b='&lt;&gt;&amp;&quot;&apos;&#65;&#x41;&#x10FFFF;&#000065;&amp;lt;'>&lt;&#x41;</a>");
  EXPECT_EQ(document.SelectSingleNode("a").Attribute("b"),
            "<>&\"'AA\xF4\x8F\xBF\xBF"
            "A&lt;");
  EXPECT_NE(document.XML().find(">&lt;A</a>"), std::string::npos) << document.XML();
}

TEST(Document, ReadsRawLineEndsAndTabsOfAnAttributeAsBlanks) {
  EXPECT_EQ(Loaded("<a b='1\t2\n3\r4\r\n5&#9;6&#10;7&#13;8'/>").SelectSingleNode("a").Attribute("b"),
            "1 2 3 4 5\t6\n7\r8");
}

TEST(Document, ReadsEveryLineEndBetweenTagsAsALineFeed) {
  EXPECT_EQ(Loaded("<a>1\r\n2\r3\n4</a>").XML(), "<a>1\n2\n3\n4</a>");
}

TEST(Document, ReadsAndWritesDeeplyNestedElements) {
  constexpr int kDepth = 100000;
  std::string zText;
  for (int l = 0; l < kDepth; ++l) {
    zText += "<a>";
  }
  std::string zOpen = zText;
  zText += "<b/>";
  for (int l = 0; l < kDepth; ++l) {
    zText += "</a>";
  }
  Document document;
  EXPECT_FALSE(document.LoadXML(zOpen));
  ASSERT_TRUE(document.LoadXML(zText));
  Document copy;
  copy.AppendChild(document.SelectSingleNode("a"));
  EXPECT_TRUE(copy.XML() == zText);
}

TEST(Document, SelectsTheFirstMatchInDocumentOrder) {
  const Document document = Loaded(
      "<lists><list id='1'><item n='a'/></list><item n='b'/><list id='2'><item n='c'/></list></lists>");
  EXPECT_EQ(document.SelectSingleNode("lists").Name(), "lists");
  EXPECT_EQ(document.SelectSingleNode("/lists/item").Attribute("n"), "b");
  EXPECT_EQ(document.SelectSingleNode("//item").Attribute("n"), "a");
  EXPECT_EQ(document.SelectSingleNode("lists/list[@id='2']/item").Attribute("n"), "c");
  EXPECT_EQ(document.SelectSingleNode("lists/item | lists/list/item").Attribute("n"), "a");
  EXPECT_EQ(document.SelectSingleNode("//list[2]").Attribute("id"), "2");
}

TEST(Document, SelectsNothingWhereNoElementMatches) {
  const Document document = Loaded("<a b='1'>text</a>");
  EXPECT_FALSE(document.SelectSingleNode("b"));
  EXPECT_FALSE(document.SelectSingleNode("A"));
  EXPECT_FALSE(document.SelectSingleNode("a/@b"));
  EXPECT_FALSE(document.SelectSingleNode("a/text()"));
  EXPECT_FALSE(document.SelectSingleNode("/"));
  EXPECT_FALSE(Document().SelectSingleNode("a"));
}

TEST(Document, SelectsNothingByAPathThatCannotBeRead) {
  const Document document = Loaded("<a/>");
  for (const char* zPath : {"", "a[", "///", "a b", "count(a)", "'a'", "$a", "unknown()", "a[unknown()]"}) {
    EXPECT_FALSE(document.SelectSingleNode(zPath)) << zPath;
  }
}

TEST(Document, SelectsNothingOfWhatStandsNowhere) {
  Document document;
  Element loose = document.CreateElement("loose");
  loose.AppendChild(document.CreateElement("below"));
  for (const char* zPath : {"loose", "//loose", "//below", "*", "/*", "//*"}) {
    EXPECT_FALSE(document.SelectSingleNode(zPath)) << zPath;
  }
  document.AppendChild(loose);
  EXPECT_EQ(document.SelectSingleNode("/*").Name(), "loose");
  EXPECT_EQ(document.SelectSingleNode("//below").Name(), "below");
}

TEST(Element, IsEmptyWhenNew) {
  EXPECT_FALSE(Element());
  EXPECT_TRUE(Document().CreateElement("a"));
}

TEST(Element, FailsOnEveryUseWhileEmpty) {
  Document document;
  Element element = document.CreateElement("a");
  Element empty;
  EXPECT_EQ(FailureOf([&] { empty.SetAttribute("a", "b"); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { empty.AddAttribute("a", "b"); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { (void)empty.Attribute("a"); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { (void)empty.Name(); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { (void)empty.XML(); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { empty.AppendChild(element); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { element.AppendChild(empty); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(FailureOf([&] { document.AppendChild(empty); }).Number(), failure::kObjectNotSet);
  EXPECT_EQ(element.XML(), "<a/>");
}

TEST(Element, IsEmptyOnceMovedFrom) {
  Element element = Document().CreateElement("a");
  const Element other = std::move(element);
  EXPECT_EQ(other.Name(), "a");
  // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is left is the empty element
  EXPECT_EQ(FailureOf([&] { (void)element.Name(); }).Number(), failure::kObjectNotSet);
}

TEST(Element, KeepsTheOrderOfItsAttributes) {
  Element element = Document().CreateElement("a");
  element.SetAttribute("z", "1");
  element.SetAttribute("b", "2");
  element.SetAttribute("m", "3");
  element.SetAttribute("z", "4");
  EXPECT_EQ(element.XML(), "<a z=\"4\" b=\"2\" m=\"3\"/>");
}

TEST(Element, KeepsAnEmptyAttribute) {
  Element element = Document().CreateElement("a");
  element.SetAttribute("b", "");
  element.SetAttribute("c", std::string_view());
  EXPECT_EQ(element.XML(), "<a b=\"\" c=\"\"/>");
  EXPECT_EQ(ThroughText(""), "");
}

TEST(Element, AnswersAnEmptyTextForAnAttributeThatIsNotThere) {
  EXPECT_EQ(Document().CreateElement("a").Attribute("b"), "");
}

TEST(Element, TakesNoMoreThanTheTextGiven) {
  Element element = Document().CreateElement("a");
  const std::string zWhole = "value and more";
  element.SetAttribute("name", std::string_view(zWhole).substr(0, 5));
  EXPECT_EQ(element.XML(), "<a name=\"value\"/>");
  element.SetAttribute("name", "");
  EXPECT_EQ(element.Attribute("name"), "");
}

TEST(Element, BringsEveryTextBackByteForByte) {
  for (const char* zValue : {"\"",
                             "'",
                             "\"'\"'",
                             "<a b=\"c\">&amp;</a>",
                             "&",
                             "&amp;",
                             "&#9;",
                             "&#x0;",
                             "]]>",
                             "<!--",
                             "-->",
                             "<?x?>",
                             "\t",
                             "\n",
                             "\r",
                             "\r\n",
                             "\n\r",
                             "a\tb\nc\rd\r\ne",
                             "  leading",
                             "trailing  ",
                             " ",
                             "   ",
                             "\t \n \r",
                             "O'Brien \"& Sons\" <Ltd>",
                             "\x7F\xC2\x80\xC2\x85\xC2\x9F",
                             "\xC2\xA0",
                             "\xE2\x80\xA8\xE2\x80\xA9",
                             "\xEF\xBB\xBF",
                             "\xEF\xBF\xBD",
                             "\xC3\xA9\xC3\x9F\xE6\x97\xA5\xE6\x9C\xAC",
                             "\xF0\x9F\x94\xA7",
                             "\xF0\x9F\xBF\xBE",
                             "\xF4\x8F\xBF\xBF",
                             "e\xCC\x81",
                             "\xD7\xA9\xD7\x9C"}) {
    EXPECT_EQ(ThroughText(zValue), zValue);
  }
}

TEST(Element, BringsBackEveryCharacterThatXMLHas) {
  std::string zAll = "\t\n\r";
  for (char32_t lCode = 0x20; lCode <= 0x10FFFF; ++lCode) {
    if (!(lCode >= 0xD800 && lCode <= 0xDFFF) && lCode != 0xFFFE && lCode != 0xFFFF) {
      zAll += UTF8(lCode);
    }
  }
  EXPECT_TRUE(ThroughText(zAll) == zAll);
}

TEST(Element, BringsBackALongText) {
  const std::string zLong(3'000'000, '&');
  EXPECT_TRUE(ThroughText(zLong) == zLong);
}

TEST(Element, RefusesATextThatXMLCannotHold) {
  using namespace std::string_literals;
  const std::vector<std::pair<std::string, int>> values = {
      {"\0"s, 1},
      {"ab\0cd"s, 3},
      {"ab\0"s, 3},
      {"\x01"s, 1},
      {"tab\tand\x1F"s, 8},
      {"\x0B"s, 1},
      {"\x0C"s, 1},
      {"\xC3\xA9\x08"s, 3},
      {"\x80"s, 1},
      {"abc\xC3"s, 4},
      {"\xC0\x80"s, 1},
      {"\xED\xA0\x80"s, 1},
      {"a\xED\xBF\xBF"s, 2},
      {"ab\xEF\xBF\xBE"s, 3},
      {"\xEF\xBF\xBF"s, 1},
      {"\xF4\x90\x80\x80"s, 1},
      {"\xFF"s, 1},
  };
  for (const auto& [zValue, lByte] : values) {
    Element element = Document().CreateElement("orderitem");
    element.SetAttribute("model", "kept");
    for (const char* zName : {"model", "customernotes"}) {
      const Failure raised = FailureOf([&, &zText = zValue] { element.SetAttribute(zName, zText); });
      EXPECT_EQ(raised.Number(), failure::kXmlCharacter) << testing::PrintToString(zValue);
      EXPECT_NE(raised.Description().find("\"orderitem\""), std::string::npos) << raised.Description();
      EXPECT_NE(raised.Description().find("\"" + std::string(zName) + "\""), std::string::npos)
          << raised.Description();
      EXPECT_NE(raised.Description().find("at byte " + std::to_string(lByte) + " "), std::string::npos)
          << raised.Description();
    }
    EXPECT_EQ(element.XML(), "<orderitem model=\"kept\"/>");
  }
}

TEST(Element, TakesAttributesOneBehindTheOther) {
  Document document;
  Element element = document.CreateElement("a");
  element.AddAttribute("c", "1");
  element.AddAttribute("b", "<2>");
  element.AddAttribute("empty", "");
  EXPECT_EQ(FailureOf([&] { element.AddAttribute("d", "\x01"); }).Number(), failure::kXmlCharacter);
  EXPECT_EQ(element.XML(), "<a c=\"1\" b=\"&lt;2>\" empty=\"\"/>");
  element.SetAttribute("b", "3");
  EXPECT_EQ(element.XML(), "<a c=\"1\" b=\"3\" empty=\"\"/>");
}

TEST(Element, IsTheSameElementInEveryCopyOfItsHandle) {
  Document document;
  Element first = document.CreateElement("a");
  Element second = first;
  second.SetAttribute("b", "1");
  EXPECT_EQ(first.Attribute("b"), "1");
}

TEST(Element, StaysTheSameElementWhereverItMovesInItsDocument) {
  Document document;
  Element left = document.CreateElement("left");
  Element right = document.CreateElement("right");
  Element child = document.CreateElement("child");
  child.AppendChild(document.CreateElement("below"));
  left.AppendChild(child);
  EXPECT_EQ(left.XML(), "<left><child><below/></child></left>");
  right.AppendChild(child);
  EXPECT_EQ(left.XML(), "<left/>");
  child.SetAttribute("a", "1");
  EXPECT_EQ(right.XML(), "<right><child a=\"1\"><below/></child></right>");
}

TEST(Element, GoesToTheEndWhenAppendedAgain) {
  Document document = Loaded("<a><b/><c/></a>");
  document.SelectSingleNode("a").AppendChild(document.SelectSingleNode("a/b"));
  EXPECT_EQ(document.XML(), "<a><c/><b/></a>");
}

TEST(Element, IsCopiedWithAllBelowItIntoAnotherDocument) {
  const std::string zChild =
      "<b x=\"1\" y=\"&quot;&#10;\">text<c><d z=\"2\"/></c><![CDATA[raw]]><e/>more</b>";
  Document source = Loaded("<a>" + zChild + "<f/></a>");
  Element child = source.SelectSingleNode("a/b");
  Document target;
  Element parent = target.CreateElement("parent");
  parent.AppendChild(child);
  parent.AppendChild(child);
  child.SetAttribute("x", "changed");
  EXPECT_EQ(parent.XML(), "<parent>" + zChild + zChild + "</parent>");
  EXPECT_EQ(source.SelectSingleNode("a/b").Attribute("x"), "changed");
}

TEST(Element, CannotStandBelowItself) {
  Document document = Loaded("<a><b><c/></b></a>");
  Element b = document.SelectSingleNode("a/b");
  Element c = document.SelectSingleNode("a/b/c");
  EXPECT_EQ(FailureOf([&] { b.AppendChild(b); }).Number(), failure::kXmlFragment);
  EXPECT_EQ(FailureOf([&] { c.AppendChild(b); }).Number(), failure::kXmlFragment);
  EXPECT_EQ(document.XML(), "<a><b><c/></b></a>");
}

TEST(Element, KeepsItsDocumentAlive) {
  Element element = Loaded("<a><b c='1'/></a>").SelectSingleNode("a/b");
  element.SetAttribute("d", "2");
  EXPECT_EQ(element.XML(), "<b c=\"1\" d=\"2\"/>");
}

TEST(Element, TakesTenThousandGraftedLinesInOrder) {
  Document document;
  Element items = document.CreateElement("orderitems");
  std::string zExpected = "<orderitems>";
  for (int l = 0; l < 10000; ++l) {
    const std::string zLine =
        "<orderitem itemnumber=\"" + std::to_string(l) + "\" description=\"a &amp; b\"/>";
    items.AppendChild(Loaded(zLine).SelectSingleNode("orderitem"));
    zExpected += zLine;
  }
  document.AppendChild(items);
  EXPECT_TRUE(document.XML() == zExpected + "</orderitems>");
}

}  // namespace
