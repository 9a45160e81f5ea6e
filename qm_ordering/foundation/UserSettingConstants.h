#pragma once

#include <array>

// The keys that the library and its host share, each constant named as its key. Odd spellings (a zero in
// PH0NE, ACCOUN, INFOMATION) are part of the keys.
namespace qm_ordering::UserSettingConstants {

// Where the library finds and puts its files.
inline constexpr const char* ORDERINGDATABASEPATH = "OrderingDatabasePath";
inline constexpr const char* OHIMPORTTEMPFILESPATH = "OHImportTempFilesPath";
inline constexpr const char* LOGPATH = "LogPath";

// The user's registration, kept by the host. The library itself reads none of them; its own settings
// component fills the registration record from them.
inline constexpr const char* REG_FIRSTNAME = "Reg_FirstName";
inline constexpr const char* REG_LASTNAME = "Reg_LastName";
inline constexpr const char* REG_JOBTITLE = "Reg_JobTitle";
inline constexpr const char* REG_FULLCOMPANYNAME = "Reg_FullCompanyName";
inline constexpr const char* REG_COUNTRY = "Reg_Country";
inline constexpr const char* REG_COMPANYADDRESS1 = "Reg_CompanyAddress1";
inline constexpr const char* REG_COMPANYADDRESS2 = "Reg_CompanyAddress2";
inline constexpr const char* REG_CITY = "Reg_City";
inline constexpr const char* REG_STATE = "Reg_State";
inline constexpr const char* REG_STATEOR = "Reg_StateOr";
inline constexpr const char* REG_ZIPORPOSTCODE = "Reg_ZipOrPostCode";
inline constexpr const char* REG_COMPANYPHONE = "Reg_CompanyPhone";
inline constexpr const char* REG_COMPANYPHONEEXT = "Reg_CompanyPhoneExt";
inline constexpr const char* REG_COMPANYFAX = "Reg_CompanyFax";
inline constexpr const char* REG_ACCOUNNUMBER = "Reg_AccounNumber";
inline constexpr const char* REG_PRICECODE = "Reg_PriceCode";
inline constexpr const char* REG_EMAILFORMAT = "Reg_EmailFormat";
inline constexpr const char* REG_PROMOTIONS = "Reg_Promotions";
inline constexpr const char* REG_EMAIL = "Reg_Email";

// What a new order starts with.
inline constexpr const char* DEFAULT_OI_PO_NUM = "DEFAULT_OI_PO_NUM";
inline constexpr const char* DEFAULT_OI_PHONE_NUMBER = "DEFAULT_OI_PHONE_NUMBER";
inline constexpr const char* DEFAULT_OI_EMAIL = "DEFAULT_OI_EMAIL";
inline constexpr const char* DEFAULT_OI_ISTAXEXEMPT = "DEFAULT_OI_ISTAXEXEMPT";
inline constexpr const char* DEFAULT_OI_TAXIDNUMBER = "DEFAULT_OI_TAXIDNUMBER";
inline constexpr const char* DEFAULT_OI_PORELEASE = "DEFAULT_OI_PORELEASE";
inline constexpr const char* DEFAULT_OI_PROJECTNUMBER = "DEFAULT_OI_PROJECTNUMBER";
inline constexpr const char* DEFAULT_OI_REQNAME = "DEFAULT_OI_REQNAME";
inline constexpr const char* DEFAULT_OI_DEPARTMENT = "DEFAULT_OI_DEPARTMENT";
inline constexpr const char* DEFAULT_DI_DELIVERYMETHOD = "DEFAULT_DI_DELIVERYMETHOD";
inline constexpr const char* DEFAULT_DI_FIRSTNAME = "DEFAULT_DI_FIRSTNAME";
inline constexpr const char* DEFAULT_DI_LASTNAME = "DEFAULT_DI_LASTNAME";
inline constexpr const char* DEFAULT_DI_COMPANYNAME = "DEFAULT_DI_COMPANYNAME";
inline constexpr const char* DEFAULT_DI_ADDRESS1 = "DEFAULT_DI_ADDRESS1";
inline constexpr const char* DEFAULT_DI_ADDRESS2 = "DEFAULT_DI_ADDRESS2";
inline constexpr const char* DEFAULT_DI_CITY = "DEFAULT_DI_CITY";
inline constexpr const char* DEFAULT_DI_STATE = "DEFAULT_DI_STATE";
inline constexpr const char* DEFAULT_DI_STATEOR = "DEFAULT_DI_STATEOR";
inline constexpr const char* DEFAULT_DI_ZIP_OR_POSTCODE = "DEFAULT_DI_ZIP_OR_POSTCODE";
inline constexpr const char* DEFAULT_DI_COUNTRY = "DEFAULT_DI_COUNTRY";
inline constexpr const char* DEFAULT_DI_PH0NE_NUMBER = "DEFAULT_DI_PH0NE_NUMBER";
inline constexpr const char* DEFAULT_DI_PHONE_EXT = "DEFAULT_DI_PHONE_EXT";
inline constexpr const char* DEFAULT_DI_FAX = "DEFAULT_DI_FAX";
inline constexpr const char* DEFAULT_DI_SHIPPING_METHOD = "DEFAULT_DI_SHIPPING_METHOD";
inline constexpr const char* DEFAULT_DI_NOTES = "DEFAULT_DI_NOTES";
inline constexpr const char* DEFAULT_DI_CALL_BRANCH_NUMBER = "DEFAULT_DI_CALL_BRANCH_NUMBER";
inline constexpr const char* DEFAULT_DI_CALL_ATTENTION = "DEFAULT_DI_CALL_ATTENTION";
inline constexpr const char* DEFAULT_DI_CALL_PHONE_NUMBER = "DEFAULT_DI_CALL_PHONE_NUMBER";
inline constexpr const char* DEFAULT_DI_CALL_PHONE_EXT = "DEFAULT_DI_CALL_PHONE_EXT";
inline constexpr const char* DEFAULT_PI_PAYMENT_METHOD = "DEFAULT_PI_PAYMENT_METHOD";
inline constexpr const char* DEFAULT_PI_MORVANE_ACCOUNT_NUMBER = "DEFAULT_PI_MORVANE_ACCOUNT_NUMBER";
inline constexpr const char* DEFAULT_CC_FIRST_NAME = "DEFAULT_CC_FIRST_NAME";
inline constexpr const char* DEFAULT_CC_LAST_NAME = "DEFAULT_CC_LAST_NAME";
inline constexpr const char* DEFAULT_CC_COMPANY_NAME = "DEFAULT_CC_COMPANY_NAME";
inline constexpr const char* DEFAULT_CC_ADDRESS1 = "DEFAULT_CC_ADDRESS1";
inline constexpr const char* DEFAULT_CC_ADDRESS2 = "DEFAULT_CC_ADDRESS2";
inline constexpr const char* DEFAULT_CC_CITY = "DEFAULT_CC_CITY";
inline constexpr const char* DEFAULT_CC_STATE = "DEFAULT_CC_STATE";
inline constexpr const char* DEFAULT_CC_STATE_OR = "DEFAULT_CC_STATE_OR";
inline constexpr const char* DEFAULT_CC_ZIP_OR_POSTCODE = "DEFAULT_CC_ZIP_OR_POSTCODE";
inline constexpr const char* DEFAULT_CC_COUNTRY = "DEFAULT_CC_COUNTRY";
inline constexpr const char* DEFAULT_CC_PHONE_NUMBER = "DEFAULT_CC_PHONE_NUMBER";
inline constexpr const char* DEFAULT_CC_PHONE_EXT = "DEFAULT_CC_PHONE_EXT";
inline constexpr const char* DEFAULT_CC_FAX = "DEFAULT_CC_FAX";
inline constexpr const char* DEFAULT_CC_ACCOUNT_NUMBER = "DEFAULT_CC_ACCOUNT_NUMBER";
inline constexpr const char* DEFAULT_ORDER_PAYMENTINFOMATIONSET = "DEFAULT_ORDER_PAYMENTINFOMATIONSET";
inline constexpr const char* DEFAULT_ORDER_DELIVERYINFOMATIONSET = "DEFAULT_ORDER_DELIVERYINFOMATIONSET";

// All of the above, in that order.
inline constexpr std::array<const char*, 69> ALL_KEYS = {ORDERINGDATABASEPATH,
                                                         OHIMPORTTEMPFILESPATH,
                                                         LOGPATH,
                                                         REG_FIRSTNAME,
                                                         REG_LASTNAME,
                                                         REG_JOBTITLE,
                                                         REG_FULLCOMPANYNAME,
                                                         REG_COUNTRY,
                                                         REG_COMPANYADDRESS1,
                                                         REG_COMPANYADDRESS2,
                                                         REG_CITY,
                                                         REG_STATE,
                                                         REG_STATEOR,
                                                         REG_ZIPORPOSTCODE,
                                                         REG_COMPANYPHONE,
                                                         REG_COMPANYPHONEEXT,
                                                         REG_COMPANYFAX,
                                                         REG_ACCOUNNUMBER,
                                                         REG_PRICECODE,
                                                         REG_EMAILFORMAT,
                                                         REG_PROMOTIONS,
                                                         REG_EMAIL,
                                                         DEFAULT_OI_PO_NUM,
                                                         DEFAULT_OI_PHONE_NUMBER,
                                                         DEFAULT_OI_EMAIL,
                                                         DEFAULT_OI_ISTAXEXEMPT,
                                                         DEFAULT_OI_TAXIDNUMBER,
                                                         DEFAULT_OI_PORELEASE,
                                                         DEFAULT_OI_PROJECTNUMBER,
                                                         DEFAULT_OI_REQNAME,
                                                         DEFAULT_OI_DEPARTMENT,
                                                         DEFAULT_DI_DELIVERYMETHOD,
                                                         DEFAULT_DI_FIRSTNAME,
                                                         DEFAULT_DI_LASTNAME,
                                                         DEFAULT_DI_COMPANYNAME,
                                                         DEFAULT_DI_ADDRESS1,
                                                         DEFAULT_DI_ADDRESS2,
                                                         DEFAULT_DI_CITY,
                                                         DEFAULT_DI_STATE,
                                                         DEFAULT_DI_STATEOR,
                                                         DEFAULT_DI_ZIP_OR_POSTCODE,
                                                         DEFAULT_DI_COUNTRY,
                                                         DEFAULT_DI_PH0NE_NUMBER,
                                                         DEFAULT_DI_PHONE_EXT,
                                                         DEFAULT_DI_FAX,
                                                         DEFAULT_DI_SHIPPING_METHOD,
                                                         DEFAULT_DI_NOTES,
                                                         DEFAULT_DI_CALL_BRANCH_NUMBER,
                                                         DEFAULT_DI_CALL_ATTENTION,
                                                         DEFAULT_DI_CALL_PHONE_NUMBER,
                                                         DEFAULT_DI_CALL_PHONE_EXT,
                                                         DEFAULT_PI_PAYMENT_METHOD,
                                                         DEFAULT_PI_MORVANE_ACCOUNT_NUMBER,
                                                         DEFAULT_CC_FIRST_NAME,
                                                         DEFAULT_CC_LAST_NAME,
                                                         DEFAULT_CC_COMPANY_NAME,
                                                         DEFAULT_CC_ADDRESS1,
                                                         DEFAULT_CC_ADDRESS2,
                                                         DEFAULT_CC_CITY,
                                                         DEFAULT_CC_STATE,
                                                         DEFAULT_CC_STATE_OR,
                                                         DEFAULT_CC_ZIP_OR_POSTCODE,
                                                         DEFAULT_CC_COUNTRY,
                                                         DEFAULT_CC_PHONE_NUMBER,
                                                         DEFAULT_CC_PHONE_EXT,
                                                         DEFAULT_CC_FAX,
                                                         DEFAULT_CC_ACCOUNT_NUMBER,
                                                         DEFAULT_ORDER_PAYMENTINFOMATIONSET,
                                                         DEFAULT_ORDER_DELIVERYINFOMATIONSET};

}  // namespace qm_ordering::UserSettingConstants
