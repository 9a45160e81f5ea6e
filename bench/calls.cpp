// What a member costs that is reached by its name, beside a direct call, in one run. The times are those of a
// thousand calls.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/Comparison.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/qm_ordering_c.h"
#include "qm_ordering/registry/LateBinding.h"

namespace bench {

namespace {

constexpr int kCalls = 1'000;
constexpr const char* kDirect = "C++";
constexpr const char* kByName = "by name";
constexpr const char* kInC = "in C";

void Require(std::int32_t lvAnswer) {
  if (lvAnswer != 0) {
    throw std::runtime_error("A call failed with number " + std::to_string(lvAnswer));
  }
}

// One item, reached in the three ways.
struct Item {
  Item() {
    Require(qm_ordering_create("OrderItem", &Number));
    InC.kind = QM_ORDERING_TEXT;
  }
  ~Item() { qm_ordering_release(Number); }
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;

  // Of that many letters.
  void Fill(std::int32_t lvLetters) {
    Text.assign(static_cast<std::size_t>(lvLetters), 'x');
    Direct->Description(Text);
    InC.as.text = {Text.data(), Text.size()};
    Require(qm_ordering_put(Number, "Description", &InC));
  }

  std::shared_ptr<qm_ordering::OrderItem> Direct = std::make_shared<qm_ordering::OrderItem>();
  std::shared_ptr<qm_ordering::Object> ByName = Direct;
  qm_ordering_object Number = 0;
  std::string Text;
  qm_ordering_value InC{};
};

struct Call {
  const char* Name;
  std::function<void(Item&)> Direct;
  std::function<void(Item&)> ByName;
  std::function<void(Item&)> InC;
};

const Call kReads = {
    "read a text",
    [](Item& item) {
      std::string zCopy = item.Direct->Description();
      benchmark::DoNotOptimize(zCopy);
    },
    [](Item& item) {
      auto vText = qm_ordering::GetProperty(item.ByName, "Description");
      benchmark::DoNotOptimize(vText);
    },
    [](Item& item) {
      qm_ordering_value text;
      Require(qm_ordering_get(item.Number, "Description", nullptr, 0, &text));
      benchmark::DoNotOptimize(text);
      Require(qm_ordering_clear(&text));
    },
};

const Call kWrites = {
    "write a text",
    [](Item& item) { item.Direct->Description(item.Text); },
    [](Item& item) { qm_ordering::PutProperty(item.ByName, "Description", std::string_view(item.Text)); },
    [](Item& item) { Require(qm_ordering_put(item.Number, "Description", &item.InC)); },
};

double SecondsOf(const std::function<void(Item&)>& fvCall, Item& orItem) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kCalls; ++i) {
    fvCall(orItem);
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int Run(int lvArguments, char** zvArguments) {
  benchmark::Initialize(&lvArguments, zvArguments);
  if (benchmark::ReportUnrecognizedArguments(lvArguments, zvArguments)) {
    return 2;
  }
  Comparison comparison({kDirect, kInC, kByName});
  Item item;
  for (const Call* pCall : {&kReads, &kWrites}) {
    for (const std::int32_t lLetters : {8, 40, 400}) {
      comparison.AddRow(pCall->Name, std::to_string(lLetters));
      const std::string zName = std::string(pCall->Name) + "/" + std::to_string(lLetters);
      benchmark::RegisterBenchmark(zName.c_str(),
                                   [&item, pCall, lLetters](benchmark::State& state) {
                                     item.Fill(lLetters);
                                     for ([[maybe_unused]] const auto& unused : state) {
                                       state.counters[kInC] = SecondsOf(pCall->InC, item);
                                       state.counters[kByName] = SecondsOf(pCall->ByName, item);
                                       state.counters[kDirect] = SecondsOf(pCall->Direct, item);
                                       state.SetIterationTime(state.counters[kInC]);
                                     }
                                   })
          ->UseManualTime()
          ->Iterations(1);
    }
  }
  benchmark::RunSpecifiedBenchmarks(&comparison);
  return comparison.HasFailed() ? 1 : 0;
}

}  // namespace

}  // namespace bench

int main(int lvArguments, char** zvArguments) try {
  return bench::Run(lvArguments, zvArguments);
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
