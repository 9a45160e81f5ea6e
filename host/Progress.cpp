#include "host/Progress.h"

#include <cstdio>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kBar = 30;
constexpr const char* kClearLine = "\r\x1B[K";

}  // namespace

Progress::Progress(const Output& out, std::string zvWhat, std::size_t lvTotal)
    : m_zWhat(std::move(zvWhat)), m_lTotal(lvTotal), m_bShown(out.ShowsProgress() && lvTotal > 0) {
  Done(0);
}

Progress::~Progress() {
  if (m_bShown) {
    std::fputs(kClearLine, stderr);
  }
}

void Progress::Done(std::size_t lvCount) {
  if (!m_bShown || lvCount * 100 / m_lTotal == m_lPercent) {
    return;
  }
  m_lPercent = lvCount * 100 / m_lTotal;
  const std::size_t lFilled = lvCount * kBar / m_lTotal;
  const std::string zLine = m_zWhat + " " + std::to_string(lvCount) + "/" + std::to_string(m_lTotal) + " [" +
                            std::string(lFilled, '#') + std::string(kBar - lFilled, ' ') + "]";
  std::fputs((kClearLine + zLine).c_str(), stderr);
}

}  // namespace host
