#include "tests/store/Operations.h"

#include <memory>

#include "tests/store/DatabaseFixture.h"

namespace test {

using qm_ordering::Database;

const std::vector<Operation>& GuardedOperations() {
  static const std::vector<Operation> operations = {
      {"OrderItem_Save", [](Database& oDatabase) { SaveLine(oDatabase, {}); }},
      {"OrderDetails_SaveSummary",
       [](Database& oDatabase) {
         qm_ordering::OrderHeader header;
         header.OrderID = 12;
         oDatabase.OrderDetails_SaveSummary(header);
       }},
      {"SavePONumber", [](Database& oDatabase) { oDatabase.SavePONumber(12, "PO-7"); }},
      {"OrderDetails_AddItem",
       [](Database& oDatabase) {
         Line line;
         line.ItemNumber = "NEW";
         AddItem(oDatabase, line);
       }},
      {"OrderDetails_SaveToHistory", [](Database& oDatabase) { oDatabase.OrderDetails_SaveToHistory(12); }},
      {"ApplyDefaultsToCurrentOrder",
       [](Database& oDatabase) {
         oDatabase.ApplyDefaultsToCurrentOrder("City", "Company", "Address 1", "Address 2", "Fax", "Phone",
                                               "Ext", "Country", "Email", "First", "Last", "State", "Or",
                                               "Zip", "Account", "");
       }},
      {"OrderDetails_ItemCount",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderDetails_ItemCount(12)); }},
      {"PersonalLists_CreateList",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_CreateList("New")); }},
      {"PersonalLists_RenameList",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_RenameList(12, "Renamed")); }},
      {"PersonalLists_RemoveList", [](Database& oDatabase) { oDatabase.PersonalLists_RemoveList(13); }},
      {"PersonalLists_RemoveListByName",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_RemoveListByName("gone")); }},
      {"PersonalLists_ListExists",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_ListExists("Tools")); }},
      {"PersonalLists_GetName",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_GetName(12)); }},
      {"PersonalList_AddItem",
       [](Database& oDatabase) {
         oDatabase.PersonalList_AddItem(12, "NEW", 1, "", "", "", "", 1, 1, "", false, "", "", false);
       }},
      {"OrderHistory_ItemExists",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderHistory_ItemExists("PO-7")); }},
  };
  return operations;
}

const std::vector<Operation>& UnguardedOperations() {
  static const std::vector<Operation> operations = {
      {"OrderDetails_GetSummary",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderDetails_GetSummary(12, false)); }},
      {"OrderDetails_GetItems",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderDetails_GetItems(12, 0, false)); }},
      {"Order_UpdateTotalPrice", [](Database& oDatabase) { oDatabase.Order_UpdateTotalPrice(12); }},
      {"OrderDetails_IncrementQuantity",
       [](Database& oDatabase) {
         oDatabase.OrderDetails_IncrementQuantity(12, "A-1", 3, Money("1"), Money("3"));
       }},
      {"OrderDetails_ItemExists",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderDetails_ItemExists(12, "A-1")); }},
      {"OrderDetails_GetQuantity",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderDetails_GetQuantity(12, "A-1")); }},
      {"OrderDetails_ClearItems", [](Database& oDatabase) { oDatabase.OrderDetails_ClearItems(12); }},
      {"OrderDetails_UpdateItem",
       [](Database& oDatabase) {
         oDatabase.OrderDetails_UpdateItem("A-1", 3, Money("1"), Money("3"), true, true);
       }},
      {"OrderDetails_UpdateItems, a line to write",
       [](Database& oDatabase) {
         qm_ordering::OrderItems items;
         items.Add(Item("A-1", 3), "A-1");
         oDatabase.OrderDetails_UpdateItems(12, items);
       }},
      {"OrderDetails_UpdateItems, a line to remove",
       [](Database& oDatabase) {
         qm_ordering::OrderItems items;
         items.Add(Item("A-1", 0), "A-1");
         oDatabase.OrderDetails_UpdateItems(12, items);
       }},
      {"OrderItem_RemoveItem", [](Database& oDatabase) { oDatabase.OrderItem_RemoveItem(12, "A-1"); }},
      {"CreateCurrentOrder", [](Database& oDatabase) { oDatabase.CreateCurrentOrder(); }},
      {"Order_GetTotalPrice",
       [](Database& oDatabase) { static_cast<void>(oDatabase.Order_GetTotalPrice(12)); }},
      {"UpdateCustPartInfo",
       [](Database& oDatabase) { oDatabase.UpdateCustPartInfo({"A-1"}, {"P"}, {"N"}, 12); }},
      {"PersonalLists_GetLists",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalLists_GetLists()); }},
      {"PersonalList_GetSummary",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalList_GetSummary(12)); }},
      {"PersonalList_GetItems",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalList_GetItems(12)); }},
      {"PersonalList_ItemExists",
       [](Database& oDatabase) { static_cast<void>(oDatabase.PersonalList_ItemExists(12, "A-1")); }},
      {"PersonalList_IncrementQuantity",
       [](Database& oDatabase) { oDatabase.PersonalList_IncrementQuantity(12, "A-1", 1); }},
      {"OrderHistory_GetOrders",
       [](Database& oDatabase) { static_cast<void>(oDatabase.OrderHistory_GetOrders(0)); }},
      {"OrderHistory_DeleteOrder", [](Database& oDatabase) { oDatabase.OrderHistory_DeleteOrder(99); }},
      {"deleteCustPartInfo", [](Database& oDatabase) { oDatabase.deleteCustPartInfo({"P"}, 12); }},
  };
  return operations;
}

}  // namespace test
