#include "bench/Comparison.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace bench {

namespace {

double Quantile(std::vector<double> dvValues, double dvPart) {
  std::sort(dvValues.begin(), dvValues.end());
  const double dPosition = dvPart * static_cast<double>(dvValues.size() - 1);
  const auto lBelow = static_cast<std::size_t>(dPosition);
  const std::size_t lAbove = std::min(lBelow + 1, dvValues.size() - 1);
  const double dShare = dPosition - static_cast<double>(lBelow);
  return dvValues[lBelow] * (1 - dShare) + dvValues[lAbove] * dShare;
}

double Median(const std::vector<double>& dvValues) {
  return Quantile(dvValues, 0.5);
}

std::string TimeText(double dvSeconds) {
  char zText[32];
  if (dvSeconds < 1e-3) {
    std::snprintf(zText, sizeof zText, "%.1f us", dvSeconds * 1e6);
  } else {
    std::snprintf(zText, sizeof zText, "%.2f ms", dvSeconds * 1e3);
  }
  return zText;
}

std::string Number(double dvNumber) {
  char zText[32];
  std::snprintf(zText, sizeof zText, "%.2f", dvNumber);
  return zText;
}

}  // namespace

bool Comparison::ReportContext(const Context& context) {
  std::ostringstream text;
  PrintBasicContext(&text, context);
  GetErrorStream() << text.str();
  return true;
}

Comparison::Row& Comparison::RowOf(const std::string& zvWork, const std::string& zvSize) {
  for (Row& row : m_oRows) {
    if (row.Work == zvWork && row.Size == zvSize) {
      return row;
    }
  }
  return m_oRows.emplace_back(Row{zvWork, zvSize, {}});
}

void Comparison::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      GetErrorStream() << run.benchmark_name() << " failed: " << run.error_message << "\n";
      m_bFailed = true;
    } else if (run.run_type == Run::RT_Iteration) {
      const std::string& zName = run.run_name.function_name;
      const std::size_t lProgram = zName.rfind('/');
      const std::size_t lSize = zName.rfind('/', lProgram - 1);
      RowOf(zName.substr(0, lSize), zName.substr(lSize + 1, lProgram - lSize - 1))
          .Seconds[zName.substr(lProgram + 1)]
          .push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
    }
  }
}

void Comparison::Finalize() {
  std::ostream& out = GetOutputStream();
  out << "| work | lines | " << m_zPrograms.front();
  for (std::size_t i = 1; i < m_zPrograms.size(); ++i) {
    out << " | " << m_zPrograms[i];
  }
  out << " | spread |\n|---|--:|";
  for (std::size_t i = 0; i <= m_zPrograms.size(); ++i) {
    out << "--:|";
  }
  out << "\n";
  for (const Row& row : m_oRows) {
    const auto base = row.Seconds.find(m_zPrograms.front());
    if (base == row.Seconds.end()) {
      continue;
    }
    const double dBase = Median(base->second);
    out << "| " << row.Work << " | " << row.Size << " | " << TimeText(dBase);
    double dSpread = 0;
    for (const auto& [zProgram, dSeconds] : row.Seconds) {
      const double dMedian = Median(dSeconds);
      dSpread = std::max(dSpread, (Quantile(dSeconds, 0.75) - Quantile(dSeconds, 0.25)) / dMedian);
    }
    for (std::size_t i = 1; i < m_zPrograms.size(); ++i) {
      const auto other = row.Seconds.find(m_zPrograms[i]);
      out << " | " << (other == row.Seconds.end() ? "" : Number(Median(other->second) / dBase));
    }
    out << " | " << Number(dSpread) << " |\n";
  }
}

}  // namespace bench
