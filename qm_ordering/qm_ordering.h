#pragma once

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/order/CreditCardDetails.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/DeliveryInformation.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/order/OrderInformation.h"
#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/order/PaymentInformation.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/settings/Settings.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/Object.h"
#include "qm_ordering/platform/value/Variant.h"
#include "qm_ordering/registry/CreateObject.h"
#include "qm_ordering/store/OrderStore.h"

// Everything that a host uses.
namespace qm_ordering {}
