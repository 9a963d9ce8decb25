#include "facade/decodings.h"
#include "quorvane/decode.h"
#include "tools/commands.h"
#include "tools/edit_distance.h"
#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/message_generator.h"
#include "tools/system.h"

namespace quorvane::tool {
namespace {

/// The tag of the function's message of that name.
std::uint32_t TagOf(Decoding decoding, const std::string& name) {
    const facade::Binding& binding = facade::BindingOf(decoding);
    std::vector<std::string_view> names;
    for (const auto index : binding.set->messages) {
        names.push_back(binding.family->codec.messages[index].name);
        if (names.back() == name) {
            return static_cast<std::uint32_t>(names.size());
        }
    }
    throw UsageError(std::string(InfoOf(decoding).name) + " has no message " + name +
                     NearestWords(name, names) +
                     "; the line \"MESSAGE: \" of a text shows a message's name");
}

}  // namespace

int Generate(const GenerateOptions& options) {
    const Decoding decoding = DecodingNamed(options.function);
    const std::string function(InfoOf(decoding).name);
    const facade::Binding& binding = facade::BindingOf(decoding);
    if (binding.set == nullptr) {
        throw UsageError(NotDescribed(function));
    }
    std::uint32_t tag = 0;
    if (!options.message.empty()) {
        tag = TagOf(decoding, options.message);
    }
    const bool lengthIsFixed = facade::RowOf(decoding).fixedBits != 0;
    MessageGenerator generator(*binding.family, options.seed,
                               lengthIsFixed ? MessageEnd::kAnyBit : MessageEnd::kOctet);
    constexpr std::size_t kFullBuffer = std::size_t{1} << 16;
    CatchInterrupts();
    std::string lines;
    for (std::uint64_t count = 0; count < options.count; ++count) {
        if (InterruptSignal() != 0) {
            Print(lines);
            return Interrupted("message " + std::to_string(count));
        }
        const auto message =
            tag == 0 ? generator.Generate(*binding.set) : generator.Generate(*binding.set, tag);
        if (!message) {
            Print(lines);
            throw UsageError("could not generate message " + std::to_string(count + 1) +
                             "; try another seed");
        }
        lines += function + " " + std::to_string(message->octets.size()) + " " +
                 ToHex(message->octets, "") + "\n";
        if (lines.size() >= kFullBuffer) {
            Print(lines);
            lines.clear();
        }
    }
    Print(lines);
    return kDone;
}

}  // namespace quorvane::tool
