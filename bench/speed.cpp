// The library beside a hand-written program over the same engine and beside what a user would pick instead,
// all doing the same work on stores of their own, in one run.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <map>
#include <stdexcept>

#include "bench/BenchStore.h"
#include "bench/Comparison.h"
#include "bench/Memory.h"
#include "bench/OrderProgram.h"
#include "bench/Works.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"

namespace bench {

namespace {

// The folder of all stores of the run; it goes with them at the end.
class Ground {
 public:
  explicit Ground(const std::string& zvParent) : m_zFolder(zvParent + "/qm_ordering_bench.XXXXXX") {
    if (mkdtemp(m_zFolder.data()) == nullptr) {
      throw std::runtime_error("No folder can be made in " + zvParent +
                               "; name another one with --folder=DIR.");
    }
  }
  ~Ground() {
    m_oPrograms.clear();
    std::filesystem::remove_all(m_zFolder);
  }
  Ground(const Ground&) = delete;
  Ground& operator=(const Ground&) = delete;

  const std::string& Folder() const { return m_zFolder; }

  // The program on its store of that kind and size, both made when they are first asked for.
  OrderProgram& Program(const Contestant& contestant, const StoreKind& kind, std::int32_t lvSize) {
    const std::string zStore = Store(contestant, kind, lvSize);
    auto& oProgram = m_oPrograms[zStore];
    if (oProgram == nullptr) {
      oProgram = contestant.Make(zStore);
      oProgram->LoadLines();
    }
    return *oProgram;
  }

  std::string Store(const Contestant& contestant, const StoreKind& kind, std::int32_t lvSize) {
    const std::string zStore =
        m_zFolder + "/" + contestant.Name + " " + std::to_string(lvSize) + " " + kind.Counted;
    if (!std::filesystem::exists(zStore)) {
      kind.Make(zStore, lvSize);
    }
    return zStore;
  }

 private:
  std::string m_zFolder;
  std::map<std::string, std::unique_ptr<OrderProgram>> m_oPrograms;  // by the folders of their stores
};

using Clock = std::chrono::steady_clock;

// More than this many are measured less often: a round takes seconds.
constexpr std::int32_t kLarge = 100'000;
constexpr int kRepetitionsOfLarge = 3;

// The mean time of some rounds of the work.
double SecondsOf(OrderProgram& program, const Work& work, std::int32_t lvSize, int lvRounds) {
  double dSeconds = 0;
  // The first warms the caches, whatever ran before; what takes seconds does not depend on them.
  for (int i = lvSize > kLarge ? 1 : 0; i <= lvRounds; ++i) {
    const std::vector<Line> lines = work.Entered(lvSize);
    program.Enter(lines);
    const auto start = Clock::now();
    work.Measured(program);
    const std::chrono::duration<double> passed = Clock::now() - start;
    dSeconds += i == 0 ? 0 : passed.count();
    work.After(program, lines);
  }
  return dSeconds / lvRounds;
}

// A repetition: all programs, right after each other, so that what else the machine does meets them alike.
// Each time another one begins.
void Measure(benchmark::State& state, Ground& ground, const Work& work, std::int32_t lvSize) {
  static std::size_t lFirst = 0;
  if (isatty(STDERR_FILENO) != 0) {
    std::cerr << "\r\033[K" << work.Name << ", " << lvSize << " " << work.On.Counted;
  }
  const int lRounds = std::max(1, lvSize <= 1'000 ? work.Rounds : work.Rounds * 1'000 / lvSize);
  for ([[maybe_unused]] const auto& unused : state) {
    ++lFirst;
    for (std::size_t i = 0; i < std::size(kContestants); ++i) {
      const Contestant& contestant = kContestants[(lFirst + i) % std::size(kContestants)];
      if (!work.IsOfOrderAlone || !contestant.IsLikeHandWritten) {
        state.counters[contestant.Name] =
            SecondsOf(ground.Program(contestant, work.On, lvSize), work, lvSize, lRounds);
      }
    }
    state.SetIterationTime(state.counters[kContestants[0].Name]);
  }
}

void Register(Ground& ground, Comparison& orComparison) {
  for (const Work& work : Works()) {
    for (const std::int32_t lSize : work.Sizes) {
      orComparison.AddRow(work.Name, std::to_string(lSize));
      const std::string zName = std::string(work.Name) + "/" + std::to_string(lSize);
      auto* const pBenchmark = benchmark::RegisterBenchmark(
          zName.c_str(),
          [&ground, &work, lSize](benchmark::State& state) { Measure(state, ground, work, lSize); });
      pBenchmark->UseManualTime()->Iterations(1);
      if (lSize > kLarge) {
        pBenchmark->Repetitions(kRepetitionsOfLarge);
      }
    }
  }
}

// The time that a program of its own takes from its start to its end.
double RunOf(const std::string& zvProgram, const std::string& zvFolder) {
  const std::string zSettings = "QK_COMMON_SETTINGS=" + zvFolder + "/settings.ini";
  char* zArguments[] = {const_cast<char*>(zvProgram.c_str()), const_cast<char*>(zvFolder.c_str()), nullptr};
  char* zEnvironment[] = {const_cast<char*>(zSettings.c_str()), nullptr};
  const auto start = Clock::now();
  pid_t lChild = 0;
  int lStatus = 0;
  if (posix_spawn(&lChild, zvProgram.c_str(), nullptr, nullptr, zArguments, zEnvironment) != 0 ||
      waitpid(lChild, &lStatus, 0) != lChild || lStatus != 0) {
    throw std::runtime_error("The program " + zvProgram + " cannot be run.");
  }
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void CompareStarts(Ground& ground) {
  // A store that nobody has open, this program included.
  const std::string zStore = ground.Folder() + "/start";
  MakeOrder(zStore, 10);
  qm_ordering::ado::embedded::CloseIdleSessions();
  const std::string zPrograms = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
  std::map<std::string, std::vector<double>> dTimes;
  for (int i = 0; i < 41; ++i) {
    for (const char* zName : {"start_empty", "start_library"}) {
      dTimes[zName].push_back(RunOf(zPrograms + "/" + zName, zStore));
    }
  }
  const auto dMedian = [&](const char* zName) {
    std::vector<double>& dOf = dTimes[zName];
    std::sort(dOf.begin(), dOf.end());
    return dOf[dOf.size() / 2] * 1e3;
  };
  std::cout << "\nA program that creates a CurrentOrder, loads its 10 lines and ends: "
            << dMedian("start_library") << " ms; an empty one: " << dMedian("start_empty") << " ms.\n";
}

void CompareMemory(Ground& ground, const char* zvWhat, const StoreKind& kind,
                   std::size_t (*bytesOf)(OrderProgram& program, std::int32_t lvSize)) {
  for (const std::int32_t lSize : {1'000, 10'000, 100'000}) {
    std::cout << "Memory of " << zvWhat << ", of " << lSize << ":";
    for (const Contestant& contestant : {kContestants[0], kContestants[1]}) {
      const auto oProgram = contestant.Make(ground.Store(contestant, kind, lSize));
      std::cout << " " << contestant.Name << " " << bytesOf(*oProgram, lSize) << " bytes";
    }
    std::cout << "\n";
  }
}

int Run(int lvArguments, char** zvArguments) {
  const char* zTemporary = std::getenv("TMPDIR");
  std::string zFolder = zTemporary == nullptr ? "/tmp" : zTemporary;
  constexpr std::string_view kFolder = "--folder=";
  std::vector<char*> zRest;
  for (int i = 0; i < lvArguments; ++i) {
    const std::string_view zArgument = zvArguments[i];
    if (zArgument.starts_with(kFolder)) {
      zFolder = zArgument.substr(kFolder.size());
    } else {
      zRest.push_back(zvArguments[i]);
    }
  }
  auto lRest = static_cast<int>(zRest.size());
  benchmark::Initialize(&lRest, zRest.data());
  if (benchmark::ReportUnrecognizedArguments(lRest, zRest.data())) {
    return 2;
  }
  Ground ground(zFolder);
  std::vector<std::string> zPrograms;
  for (const Contestant& contestant : kContestants) {
    zPrograms.emplace_back(contestant.Name);
  }
  Comparison comparison(zPrograms);
  Register(ground, comparison);
  benchmark::RunSpecifiedBenchmarks(&comparison);
  if (comparison.HasFailed()) {
    return 1;
  }
  if (isatty(STDERR_FILENO) != 0) {
    std::cerr << "\r\033[K";
  }
  CompareStarts(ground);
  CompareMemory(ground, "a loaded line", kOrder, BytesOfLine);
  CompareMemory(ground, "an order of a loaded history", kHistory, BytesOfOrder);
  return 0;
}

}  // namespace

}  // namespace bench

int main(int lvArguments, char** zvArguments) try {
  return bench::Run(lvArguments, zvArguments);
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
