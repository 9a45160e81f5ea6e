#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/Recordset.h"
#include "qm_ordering/platform/settings/Settings.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/store/OrderHeader.h"

namespace qm_ordering {

// The statements on the order store, each operation one or a few of them. Every operation opens the
// connection when it needs one and closes it at its end; the three that hand back a live result set leave it
// open until the next operation on this object, or the object's end, closes it and the set with it.
//
// A guarded operation never raises: a failure goes into the error record (errUnexpected with the detail,
// unless the operation names another code) and the result is empty. An unguarded one raises the store's
// failure. Each clears the record first.
//
// Texts go into a statement escaped (quotes doubled) or, where an operation says raw, as they are: a raw text
// that holds a quote fails the statement with kStoreCommand before it reaches the store, so that no text can
// change what a statement does.
class Database {
 public:
  // Holds the store's write lock from its start to its end, so that what an operation reads in it stays true
  // until another has written. Rolled back unless committed. It keeps the connection open.
  class WriteUnit {
   public:
    explicit WriteUnit(Database& database);
    ~WriteUnit();
    WriteUnit(const WriteUnit&) = delete;
    WriteUnit& operator=(const WriteUnit&) = delete;
    void Commit();

   private:
    Database& m_oDatabase;
    std::optional<ado::Transaction> m_oTransaction;
  };

  // For who reads a live result set: at its end the set is read, or cannot be, and the connection closes.
  class Reading {
   public:
    explicit Reading(Database& database) : m_oDatabase(database) {}
    ~Reading() { m_oDatabase.CloseConnection(); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

   private:
    Database& m_oDatabase;
  };

  Database() = default;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  ErrorInfo Error() const { return m_oError; }

  // Closes the connection that a live result set holds open, and the set. A caller that has read its set does
  // not keep one of the process's files open for as long as it keeps this object.
  void CloseConnection() noexcept;

  // Unguarded. The header of an order, or of the current one: detached, empty when there is none.
  std::unique_ptr<ado::Recordset> OrderDetails_GetSummary(std::int32_t lvOrderID, bool bvIsLoadCurrent);

  // Unguarded. The lines of an order, or of the current one: live. lvSortType 0 to 6, else 9 before the store
  // is touched.
  std::unique_ptr<ado::Recordset> OrderDetails_GetItems(std::int32_t lvOrderID, std::int32_t lvSortType,
                                                        bool bvIsLoadCurrent);

  // Guarded. Writes the values into every line of every order: the statement names none. lvOrderID and
  // zvItemNumber are taken and not used. zvUsuallyShips is raw.
  void OrderItem_Save(std::int32_t lvOrderID, const std::string& zvItemNumber, std::int32_t lvQuantity,
                      const std::string& zvDescription, const std::string& zvManufacturer,
                      const std::string& zvModel, std::int32_t lvSellQuantity, std::int32_t lvShipQuantity,
                      const std::string& zvUsuallyShips, bool bvIsTaxable, Currency cvPrice,
                      Currency cvExtendedPrice, bool bvIsPriceModified,
                      const std::string& zvCustomerPartNumber, const std::string& zvCustomerNotes);

  // Guarded. Writes the header, then keeps its values as the defaults of the next order. When only the latter
  // fails the record says that the order is saved.
  void OrderDetails_SaveSummary(const OrderHeader& oHeader);

  // Guarded.
  void SavePONumber(std::int32_t lvOrderID, const std::string& zvPurchaseOrderNumber);

  // Guarded. Stores a new line, then the order's total. errOrderNotLoaded when the store refuses the line
  // with kStoreCommand (it is there already, or the order is not). When only the total fails, the line stays.
  // zvUsuallyShips is raw.
  void OrderDetails_AddItem(std::int32_t lvOrderID, const std::string& zvItemNumber, std::int32_t lvQuantity,
                            const std::string& zvDescription, const std::string& zvShortDescription,
                            const std::string& zvManufacturer, const std::string& zvModel,
                            std::int32_t lvSellQuantity, std::int32_t lvShipQuantity,
                            const std::string& zvUsuallyShips, bool bvIsTaxable, Currency cvPrice,
                            Currency cvExtendedPrice, bool bvIsPriceModified,
                            const std::string& zvCustomerPartNumber, const std::string& zvCustomerNotes,
                            bool bvHasNotes, bool bvHasPartsInfo);

  // Unguarded. Stores the sum of the lines' extended prices as the order's total, in one unit. Raises 6 when
  // it is beyond the range of money; the total is then unchanged.
  void Order_UpdateTotalPrice(std::int32_t lvOrderID);

  // Unguarded. Sets, despite its name, the quantity of a line; the caller passes the new total. zvItemNumber
  // is raw.
  void OrderDetails_IncrementQuantity(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                      std::int32_t lvIncrement, Currency cvPrice, Currency cvExtendedPrice);

  // Unguarded. On a connection of its own.
  bool OrderDetails_ItemExists(std::int32_t lvOrderID, const std::string& zvItemNumber);

  // Unguarded. The stored quantity of a line; nothing when there is no such line.
  std::optional<std::int32_t> OrderDetails_GetQuantity(std::int32_t lvOrderID,
                                                       const std::string& zvItemNumber);

  // Unguarded. Removes all lines, then sets the total to 0: two statements of their own.
  void OrderDetails_ClearItems(std::int32_t lvOrderID);

  // Unguarded. Changes the lines with that item number in every order, submitted ones included. zvItemNumber
  // is raw.
  void OrderDetails_UpdateItem(const std::string& zvItemNumber, std::int32_t lvQuantity, Currency cvPrice,
                               Currency cvExtendedPrice, bool bvIsUserPrice, bool bvIsTaxable);

  // Unguarded. Removes the stored lines of the items with quantity 0 and writes quantity, prices and flags of
  // the others into theirs, all of these or none. Lines that are not stored are passed over; the total is
  // left to the caller. Item numbers are raw.
  void OrderDetails_UpdateItems(std::int32_t lvOrderID, const OrderItems& ovOrderItems);

  // Unguarded. Removes a line, then stores the total. zvItemNumber is raw.
  void OrderItem_RemoveItem(std::int32_t lvOrderID, const std::string& zvItemNumber);

  // Guarded. Marks the current order as submitted now, then creates the next one. errNotCurrentOrder, and
  // nothing changed, for any other order. When only the creation fails the order is submitted and there is no
  // current one.
  void OrderDetails_SaveToHistory(std::int32_t lvOrderID);

  // Unguarded. Adds a current order filled from the order defaults; does nothing when another program has
  // just done so.
  void CreateCurrentOrder();

  // Guarded. Writes contact and account values into every order, submitted ones included: the order default
  // where it is not empty, else the registered value.
  void ApplyDefaultsToCurrentOrder(const std::string& zvCity, const std::string& zvCompanyName,
                                   const std::string& zvAddress1, const std::string& zvAddress2,
                                   const std::string& zvFax, const std::string& zvTelephone,
                                   const std::string& zvTelephoneExt, const std::string& zvCountry,
                                   const std::string& zvEmail, const std::string& zvFirstName,
                                   const std::string& zvLastName, const std::string& zvState,
                                   const std::string& zvStateOr, const std::string& zvZipOrPostCode,
                                   const std::string& zvAccountNumber, const std::string& zvNotUsed);

  // Unguarded. The stored total; 0 when there is no such order.
  Currency Order_GetTotalPrice(std::int32_t lvOrderID);

  // Guarded. The number of stored lines.
  std::int32_t OrderDetails_ItemCount(std::int32_t lvOrderID);

  // Unguarded. All lists by name: detached, lListID and zName.
  std::unique_ptr<ado::Recordset> PersonalLists_GetLists();

  // Guarded. Adds an empty list, which replaces the one of that name, its lines included, and answers its id;
  // 0 on a failure. errDuplicateList when the store refuses it with kStoreCommand; the old list then stays.
  std::int32_t PersonalLists_CreateList(const std::string& zvName);

  // Guarded. True when it was renamed, also when there is no such list. errDuplicateList when the store
  // refuses the name with kStoreCommand.
  bool PersonalLists_RenameList(const Variant& lvListID, const Variant& zvNewListName);

  // Guarded. Removes a list with its lines; nothing when there is none.
  void PersonalLists_RemoveList(std::int32_t lvListID);

  // Guarded. The same by name; True when the statement ran, also when there is no such list.
  bool PersonalLists_RemoveListByName(const Variant& zvListName);

  // Guarded. Whether there is a list of that name, in any letter case.
  bool PersonalLists_ListExists(const Variant& zvName);

  // Guarded. Empty when there is no such list.
  std::string PersonalLists_GetName(std::int32_t lvListID);

  // Unguarded. Live: zName and lListID of a list; no row when there is none.
  std::unique_ptr<ado::Recordset> PersonalList_GetSummary(std::int32_t lvListID);

  // Unguarded. Live: every column of the list's lines, in the store's order.
  std::unique_ptr<ado::Recordset> PersonalList_GetItems(std::int32_t lvListID);

  // Unguarded.
  bool PersonalList_ItemExists(std::int32_t lvListID, const std::string& zvItemNumber);

  // Unguarded. Adds to the stored quantity of a line; 6 for a sum beyond 32 bits. zvItemNumber is raw.
  void PersonalList_IncrementQuantity(std::int32_t lvListID, const std::string& zvItemNumber,
                                      std::int32_t lvIncrement);

  // Guarded. Stores a new line. errOrderNotLoaded when the store refuses it with kStoreCommand (it is there
  // already, or the list is not). zvUsuallyShips is raw.
  void PersonalList_AddItem(std::int32_t lvListID, const std::string& zvItemNumber, std::int32_t lvQuantity,
                            const std::string& zvDescription, const std::string& zvShortDescription,
                            const std::string& zvManufacturer, const std::string& zvModel,
                            std::int32_t lvSellQuantity, std::int32_t lvShipQuantity,
                            const std::string& zvUsuallyShips, bool bvIsTaxable,
                            const std::string& zvCustomerPartNumber, const std::string& zvCustomerNotes,
                            bool bvHasPartsInfo);

  // Unguarded. The submitted orders: detached, datSubmitDate, zPurchaseOrderNumber, cTotalPrice, lOrderID.
  // lvSortOrder 0 to 3, else 9 before the store is touched.
  std::unique_ptr<ado::Recordset> OrderHistory_GetOrders(std::int32_t lvSortOrder);

  // Unguarded. Removes a submitted order with its lines; nothing for the current order.
  void OrderHistory_DeleteOrder(std::int32_t lvOrderID);

  // Guarded. Whether there is a submitted order with that purchase-order number, in any letter case; empty on
  // a failure.
  Variant OrderHistory_ItemExists(const std::string& zvPONumber);

  // Unguarded, all or none. Writes part number and notes of the lines with these item numbers (raw). Raises 9
  // when the arrays differ in length.
  void UpdateCustPartInfo(const std::vector<std::string>& zvItemNumbers,
                          const std::vector<std::string>& zvCustomerPartNumbers,
                          const std::vector<std::string>& zvCustomerNotes, std::int32_t lvOrderID);

  // Unguarded, all or none. Blanks part number and notes of the order's lines that carry one of these part
  // numbers.
  void deleteCustPartInfo(const std::vector<std::string>& zvCustomerPartNumbers, std::int32_t lvOrderID);

 private:
  class Frame;

  ado::Connection& Connection();
  void Enter() noexcept;
  void Leave(bool bvKeepOpen) noexcept;

  // Runs a statement that holds these raw texts.
  void ExecuteRaw(const std::string& zvSQL, const std::vector<std::string_view>& zvRawTexts);
  void RefuseQuotes(const std::string& zvSQL, const std::vector<std::string_view>& zvRawTexts);

  template <typename Result, typename Body>
  Result Guarded(const char* zvOperation, std::optional<OrderingError> lvOnStoreCommand, Body body);

  // The one number that a select count answers.
  std::int32_t Count(const std::string& zvSQL);
  bool CurrentOrderExists();
  bool ListExists(const std::string& zvName);
  void SaveDefaults(const OrderHeader& oHeader);
  void WriteChangedLines(const std::string& zvSQL, const std::vector<std::string_view>& zvItemNumbers,
                         const OrderItems& ovOrderItems);

  ErrorInfo m_oError;
  ado::Connection m_oConnection;
  // Operations and units under way, one inside the other; the outermost closes the connection.
  int m_lFrames = 0;
};

}  // namespace qm_ordering
