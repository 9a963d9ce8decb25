#include "quorvane/version.h"

#define QUORVANE_TEXT_OF(number) #number
#define QUORVANE_TEXT(number) QUORVANE_TEXT_OF(number)

namespace quorvane {

const char* Version() noexcept {
    return QUORVANE_TEXT(QUORVANE_VERSION_MAJOR) "." QUORVANE_TEXT(
        QUORVANE_VERSION_MINOR) "." QUORVANE_TEXT(QUORVANE_VERSION_PATCH);
}

}  // namespace quorvane
