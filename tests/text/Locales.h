#pragma once

#include <string>

#include "tests/support/EnvironmentScope.h"

namespace test {

// Makes the locales that the tests need, once for each build folder, and finds them without the system's own.
// Raises std::runtime_error when localedef cannot make one.
std::string LocaleFolder();

// The user's locale, by its name, for the length of a scope.
class LocaleScope {
 public:
  explicit LocaleScope(const char* zvName)
      : m_oPath("LOCPATH", LocaleFolder().c_str()), m_oName("LC_ALL", zvName) {}

 private:
  EnvironmentScope m_oPath;
  EnvironmentScope m_oName;
};

}  // namespace test
