// JSON in: whatever the text is, reading it ends, and what it makes of it can be walked and
// written. What was written is read back and written the same, as octets and by way of its JSON.
//
// Input: the text.

#include <string>
#include <vector>

#include "fuzz_support.h"
#include "quorvane/json.h"
#include "reach.h"
#include "tools/message_reader.h"

namespace quorvane {
namespace {

using fuzz::Require;

void CheckWritten(Decoding decoding, const std::vector<std::uint8_t>& octets) {
    fuzz::ReachOfThisRun().NoteMessage(decoding, octets);
    Message decoded;
    Require(decoded.Decode(decoding, octets), "what was written is no message");
    std::vector<std::uint8_t> again;
    Require(!decoded.Encode(again).error && again == octets, "the second encoding differs");
    std::string json;
    AppendJson(decoded, json);
    Message read;
    Require(tool::ReadMessage(json, decoding, read).empty(), "JSON of a message is refused");
    again.clear();
    Require(!read.Encode(again).error && again == octets, "the encoding of its JSON differs");
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    const fuzz::ExactOctets input(std::span(octets, size));
    const std::string_view text(reinterpret_cast<const char*>(input.Data()), input.Size());
    Message message;
    const std::string problem = tool::ReadMessage(text, std::nullopt, message);
    std::string json;
    AppendJson(message, json);
    std::vector<std::uint8_t> written;
    const EncodeResult result = message.Encode(written);
    Require(result.error || result.octets == written.size(), "the size is not that of the octets");
    if (problem.empty() && !result.error) {
        CheckWritten(*message.GetDecoding(), written);
    }
    return 0;
}
