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

}  // namespace

const std::vector<Work>& Works() {
  static const std::vector<Work> works = {
      {"add a line",
       {10, 100, 1'000, 10'000, 100'000},
       20,
       false,
       [](OrderProgram& program, std::int32_t lvLines) { program.AddLine(MakeLine(lvLines + ++g_lRound)); },
       [](OrderProgram& program, std::int32_t lvLines) {
         program.RemoveLine(MakeLine(lvLines + g_lRound).ItemNumber);
       }},
      {"merge into a line",
       {100, 1'000, 100'000},
       20,
       false,
       [](OrderProgram& program, std::int32_t lvLines) { program.AddLine(MakeLine(lvLines / 2)); }},
      {"change 100 lines",
       {100, 1'000, 100'000},
       20,
       false,
       [](OrderProgram& program, std::int32_t lvLines) { program.ChangeLines(ChangedLines(lvLines)); }},
      {"save the summary",
       {10},
       20,
       false,
       [](OrderProgram& program, std::int32_t) {
         program.SaveSummary("Value " + std::to_string(++g_lRound));
       }},
      {"load the lines",
       {1'000, 10'000, 100'000},
       5,
       false,
       [](OrderProgram& program, std::int32_t) { program.LoadLines(); }},
      {"make the document",
       {1'000, 10'000, 100'000},
       5,
       true,
       [](OrderProgram& program, std::int32_t) { program.Document(); }},
      {"show the order",
       {10, 100},
       100,
       false,
       [](OrderProgram& program, std::int32_t) { program.ShowOrder(); }},
  };
  return works;
}

}  // namespace bench
