#include "tools/input_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "tools/commands.h"

namespace quorvane::tool {

InputFile::InputFile(const std::string& name)
    : descriptor_(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) {
        throw UsageError("cannot open '" + name + "': " + std::strerror(errno));
    }
}

InputFile::~InputFile() {
    if (descriptor_ != STDIN_FILENO) {
        close(descriptor_);
    }
}

void ThrowReadError(int error) {
    throw UsageError(std::string("cannot read: ") + std::strerror(error));
}

}  // namespace quorvane::tool
