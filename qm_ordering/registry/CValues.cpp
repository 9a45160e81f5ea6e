#include "qm_ordering/registry/CValues.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/registry/ThreadObjects.h"

namespace qm_ordering::c_interface {

void RaiseNullPointer(const char* zvWhat) {
  throw Failure(failure::kInvalidCall, std::string("The ") + zvWhat + " is a null pointer.");
}

std::string_view Required(const char* zvText, const char* zvWhat) {
  if (zvText == nullptr) {
    RaiseNullPointer(zvWhat);
  }
  return zvText;
}

std::string_view TextOf(const char* data, size_t length) {
  if (length == 0) {
    return {};
  }
  // It need not end with a zero byte, so its end is not looked for.
  if (data == nullptr) {
    RaiseNullPointer("text");
  }
  return {data, length};
}

Variant FromC(const qm_ordering_value& value) {
  switch (value.kind) {
    case QM_ORDERING_MISSING:
      return Variant::Missing();
    case QM_ORDERING_EMPTY:
      return {};
    case QM_ORDERING_NULL:
      return Variant::Null();
    case QM_ORDERING_BOOLEAN:
      return value.as.boolean != 0;
    case QM_ORDERING_INTEGER:
      return value.as.integer;
    case QM_ORDERING_DOUBLE:
      return value.as.number;
    case QM_ORDERING_CURRENCY:
      return Currency::FromScaled(value.as.currency);
    case QM_ORDERING_DATE: {
      const qm_ordering_date& date = value.as.date;
      return Date(date.year, date.month, date.day, date.hour, date.minute, date.second);
    }
    case QM_ORDERING_TEXT:
      return TextOf(value.as.text.data, value.as.text.length);
    case QM_ORDERING_OBJECT:
      return value.as.object == 0 ? Variant(std::shared_ptr<Object>())
                                  : Variant(ThreadObjects::OfThisThread().Find(value.as.object));
    default:
      throw Failure(failure::kInvalidCall, "There is no kind of value " + std::to_string(value.kind) + ".");
  }
}

qm_ordering_value TextToC(std::string_view zvText) {
  // Allocated as C does, so that it can be freed without knowing how long it is.
  char* zCopy = static_cast<char*>(std::malloc(zvText.size() + 1));
  if (zCopy == nullptr) {
    throw std::bad_alloc();
  }
  std::memcpy(zCopy, zvText.data(), zvText.size());
  zCopy[zvText.size()] = '\0';
  qm_ordering_value value{};
  value.kind = QM_ORDERING_TEXT;
  value.as.text = {zCopy, zvText.size()};
  return value;
}

qm_ordering_value ToC(Variant&& vvValue) {
  qm_ordering_value value{};
  switch (vvValue.Kind()) {
    case VariantKind::Missing:
      break;
    case VariantKind::Empty:
      value.kind = QM_ORDERING_EMPTY;
      break;
    case VariantKind::Null:
      value.kind = QM_ORDERING_NULL;
      break;
    case VariantKind::Boolean:
      value.kind = QM_ORDERING_BOOLEAN;
      value.as.boolean = vvValue.ToBoolean() ? 1 : 0;
      break;
    case VariantKind::Integer:
      value.kind = QM_ORDERING_INTEGER;
      value.as.integer = vvValue.ToInteger();
      break;
    case VariantKind::Double:
      value.kind = QM_ORDERING_DOUBLE;
      value.as.number = vvValue.ToDouble();
      break;
    case VariantKind::Currency:
      value.kind = QM_ORDERING_CURRENCY;
      value.as.currency = vvValue.ToCurrency().Scaled();
      break;
    case VariantKind::Date: {
      const Date date = vvValue.ToDate();
      value.kind = QM_ORDERING_DATE;
      value.as.date = {date.Year(), date.Month(), date.Day(), date.Hour(), date.Minute(), date.Second()};
      break;
    }
    case VariantKind::String:
      return TextToC(std::move(vvValue).ToString());
    case VariantKind::Object:
      value.kind = QM_ORDERING_OBJECT;
      value.as.object = ThreadObjects::OfThisThread().Keep(vvValue.ToObject());
      break;
  }
  return value;
}

void Clear(qm_ordering_value& orValue) {
  const qm_ordering_value value = orValue;
  orValue = {};
  if (value.kind == QM_ORDERING_TEXT) {
    std::free(const_cast<char*>(value.as.text.data));  // NOLINT: the host reads it only, and gives it back
  } else if (value.kind == QM_ORDERING_OBJECT) {
    ThreadObjects::Release(value.as.object);
  }
}

}  // namespace qm_ordering::c_interface
