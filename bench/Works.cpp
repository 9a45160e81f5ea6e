#include "bench/Works.h"

namespace bench {

namespace {

// Counts the rounds, so that none finds written already what it writes.
std::int32_t g_lRound = 0;

// A hundred lines, spread over the order.
std::vector<Line> ChangedLines(std::int32_t lvLines) {
  std::vector<Line> lines;
  for (std::int32_t i = 0; i < 100; ++i) {
    Line line = MakeLine(static_cast<std::int32_t>(std::int64_t{i} * lvLines / 100));
    line.Quantity = line.SellQuantity * (1 + (i + g_lRound) % 50);
    line.Price += 25 * (g_lRound % 1000);
    line.ExtendedPrice = line.Price * line.Quantity;
    lines.push_back(line);
  }
  ++g_lRound;
  return lines;
}

std::vector<Line> Nothing(std::int32_t) {
  return {};
}

}  // namespace

const std::vector<Work>& Works() {
  static const std::vector<Work> works = {
      {"add a line",
       kOrder,
       {10, 100, 1'000, 10'000, 100'000},
       20,
       false,
       [](std::int32_t lvLines) { return std::vector{MakeLine(lvLines + ++g_lRound)}; },
       [](OrderProgram& program) { program.AddLine(); },
       [](OrderProgram& program, const std::vector<Line>& lines) {
         program.RemoveLine(lines.front().ItemNumber);
       }},
      {"merge into a line",
       kOrder,
       {100, 1'000, 100'000},
       20,
       false,
       [](std::int32_t lvLines) { return std::vector{MakeLine(lvLines / 2)}; },
       [](OrderProgram& program) { program.AddLine(); }},
      {"change 100 lines",
       kOrder,
       {100, 1'000, 100'000},
       20,
       false,
       ChangedLines,
       [](OrderProgram& program) { program.ChangeLines(); }},
      {"save the summary",
       kOrder,
       {10, 1'000, 100'000},
       20,
       false,
       Nothing,
       [](OrderProgram& program) { program.SaveSummary("Value " + std::to_string(++g_lRound)); }},
      {"load the lines",
       kOrder,
       {1'000, 10'000, 100'000},
       5,
       false,
       Nothing,
       [](OrderProgram& program) { program.LoadLines(); }},
      {"make the document",
       kOrder,
       {1'000, 10'000, 100'000},
       5,
       true,
       Nothing,
       [](OrderProgram& program) { program.Document(); }},
      {"show the order",
       kOrder,
       {10, 1'000, 100'000},
       50,
       false,
       Nothing,
       [](OrderProgram& program) { program.ShowOrder(); }},
      {"save the lists",
       kLists,
       {1'000, 10'000, 100'000},
       5,
       false,
       Nothing,
       [](OrderProgram& program) { program.SaveLists(); }},
      {"show the history",
       kHistory,
       {1'000, 10'000, 100'000},
       5,
       false,
       Nothing,
       [](OrderProgram& program) { program.ShowHistory(); }},
      {"import an older history",
       kImport,
       {10'000, 100'000, 1'000'000},
       5,
       false,
       Nothing,
       [](OrderProgram& program) { program.ImportHistory(); },
       [](OrderProgram& program, const std::vector<Line>&) { program.EmptyHistory(); }},
  };
  return works;
}

}  // namespace bench
