#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/processes/SharedStore.h"

namespace test {

// One call of a host on the current order, on a personal list, which it names, or on the history.
struct Call {
  enum class Kind {
    Load,
    Add,
    Update,
    Remove,
    Clear,
    SaveSummary,
    SavePONumber,
    Submit,
    DeleteOrder,
    CreateList,
    RenameList,
    RemoveList,
    RemoveListByName,
    AddToList,
    ExportLists
  };
  struct Item {
    std::string Number;
    std::int32_t Quantity = 0;
    std::int64_t Price = 0;
    std::size_t Notes = 0;
  };

  Kind What = Kind::Load;
  std::vector<Item> Items = {};
  std::string Text = {};     // a text of the order, or the name of the list
  std::string NewName = {};  // of the list
  int OrderID = 0;           // the one to be deleted

  std::string Describe() const;
};

// The calls that follow from a seed, so that a process that makes them and one that expects them need not
// tell each other. Begins with Load, and goes on with it after each Submit.
class CallSequence {
 public:
  // With long notes a few dozen calls fill a mebibyte of the store's log.
  CallSequence(unsigned lvSeed, bool bvLongNotes) : m_oRandom(lvSeed), m_bLongNotes(bvLongNotes) {}

  Call Next();
  // A call of this kind with random values.
  Call Make(Call::Kind kind);

 private:
  std::size_t Pick(std::size_t lvCount) { return m_oRandom() % lvCount; }
  Call::Item RandomItem();
  std::string RandomList();

  std::mt19937 m_oRandom;
  bool m_bLongNotes;
  bool m_bLoad = true;
  int m_lCalls = 0;
};

// Makes the call. Throws std::runtime_error when the call leaves an error record or swallows a failure that
// is no refusal of a name that another list has.
void Make(qm_ordering::CurrentOrder& order, const Call& call);

// What a store and the file of its lists hold, and the defaults of the next order with them.
class StoreModel {
 public:
  // The states that the store passes through during a call, one for each thing that is written by itself: the
  // state before the call, the half-way states that its contract names, and the state after it.
  std::vector<StoreModel> Passes(const Call& call) const;
  StoreModel After(const Call& call) const { return Passes(call).back(); }

  Texts Describe() const;
  // The same of what is there.
  static Texts DescribeStored(const SharedStore& shared);

  // What the check of the store says of this state.
  Texts Findings() const;
  // The order that was submitted last and is still there; 0 for none.
  int LastSubmitted() const;

 private:
  struct Line {
    std::string Item;
    std::int64_t Quantity = 0;
    std::int64_t Price = 0;
    std::int64_t Extended = 0;
    std::size_t Notes = 0;
  };
  struct Order {
    bool Current = true;
    std::string Number;
    std::string City;
    std::string Attention;
    std::int64_t Total = 0;
    std::vector<Line> Lines;

    std::vector<Line>::iterator Find(const std::string& zvItem);
    void Remove(const std::string& zvItem);
    std::int64_t Sum() const;
  };
  struct ListLine {
    std::int64_t Quantity = 0;
    std::size_t Notes = 0;
  };
  struct List {
    std::string Name;
    std::map<std::string, ListLine> Lines;  // by item
  };
  using Lists = std::map<int, List>;

  Order& Current();
  bool HasCurrent() const;
  void CreateCurrent();

  // Changes the state by the next thing that the call writes; false when there is nothing more.
  bool Write(const Call& call, int lvStep);
  bool WriteAdd(const Call& call, int lvStep);
  bool WriteUpdate(const Call& call, int lvStep);
  void WriteList(const Call& call);
  Lists::iterator FindList(const std::string& zvName);

  static Texts DescribeLists(const char* zvWhere, const Lists& lists);
  static Lists StoredLists(const SharedStore& shared);
  static Lists ExportedLists(const std::string& zvXML);

  std::map<int, Order> m_oOrders;
  Lists m_oLists;
  std::optional<Lists> m_oExported;
  int m_lLastOrder = 0;  // the highest ids ever given
  int m_lLastList = 0;
  std::string m_zDefaultNumber;
  std::string m_zDefaultCity;
};

}  // namespace test
