#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/processes/SharedStore.h"

namespace test {

// One call of a host on the current order.
struct Call {
  enum class Kind { Load, Add, Update, Remove, Clear, SaveSummary, SavePONumber, Submit };
  struct Item {
    std::string Number;
    std::int32_t Quantity = 0;
    std::int64_t Price = 0;
    std::size_t Notes = 0;
  };

  Kind What = Kind::Load;
  std::vector<Item> Items;
  std::string Text;

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

  std::mt19937 m_oRandom;
  bool m_bLongNotes;
  bool m_bLoad = true;
  int m_lCalls = 0;
};

// Makes the call. Throws std::runtime_error when the call leaves an error record.
void Make(qm_ordering::CurrentOrder& order, const Call& call);

// What a store holds, and the defaults of the next order with it.
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

  Order& Current();
  bool HasCurrent() const;
  void CreateCurrent();

  // Changes the state by the next thing that the call writes; false when there is nothing more.
  bool Write(const Call& call, int lvStep);
  bool WriteAdd(const Call& call, int lvStep);
  bool WriteUpdate(const Call& call, int lvStep);

  std::map<int, Order> m_oOrders;
  std::string m_zDefaultNumber;
  std::string m_zDefaultCity;
};

}  // namespace test
