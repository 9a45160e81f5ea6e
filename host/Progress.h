#pragma once

#include <cstddef>
#include <string>

#include "host/Output.h"

namespace host {

// A count and a bar on stderr, rewritten in place, for work that takes a while. Shows nothing when stderr is
// not a terminal. The line is gone at the end of the scope.
class Progress {
 public:
  Progress(const Output& out, std::string zvWhat, std::size_t lvTotal);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Done(std::size_t lvCount);

 private:
  std::string m_zWhat;
  std::size_t m_lTotal;
  bool m_bShown;
  std::size_t m_lPercent = 101;  // of what is on the screen
};

}  // namespace host
