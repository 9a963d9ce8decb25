#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/commands.h"

namespace quorvane::tool {

/// A file that cannot be read.
class FileError : public UsageError {
  public:
    using UsageError::UsageError;
};

/// A file that is read, or standard input if its name is "-".
class InputFile {
  public:
    /// Throws FileError if the file cannot be opened.
    explicit InputFile(const std::string& name);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    [[nodiscard]] int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// How many octets the file has, standard input for "-"; nothing if that is not known.
std::optional<std::uint64_t> SizeOfInput(const std::string& name);

/// All of a file that holds one message. Throws FileError if it cannot be read, UsageError if it is
/// longer than any message.
std::string ReadMessageFile(const std::string& name);

/// What to throw for a read that failed with that errno.
FileError ReadError(const std::string& name, int error);

}  // namespace quorvane::tool
