// The description compiler: whatever stands in the sources, it comes to an end with either code or
// errors, and says the same when asked again.
//
// Input: the text of a .qd file; behind a line "%%", if there is one, that of a .csn1 file.

#include <string>
#include <string_view>
#include <vector>

#include "compiler/describe.h"
#include "fuzz_support.h"

namespace quorvane {
namespace {

using fuzz::Require;

std::vector<compiler::Source> SourcesOf(std::string_view text) {
    constexpr std::string_view kBetween = "\n%%\n";
    const std::size_t end = text.find(kBetween);
    std::vector<compiler::Source> sources{{"fuzz.qd", std::string(text.substr(0, end))}};
    if (end != std::string_view::npos) {
        sources.push_back({"fuzz.csn1", std::string(text.substr(end + kBetween.size()))});
    }
    return sources;
}

/// Each line says where the mistake is and begins with the name of a source.
void CheckErrors(std::string_view errors) {
    while (!errors.empty()) {
        const std::size_t end = errors.find('\n');
        Require(end != std::string_view::npos, "the last error has no line end");
        const std::string_view line = errors.substr(0, end);
        Require(line.starts_with("fuzz.qd:") || line.starts_with("fuzz.csn1:"),
                "an error without a file");
        Require(line.find(": error: ") != std::string_view::npos, "an error without a message");
        errors.remove_prefix(end + 1);
    }
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    const std::string text(octets, octets + size);
    const std::vector<compiler::Source> sources = SourcesOf(text);
    const compiler::Description first = compiler::Describe(sources);
    Require(first.code.empty() != first.errors.empty(), "neither code nor errors, or both");
    CheckErrors(first.errors);
    const compiler::Description second = compiler::Describe(sources);
    fuzz::RequireEqual(first.code, second.code, "other code at the second time");
    fuzz::RequireEqual(first.errors, second.errors, "other errors at the second time");
    return 0;
}
