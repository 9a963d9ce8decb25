#pragma once

#include <string>

namespace quorvane::tool {

/// A file that is read, or standard input if its name is "-".
class InputFile {
  public:
    /// Throws UsageError if the file cannot be opened.
    explicit InputFile(const std::string& name);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    [[nodiscard]] int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// All of a file that holds one message. Throws UsageError if it cannot be read, or is longer than
/// any message.
std::string ReadMessageFile(const std::string& name);

/// Throws UsageError for a read that failed with that errno.
[[noreturn]] void ThrowReadError(int error);

}  // namespace quorvane::tool
