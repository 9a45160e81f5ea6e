#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/LegacyTables.h"
#include "bench/OrderProgram.h"
#include "bench/PlainHistory.h"
#include "bench/PlainLists.h"
#include "bench/PlainOrder.h"
#include "bench/SettingsFile.h"
#include "bench/Statements.h"

namespace bench {

// The program over statements that are prepared once on one held connection. Driver is how it talks to the
// engine: Driver::Database runs scripts, Driver::Statement binds from 1, steps, reads columns from 0 and
// resets.
template <typename Driver>
class SqlProgram : public OrderProgram {
 public:
  explicit SqlProgram(const std::string& zvFolder)
      : m_zFolder(zvFolder), m_oDatabase(zvFolder + "/Orders.mdb") {
    m_lTotal = ReadTotal();
  }

  void Enter(std::vector<Line> lines) override { m_oEntered = std::move(lines); }

  void AddLine() override {
    const Line& line = m_oEntered.front();
    m_oCount.Bind(1, line.ItemNumber);
    m_oCount.Bind(2, kOrder);
    m_oCount.Step();
    const bool bThere = m_oCount.Integer(0) != 0;
    m_oCount.Reset();
    if (bThere) {
      Merge(line);
      m_lTotal = ReadTotal();
    } else {
      Insert(line);
      UpdateTotal();
      m_lTotal += line.ExtendedPrice;
    }
  }

  // Adds lines that are not there, in one transaction, to have an order to measure with.
  void Fill(std::int32_t lvLines) {
    m_oDatabase.Run("begin");
    for (std::int32_t i = 0; i < lvLines; ++i) {
      Insert(MakeLine(i));
    }
    m_oDatabase.Run("commit");
    UpdateTotal();
  }

  void ChangeLines() override {
    Statement& read = LinesToChange(m_oEntered.size());
    int lPosition = 1;
    read.Bind(lPosition, kOrder);
    std::map<std::string, const Line*> wanted;
    for (const Line& line : m_oEntered) {
      read.Bind(++lPosition, line.ItemNumber);
      wanted[line.ItemNumber] = &line;
    }
    std::vector<Stored> stored;
    while (read.Step()) {
      stored.push_back({read.Integer(0), read.Text(1), read.Integer(2), read.Integer(3), read.Integer(4),
                        read.Integer(5), read.Integer(6)});
    }
    read.Reset();
    Run(m_oBegin);
    for (const Stored& row : stored) {
      Change(row, *wanted.at(row.ItemNumber));
    }
    Run(m_oCommit);
    UpdateTotal();
    m_lTotal = ReadTotal();
  }

  void SaveSummary(const std::string& zvText) override {
    int lPosition = 0;
    for (const HeaderColumn& column : kHeaderColumns) {
      ++lPosition;
      if (column.IsText) {
        m_oWriteHeader.Bind(lPosition, zvText);
      } else {
        m_oWriteHeader.Bind(lPosition, column.Name == std::string("cTotalPrice") ? m_lTotal : 0);
      }
    }
    m_oWriteHeader.Bind(lPosition + 1, kOrder);
    Run(m_oWriteHeader);
    KeepDefaults(m_zFolder + "/settings.ini", zvText);
  }

  std::size_t LoadLines() override {
    m_oOrder.Clear();
    return ReadLines(m_oOrder);
  }

  void ShowOrder() override {
    PlainOrder order;
    m_oReadHeader.Step();
    for (int i = 0; i < m_oReadHeader.Columns(); ++i) {
      if (m_oReadHeader.IsText(i)) {
        order.HeaderTexts.push_back(m_oReadHeader.Text(i));
      } else {
        order.HeaderNumbers.push_back(m_oReadHeader.Integer(i));
      }
    }
    m_oReadHeader.Reset();
    ReadLines(order);
  }

  std::string Document() override { return m_oOrder.Document(); }

  void SaveLists() override {
    PlainLists lists;
    while (m_oReadLists.Step()) {
      const std::int64_t lListID = m_oReadLists.Integer(0);
      lists.AddList(lListID, m_oReadLists.Text(1));
      ReadListLines(lListID, lists);
    }
    m_oReadLists.Reset();
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
    LegacyRow order = LegacyReader::EmptyOrder();
    LegacyRow line = LegacyReader::EmptyLine();
    ItemMarker marker;
    std::size_t lOrders = 0;
    Run(m_oBegin);
    bool bLine = reader.NextLine(line);
    while (reader.NextOrder(order)) {
      BindRow(m_oInsertLegacyOrder, 0, order);
      Run(m_oInsertLegacyOrder);
      const std::int64_t lOrderID = m_oDatabase.LastKey();
      for (; bLine && line.Key == order.Key; bLine = reader.NextLine(line)) {
        m_oHasItem.Bind(1, line.ItemNumber);
        const bool bStored = m_oHasItem.Step();
        m_oHasItem.Reset();
        const std::string zStored = marker.Mark(line.ItemNumber, bStored);
        m_oInsertLegacyLine.Bind(1, lOrderID);
        m_oInsertLegacyLine.Bind(2, zStored);
        BindRow(m_oInsertLegacyLine, 2, line);
        Run(m_oInsertLegacyLine);
      }
      ++lOrders;
    }
    Run(m_oCommit);
    return lOrders;
  }

  void EmptyHistory() override { m_oDatabase.Run(kRemoveHistory); }

  void RemoveLine(const std::string& zvItemNumber) override {
    m_oRemove.Bind(1, kOrder);
    m_oRemove.Bind(2, zvItemNumber);
    Run(m_oRemove);
    UpdateTotal();
    m_lTotal = ReadTotal();
  }

 private:
  using Statement = typename Driver::Statement;

  static constexpr std::int64_t kOrder = 1;

  struct Stored {
    std::int64_t Row;
    std::string ItemNumber;
    std::int64_t Quantity, Price, ExtendedPrice, IsPriceModified, IsTaxable;
  };

  static void Run(Statement& statement) {
    statement.Step();
    statement.Reset();
  }

  // Behind the first parameters.
  static void BindRow(Statement& statement, int lvPosition, const LegacyRow& row) {
    for (const std::string& zText : row.Texts) {
      if (zText.empty()) {
        statement.BindNull(++lvPosition);
      } else {
        statement.Bind(++lvPosition, zText);
      }
    }
    for (const std::int64_t lNumber : row.Numbers) {
      statement.Bind(++lvPosition, lNumber);
    }
  }

  void Insert(const Line& line) {
    int lPosition = 0;
    const auto bind = [&](const auto& value) { m_oInsert.Bind(++lPosition, value); };
    bind(kOrder);
    bind(line.ItemNumber);
    bind(line.Quantity);
    bind(line.Description);
    bind(line.ShortDescription);
    bind(line.Manufacturer);
    bind(line.Model);
    bind(line.SellQuantity);
    bind(line.ShipQuantity);
    bind(line.UsuallyShips);
    bind(line.UsuallyShipsSortOrder);
    bind(Flag(line.IsTaxable));
    bind(line.Price);
    bind(line.ExtendedPrice);
    bind(Flag(line.IsPriceModified));
    bind(line.CustomerPartNumber);
    bind(line.CustomerNotes);
    bind(Flag(line.HasNotes));
    bind(Flag(line.HasPartsInfo));
    Run(m_oInsert);
  }

  void Merge(const Line& line) {
    Run(m_oBegin);
    m_oReadQuantity.Bind(1, line.ItemNumber);
    m_oReadQuantity.Bind(2, kOrder);
    m_oReadQuantity.Step();
    const std::int64_t lQuantity = m_oReadQuantity.Integer(0) + line.Quantity;
    m_oReadQuantity.Reset();
    m_oMerge.Bind(1, lQuantity);
    m_oMerge.Bind(2, line.Price);
    m_oMerge.Bind(3, line.Price * lQuantity);
    m_oMerge.Bind(4, kOrder);
    m_oMerge.Bind(5, line.ItemNumber);
    Run(m_oMerge);
    Run(m_oCommit);
    UpdateTotal();
  }

  void Change(const Stored& row, const Line& line) {
    m_oChange.Bind(1, line.Quantity);
    m_oChange.Bind(2, line.Price);
    m_oChange.Bind(3, line.ExtendedPrice);
    m_oChange.Bind(4, row.Row);
    m_oChange.Bind(5, row.ItemNumber);
    m_oChange.Bind(6, row.Quantity);
    m_oChange.Bind(7, row.Price);
    m_oChange.Bind(8, row.ExtendedPrice);
    m_oChange.Bind(9, row.IsPriceModified);
    m_oChange.Bind(10, row.IsTaxable);
    Run(m_oChange);
  }

  void UpdateTotal() {
    Run(m_oBegin);
    m_oSum.Bind(1, kOrder);
    m_oSum.Step();
    const std::int64_t lTotal = m_oSum.Integer(0);
    m_oSum.Reset();
    m_oWriteTotal.Bind(1, lTotal);
    m_oWriteTotal.Bind(2, kOrder);
    Run(m_oWriteTotal);
    Run(m_oCommit);
  }

  std::int64_t ReadTotal() {
    m_oReadTotal.Bind(1, kOrder);
    m_oReadTotal.Step();
    const std::int64_t lTotal = m_oReadTotal.Integer(0);
    m_oReadTotal.Reset();
    return lTotal;
  }

  std::size_t ReadLines(PlainOrder& orOrder) {
    while (m_oReadLines.Step()) {
      Line line;
      line.Entered = m_oReadLines.Integer(0);
      line.OrderID = m_oReadLines.Integer(1);
      line.ItemNumber = m_oReadLines.Text(2);
      line.Quantity = m_oReadLines.Integer(3);
      line.Description = m_oReadLines.Text(4);
      line.ShortDescription = m_oReadLines.Text(5);
      line.Manufacturer = m_oReadLines.Text(6);
      line.Model = m_oReadLines.Text(7);
      line.SellQuantity = m_oReadLines.Integer(8);
      line.ShipQuantity = m_oReadLines.Integer(9);
      line.UsuallyShips = m_oReadLines.Text(10);
      line.IsTaxable = m_oReadLines.Integer(12) != 0;
      line.Price = m_oReadLines.Integer(13);
      line.ExtendedPrice = m_oReadLines.Integer(14);
      line.IsPriceModified = m_oReadLines.Integer(15) != 0;
      line.CustomerPartNumber = m_oReadLines.Text(16);
      line.CustomerNotes = m_oReadLines.Text(17);
      line.HasNotes = m_oReadLines.Integer(18) != 0;
      line.HasPartsInfo = m_oReadLines.Integer(19) != 0;
      line.HasContractItem = m_oReadLines.Integer(20) != 0;
      line.Imported = m_oReadLines.Integer(21) != 0;
      orOrder.Add(std::move(line));
    }
    m_oReadLines.Reset();
    return orOrder.Lines().size();
  }

  void ReadListLines(std::int64_t lvListID, PlainLists& orLists) {
    m_oReadListLines.Bind(1, lvListID);
    while (m_oReadListLines.Step()) {
      Line line;
      line.ItemNumber = m_oReadListLines.Text(2);
      line.Quantity = m_oReadListLines.Integer(3);
      line.Description = m_oReadListLines.Text(4);
      line.Manufacturer = m_oReadListLines.Text(6);
      line.Model = m_oReadListLines.Text(7);
      line.SellQuantity = m_oReadListLines.Integer(8);
      line.ShipQuantity = m_oReadListLines.Integer(9);
      line.UsuallyShips = m_oReadListLines.Text(10);
      line.IsTaxable = m_oReadListLines.Integer(11) != 0;
      line.CustomerPartNumber = m_oReadListLines.Text(12);
      line.CustomerNotes = m_oReadListLines.Text(13);
      line.HasPartsInfo = m_oReadListLines.Integer(14) != 0;
      orLists.AddLine(line);
    }
    m_oReadListLines.Reset();
  }

  void ReadHistory(PlainHistory& orHistory) {
    while (m_oReadHistory.Step()) {
      orHistory.Add(m_oReadHistory.Integer(3), m_oReadHistory.Text(1), m_oReadHistory.Text(0),
                    m_oReadHistory.Integer(2));
    }
    m_oReadHistory.Reset();
  }

  Statement& LinesToChange(std::size_t lvLines) {
    auto& oRead = m_oLinesToChange[lvLines];
    if (oRead == nullptr) {
      oRead = std::make_unique<Statement>(m_oDatabase, ReadLinesToChange(lvLines));
    }
    return *oRead;
  }

  static std::int64_t Flag(bool bvFlag) { return bvFlag ? -1 : 0; }

  std::string m_zFolder;
  typename Driver::Database m_oDatabase;
  Statement m_oBegin{m_oDatabase, "begin immediate"};
  Statement m_oCommit{m_oDatabase, "commit"};
  Statement m_oCount{m_oDatabase, kCountLine};
  Statement m_oInsert{m_oDatabase, kInsertLine};
  Statement m_oReadQuantity{m_oDatabase, kReadQuantity};
  Statement m_oMerge{m_oDatabase, kMergeLine};
  Statement m_oChange{m_oDatabase, kChangeLine};
  Statement m_oSum{m_oDatabase, kSumLines};
  Statement m_oWriteTotal{m_oDatabase, kWriteTotal};
  Statement m_oReadTotal{m_oDatabase, kReadTotal};
  Statement m_oWriteHeader{m_oDatabase, WriteHeader()};
  Statement m_oReadHeader{m_oDatabase, kReadHeader};
  Statement m_oReadLines{m_oDatabase, kReadLines};
  Statement m_oRemove{m_oDatabase, kRemoveLine};
  Statement m_oReadLists{m_oDatabase, kReadLists};
  Statement m_oReadListLines{m_oDatabase, kReadListLines};
  Statement m_oReadHistory{m_oDatabase, kReadHistory};
  Statement m_oInsertLegacyOrder{m_oDatabase, InsertLegacyOrder()};
  Statement m_oInsertLegacyLine{m_oDatabase, InsertLegacyLine()};
  Statement m_oHasItem{m_oDatabase, kHasItem};
  std::map<std::size_t, std::unique_ptr<Statement>> m_oLinesToChange;
  std::vector<Line> m_oEntered;
  PlainOrder m_oOrder;
  PlainHistory m_oHistory;
  std::int64_t m_lTotal = 0;
};

}  // namespace bench
