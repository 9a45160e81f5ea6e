#include "tests/processes/WorkingProgram.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/processes/EngineSleep.h"

namespace test {

namespace {

constexpr std::size_t kSharedItems = 2;
constexpr std::size_t kOwnItems = 6;
constexpr std::int32_t kSharedList = 1;

bool Holds(const std::string& zvText, const std::string& zvWords) {
  return zvText.find(zvWords) != std::string::npos;
}

}  // namespace

std::string WorkReport::ToText() const {
  std::ostringstream text;
  for (const auto& [zItem, lQuantity] : Merged) {
    text << "merged " << zItem << ' ' << lQuantity << '\n';
  }
  for (const auto& [zItem, lQuantity] : Own) {
    text << "own " << zItem << ' ' << lQuantity << '\n';
  }
  for (const std::string& zItem : Unsure) {
    text << "unsure " << zItem << '\n';
  }
  for (const auto& [lOrderID, zItem] : Lines) {
    text << "line " << lOrderID << ' ' << zItem << '\n';
  }
  for (const int lOrderID : Submitted) {
    text << "submitted " << lOrderID << '\n';
  }
  if (!LastSummary.empty()) {
    text << "summary " << LastSummary << '\n';
  }
  text << "calls " << Calls << ' ' << Held << ' ' << Refused << ' ' << NotCurrent << ' ' << LongWaits << ' '
       << LongestWait << '\n';
  return text.str();
}

WorkReport WorkReport::FromText(const std::string& zvText) {
  WorkReport report;
  bool bWhole = false;
  std::istringstream text(zvText);
  std::string zItem;
  for (std::string zWhat; text >> zWhat;) {
    if (zWhat == "merged") {
      text >> zItem >> report.Merged[zItem];
    } else if (zWhat == "own") {
      text >> zItem >> report.Own[zItem];
    } else if (zWhat == "unsure") {
      text >> zItem;
      report.Unsure.insert(zItem);
    } else if (zWhat == "line") {
      int lOrderID = 0;
      text >> lOrderID >> zItem;
      report.Lines.emplace_back(lOrderID, zItem);
    } else if (zWhat == "submitted") {
      text >> report.Submitted.emplace_back();
    } else if (zWhat == "summary") {
      text >> report.LastSummary;
    } else if (zWhat == "calls") {
      text >> report.Calls >> report.Held >> report.Refused >> report.NotCurrent >> report.LongWaits >>
          report.LongestWait;
      bWhole = !text.fail();
    } else {
      throw std::runtime_error(zvText);
    }
  }
  if (!bWhole) {
    throw std::runtime_error(zvText);
  }
  return report;
}

WorkingProgram::WorkingProgram(std::string zvStorePath, int lvNumber, unsigned lvSeed)
    : m_zStorePath(std::move(zvStorePath)), m_lNumber(lvNumber), m_oRandom(lvSeed) {
  m_zListsFile = std::filesystem::path(m_zStorePath).replace_filename("PersonalLists.xml");
  m_oOrder = std::make_unique<qm_ordering::CurrentOrder>();
  Load();
}

WorkReport WorkingProgram::Report() const {
  WorkReport report = m_oReport;
  report.LongWaits = EngineSleep::OverASecond();
  report.LongestWait = EngineSleep::Longest();
  return report;
}

std::string WorkingProgram::OwnItem(std::size_t lvItem) const {
  return "P" + std::to_string(m_lNumber) + "-" + std::to_string(lvItem);
}

template <typename Call>
WorkingProgram::Outcome WorkingProgram::Try(Call call) {
  ++m_oReport.Calls;
  try {
    call();
  } catch (const qm_ordering::Failure& failure) {
    return Classify(failure.Number(), failure.Description());
  }
  const qm_ordering::ErrorInfo error = m_oOrder->Error();
  if (error.Number == 0) {
    return Outcome::Done;
  }
  // The record stays until a call that sets it succeeds.
  m_oOrder->LoadSummary();
  return Classify(error.Number, error.Description);
}

template <typename Call>
WorkingProgram::Outcome WorkingProgram::TryOnLists(Call call) {
  ++m_oReport.Calls;
  qm_ordering::ClearLastFailure();
  try {
    const qm_ordering::ErrorInfo error = call();
    if (error.Number != 0) {
      return Classify(error.Number, error.Description);
    }
  } catch (const qm_ordering::Failure& failure) {
    return Classify(failure.Number(), failure.Description());
  }
  const qm_ordering::LastFailureInfo swallowed = qm_ordering::LastFailure();
  return swallowed.Number == 0 ? Outcome::Done : Classify(swallowed.Number, swallowed.Description);
}

WorkingProgram::Outcome WorkingProgram::Classify(std::int32_t lvNumber, const std::string& zvText) {
  const qm_ordering::LastFailureInfo last = qm_ordering::LastFailure();
  if ((lvNumber == qm_ordering::failure::kStoreUnavailable || lvNumber == 5) && Holds(zvText, m_zStorePath) &&
      Holds(zvText, "another program holds the store")) {
    ++m_oReport.Held;
    return Outcome::Held;
  }
  if (lvNumber == 4 && last.Number == qm_ordering::failure::kStoreCommand &&
      Holds(last.Description, m_zStorePath) && Holds(last.Description, "refused")) {
    ++m_oReport.Refused;
    return Outcome::Refused;
  }
  if (lvNumber == 2) {
    ++m_oReport.NotCurrent;
    return Outcome::NotCurrent;
  }
  throw std::runtime_error("program " + std::to_string(m_lNumber) + " met an unclear failure: " +
                           std::to_string(lvNumber) + " " + zvText + "; the last: " + last.Description);
}

void WorkingProgram::Load() {
  while (Try([&] { m_oOrder->LoadSummary(); }) != Outcome::Done) {
  }
  while (Try([&] { m_oOrder->LoadItems(0); }) != Outcome::Done) {
  }
}

void WorkingProgram::AddShared() {
  const std::size_t lItem = Pick(kSharedItems);
  const std::string zItem = "S" + std::to_string(lItem);
  const auto lQuantity = static_cast<std::int32_t>(Pick(9)) + 1;
  while (true) {
    const Outcome outcome = Try(
        [&] { m_oOrder->AddItem(NewItem(zItem, lQuantity, static_cast<std::int64_t>(lItem + 1) * 2500)); });
    if (outcome == Outcome::Done) {
      m_oReport.Merged[zItem] += lQuantity;
      return;
    }
    if (outcome == Outcome::Held) {
      m_oReport.Unsure.insert(zItem);
      return;
    }
    // Another program was the first to add it: now there is a line to add to.
  }
}

void WorkingProgram::AddOwn() {
  const std::string zItem = OwnItem(Pick(kOwnItems));
  const auto lQuantity = static_cast<std::int32_t>(Pick(9)) + 1;
  if (Try([&] { m_oOrder->AddItem(NewItem(zItem, lQuantity, 12345)); }) == Outcome::Done) {
    m_oReport.Own[zItem] += lQuantity;
  } else {
    m_oReport.Unsure.insert(zItem);
  }
}

void WorkingProgram::RemoveOwn() {
  const std::string zItem = OwnItem(Pick(kOwnItems));
  if (Try([&] { m_oOrder->RemoveItem(zItem); }) == Outcome::Done) {
    m_oReport.Own.erase(zItem);
  } else {
    m_oReport.Unsure.insert(zItem);
  }
}

void WorkingProgram::UpdateOwn() {
  const auto oItems = std::make_shared<qm_ordering::OrderItems>();
  std::map<std::string, std::int32_t> quantities;
  for (std::size_t lItem = Pick(2); lItem < kOwnItems; lItem += 2) {
    const auto lQuantity = static_cast<std::int32_t>(Pick(5));
    oItems->Add(NewItem(OwnItem(lItem), lQuantity, 20000), OwnItem(lItem));
    quantities[OwnItem(lItem)] = lQuantity;
  }
  const bool bDone = Try([&] { m_oOrder->UpdateItems(oItems); }) == Outcome::Done;
  for (const auto& [zItem, lQuantity] : quantities) {
    if (!bDone) {
      m_oReport.Unsure.insert(zItem);
    } else if (lQuantity == 0) {
      m_oReport.Own.erase(zItem);
    } else if (m_oReport.Own.contains(zItem)) {
      m_oReport.Own[zItem] = lQuantity;
    }
  }
}

void WorkingProgram::WorkOnLines(int lvCalls) {
  for (int i = 0; i < lvCalls; ++i) {
    switch (Pick(8)) {
      case 0:
      case 1:
        AddOwn();
        break;
      case 2:
        RemoveOwn();
        break;
      case 3:
        UpdateOwn();
        break;
      default:
        AddShared();
        break;
    }
    // The collection would refuse an item that was removed from the store and is added again.
    Load();
  }
}

void WorkingProgram::WorkOnHeader(int lvCalls) {
  for (int i = 0; i < lvCalls; ++i) {
    const std::string zText = "P" + std::to_string(m_lNumber) + "-summary-" + std::to_string(i);
    const auto oOrder = m_oOrder->OrderDetails();
    oOrder->PurchaseOrderNumber(zText);
    oOrder->OrderInformation()->Attention(zText);
    oOrder->DeliveryInformation()->City(zText);
    oOrder->DeliveryInformation()->Notes(zText);
    if (Try([&] { m_oOrder->SaveSummary(); }) == Outcome::Done) {
      m_oReport.LastSummary = zText;
    }
    AddShared();
  }
}

void WorkingProgram::WorkOnHistory(int lvCalls) {
  for (int i = 0; i < lvCalls; ++i) {
    const std::string zItem = OwnItem(100 + static_cast<std::size_t>(i));
    const int lOrderID = m_oOrder->OrderDetails()->OrderID();
    if (Try([&] { m_oOrder->AddItem(NewItem(zItem, 1, 10000)); }) == Outcome::Done) {
      m_oReport.Lines.emplace_back(lOrderID, zItem);
    } else {
      m_oReport.Unsure.insert(zItem);
    }
    if (Try([&] { m_oOrder->SaveToHistory(); }) == Outcome::Done) {
      m_oReport.Submitted.push_back(lOrderID);
    }
    Load();
  }
}

void WorkingProgram::AddSharedToList() {
  const std::string zItem = "S" + std::to_string(Pick(kSharedItems));
  const auto lQuantity = static_cast<std::int32_t>(Pick(9)) + 1;
  qm_ordering::PersonalList list;
  if (TryOnLists([&] {
        list.AddItem(NewItem(zItem, lQuantity, 2500), kSharedList);
        return list.Error();
      }) == Outcome::Done) {
    m_oReport.Merged[zItem] += lQuantity;
  } else {
    m_oReport.Unsure.insert(zItem);
  }
}

void WorkingProgram::AddOwnToList() {
  if (m_lOwnList == 0) {
    return;
  }
  const std::string zItem = OwnItem(Pick(kOwnItems));
  const auto lQuantity = static_cast<std::int32_t>(Pick(9)) + 1;
  qm_ordering::PersonalList list;
  if (TryOnLists([&] {
        list.AddItem(NewItem(zItem, lQuantity, 12345), m_lOwnList);
        return list.Error();
      }) == Outcome::Done) {
    m_oReport.Own[zItem] += lQuantity;
  } else {
    m_oReport.Unsure.insert(zItem);
  }
}

void WorkingProgram::OwnListIsUnsure() {
  for (std::size_t lItem = 0; lItem < kOwnItems; ++lItem) {
    m_oReport.Unsure.insert(OwnItem(lItem));
  }
}

// Under one of its names, so that at times it takes the place of the one that is there.
void WorkingProgram::ReplaceOwnList() {
  const std::string zName = "P" + std::to_string(m_lNumber);
  std::int32_t lNew = 0;
  bool bReplaces = false;
  if (TryOnLists([&] {
        qm_ordering::PersonalLists lists;
        bReplaces = lists.GetName(m_lOwnList) == zName;
        lNew = lists.CreateList(zName);
        return qm_ordering::ErrorInfo();
      }) != Outcome::Done) {
    OwnListIsUnsure();
    return;
  }
  if (m_lOwnList != 0 && !bReplaces) {
    RemoveOwnList();
  }
  m_oReport.Own.clear();
  m_lOwnList = lNew;
}

void WorkingProgram::RenameOwnList() {
  const std::string zName = "P" + std::to_string(m_lNumber) + "-" + std::to_string(Pick(3));
  TryOnLists([&] {
    qm_ordering::PersonalLists().RenameList(m_lOwnList, zName);
    return qm_ordering::ErrorInfo();
  });
}

void WorkingProgram::RemoveOwnList() {
  if (TryOnLists([&] {
        qm_ordering::PersonalLists().RemoveList(m_lOwnList);
        return qm_ordering::ErrorInfo();
      }) == Outcome::Done) {
    m_oReport.Own.clear();
    m_lOwnList = 0;
  } else {
    OwnListIsUnsure();
  }
}

void WorkingProgram::ReplaceCommonList() {
  std::int32_t lCommon = 0;
  if (TryOnLists([&] {
        lCommon = qm_ordering::PersonalLists().CreateList("Common");
        return qm_ordering::ErrorInfo();
      }) == Outcome::Done) {
    // Refused when another program has replaced it by now.
    qm_ordering::PersonalList list;
    TryOnLists([&] {
      list.AddItem(NewItem("common", 1, 1), lCommon);
      return list.Error();
    });
  }
  // In whatever list it is, it is nobody's.
  m_oReport.Unsure.insert("common");
}

void WorkingProgram::ExportLists() {
  TryOnLists([&] {
    qm_ordering::PersonalLists lists;
    lists.LoadLists();
    lists.SaveAsXML();
    return qm_ordering::ErrorInfo();
  });
  // Whoever wrote it last.
  const std::string zXML = ReadFile(m_zListsFile);
  if (!zXML.starts_with("<personallists>") || !zXML.ends_with("</personallists>")) {
    throw std::runtime_error("the file of the lists is not whole: " + zXML);
  }
}

void WorkingProgram::WorkOnLists(int lvCalls) {
  for (int i = 0; i < lvCalls; ++i) {
    switch (Pick(12)) {
      case 0:
        ReplaceOwnList();
        break;
      case 1:
        RenameOwnList();
        break;
      case 2:
        RemoveOwnList();
        break;
      case 3:
        ReplaceCommonList();
        break;
      case 4:
        ExportLists();
        break;
      case 5:
      case 6:
      case 7:
        AddOwnToList();
        break;
      default:
        AddSharedToList();
        break;
    }
  }
  ExportLists();
}

void WorkingProgram::DeleteHistory(int lvTimes) {
  for (int i = 0; i < lvTimes; ++i) {
    TryOnLists([&] {
      qm_ordering::OrderHistory history;
      history.LoadOrders();
      for (const auto& oOrder : history) {
        history.DeleteOrder(oOrder->OrderID());
      }
      return qm_ordering::ErrorInfo();
    });
  }
}

}  // namespace test
