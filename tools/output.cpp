// What every command writes its answers with.

#include <cerrno>
#include <cstring>

#include "tools/commands.h"
#include "tools/system.h"

namespace quorvane::tool {

UsageError CannotWrite() {
    return UsageError(std::string("cannot write to standard output: ") + std::strerror(errno));
}

void Print(std::string_view text) {
    if (!WriteAll(kStandardOutput, text)) {
        throw CannotWrite();
    }
}

int Interrupted(const std::string& place) {
    std::fprintf(stderr, "quorvane: interrupted behind %s\n", place.c_str());
    return kSignal + InterruptSignal();
}

}  // namespace quorvane::tool
