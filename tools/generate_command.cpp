#include "facade/decodings.h"
#include "quorvane/decode.h"
#include "tools/commands.h"
#include "tools/function_name.h"
#include "tools/hex.h"
#include "tools/message_generator.h"
#include "tools/system.h"

namespace quorvane::tool {
namespace {

/// The tag of the message of that name, or 0.
std::uint32_t TagOf(const families::Family& family, const iecodec::MessageSetRow& set,
                    std::string_view name) {
    for (std::size_t index = 0; index < set.messages.size(); ++index) {
        if (family.codec.messages[set.messages[index]].name == name) {
            return static_cast<std::uint32_t>(index + 1);
        }
    }
    return 0;
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
        tag = TagOf(*binding.family, *binding.set, options.message);
        if (tag == 0) {
            throw UsageError(function + " has no message " + options.message +
                             "; the line \"MESSAGE: \" of a text shows a message's name");
        }
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
