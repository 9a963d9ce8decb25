#include "tools/auto_function.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "bits/bit_reader.h"
#include "tools/function_name.h"
#include "tools/tolerant.h"

namespace quorvane::tool {
namespace {

using facade::Direction;
using facade::Start;

/// How well a function fits a message; less is better.
struct Fit {
    bool tellsNothing;  // no protocol discriminator of its own tells the function from others
    enum class Reading { kWhole, kClean, kFaulty } reading;
    Start start;
    Decoding decoding;

    [[nodiscard]] auto Order() const { return std::tuple(tellsNothing, reading, start, decoding); }
};

/// Whether the length is that of a message: of one whose length is fixed nothing else tells it.
bool MayHaveLength(const facade::DecodingRow& row, PaddedMessage octets) {
    return row.fixedBits == 0 ? octets.length > 0 : octets.length == (row.fixedBits + 7) / 8;
}

/// Whether nothing but fill octets of GSM's data link is left of what is readable of the message.
bool IsFill(PaddedMessage octets, std::int64_t usedBits) {
    const auto used = static_cast<std::size_t>((usedBits + 7) / 8);
    const auto length = static_cast<std::size_t>(std::max(octets.length, 0));
    return used >= length ||
           (length <= octets.capacity &&
            std::all_of(octets.octets + used, octets.octets + length,
                        [](std::uint8_t octet) { return octet == bits::kFillOctet; }));
}

std::optional<Fit> FitOf(Decoding decoding, PaddedMessage octets, DecodeOptions options,
                         Message& message) {
    const facade::DecodingRow& row = facade::RowOf(decoding);
    if (!MayHaveLength(row, octets) || !message.Decode(decoding, octets, options)) {
        return std::nullopt;
    }
    const bool whole = row.fixedBits > 0 || IsFill(octets, message.BitsConsumed());
    return Fit{row.start != Start::kDiscriminator,
               IsFaulty(message) ? Fit::Reading::kFaulty
               : whole           ? Fit::Reading::kWhole
                                 : Fit::Reading::kClean,
               row.start, decoding};
}

/// Those that know the message, the most fitting one first.
template <typename IsTried>
std::vector<Decoding> Known(PaddedMessage octets, DecodeOptions options, Message& message,
                            IsTried&& isTried) {
    std::vector<Fit> fits;
    for (const DecodingInfo& info : Decodings()) {
        if (isTried(facade::RowOf(info.decoding))) {
            if (const auto fit = FitOf(info.decoding, octets, options, message)) {
                fits.push_back(*fit);
            }
        }
    }
    std::sort(fits.begin(), fits.end(),
              [](const Fit& left, const Fit& right) { return left.Order() < right.Order(); });
    std::vector<Decoding> known;
    std::transform(fits.begin(), fits.end(), std::back_inserter(known),
                   [](const Fit& fit) { return fit.decoding; });
    return known;
}

bool IsOpposite(Direction left, Direction right) {
    return left != Direction::kBoth && right != Direction::kBoth && left != right;
}

}  // namespace

AutoChoice ChooseFunction(PaddedMessage octets, Direction direction, DecodeOptions options,
                          Message& message) {
    AutoChoice choice;
    choice.others = Known(octets, options, message, [&](const facade::DecodingRow& row) {
        return !IsOpposite(row.direction, direction);
    });
    if (!choice.others.empty()) {
        choice.taken = choice.others.front();
        choice.others.erase(choice.others.begin());
    }
    const Start needed = choice.taken ? Start::kDiscriminator : Start::kNothing;
    if (!choice.taken || facade::RowOf(*choice.taken).start > needed) {
        choice.otherDirection =
            Known(octets, options, message, [&](const facade::DecodingRow& row) {
                return row.start <= needed && IsOpposite(row.direction, direction);
            });
    }
    return choice;
}

std::vector<Decoding> OtherDirection(Decoding decoding, PaddedMessage octets, DecodeOptions options,
                                     Message& message) {
    const facade::DecodingRow& asked = facade::RowOf(decoding);
    return Known(octets, options, message, [&](const facade::DecodingRow& row) {
        return row.family == asked.family && row.fixedBits == 0 &&
               IsOpposite(row.direction, asked.direction);
    });
}

std::string NotFoundText(std::string_view name) {
    return "Failed to decode \"" + std::string(name) + "\" message";
}

std::string NamesOf(const std::vector<Decoding>& decodings) {
    std::string names;
    for (std::size_t index = 0; index < decodings.size(); ++index) {
        const bool last = index + 1 == decodings.size();
        names += index == 0 ? "" : last ? " and " : ", ";
        names += InfoOf(decodings[index]).name;
    }
    return names;
}

}  // namespace quorvane::tool
