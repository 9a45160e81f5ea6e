// The tables, indexes and stored queries of Orders.mdb.
//
// A column's declared type tells the provider what it holds: INTEGER (32 bits), YESNO INTEGER (-1 and 0),
// CURRENCY INTEGER (the amount times 10,000), TEXT and MEMO TEXT, DATETIME TEXT (YYYY-MM-DD HH:MM:SS). Texts
// compare and sort without regard to letter case (LETTERS). Keys count up and are never given twice
// (AUTOINCREMENT). Numbers and flags that an insert does not name are 0 and False.
//
// A step that was in a release does not change any more, not by a blank: users have stores that it made. A
// change of the schema is a new step at the end.
#include "qm_ordering/platform/ado/embedded/SchemaSteps.h"

namespace qm_ordering {

namespace {

// At most one row is the current order: the unique index holds that row alone, and finds it without a look at
// the history. Lines go with their header.
constexpr const char* kFirst = R"sql(
create table tblOrder (
  lOrderID INTEGER PRIMARY KEY AUTOINCREMENT,
  bIsCurrent YESNO INTEGER NOT NULL DEFAULT 0,
  datSubmitDate DATETIME TEXT,
  zPurchaseOrderNumber TEXT COLLATE LETTERS,
  cTotalPrice CURRENCY INTEGER NOT NULL DEFAULT 0,
  zPOReleaseNumber TEXT COLLATE LETTERS,
  zOIProjectOrJobNumber TEXT COLLATE LETTERS,
  zOIRequisitionOrApprovalName TEXT COLLATE LETTERS,
  zOIDepartment TEXT COLLATE LETTERS,
  zOIAttention TEXT COLLATE LETTERS,
  zOIPhoneNumber TEXT COLLATE LETTERS,
  zOIEmail TEXT COLLATE LETTERS,
  bOIIsTaxExempt YESNO INTEGER NOT NULL DEFAULT 0,
  zOITaxIDNumber TEXT COLLATE LETTERS,
  lDIDeliveryMethod INTEGER NOT NULL DEFAULT 0,
  zDIFirstName TEXT COLLATE LETTERS,
  zDILastName TEXT COLLATE LETTERS,
  zDICompanyName TEXT COLLATE LETTERS,
  zDIAddress1 TEXT COLLATE LETTERS,
  zDIAddress2 TEXT COLLATE LETTERS,
  zDICity TEXT COLLATE LETTERS,
  zDIState TEXT COLLATE LETTERS,
  zDIStateOr TEXT COLLATE LETTERS,
  zDIZipOrPostCode TEXT COLLATE LETTERS,
  zDICountry TEXT COLLATE LETTERS,
  zDIPhoneNumber TEXT COLLATE LETTERS,
  zDIPhoneExt TEXT COLLATE LETTERS,
  zDIFax TEXT COLLATE LETTERS,
  zDICallBranchNumber TEXT COLLATE LETTERS,
  zDICallAttention TEXT COLLATE LETTERS,
  zDICallPhoneNumber TEXT COLLATE LETTERS,
  zDICallPhoneExt TEXT COLLATE LETTERS,
  lDIShippingMethod INTEGER NOT NULL DEFAULT 0,
  zDINotes MEMO TEXT COLLATE LETTERS,
  lPIPaymentMethod INTEGER NOT NULL DEFAULT 0,
  zPIMorvaneAccountNumber TEXT COLLATE LETTERS,
  zCCFirstName TEXT COLLATE LETTERS,
  zCCLastName TEXT COLLATE LETTERS,
  zCCCompanyName TEXT COLLATE LETTERS,
  zCCAddress1 TEXT COLLATE LETTERS,
  zCCAddress2 TEXT COLLATE LETTERS,
  zCCCity TEXT COLLATE LETTERS,
  zCCState TEXT COLLATE LETTERS,
  zCCStateOr TEXT COLLATE LETTERS,
  zCCZipOrPostCode TEXT COLLATE LETTERS,
  zCCCountry TEXT COLLATE LETTERS,
  zCCPhoneNumber TEXT COLLATE LETTERS,
  zCCPhoneExt TEXT COLLATE LETTERS,
  zCCFax TEXT COLLATE LETTERS,
  zCCAccountNumber TEXT COLLATE LETTERS,
  zCCComment1 TEXT COLLATE LETTERS,
  zCCComment2 TEXT COLLATE LETTERS,
  zCCComment3 TEXT COLLATE LETTERS,
  zCCComment4 TEXT COLLATE LETTERS
);
create unique index idxOrderCurrent on tblOrder (bIsCurrent) where bIsCurrent = -1;
create index idxOrderPurchaseOrderNumber on tblOrder (zPurchaseOrderNumber);

create table tblOrderItem (
  lOrderEntered INTEGER PRIMARY KEY AUTOINCREMENT,
  lOrderID INTEGER NOT NULL REFERENCES tblOrder (lOrderID) ON DELETE CASCADE,
  zItemNumber TEXT NOT NULL COLLATE LETTERS,
  lQuantity INTEGER NOT NULL DEFAULT 0,
  zDescription TEXT COLLATE LETTERS,
  zShortDescription TEXT COLLATE LETTERS,
  zManufacturer TEXT COLLATE LETTERS,
  zModel TEXT COLLATE LETTERS,
  lSellQuantity INTEGER NOT NULL DEFAULT 0,
  lShipQuantity INTEGER NOT NULL DEFAULT 0,
  zUsuallyShips TEXT COLLATE LETTERS,
  lUsuallyShipsSortOrder INTEGER NOT NULL DEFAULT 0,
  bIsTaxable YESNO INTEGER NOT NULL DEFAULT 0,
  cPrice CURRENCY INTEGER NOT NULL DEFAULT 0,
  cExtendedPrice CURRENCY INTEGER NOT NULL DEFAULT 0,
  bIsPriceModified YESNO INTEGER NOT NULL DEFAULT 0,
  zCustomerPartNumber TEXT COLLATE LETTERS,
  zCustomerNotes MEMO TEXT COLLATE LETTERS,
  bHasNotes YESNO INTEGER NOT NULL DEFAULT 0,
  bHasPartsInfo YESNO INTEGER NOT NULL DEFAULT 0,
  bHasContractItem YESNO INTEGER NOT NULL DEFAULT 0,
  bImported YESNO INTEGER NOT NULL DEFAULT 0
);
create unique index idxOrderItem on tblOrderItem (lOrderID, zItemNumber);
create index idxOrderItemNumber on tblOrderItem (zItemNumber);

create table tblPersonalList (
  lListID INTEGER PRIMARY KEY AUTOINCREMENT,
  zName TEXT NOT NULL COLLATE LETTERS
);
create unique index idxPersonalListName on tblPersonalList (zName);

create table tblPersonalListItem (
  lListEntered INTEGER PRIMARY KEY AUTOINCREMENT,
  lListID INTEGER NOT NULL REFERENCES tblPersonalList (lListID) ON DELETE CASCADE,
  zItemNumber TEXT NOT NULL COLLATE LETTERS,
  lQuantity INTEGER NOT NULL DEFAULT 0,
  zDescription TEXT COLLATE LETTERS,
  zShortDescription TEXT COLLATE LETTERS,
  zManufacturer TEXT COLLATE LETTERS,
  zModel TEXT COLLATE LETTERS,
  lSellQuantity INTEGER NOT NULL DEFAULT 0,
  lShipQuantity INTEGER NOT NULL DEFAULT 0,
  zUsuallyShips TEXT COLLATE LETTERS,
  bIsTaxable YESNO INTEGER NOT NULL DEFAULT 0,
  zCustomerPartNumber TEXT COLLATE LETTERS,
  zCustomerNotes MEMO TEXT COLLATE LETTERS,
  bHasPartsInfo YESNO INTEGER NOT NULL DEFAULT 0
);
create unique index idxPersonalListItem on tblPersonalListItem (lListID, zItemNumber);

create view qryGetOrderSummary as
  select
    lOrderID, bIsCurrent, datSubmitDate, zPurchaseOrderNumber, cTotalPrice, zPOReleaseNumber,
    zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, zOIDepartment, zOIAttention,
    zOIPhoneNumber, zOIEmail, bOIIsTaxExempt, zOITaxIDNumber, lDIDeliveryMethod, zDIFirstName,
    zDILastName, zDICompanyName, zDIAddress1, zDIAddress2, zDICity, zDIState, zDIStateOr,
    zDIZipOrPostCode, zDICountry, zDIPhoneNumber, zDIPhoneExt, zDIFax, zDICallBranchNumber,
    zDICallAttention, zDICallPhoneNumber, zDICallPhoneExt, lDIShippingMethod, zDINotes,
    lPIPaymentMethod, zPIMorvaneAccountNumber, zCCFirstName, zCCLastName, zCCCompanyName,
    zCCAddress1, zCCAddress2, zCCCity, zCCState, zCCStateOr, zCCZipOrPostCode, zCCCountry,
    zCCPhoneNumber, zCCPhoneExt, zCCFax, zCCAccountNumber, zCCComment1, zCCComment2, zCCComment3,
    zCCComment4
  from tblOrder;

create view qryGetOrderItems as
  select
    i.lOrderEntered, i.lOrderID, i.zItemNumber, i.lQuantity, i.zDescription, i.zShortDescription,
    i.zManufacturer, i.zModel, i.lSellQuantity, i.lShipQuantity, i.zUsuallyShips,
    i.lUsuallyShipsSortOrder, i.bIsTaxable, i.cPrice, i.cExtendedPrice, i.bIsPriceModified,
    i.zCustomerPartNumber, i.zCustomerNotes, i.bHasNotes, i.bHasPartsInfo, i.bHasContractItem,
    i.bImported,
    o.bIsCurrent
  from tblOrderItem i join tblOrder o on o.lOrderID = i.lOrderID;
)sql";

// Each change of a line adds up the lines of its order: from this index alone, without the lines themselves.
// And it gives the lines of an order in the sequence in which they were entered, in which most programs show
// them.
//
// The engine adds to a quantity in 64 bits: without the trigger, a sum beyond a quantity's 32 would be
// stored, and its list could not be read again.
constexpr const char* kSecond = R"sql(
create index idxOrderItemTotal on tblOrderItem (lOrderID, lOrderEntered, cExtendedPrice);

create trigger trgPersonalListQuantity before update of lQuantity on tblPersonalListItem
  when new.lQuantity not between -2147483648 and 2147483647
  begin
    select raise(abort, 'overflow: the quantity would be more than a list can hold');
  end;
)sql";

constexpr const char* kSteps[] = {kFirst, kSecond};

}  // namespace

constinit const std::span<const char* const> ado::embedded::kSchemaSteps(kSteps);

}  // namespace qm_ordering
