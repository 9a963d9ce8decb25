#include "message_codec.h"

#include <algorithm>
#include <list>

#include "iecodec/message_encoder.h"
#include "tools/octets.h"

namespace quorvane::fuzz {
namespace {

std::vector<SetOfFamily> FindSets() {
    static std::list<reflect::Catalogue> catalogues;
    std::vector<SetOfFamily> sets;
    for (const families::Family* family : families::AllFamilies()) {
        const reflect::Catalogue& catalogue = catalogues.emplace_back(family->types);
        for (const iecodec::MessageSetRow& set : family->codec.sets) {
            sets.push_back({family, &set, &catalogue});
        }
    }
    return sets;
}

}  // namespace

const std::vector<SetOfFamily>& AllSets() {
    static const std::vector<SetOfFamily> kSets = FindSets();
    return kSets;
}

Decoded Decode(const SetOfFamily& set, std::span<const std::uint8_t> octets, bits::Arena& arena,
               std::optional<std::int64_t> bits) {
    Decoded decoded;
    const ExactOctets message(octets);
    iecodec::Diagnostics diagnostics;
    const auto size = static_cast<std::int64_t>(message.Size());
    iecodec::DecodeContext context{set.family->codec, {message.Data(), size}, arena, diagnostics};
    decoded.result =
        iecodec::DispatchMessage(context, *set.set, bits.value_or(8 * size), decoded.container);
    decoded.diagnostics = diagnostics.Lines();
    return decoded;
}

Encoded Encode(const SetOfFamily& set, const iecodec::MessageContainer& container, std::size_t room,
               bool checked) {
    Encoded encoded;
    const ExactOctets buffer({}, room);
    bits::BitWriter writer(buffer.Data(), static_cast<std::int64_t>(room));
    iecodec::Diagnostics diagnostics;
    iecodec::EncodeContext context{set.family->codec, writer, diagnostics, checked};
    encoded.result = iecodec::EncodeContainer(context, *set.set, container);
    encoded.fits = !writer.Overflowed();
    encoded.diagnostics = diagnostics.Lines();
    if (!encoded.result.Failed()) {
        const auto octets =
            std::min(room, static_cast<std::size_t>((encoded.result.Bits() + 7) / 8));
        encoded.octets.assign(buffer.Data(), buffer.Data() + octets);
        tool::CutToBits(encoded.octets,
                        std::min(encoded.result.Bits(), 8 * static_cast<std::int64_t>(octets)));
    }
    return encoded;
}

}  // namespace quorvane::fuzz
