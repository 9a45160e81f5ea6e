#include "bench/Comparison.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

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

void Comparison::AddRow(const std::string& zvWork, const std::string& zvSize) {
  m_oRows.push_back({zvWork, zvSize, {}});
}

Comparison::Row& Comparison::RowOf(const std::string& zvWork, const std::string& zvSize) {
  for (Row& row : m_oRows) {
    if (row.Work == zvWork && row.Size == zvSize) {
      return row;
    }
  }
  throw std::out_of_range("There is no row for " + zvWork);
}

void Comparison::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      GetErrorStream() << run.benchmark_name() << " failed: " << run.error_message << "\n";
      m_bFailed = true;
    } else if (run.run_type == Run::RT_Iteration) {
      const std::string& zName = run.run_name.function_name;
      const std::size_t lSize = zName.rfind('/');
      Row& row = RowOf(zName.substr(0, lSize), zName.substr(lSize + 1));
      for (const auto& [zProgram, counter] : run.counters) {
        row.Seconds[zProgram].push_back(counter.value);
      }
    }
  }
}

void Comparison::Finalize() {
  std::ostream& out = GetOutputStream();
  out << "| work | size | " << m_zPrograms.front();
  for (std::size_t i = 1; i < m_zPrograms.size(); ++i) {
    out << " | " << m_zPrograms[i];
  }
  out << " | middle half: " << m_zPrograms[1] << " |\n|---|--:|";
  for (std::size_t i = 0; i <= m_zPrograms.size(); ++i) {
    out << "--:|";
  }
  out << "\n";
  for (const Row& row : m_oRows) {
    const auto base = row.Seconds.find(m_zPrograms.front());
    if (base == row.Seconds.end()) {
      continue;
    }
    out << "| " << row.Work << " | " << row.Size << " | " << TimeText(Median(base->second));
    std::string zSpread;
    for (std::size_t i = 1; i < m_zPrograms.size(); ++i) {
      out << " | ";
      const auto other = row.Seconds.find(m_zPrograms[i]);
      if (other == row.Seconds.end()) {
        continue;
      }
      std::vector<double> dRatios;
      for (std::size_t j = 0; j < base->second.size(); ++j) {
        dRatios.push_back(other->second[j] / base->second[j]);
      }
      out << Number(Median(dRatios));
      if (i == 1) {
        zSpread = Number(Quantile(dRatios, 0.25)) + " to " + Number(Quantile(dRatios, 0.75));
      }
    }
    out << " | " << zSpread << " |\n";
  }
}

}  // namespace bench
