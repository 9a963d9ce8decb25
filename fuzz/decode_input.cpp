#include "decode_input.h"

#include <algorithm>
#include <cstddef>

#include "fuzz_support.h"

namespace quorvane::fuzz {
namespace {

constexpr std::size_t kMostOctets = 65536;

// Kinds of length.
constexpr std::size_t kWhole = 0;    // of all octets
constexpr std::size_t kShorter = 1;  // so many octets less; any other kind: so many more
constexpr std::size_t kAny = 3;      // whatever four octets say
constexpr std::size_t kKinds = 4;

}  // namespace

DecodeInput ReadDecodeInput(std::span<const std::uint8_t> octets) {
    Input input(octets.data(), std::min(octets.size(), kMostOctets));
    DecodeInput read;
    read.decoding = Decodings()[input.Below(Decodings().size())].decoding;
    const std::size_t kind = input.Below(kKinds);
    const auto number =
        kind == kWhole ? 0 : static_cast<std::int32_t>(input.Number(kind == kAny ? 4 : 1));
    read.readable = input.Rest();
    const auto whole = static_cast<std::int32_t>(read.readable.size());
    read.length = kind == kAny ? number : kind == kShorter ? whole - number : whole + number;
    return read;
}

std::vector<std::uint8_t> WriteDecodeInput(const DecodeInput& input) {
    std::vector<std::uint8_t> octets{static_cast<std::uint8_t>(input.decoding)};
    if (input.length == static_cast<std::int32_t>(input.readable.size())) {
        octets.push_back(kWhole);
    } else {
        octets.push_back(kAny);
        for (int shift = 24; shift >= 0; shift -= 8) {
            octets.push_back(
                static_cast<std::uint8_t>(static_cast<std::uint32_t>(input.length) >> shift));
        }
    }
    octets.insert(octets.end(), input.readable.begin(), input.readable.end());
    return octets;
}

}  // namespace quorvane::fuzz
