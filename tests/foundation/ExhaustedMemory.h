#pragma once

namespace test {

// For the length of a scope every allocation by operator new fails on this thread.
class ExhaustedMemory {
 public:
  ExhaustedMemory();
  ~ExhaustedMemory();
  ExhaustedMemory(const ExhaustedMemory&) = delete;
  ExhaustedMemory& operator=(const ExhaustedMemory&) = delete;
};

}  // namespace test
