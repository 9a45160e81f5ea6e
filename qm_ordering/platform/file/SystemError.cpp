#include "qm_ordering/platform/file/SystemError.h"

#include <cstring>

namespace qm_ordering::file {

std::string SystemErrorText(int lvError) {
  const char* zText = strerrordesc_np(lvError);
  return zText != nullptr ? std::string(zText) : "system error " + std::to_string(lvError);
}

}  // namespace qm_ordering::file
