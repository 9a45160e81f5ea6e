#include "tests/support/Pipe.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace test {

Pipe::Pipe() {
  if (pipe(m_lEnds.data()) != 0) {
    throw std::runtime_error("no pipe");
  }
}

Pipe::~Pipe() {
  Close(0);
  Close(1);
}

void Pipe::KeepReading() {
  Close(1);
}

void Pipe::KeepWriting() {
  Close(0);
}

void Pipe::Write(std::string_view zvBytes) const {
  if (write(m_lEnds[1], zvBytes.data(), zvBytes.size()) != static_cast<ssize_t>(zvBytes.size())) {
    throw std::runtime_error("the pipe takes nothing");
  }
}

std::optional<char> Pipe::Read() const {
  char cByte = 0;
  ssize_t lRead = 0;
  do {
    lRead = read(m_lEnds[0], &cByte, 1);
  } while (lRead < 0 && errno == EINTR);
  return lRead == 1 ? std::optional(cByte) : std::nullopt;
}

void Pipe::Close(std::size_t lvEnd) {
  if (m_lEnds[lvEnd] >= 0) {
    close(m_lEnds[lvEnd]);
    m_lEnds[lvEnd] = -1;
  }
}

}  // namespace test
