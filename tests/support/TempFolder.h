#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace test {

// A fresh folder that goes, with all in it, at the end of the scope.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string Path() const { return m_zPath.string(); }
  std::string File(const std::string& zvName) const { return (m_zPath / zvName).string(); }

 private:
  std::filesystem::path m_zPath;
};

// The files and folders whose paths begin with that text, in order; its folder must be there.
std::vector<std::string> PathsBeginningWith(const std::string& zvStart);

// The file's bytes; fails the test when it cannot be read.
std::string ReadFile(const std::string& zvPath);
void WriteFile(const std::string& zvPath, const std::string& zvContent);

}  // namespace test
