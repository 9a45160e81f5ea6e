#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace test {

// Sets an environment variable, or removes it (null), for the length of a scope.
class EnvironmentScope {
 public:
  EnvironmentScope(const char* zvName, const char* zvValue) : m_zName(zvName) {
    if (const char* zOld = std::getenv(zvName)) {
      m_zOld = zOld;
    }
    Put(zvValue);
  }
  ~EnvironmentScope() { Put(m_zOld ? m_zOld->c_str() : nullptr); }
  EnvironmentScope(const EnvironmentScope&) = delete;
  EnvironmentScope& operator=(const EnvironmentScope&) = delete;

 private:
  void Put(const char* zvValue) {
    if (zvValue == nullptr) {
      unsetenv(m_zName);
    } else {
      setenv(m_zName, zvValue, 1);
    }
  }

  const char* m_zName;
  std::optional<std::string> m_zOld;
};

}  // namespace test
