#include "tests/support/StrictXml.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "tests/support/TempFolder.h"

namespace test {

namespace {

// The parser's canonical form: double quotes, no blanks but one before each attribute, tags in pairs, every
// character as itself but for the six that the form replaces.
std::string CanonicalForm(const std::string& zvXML) {
  const TempFolder folder;
  WriteFile(folder.File("document.xml"), zvXML);
  const std::string zCommand = "xmllint --huge --nonet --c14n '" + folder.File("document.xml") + "' 2>'" +
                               folder.File("messages") + "'";
  FILE* pPipe = popen(zCommand.c_str(), "r");
  if (pPipe == nullptr) {
    throw std::runtime_error("xmllint cannot be started");
  }
  std::string zOutput;
  std::array<char, 65536> buffer{};
  while (const std::size_t lRead = fread(buffer.data(), 1, buffer.size(), pPipe)) {
    zOutput.append(buffer.data(), lRead);
  }
  const int lStatus = pclose(pPipe);
  const std::string zMessages = ReadFile(folder.File("messages"));
  if (!WIFEXITED(lStatus) || WEXITSTATUS(lStatus) != 0 || !zMessages.empty()) {
    throw std::runtime_error("xmllint (status " + std::to_string(lStatus) + "): " + zMessages);
  }
  return zOutput;
}

class CanonicalReader {
 public:
  explicit CanonicalReader(std::string_view zvText) : m_zRest(zvText) {}

  XmlElement ReadElement() {
    Expect("<");
    XmlElement element;
    element.Name = TakeUpTo(" >");
    while (m_zRest.starts_with(' ')) {
      m_zRest.remove_prefix(1);
      const std::string zName = TakeUpTo("=");
      Expect("=\"");
      element.Attributes[zName] = Unescaped(TakeUpTo("\""));
      Expect("\"");
    }
    Expect(">");
    while (!m_zRest.starts_with("</")) {
      element.Children.push_back(ReadElement());
    }
    Expect("</" + element.Name + ">");
    return element;
  }

  void ExpectEnd() { Expect("\n"); }

 private:
  void Expect(const std::string& zvText) {
    if (!m_zRest.starts_with(zvText)) {
      throw std::runtime_error("\"" + zvText + "\" is missing before \"" +
                               std::string(m_zRest.substr(0, 40)) + "\"");
    }
    m_zRest.remove_prefix(zvText.size());
  }

  std::string TakeUpTo(const char* zvEnds) {
    const std::string zTaken(m_zRest.substr(0, m_zRest.find_first_of(zvEnds)));
    m_zRest.remove_prefix(zTaken.size());
    return zTaken;
  }

  static std::string Unescaped(std::string_view zvText) {
    static const std::map<std::string, char, std::less<>> kCharacters = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&quot;", '"'}, {"&#x9;", '\t'}, {"&#xA;", '\n'}, {"&#xD;", '\r'}};
    std::string zPlain;
    while (!zvText.empty()) {
      const std::size_t lPlain = zvText.find('&');
      zPlain += zvText.substr(0, lPlain);
      zvText.remove_prefix(lPlain == std::string_view::npos ? zvText.size() : lPlain);
      if (!zvText.empty()) {
        const std::string_view zReference = zvText.substr(0, zvText.find(';') + 1);
        zPlain += kCharacters.at(std::string(zReference));
        zvText.remove_prefix(zReference.size());
      }
    }
    return zPlain;
  }

  std::string_view m_zRest;
};

}  // namespace

XmlElement ReadStrictly(const std::string& zvXML) {
  // The canonical form of a document has no line end behind its element.
  const std::string zCanonical = CanonicalForm(zvXML) + "\n";
  CanonicalReader reader(zCanonical);
  XmlElement root = reader.ReadElement();
  reader.ExpectEnd();
  return root;
}

}  // namespace test
