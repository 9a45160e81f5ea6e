#pragma once

#include <string>
#include <vector>

#include "bench/Line.h"

namespace bench {

// The statements that the library ends up with, as a program would write them that prepares its own.

inline constexpr const char* kCountLine =
    "select count(*) from tblOrderItem where zItemNumber = :item and lOrderID = :order";
inline constexpr const char* kInsertLine =
    "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
    "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, bIsTaxable, "
    "cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, bHasNotes, "
    "bHasPartsInfo) "
    "values (:order, :item, :quantity, :description, :short, :manufacturer, :model, :sell, :ship, :ships, "
    ":sort, :taxable, :price, :extended, :modified, :part, :notes, :hasnotes, :hasparts)";
inline constexpr const char* kReadQuantity =
    "select lQuantity from tblOrderItem where zItemNumber = :item and lOrderID = :order";
inline constexpr const char* kMergeLine =
    "update tblOrderItem set lQuantity = :quantity, cPrice = :price, cExtendedPrice = :extended "
    "where lOrderID = :order and zItemNumber = :item";
inline constexpr const char* kSumLines =
    "select sum(cExtendedPrice) from tblOrderItem where lOrderID = :order";
inline constexpr const char* kWriteTotal = "update tblOrder set cTotalPrice = :total where lOrderID = :order";
inline constexpr const char* kReadTotal = "select cTotalPrice from tblOrder where lOrderID = :order";
inline constexpr const char* kChangeLine =
    "update tblOrderItem set lQuantity = :quantity, cPrice = :price, cExtendedPrice = :extended "
    "where rowid = :row and zItemNumber is :olditem collate binary and lQuantity is :oldquantity "
    "collate binary and cPrice is :oldprice collate binary and cExtendedPrice is :oldextended collate binary "
    "and bIsPriceModified is :oldmodified collate binary and bIsTaxable is :oldtaxable collate binary";
inline constexpr const char* kReadHeader = "select * from qryGetOrderSummary where bIsCurrent = -1";
inline constexpr const char* kReadLines =
    "select * from qryGetOrderItems where bIsCurrent = -1 order by lOrderEntered, zItemNumber";
inline constexpr const char* kReadLists = "select lListID, zName from tblPersonalList order by zName";
inline constexpr const char* kReadListLines = "select * from tblPersonalListItem where lListID = :list";
inline constexpr const char* kReadHistory =
    "select datSubmitDate, zPurchaseOrderNumber, cTotalPrice, lOrderID from tblOrder where bIsCurrent = 0 "
    "order by zPurchaseOrderNumber, datSubmitDate";
inline constexpr const char* kRemoveHistory = "delete from tblOrder where bIsCurrent = 0";
inline constexpr const char* kRemoveLine =
    "delete from tblOrderItem where lOrderID = :order and zItemNumber = :item";

// Sets a connection up as the library does it: the comparison of texts, and what the engine is to keep on
// disk at which time. pDatabase is the engine's handle, for which each library has a type of its own.
void SetUpConnection(void* pDatabase);

// The statement that reads as many lines as are to be changed.
std::string ReadLinesToChange(std::size_t lvLines);

struct HeaderColumn {
  const char* Name;
  bool IsText;
};

// What a saved header consists of.
extern const std::vector<HeaderColumn> kHeaderColumns;

// The statement that writes all of them for one order.
std::string WriteHeader();

}  // namespace bench
