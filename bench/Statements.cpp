#include "bench/Statements.h"

#include "qm_ordering/platform/ado/embedded/Engine.h"

namespace bench {

const std::vector<HeaderColumn> kHeaderColumns = {
    {"zPurchaseOrderNumber", true},
    {"zPOReleaseNumber", true},
    {"cTotalPrice", false},
    {"zOIProjectOrJobNumber", true},
    {"zOIRequisitionOrApprovalName", true},
    {"zOIDepartment", true},
    {"zOIAttention", true},
    {"zOIPhoneNumber", true},
    {"zOIEmail", true},
    {"bOIIsTaxExempt", false},
    {"zOITaxIDNumber", true},
    {"lDIDeliveryMethod", false},
    {"zDIFirstName", true},
    {"zDILastName", true},
    {"zDICompanyName", true},
    {"zDIAddress1", true},
    {"zDIAddress2", true},
    {"zDICity", true},
    {"zDIState", true},
    {"zDIStateOr", true},
    {"zDIZipOrPostCode", true},
    {"zDICountry", true},
    {"zDIPhoneNumber", true},
    {"zDIPhoneExt", true},
    {"zDIFax", true},
    {"zDICallBranchNumber", true},
    {"zDICallAttention", true},
    {"zDICallPhoneNumber", true},
    {"zDICallPhoneExt", true},
    {"lDIShippingMethod", false},
    {"zDINotes", true},
    {"lPIPaymentMethod", false},
    {"zPIMorvaneAccountNumber", true},
    {"zCCFirstName", true},
    {"zCCLastName", true},
    {"zCCCompanyName", true},
    {"zCCAddress1", true},
    {"zCCAddress2", true},
    {"zCCCity", true},
    {"zCCState", true},
    {"zCCStateOr", true},
    {"zCCZipOrPostCode", true},
    {"zCCCountry", true},
    {"zCCPhoneNumber", true},
    {"zCCPhoneExt", true},
    {"zCCFax", true},
    {"zCCAccountNumber", true},
    {"zCCComment1", true},
    {"zCCComment2", true},
    {"zCCComment3", true},
    {"zCCComment4", true},
};

void SetUpConnection(void* pDatabase) {
  namespace engine = qm_ordering::ado::embedded;
  auto* pEngine = static_cast<sqlite3*>(pDatabase);
  engine::AddTextCollation(pEngine, "");
  engine::RunScript(
      pEngine,
      "pragma synchronous = full; pragma foreign_keys = on; pragma secure_delete = on; "
      "pragma cell_size_check = on; pragma temp_store = memory; pragma wal_autocheckpoint = 256;",
      "");
}

std::string WriteHeader() {
  std::string zText = "update tblOrder set ";
  for (const HeaderColumn& column : kHeaderColumns) {
    zText.append(&column == kHeaderColumns.data() ? "" : ", ")
        .append(column.Name)
        .append(" = :")
        .append(column.Name);
  }
  return zText + " where lOrderID = :order";
}

std::string ReadLinesToChange(std::size_t lvLines) {
  std::string zText =
      "select rowid, zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable from "
      "tblOrderItem where lOrderID = :order and zItemNumber in (";
  for (std::size_t i = 0; i < lvLines; ++i) {
    zText.append(i == 0 ? ":i" : ", :i").append(std::to_string(i));
  }
  return zText + ")";
}

}  // namespace bench
