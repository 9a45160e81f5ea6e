#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace test {

// Bytes from one process to another. It is made before the processes part; then each keeps the end that it
// uses, so that a reader sees the end when the last writer has gone.
class Pipe {
 public:
  Pipe();
  ~Pipe();
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void KeepReading();
  void KeepWriting();

  // Throws std::runtime_error when the bytes cannot be written.
  void Write(std::string_view zvBytes) const;
  // Waits for the next byte. Nothing when every writer has gone.
  std::optional<char> Read() const;

 private:
  void Close(std::size_t lvEnd);

  std::array<int, 2> m_lEnds{-1, -1};
};

}  // namespace test
