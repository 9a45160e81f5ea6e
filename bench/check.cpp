// Whether the programs that are compared do the same work: each does all of it on a store of its own, and
// what the stores, settings files and documents hold afterwards must be the same. Prints the first
// difference.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "bench/BenchStore.h"
#include "bench/LegacyTables.h"
#include "bench/Works.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/qm_ordering.h"

namespace bench {

namespace {

constexpr std::int32_t kLines = 130;

std::string Rows(sqlite3* db, const std::string& zvTable) {
  namespace engine = qm_ordering::ado::embedded;
  const engine::StatementHandle statement =
      engine::PrepareQuery(db, "select * from " + zvTable + " order by 1", zvTable);
  std::string zRows;
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    zRows += zvTable;
    for (int i = 0; i < sqlite3_column_count(statement.get()); ++i) {
      const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i));
      zRows.append("|").append(pText == nullptr ? "NULL" : pText);
    }
    zRows += "\n";
  }
  return zRows;
}

std::string Settings(const std::string& zvFolder) {
  const std::string zFile = zvFolder + "/settings.ini";
  const auto oDefaults = qm_ordering::CreateFileSettings(zFile)->CreateOrderDefaults();
  std::string zSettings;
  for (const char* zKey : qm_ordering::UserSettingConstants::ALL_KEYS) {
    if (zKey != std::string_view(qm_ordering::UserSettingConstants::ORDERINGDATABASEPATH)) {
      zSettings += std::string(zKey) + " = " + oDefaults->Get(zKey) + "\n";
    }
  }
  return zSettings;
}

// The lines of a document, without the header, which the plain programs do not write.
std::string LinesOf(const std::string& zvDocument) {
  const std::size_t lStart = zvDocument.find("<orderitems>");
  const std::size_t lEnd = zvDocument.find("</orderitems>");
  if (lStart == std::string::npos || lEnd == std::string::npos) {
    throw std::runtime_error("A document has no lines.");
  }
  return zvDocument.substr(lStart, lEnd - lStart);
}

std::string ContentOf(const std::string& zvFile) {
  std::ifstream file(zvFile, std::ios::binary);
  if (!file) {
    throw std::runtime_error("The file " + zvFile + " is not there.");
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string WorkOf(const Contestant& contestant, const std::string& zvFolder) {
  namespace engine = qm_ordering::ado::embedded;
  MakeOrder(zvFolder, kLines);
  FillLists(zvFolder, 250);
  FillHistory(zvFolder, 40);
  MakeLegacyTables(zvFolder + "/older", 203);
  std::string zLeft;
  {
    contestant.Make(zvFolder)->SaveSummary("An earlier value");
    const auto oProgram = contestant.Make(zvFolder);
    oProgram->Enter({MakeLine(kLines + 5)});
    oProgram->AddLine();
    oProgram->Enter({MakeLine(kLines + 6)});
    oProgram->AddLine();
    oProgram->Enter({MakeLine(kLines / 2)});
    oProgram->AddLine();
    std::vector<Line> lines = MakeLines(10, 110);
    for (Line& line : lines) {
      line.Quantity = 3 * line.SellQuantity;
      line.Price = -line.Price;
      line.ExtendedPrice = line.Price * line.Quantity;
    }
    oProgram->Enter(lines);
    oProgram->ChangeLines();
    oProgram->RemoveLine(MakeLine(kLines + 5).ItemNumber);
    oProgram->SaveSummary("A value of the header");
    oProgram->ShowOrder();
    zLeft = std::to_string(oProgram->LoadLines()) + " lines\n";
    zLeft += LinesOf(oProgram->Document()) + "\n";
    oProgram->SaveLists();
    zLeft += ContentOf(zvFolder + "/PersonalLists.xml") + "\n";
    zLeft += std::to_string(oProgram->LoadHistory()) + " orders\n";
    zLeft += oProgram->ShowHistory() + "\n";
    zLeft += std::to_string(oProgram->ImportHistory()) + " orders imported\n";
  }
  const std::string zFile = zvFolder + "/Orders.mdb";
  const engine::DatabaseHandle db = engine::OpenEngine(zFile, zFile, SQLITE_OPEN_READWRITE);
  engine::AddTextCollation(db.get(), zFile);
  return zLeft + Rows(db.get(), "tblOrder") + Rows(db.get(), "tblOrderItem") + Settings(zvFolder);
}

int Check(const std::string& zvFolder) {
  std::string zExpected;
  for (const Contestant& contestant : kContestants) {
    const std::string zDone = WorkOf(contestant, zvFolder + "/" + contestant.Name);
    if (zExpected.empty()) {
      zExpected = zDone;
    }
    for (std::size_t i = 0; i < std::max(zDone.size(), zExpected.size()); ++i) {
      if (i >= zDone.size() || i >= zExpected.size() || zDone[i] != zExpected[i]) {
        const std::size_t lStart = i < 200 ? 0 : i - 200;
        std::cerr << contestant.Name << " has ..." << zDone.substr(lStart, 300) << "\n\n"
                  << kContestants[0].Name << " has ..." << zExpected.substr(lStart, 300) << "\n";
        return 1;
      }
    }
    std::cout << contestant.Name << " did all of it.\n";
  }
  return 0;
}

}  // namespace

}  // namespace bench

int main() try {
  std::string zFolder = (std::filesystem::temp_directory_path() / "qm_ordering_bench.XXXXXX").string();
  if (mkdtemp(zFolder.data()) == nullptr) {
    throw std::runtime_error("No temporary folder can be made.");
  }
  const int lResult = bench::Check(zFolder);
  std::filesystem::remove_all(zFolder);
  return lResult;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
