#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <map>

#include "bench/LegacyTables.h"
#include "bench/OrderProgram.h"
#include "bench/PlainHistory.h"
#include "bench/PlainLists.h"
#include "bench/PlainOrder.h"
#include "bench/SettingsFile.h"
#include "bench/Statements.h"

namespace bench {

namespace {

using soci::into;
using soci::use;

// The same program in SOCI's manner: variables that are bound once, statements that are executed over them.
class Soci : public OrderProgram {
 public:
  explicit Soci(const std::string& zvFolder)
      : m_zFolder(zvFolder), m_oSession(soci::sqlite3, zvFolder + "/Orders.mdb") {
    auto* pBackend = static_cast<soci::sqlite3_session_backend*>(m_oSession.get_backend());
    SetUpConnection(pBackend->conn_);
    PrepareAll();
    PrepareListsAndHistory();
    PrepareImport();
    m_oReadTotal->execute(true);
  }

  void Enter(std::vector<Line> lines) override { m_oEntered = std::move(lines); }

  void AddLine() override {
    const Line& line = m_oEntered.front();
    m_oLine = line;
    m_oCount->execute(true);
    if (m_lRead == 0) {
      Take(line);
      m_oInsert->execute(true);
      UpdateTotal();
      m_lTotal += line.ExtendedPrice;
      return;
    }
    m_oBegin->execute(true);
    m_oReadQuantity->execute(true);
    m_lQuantity = m_lRead + line.Quantity;
    m_lPrice = line.Price;
    m_lExtendedPrice = line.Price * m_lQuantity;
    m_oMerge->execute(true);
    m_oCommit->execute(true);
    UpdateTotal();
    m_oReadTotal->execute(true);
  }

  void ChangeLines() override {
    Selection& read = LinesToChange(m_oEntered.size());
    std::map<std::string, const Line*> wanted;
    for (std::size_t i = 0; i < m_oEntered.size(); ++i) {
      read.ItemNumbers[i] = m_oEntered[i].ItemNumber;
      wanted[m_oEntered[i].ItemNumber] = &m_oEntered[i];
    }
    std::vector<Stored> stored;
    read.Statement.execute();
    while (read.Statement.fetch()) {
      stored.push_back(m_oStored);
    }
    m_oBegin->execute(true);
    for (const Stored& row : stored) {
      m_oStored = row;
      Take(*wanted.at(row.ItemNumber));
      m_oChange->execute(true);
    }
    m_oCommit->execute(true);
    UpdateTotal();
    m_oReadTotal->execute(true);
  }

  void SaveSummary(const std::string& zvText) override {
    m_zHeaderText = zvText;
    m_oWriteHeader->execute(true);
    KeepDefaults(m_zFolder + "/settings.ini", zvText);
  }

  std::size_t LoadLines() override {
    m_oOrder.Clear();
    ReadLines(m_oOrder);
    return m_oOrder.Lines().size();
  }

  void ShowOrder() override {
    PlainOrder order;
    soci::row row;
    m_oSession << kReadHeader, into(row);
    for (std::size_t i = 0; i < row.size(); ++i) {
      const bool bText = row.get_properties(i).get_data_type() == soci::dt_string;
      if (row.get_indicator(i) == soci::i_null) {
        order.HeaderTexts.emplace_back();
      } else if (bText) {
        order.HeaderTexts.push_back(row.get<std::string>(i));
      } else {
        order.HeaderNumbers.push_back(row.get<int>(i));
      }
    }
    ReadLines(order);
  }

  std::string Document() override { return m_oOrder.Document(); }

  void SaveLists() override {
    PlainLists lists;
    m_oReadLists->execute();
    while (m_oReadLists->fetch()) {
      lists.AddList(m_lListID, m_zName);
      m_oReadListLines->execute();
      while (m_oReadListLines->fetch()) {
        Line line = m_oRead;
        line.Quantity = m_lQuantity;
        line.SellQuantity = m_lSell;
        line.ShipQuantity = m_lShip;
        line.IsTaxable = m_lTaxable != 0;
        line.HasPartsInfo = m_lHasPartsInfo != 0;
        lists.AddLine(line);
      }
    }
    lists.Save(m_zFolder);
  }

  std::size_t LoadHistory() override {
    m_oHistory = PlainHistory();
    ReadHistory(m_oHistory);
    return m_oHistory.Count();
  }

  std::string ShowHistory() override {
    PlainHistory history;
    ReadHistory(history);
    return history.Document();
  }

  std::size_t ImportHistory() override {
    LegacyReader reader(m_zFolder + "/older");
    ItemMarker marker;
    std::size_t lOrders = 0;
    m_oBegin->execute(true);
    bool bLine = reader.NextLine(m_oLegacyLine.Row);
    while (reader.NextOrder(m_oLegacyOrder.Row)) {
      MarkNulls(m_oLegacyOrder);
      m_oInsertLegacyOrder->execute(true);
      m_oSession.get_last_insert_id("tblOrder", m_lLegacyOrder);
      for (; bLine && m_oLegacyLine.Row.Key == m_oLegacyOrder.Row.Key;
           bLine = reader.NextLine(m_oLegacyLine.Row)) {
        const bool bStored = m_oHasItem->execute(true);
        m_zName = marker.Mark(m_oLegacyLine.Row.ItemNumber, bStored);
        MarkNulls(m_oLegacyLine);
        m_oInsertLegacyLine->execute(true);
      }
      ++lOrders;
    }
    m_oCommit->execute(true);
    return lOrders;
  }

  void EmptyHistory() override { m_oSession << kRemoveHistory; }

  void RemoveLine(const std::string& zvItemNumber) override {
    m_oLine.ItemNumber = zvItemNumber;
    m_oRemove->execute(true);
    UpdateTotal();
    m_oReadTotal->execute(true);
  }

 private:
  using Integer = long long;
  using Statement = std::unique_ptr<soci::statement>;

  struct Stored {
    Integer Row = 0;
    std::string ItemNumber;
    Integer Quantity = 0, Price = 0, ExtendedPrice = 0, IsPriceModified = 0, IsTaxable = 0;
  };

  struct Selection {
    Selection(soci::session& session, std::size_t lvLines) : ItemNumbers(lvLines), Statement(session) {}
    std::vector<std::string> ItemNumbers;
    soci::statement Statement;
  };

  // A row of the older program with what its statement is bound to.
  struct Legacy {
    explicit Legacy(LegacyRow row)
        : Row(std::move(row)), Nulls(Row.Texts.size()), Numbers(Row.Numbers.size()) {}
    LegacyRow Row;
    std::vector<soci::indicator> Nulls;
    std::vector<Integer> Numbers;
  };

  static void MarkNulls(Legacy& orLegacy) {
    for (std::size_t i = 0; i < orLegacy.Nulls.size(); ++i) {
      orLegacy.Nulls[i] = orLegacy.Row.Texts[i].empty() ? soci::i_null : soci::i_ok;
    }
    std::copy(orLegacy.Row.Numbers.begin(), orLegacy.Row.Numbers.end(), orLegacy.Numbers.begin());
  }

  template <typename... Exchanged>
  Statement Prepare(const std::string& zvSQL, Exchanged&&... exchanged) {
    auto statement = std::make_unique<soci::statement>(m_oSession);
    (statement->exchange(std::forward<Exchanged>(exchanged)), ...);
    statement->alloc();
    statement->prepare(zvSQL);
    statement->define_and_bind();
    return statement;
  }

  void PrepareAll() {
    std::string& zItem = m_oLine.ItemNumber;
    m_oBegin = Prepare("begin immediate");
    m_oCommit = Prepare("commit");
    m_oCount = Prepare(kCountLine, use(zItem), use(m_lOrder), into(m_lRead));
    m_oReadQuantity = Prepare(kReadQuantity, use(zItem), use(m_lOrder), into(m_lRead));
    m_oMerge = Prepare(kMergeLine, use(m_lQuantity), use(m_lPrice), use(m_lExtendedPrice), use(m_lOrder),
                       use(zItem));
    m_oInsert =
        Prepare(kInsertLine, use(m_lOrder), use(zItem), use(m_lQuantity), use(m_oLine.Description),
                use(m_oLine.ShortDescription), use(m_oLine.Manufacturer), use(m_oLine.Model), use(m_lSell),
                use(m_lShip), use(m_oLine.UsuallyShips), use(m_lSort), use(m_lTaxable), use(m_lPrice),
                use(m_lExtendedPrice), use(m_lModified), use(m_oLine.CustomerPartNumber),
                use(m_oLine.CustomerNotes), use(m_lHasNotes), use(m_lHasPartsInfo));
    m_oSum = Prepare(kSumLines, use(m_lOrder), into(m_lTotal));
    m_oWriteTotal = Prepare(kWriteTotal, use(m_lTotal), use(m_lOrder));
    m_oReadTotal = Prepare(kReadTotal, use(m_lOrder), into(m_lTotal));
    m_oRemove = Prepare(kRemoveLine, use(m_lOrder), use(zItem));
    m_oChange =
        Prepare(kChangeLine, use(m_lQuantity), use(m_lPrice), use(m_lExtendedPrice), use(m_oStored.Row),
                use(m_oStored.ItemNumber), use(m_oStored.Quantity), use(m_oStored.Price),
                use(m_oStored.ExtendedPrice), use(m_oStored.IsPriceModified), use(m_oStored.IsTaxable));
    m_oWriteHeader = std::make_unique<soci::statement>(m_oSession);
    for (const HeaderColumn& column : kHeaderColumns) {
      if (column.IsText) {
        m_oWriteHeader->exchange(use(m_zHeaderText));
      } else {
        m_oWriteHeader->exchange(use(column.Name == std::string("cTotalPrice") ? m_lTotal : m_lZero));
      }
    }
    m_oWriteHeader->exchange(use(m_lOrder));
    m_oWriteHeader->alloc();
    m_oWriteHeader->prepare(WriteHeader());
    m_oWriteHeader->define_and_bind();
    m_oReadLines =
        Prepare(kReadLines, into(m_lEntered), into(m_lOrder), into(m_oRead.ItemNumber), into(m_lQuantity),
                into(m_oRead.Description), into(m_oRead.ShortDescription), into(m_oRead.Manufacturer),
                into(m_oRead.Model), into(m_lSell), into(m_lShip), into(m_oRead.UsuallyShips), into(m_lSort),
                into(m_lTaxable), into(m_lPrice), into(m_lExtendedPrice), into(m_lModified),
                into(m_oRead.CustomerPartNumber), into(m_oRead.CustomerNotes), into(m_lHasNotes),
                into(m_lHasPartsInfo), into(m_lHasContractItem), into(m_lImported), into(m_lIsCurrent));
  }

  void PrepareListsAndHistory() {
    m_oReadLists = Prepare(kReadLists, into(m_lListID), into(m_zName));
    m_oReadListLines =
        Prepare(kReadListLines, use(m_lListID), into(m_lEntered), into(m_lRead), into(m_oRead.ItemNumber),
                into(m_lQuantity), into(m_oRead.Description), into(m_oRead.ShortDescription),
                into(m_oRead.Manufacturer), into(m_oRead.Model), into(m_lSell), into(m_lShip),
                into(m_oRead.UsuallyShips), into(m_lTaxable), into(m_oRead.CustomerPartNumber),
                into(m_oRead.CustomerNotes), into(m_lHasPartsInfo));
    m_oReadHistory = Prepare(kReadHistory, into(m_zSubmitDate), into(m_zName), into(m_lPrice), into(m_lRead));
  }

  void PrepareImport() {
    m_oHasItem = Prepare(kHasItem, use(m_oLegacyLine.Row.ItemNumber), into(m_lRead));
    m_oInsertLegacyOrder = std::make_unique<soci::statement>(m_oSession);
    m_oInsertLegacyLine = std::make_unique<soci::statement>(m_oSession);
    m_oInsertLegacyLine->exchange(use(m_lLegacyOrder));
    m_oInsertLegacyLine->exchange(use(m_zName));
    BindLegacy(*m_oInsertLegacyOrder, m_oLegacyOrder, InsertLegacyOrder());
    BindLegacy(*m_oInsertLegacyLine, m_oLegacyLine, InsertLegacyLine());
  }

  static void BindLegacy(soci::statement& statement, Legacy& orLegacy, const std::string& zvSQL) {
    for (std::size_t i = 0; i < orLegacy.Nulls.size(); ++i) {
      statement.exchange(use(orLegacy.Row.Texts[i], orLegacy.Nulls[i]));
    }
    for (Integer& lNumber : orLegacy.Numbers) {
      statement.exchange(use(lNumber));
    }
    statement.alloc();
    statement.prepare(zvSQL);
    statement.define_and_bind();
  }

  void ReadHistory(PlainHistory& orHistory) {
    m_oReadHistory->execute();
    while (m_oReadHistory->fetch()) {
      orHistory.Add(m_lRead, m_zName, m_zSubmitDate, m_lPrice);
    }
  }

  void Take(const Line& line) {
    m_lQuantity = line.Quantity;
    m_lSell = line.SellQuantity;
    m_lShip = line.ShipQuantity;
    m_lSort = line.UsuallyShipsSortOrder;
    m_lTaxable = line.IsTaxable ? -1 : 0;
    m_lPrice = line.Price;
    m_lExtendedPrice = line.ExtendedPrice;
    m_lModified = line.IsPriceModified ? -1 : 0;
    m_lHasNotes = line.HasNotes ? -1 : 0;
    m_lHasPartsInfo = line.HasPartsInfo ? -1 : 0;
  }

  void UpdateTotal() {
    m_oBegin->execute(true);
    m_oSum->execute(true);
    m_oWriteTotal->execute(true);
    m_oCommit->execute(true);
  }

  void ReadLines(PlainOrder& orOrder) {
    m_oReadLines->execute();
    while (m_oReadLines->fetch()) {
      Line line = m_oRead;
      line.Entered = m_lEntered;
      line.OrderID = m_lOrder;
      line.Quantity = m_lQuantity;
      line.SellQuantity = m_lSell;
      line.ShipQuantity = m_lShip;
      line.IsTaxable = m_lTaxable != 0;
      line.Price = m_lPrice;
      line.ExtendedPrice = m_lExtendedPrice;
      line.IsPriceModified = m_lModified != 0;
      line.HasNotes = m_lHasNotes != 0;
      line.HasPartsInfo = m_lHasPartsInfo != 0;
      line.HasContractItem = m_lHasContractItem != 0;
      line.Imported = m_lImported != 0;
      orOrder.Add(std::move(line));
    }
  }

  Selection& LinesToChange(std::size_t lvLines) {
    auto& oRead = m_oLinesToChange[lvLines];
    if (oRead == nullptr) {
      oRead = std::make_unique<Selection>(m_oSession, lvLines);
      soci::statement& statement = oRead->Statement;
      statement.exchange(use(m_lOrder));
      for (std::string& zItemNumber : oRead->ItemNumbers) {
        statement.exchange(use(zItemNumber));
      }
      statement.exchange(into(m_oStored.Row));
      statement.exchange(into(m_oStored.ItemNumber));
      statement.exchange(into(m_oStored.Quantity));
      statement.exchange(into(m_oStored.Price));
      statement.exchange(into(m_oStored.ExtendedPrice));
      statement.exchange(into(m_oStored.IsPriceModified));
      statement.exchange(into(m_oStored.IsTaxable));
      statement.alloc();
      statement.prepare(ReadLinesToChange(lvLines));
      statement.define_and_bind();
    }
    return *oRead;
  }

  std::string m_zFolder;
  soci::session m_oSession;
  Line m_oLine;
  Line m_oRead;
  Stored m_oStored;
  std::string m_zHeaderText, m_zName, m_zSubmitDate;
  Integer m_lZero = 0, m_lOrder = 1, m_lRead = 0, m_lTotal = 0, m_lEntered = 0, m_lIsCurrent = 0,
          m_lListID = 0;
  Integer m_lQuantity = 0, m_lSell = 0, m_lShip = 0, m_lSort = 0, m_lPrice = 0, m_lExtendedPrice = 0;
  Integer m_lTaxable = 0, m_lModified = 0, m_lHasNotes = 0, m_lHasPartsInfo = 0, m_lHasContractItem = 0,
          m_lImported = 0;
  Statement m_oBegin, m_oCommit, m_oCount, m_oInsert, m_oReadQuantity, m_oMerge, m_oChange, m_oSum,
      m_oWriteTotal, m_oReadTotal, m_oWriteHeader, m_oReadLines, m_oRemove, m_oReadLists, m_oReadListLines,
      m_oReadHistory, m_oHasItem, m_oInsertLegacyOrder, m_oInsertLegacyLine;
  Legacy m_oLegacyOrder{LegacyReader::EmptyOrder()};
  Legacy m_oLegacyLine{LegacyReader::EmptyLine()};
  Integer m_lLegacyOrder = 0;
  std::map<std::size_t, std::unique_ptr<Selection>> m_oLinesToChange;
  std::vector<Line> m_oEntered;
  PlainOrder m_oOrder;
  PlainHistory m_oHistory;
};

}  // namespace

std::unique_ptr<OrderProgram> SociProgram(const std::string& zvFolder) {
  return std::make_unique<Soci>(zvFolder);
}

}  // namespace bench
