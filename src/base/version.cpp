#include "ky/version.h"

#define KY_TEXT_OF(number) #number
#define KY_TEXT(number) KY_TEXT_OF(number)

const char* KyGetVersion() noexcept {
  return KY_TEXT(KY_VERSION_MAJOR) "." KY_TEXT(KY_VERSION_MINOR) "." KY_TEXT(KY_VERSION_PATCH);
}
