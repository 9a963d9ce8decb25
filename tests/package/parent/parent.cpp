#include "parent.h"

#include <quorvane/decode.h>

std::size_t CountDecodings() {
    return quorvane::Decodings().size();
}
