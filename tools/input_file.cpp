#include "tools/input_file.h"

#include <cerrno>
#include <cstring>

#include "tools/line_reader.h"
#include "tools/system.h"

namespace quorvane::tool {
namespace {

struct Contents {
    std::string text;
    bool tooLong = false;

    void Line(std::string_view line) {
        tooLong = tooLong || text.size() + line.size() > LineReader::kLongestLine;
        if (!tooLong) {
            text.append(line).append("\n");
        }
    }
    void TooLong() { tooLong = true; }
    void Pause() {}
};

}  // namespace

InputFile::InputFile(const std::string& name)
    : descriptor_(name == "-" ? kStandardInput : OpenToRead(name)) {
    if (descriptor_ < 0) {
        throw FileError("cannot open '" + name + "': " + std::strerror(errno));
    }
}

InputFile::~InputFile() {
    if (descriptor_ != kStandardInput) {
        Close(descriptor_);
    }
}

std::optional<std::uint64_t> SizeOfInput(const std::string& name) {
    return name == "-" ? SizeOfFile(kStandardInput) : SizeOfFile(name);
}

std::string ReadMessageFile(const std::string& name) {
    const InputFile file(name);
    Contents contents;
    if (const int error = ReadLines(file.Descriptor(), contents); error != 0) {
        throw ReadError(name, error);
    }
    if (contents.tooLong) {
        throw UsageError(name + ": more than " + std::to_string(LineReader::kLongestLine) +
                         " characters are no message");
    }
    return std::move(contents.text);
}

FileError ReadError(const std::string& name, int error) {
    return FileError("cannot read '" + name + "': " + std::strerror(error));
}

}  // namespace quorvane::tool
