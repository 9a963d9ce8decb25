#include "facade/tolerant_decoder.h"

namespace quorvane::facade {
namespace {

// TS 24.301, 9.1 to 9.3: security header type and protocol discriminator share an octet; four of
// message authentication code and one of sequence number follow, then the plain message.
constexpr std::int64_t kHeaderOctets = 6;

// Protocol discriminators, TS 24.007, 11.2.3.1.1.
constexpr std::uint32_t kSessionManagement = 2;
constexpr std::uint32_t kMobilityManagement = 7;

/// Whether what is behind a header of this type can be read.
bool IsPlain(std::uint32_t type, bool deciphered) {
    switch (type) {
        case 1:  // integrity protected
        case 3:  // the same, with a new security context
            return true;
        case 2:  // integrity protected and ciphered
        case 4:  // the same, with a new security context
            return deciphered;
        default:
            return false;
    }
}

/// The decoding of the message behind the header; nothing if there is none to be found.
std::optional<Decoding> DecodingInside(Decoding decoding, const bits::BitReader& reader,
                                       std::int64_t length, bool deciphered) {
    const std::optional<Decoding> session = RowOf(decoding).sessionManagement;
    if (!session || length <= kHeaderOctets || reader.Read(4, 4) != kMobilityManagement ||
        !IsPlain(reader.Read(0, 4), deciphered)) {
        return std::nullopt;
    }
    switch (reader.Read(8 * kHeaderOctets + 4, 4)) {
        case kMobilityManagement:
            return decoding;
        case kSessionManagement:
            return session;
        default:
            return std::nullopt;
    }
}

/// As DecodeRecord, of the message at octet `start`.
void DecodeAt(std::int64_t start, Decoding decoding, const bits::BitReader& reader,
              std::int64_t length, bits::Arena& arena, iecodec::Diagnostics& diagnostics,
              DecodedRecord& decoded, iecodec::SurplusList& surplus) {
    decoded.binding = BindingOf(decoding);
    decoded.outcome = iecodec::kUnknownMessage;
    if (decoded.binding.set != nullptr) {
        iecodec::DecodeContext context{decoded.binding.family->codec, reader, arena, diagnostics,
                                       &surplus};
        decoded.outcome =
            iecodec::DispatchMessageAt(context, *decoded.binding.set, 8 * start,
                                       RowOf(decoding).BitsOf(length - start), decoded.container)
                .Plus(8 * start);
    }
}

}  // namespace

void DecodeTolerantly(Decoding decoding, const bits::BitReader& reader, std::int64_t length,
                      bool deciphered, bits::Arena& arena, iecodec::Diagnostics& diagnostics,
                      DecodedRecord& decoded, Tolerated& tolerated) {
    if (const auto inside = DecodingInside(decoding, reader, length, deciphered)) {
        DecodeAt(kHeaderOctets, *inside, reader, length, arena, diagnostics, decoded,
                 tolerated.surplus);
        if (decoded.Found()) {
            tolerated.security = SecurityHeader{static_cast<std::uint8_t>(reader.Read(0, 4)),
                                                reader.Read(8, 32), reader.ReadOctet(40)};
            tolerated.inside = inside;
            return;
        }
    }
    DecodeAt(0, decoding, reader, length, arena, diagnostics, decoded, tolerated.surplus);
}

}  // namespace quorvane::facade
