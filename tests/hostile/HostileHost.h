#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "qm_ordering/qm_ordering.h"
#include "tests/hostile/HostileValues.h"
#include "tests/hostile/StoreObserver.h"
#include "tests/support/StoreFixture.h"

namespace test {

// A host that calls the public classes in any order with any values, and looks after each call at what the
// call was allowed to do: what it raised, what it recorded, which rows of the store it changed and how. It
// works on a store that holds a submitted order with a line and a personal list ("the canary"), which no call
// may change, since none is asked to.
class HostileHost {
 public:
  // zvFolder holds the store; the thread's start-up has run with these settings.
  HostileHost(std::string zvFolder, MemorySettings& settings);
  ~HostileHost();
  HostileHost(const HostileHost&) = delete;
  HostileHost& operator=(const HostileHost&) = delete;

  // Makes some lvCalls calls. Answers what was wrong; empty when nothing was.
  std::string Work(std::uint64_t lvSeed, int lvCalls);

  // The calls of the last Work, each a line.
  std::string Calls() const;

  // How often each member was called, and how often each number was raised or recorded, over all Works.
  const std::map<std::string, int>& CallCounts() const { return m_lCallCounts; }
  const std::map<std::int32_t, int>& RaisedCounts() const { return m_lRaisedCounts; }
  const std::map<std::int32_t, int>& RecordedCounts() const { return m_lRecordedCounts; }

 private:
  // An order in the host's hands, through the facade or by itself.
  struct Order {
    std::shared_ptr<qm_ordering::CurrentOrder> Facade;
    std::shared_ptr<qm_ordering::OrderDetails> Details;
    bool Loaded() const { return Details->DeliveryInformation() != nullptr; }
  };

  // How a call went.
  struct Outcome {
    std::int32_t Raised = 0;
    qm_ordering::ErrorInfo Record;
    bool Good() const { return Raised == 0 && Record.Number == 0; }
  };

  enum class Store { There, Gone };

  using Numbers = std::initializer_list<std::int32_t>;

  // Sequence
  void Begin(std::uint64_t lvSeed);
  void Step();
  void End();

  // Calls, each with its checks
  void MakeOrder();
  void ChooseOrder();
  void SetHeader();
  void SetItem();
  void MakeItem();
  void CollectItem();
  void FindItem();
  void WalkCollection();
  void LoadSummary();
  void LoadItems();
  void AddItem();
  void UpdateItems();
  void RemoveItem();
  void ClearItems();
  void CountItems();
  void AskForItem();
  void SaveSummary();
  void SavePONumber();
  void SaveToHistory();
  void ApplyRegistration();
  void Document();
  void ValidateItem();
  void ValidateHeader();
  void MakeObject();
  void Calculate();
  void Convert();
  void MakeDate();
  void StoreFunctions();
  void SettingsFunctions();
  void ThrowFromTrace();
  void ThrowFromSettings();
  void FillSettings();
  void DeleteStore();
  void ReplaceStore();

  // Calls on personal lists and on the history (HostileLists.cpp)
  void CreateList();
  void RenameList();
  void RemoveList();
  void AskForList();
  void LoadLists();
  void ListsDocument();
  void SaveListsFile();
  void ChooseList();
  void AddToList();
  void LoadListSummary();
  void LoadListItems();
  void LoadHistory();
  void DeleteFromHistory();
  void UsePreviousOrder();

  // Makes the call and looks at what holds for every call. allowed: the numbers that it may raise in a store
  // that is there; order: whose record it leaves, null for none.
  Outcome Call(const std::string& zvName, const std::string& zvArguments, Numbers allowed,
               const std::function<void()>& call, const Order* order = nullptr);
  // The same for a call that changes nothing in the store.
  Outcome Read(const std::string& zvName, const std::string& zvArguments, Numbers allowed,
               const std::function<void()>& call, const Order* order = nullptr);

  // The same for a call that may change lists, and no order.
  Outcome CallOnLists(const std::string& zvName, const std::string& zvArguments, Numbers allowed,
                      const std::function<void()>& call);

  // What the store held before and after the last call.
  void Look();
  void LookAnew();
  bool IsUnchanged() const;
  void ExpectUnchanged();
  // Nothing but the order has changed.
  void ExpectOthersUnchanged(std::int32_t lvOrderID);
  // No line came, went or changed, and of the order's header nothing but these columns.
  void ExpectHeaderChanges(std::int32_t lvOrderID, const std::set<std::string>& zvColumns);
  // At most a new current order without lines came into being, where there was none.
  void ExpectAtMostANewCurrentOrder();
  // The header that the object holds is the stored one.
  void ExpectHeaderAsStored(const Order& order);
  void ExpectTotalUpToDate(std::int32_t lvOrderID);
  // The lines that the object has just read are the stored ones.
  void ExpectLinesAsStored(const Order& order);
  void ExpectLine(const StoredRow& line, const qm_ordering::OrderItem& item);
  void ExpectSame(const std::string& zvColumn, const std::string& zvHeld, const std::string& zvStored);
  void Expect(bool bvHolds, const std::string& zvWhat);
  // The lists are just these.
  void ExpectLists(const std::map<std::int32_t, StoredList>& lists);
  void ExpectListLine(const StoredRow& line, const qm_ordering::OrderItem& item);
  // The record is one that a list may have.
  void ExpectListRecord(const qm_ordering::PersonalList& list);

  Order& AnyOrder();
  std::shared_ptr<qm_ordering::OrderItem> AnyItem();  // seldom null
  std::shared_ptr<qm_ordering::OrderItems> AnyCollection();
  std::shared_ptr<qm_ordering::OrderItem> NewItem();
  std::shared_ptr<qm_ordering::PersonalLists> AnyCatalogue();
  std::shared_ptr<qm_ordering::PersonalList> AnyList();
  std::shared_ptr<qm_ordering::OrderHistory> AnyHistory();
  std::int32_t AnyListID();                    // of a list that there is, or not; never the canary's
  qm_ordering::Variant AnyListIDAsAnyValue();  // a wrong type, too; never the canary's
  std::string ListsPath() const { return m_zFolder + "/PersonalLists.xml"; }
  std::string StorePath() const { return m_zFolder + "/Orders.mdb"; }
  void CloseObserver();
  void OpenObserver();
  bool StoreThere() const { return m_eStore == Store::There; }

  static constexpr std::int32_t kCanary = 1;  // the id of its order and of its list

  std::string m_zFolder;
  MemorySettings& m_oSettings;
  std::string m_zPristine;  // the bytes of a store with the canary alone
  std::optional<StoreObserver> m_oObserver;
  std::shared_ptr<const StoredState> m_oBefore;
  std::shared_ptr<const StoredState> m_oAfter;
  Store m_eStore = Store::There;

  HostileValues m_oValues;
  std::vector<Order> m_oOrders;
  std::vector<std::shared_ptr<qm_ordering::OrderItem>> m_oItems;
  std::vector<std::shared_ptr<qm_ordering::OrderItems>> m_oCollections;
  std::vector<std::shared_ptr<qm_ordering::PersonalLists>> m_oCatalogues;
  std::vector<std::shared_ptr<qm_ordering::PersonalList>> m_oLists;
  std::vector<std::shared_ptr<qm_ordering::OrderHistory>> m_oHistories;
  std::vector<std::shared_ptr<qm_ordering::PreviousOrder>> m_oPreviousOrders;
  bool m_bOnLists = false;   // in this call
  std::string m_zListsFile;  // what it holds; empty for none

  // Statements, and calls of the settings component, until one throws; -1: none does.
  int m_lUntilTraceThrows = -1;
  int m_lUntilSettingsThrow = -1;
  std::int32_t m_lThrownNumber = 0;
  bool m_bThrown = false;  // in this call

  std::vector<std::string> m_zCalls;
  std::string m_zWrong;
  std::map<std::string, int> m_lCallCounts;
  std::map<std::int32_t, int> m_lRaisedCounts;
  std::map<std::int32_t, int> m_lRecordedCounts;
};

}  // namespace test
