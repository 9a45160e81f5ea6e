#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace bench {

// Collects the times of all repetitions and prints, at the end, for each work and size: the median of the
// hand-written program's, and the medians of the others' as multiples of it in the same repetition.
// Benchmarks are named WORK/SIZE and have a counter for the time of each program.
class Comparison : public benchmark::BenchmarkReporter {
 public:
  explicit Comparison(std::vector<std::string> zvPrograms) : m_zPrograms(std::move(zvPrograms)) {}

  // The rows stand in the order in which they were added.
  void AddRow(const std::string& zvWork, const std::string& zvSize);

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  bool HasFailed() const { return m_bFailed; }

 private:
  struct Row {
    std::string Work;
    std::string Size;
    std::map<std::string, std::vector<double>> Seconds;  // by program
  };

  Row& RowOf(const std::string& zvWork, const std::string& zvSize);

  std::vector<std::string> m_zPrograms;  // the first is what the others are compared with
  std::vector<Row> m_oRows;
  bool m_bFailed = false;
};

}  // namespace bench
