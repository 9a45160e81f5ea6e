#include "tests/memory/OperationFixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "tests/support/OrderFields.h"
#include "tests/support/OrderValues.h"

namespace test {

using qm_ordering::CurrentOrder;
using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using qm_ordering::OrderItem;
using qm_ordering::ado::embedded::CloseIdleSessions;

namespace {

// Longer than a string holds in itself, as most texts of a user are.
const std::string kLong = " that is longer than what a string holds in itself";

std::string ValuesIn(const CurrentOrder& order) {
  return ToText(ValuesOf(*order.OrderDetails()));
}

// The stores lie in memory where there is such a folder: thousands of them would wait for the disk.
const bool g_bInMemory = std::filesystem::is_directory("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;

void Load(std::optional<CurrentOrder>& order) {
  order.emplace();
  EXPECT_EQ(order->OrderDetails()->Error(), ErrorInfo());
  order->LoadItems(0);
}

}  // namespace

OperationFixture::OperationFixture() {
  WriteFile(SettingsFile(), "# a comment\nOrderingDatabasePath=" + Folder.Path() + "\nReg_City=Town" + kLong +
                                "\nReg_Email=someone@example.com\nDEFAULT_DI_FirstName=\"Ann\\tMarie\"\n");
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(qm_ordering::CreateFileSettings(SettingsFile()));
  qm_ordering::StartUp();
}

std::shared_ptr<OrderItem> OperationFixture::NewItem(const std::string& zvItemNumber,
                                                     std::int32_t lvQuantity) {
  auto oItem = std::make_shared<OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Quantity(lvQuantity);
  oItem->Description("A description" + kLong);
  oItem->Manufacturer("A manufacturer" + kLong);
  oItem->UsuallyShips("TODAY");
  oItem->CustomerNotes("Notes" + kLong);
  oItem->SellQuantity(2);
  oItem->ShipQuantity(4);
  oItem->Price(qm_ordering::Currency::Parse("1234.5678"));
  return oItem;
}

void OperationFixture::FillStore() {
  CurrentOrder order;
  FillHeader(*order.OrderDetails());
  order.OrderDetails()->OrderInformation()->Attention("Attention" + kLong);
  order.SaveSummary();
  for (const char* zNumber : {"4QX17", "4QX18"}) {
    order.AddItem(NewItem(zNumber, 8));
  }
  EXPECT_EQ(order.Error(), ErrorInfo());
}

void OperationFixture::FillLists() {
  FillStore();
  qm_ordering::PersonalLists lists;
  EXPECT_EQ(1, lists.CreateList("Tools"));
  EXPECT_EQ(2, lists.CreateList("Paint" + kLong));
  qm_ordering::PersonalList().AddItem(NewItem("4QX17", 8), 1);
  qm_ordering::PersonalLists exported;
  exported.LoadLists();
  exported.SaveAsXML();
  qm_ordering::PersonalList().AddItem(NewItem("4QX18", 8), 1);
  qm_ordering::PersonalList().AddItem(NewItem("4QX18", 8), 2);
}

std::string OperationFixture::OldTotal() const {
  return "update tblOrder set cTotalPrice = " +
         Store.Value("select cTotalPrice from tblOrder where bIsCurrent = -1") + " where bIsCurrent = -1";
}

void OperationFixture::FailEach(const Operation& operation, std::int64_t lvWarmStride,
                                std::int64_t lvColdStride) {
  CloseIdleSessions();
  m_zAllRows.clear();
  for (const char* zTable : {"tblOrder", "tblOrderItem", "tblPersonalList", "tblPersonalListItem"}) {
    m_zAllRows +=
        (m_zAllRows.empty() ? "select " : " union all select ") + AllColumns(zTable) + " from " + zTable;
  }
  m_zStoreBefore = ReadFile(Store.Path());
  m_before = Now();
  LearnWhatIsRight(operation);
  std::int64_t lFailures = 0;
  for (const Pool pool : {Pool::Warm, Pool::Cold}) {
    const std::int64_t lStride = pool == Pool::Warm ? lvWarmStride : lvColdStride;
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
      for (std::int64_t lPosition = 1; FailOne(operation, pool, extent, lPosition); lPosition += lStride) {
        ++lFailures;
        ASSERT_FALSE(HasFailure()) << "allocation " << lPosition << (pool == Pool::Warm ? ", warm" : ", cold")
                                   << (extent == Extent::Once ? ", alone" : ", with all that follow");
      }
    }
  }
  EXPECT_GT(lFailures, 0);
  std::printf("injected failures: %lld\n", static_cast<long long>(lFailures));
}

std::string OperationFixture::AllColumns(const std::string& zvTable) const {
  return Store.Value("select group_concat('quote(' || name || ')', ' || '' '' || ') from pragma_table_info(" +
                     Quoted(zvTable) + ")");
}

// In one query, since each costs an engine session of its own.
std::string OperationFixture::Rows() const {
  std::string zRows;
  for (const Row& row : Store.Query(m_zAllRows)) {
    zRows += row.front() + "\n";
  }
  return zRows;
}

OperationFixture::State OperationFixture::Now() const {
  return {Rows(), ReadFile(SettingsFile()),
          std::filesystem::exists(ListsFile()) ? ReadFile(ListsFile()) : std::string()};
}

ErrorInfo OperationFixture::RecordOf(const Operation& operation, const CurrentOrder& order) const {
  return List ? List->Error() : operation.Creates ? order.OrderDetails()->Error() : order.Error();
}

// What the objects hold.
std::string OperationFixture::Values(const CurrentOrder& order) const {
  std::string zValues = ValuesIn(order);
  if (List) {
    zValues += List->Name();
    for (const auto& oItem : *List->OrderItems()) {
      zValues += oItem->GetXML();
    }
  }
  return zValues;
}

void OperationFixture::Restore() const {
  CloseIdleSessions();
  for (const char* zSuffix : {"-wal", "-shm"}) {
    std::filesystem::remove(Store.Path() + zSuffix);
  }
  WriteFile(Store.Path(), m_zStoreBefore);
  WriteFile(SettingsFile(), m_before.Settings);
  if (!m_before.Lists.empty()) {
    WriteFile(ListsFile(), m_before.Lists);
  }
}

// Runs the operation as it should go, and makes the states that it may leave half-way.
void OperationFixture::LearnWhatIsRight(const Operation& operation) {
  std::optional<CurrentOrder> order;
  if (!operation.Creates) {
    Load(order);
  }
  operation.Prepare(order, m_zAnswer)();
  ASSERT_EQ(RecordOf(operation, *order), ErrorInfo());
  m_zAnswer += Values(*order);
  order.reset();
  List.reset();
  CloseIdleSessions();
  m_after = Now();
  m_allowed = {m_before, m_after};
  m_bMustRestore = m_before != m_after || !operation.HalfWays.empty();
  const std::string zStoreAfter = ReadFile(Store.Path());
  for (const HalfWay& halfWay : operation.HalfWays) {
    WriteFile(Store.Path(), halfWay.Rows == HalfWay::From::Before ? m_zStoreBefore : zStoreAfter);
    if (!halfWay.Difference.empty()) {
      Store.Run(halfWay.Difference);
    }
    m_allowed.push_back({Rows(),
                         halfWay.Settings == HalfWay::From::Before ? m_before.Settings : m_after.Settings,
                         m_after.Lists});
  }
}

// False when the operation makes fewer allocations than that.
bool OperationFixture::FailOne(const Operation& operation, Pool pool, Extent extent,
                               std::int64_t lvPosition) {
  if (m_bMustRestore) {
    Restore();
  }
  std::optional<CurrentOrder> order;
  if (!operation.Creates) {
    Load(order);
  } else {
    // Leaves a session in the pool.
    qm_ordering::OrderDetails().ItemCount();
  }
  if (pool == Pool::Cold) {
    CloseIdleSessions();
  }
  std::string zAnswer;
  const Operation::Call call = operation.Prepare(order, zAnswer);
  qm_ordering::ClearLastFailure();
  std::optional<Failure> raised;
  bool bFailed = false;
  {
    const FailingAllocation failing(lvPosition, extent);
    try {
      call();
    } catch (const Failure& failure) {
      raised = failure;
    }
    bFailed = failing.HasFailed();
  }
  Judge(operation, order, raised, zAnswer);
  List.reset();
  return bFailed;
}

void OperationFixture::Judge(const Operation& operation, std::optional<CurrentOrder>& order,
                             const std::optional<Failure>& raised, const std::string& zvAnswer) {
  const ErrorInfo record = order ? RecordOf(operation, *order) : ErrorInfo();
  const bool bTold =
      raised || record.Number != 0 || (operation.Swallows && qm_ordering::LastFailure().Number != 0);
  if (raised) {
    EXPECT_EQ(raised->Number(), qm_ordering::failure::kOutOfMemory) << raised->Description();
  } else if (bTold) {
    EXPECT_EQ(qm_ordering::LastFailure().Number, qm_ordering::failure::kOutOfMemory)
        << qm_ordering::LastFailure().Description;
  }
  if (record.Number != 0) {
    EXPECT_EQ(record.Number, 5);
    EXPECT_NE(record.Description.find("Out of memory"), std::string::npos) << record.Description;
  }
  if (bTold && !raised && !operation.AnswerOfFailure.empty()) {
    EXPECT_EQ(operation.AnswerOfFailure, zvAnswer);
  }
  const State state = Now();
  if (bTold) {
    EXPECT_NE(std::ranges::find(m_allowed, state), m_allowed.end()) << testing::PrintToString(state);
  } else {
    EXPECT_EQ(state, m_after);
    EXPECT_EQ(zvAnswer + Values(*order), m_zAnswer);
  }
  EXPECT_EQ(Leftovers(), "");
  const bool bUnchanged = state == m_before;
  GoOn(operation, order, bUnchanged);
  m_bMustRestore = !bUnchanged || m_before != m_after;
}

// With the same objects.
void OperationFixture::GoOn(const Operation& operation, std::optional<CurrentOrder>& order, bool bvRepeat) {
  if (bvRepeat) {
    std::string zAnswer;
    operation.Prepare(order, zAnswer)();
    EXPECT_EQ(RecordOf(operation, *order), ErrorInfo());
    EXPECT_EQ(zAnswer + Values(*order), m_zAnswer);
    if (m_before != m_after) {
      EXPECT_EQ(Now(), m_after);
    }
    return;
  }
  if (!order) {
    order.emplace();
  }
  order->LoadSummary();
  EXPECT_EQ(order->Error(), ErrorInfo());
  order->LoadItems(0);
  order->AddItem(NewItem("NEXT", 4));
  EXPECT_EQ(order->Error(), ErrorInfo());
  order->LoadSummary();
  const std::string zAdded = ValuesIn(*order);
  order->LoadItems(0);
  EXPECT_EQ(ValuesIn(*order), zAdded);
  EXPECT_EQ(
      Store.Query(
          // The total of an imported order is its own.
          "select (select count(*) from tblOrder o join tblOrderItem i using (lOrderID) where o.bIsCurrent = "
          "-1 and i.zItemNumber = 'NEXT'), (select count(*) from tblOrder o where cTotalPrice <> (select "
          "coalesce(sum(cExtendedPrice), 0) from tblOrderItem i where i.lOrderID = o.lOrderID) and lOrderID "
          "not in (select lOrderID from tblOrderItem where bImported)), (select "
          "group_concat(integrity_check) from pragma_integrity_check)"),
      (test::Rows{{"1", "0", "ok"}}));
}

// What lies in the folder and should not.
std::string OperationFixture::Leftovers() const {
  static constexpr std::array<const char*, 7> kExpected = {
      "Orders.mdb",        "Orders.mdb-wal",    "Orders.mdb-shm",        "settings.ini",
      "settings.ini.lock", "PersonalLists.xml", "PersonalLists.xml.lock"};
  std::string zLeft;
  for (const auto& entry : std::filesystem::directory_iterator(Folder.Path())) {
    const std::string zName = entry.path().filename();
    if (std::ranges::find(kExpected, zName) == kExpected.end()) {
      zLeft += zName + " ";
    }
  }
  return zLeft;
}

}  // namespace test
