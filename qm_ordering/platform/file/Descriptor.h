#pragma once

#include <unistd.h>

namespace qm_ordering::file {

// A descriptor, or the number that a call which failed gave in its place; closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int lvNumber) : m_lNumber(lvNumber) {}
  ~Descriptor() {
    if (m_lNumber >= 0) {
      close(m_lNumber);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const { return m_lNumber >= 0; }
  int Number() const { return m_lNumber; }

 private:
  int m_lNumber;
};

}  // namespace qm_ordering::file
