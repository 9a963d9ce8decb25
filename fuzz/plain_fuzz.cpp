// The plain functions take the reader's word for what they may look at: each on a block that ends
// at a page that nobody may touch, as far behind the message as a decoder can look and no farther,
// against the safe call. Behind the message the octets begin again, so that what is looked at
// there leads on.
//
// Input: see decode_input.h.

#include <algorithm>

#include "decode_input.h"
#include "fuzz_support.h"
#include "reach.h"
#include "support/entry_points.h"
#include "support/guarded_buffer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    constexpr std::size_t kMostOctets = 1 << 17;
    const fuzz::DecodeInput input = fuzz::ReadDecodeInput({octets, size});
    const auto length = static_cast<std::size_t>(std::max(input.length, 0));
    if (length > kMostOctets) {
        return 0;
    }
    static const test::GuardedBuffer buffer(kMostOctets + kReadAhead);
    const std::span<std::uint8_t> block = buffer.Last(length + kReadAhead);
    for (std::size_t at = 0; at < block.size(); ++at) {
        block[at] = input.readable.empty() ? 0 : input.readable[at % input.readable.size()];
    }
    const PaddedMessage message(block.data(), input.length, block.size());
    const Result safe = Decode(input.decoding, message);
    CString text;
    const auto index = static_cast<std::size_t>(input.decoding);
    const int value = test::EntryPoints()[index].plain(block.data(), input.length, text);
    fuzz::Require(value == (safe.found ? 1 : 0), "the plain function has another result");
    fuzz::RequireEqual(test::ToUtf8(text), safe.text, "the plain function has another text");
    fuzz::ReachOfThisRun().NoteMessage(input.decoding, message);
    return 0;
}
