// The command of a build without libpcap.

#include "tools/commands.h"

namespace quorvane::tool {

const bool kReadsCaptures = false;

int Capture(const CaptureOptions& /*options*/) {
    throw UsageError(
        "this build reads no captures, as it was made without libpcap (QUORVANE_CAPTURE=OFF)");
}

}  // namespace quorvane::tool
