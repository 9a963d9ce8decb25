// Every entry point that decodes: whatever the octets and the length, all of them give the same
// well-formed answer and read nothing that they were not given.
// Input: see decode_input.h.

#include <algorithm>
#include <string>
#include <sys/mman.h>

#include "decode_input.h"
#include "facade/decodings.h"
#include "fuzz_support.h"
#include "quorvane/decode.h"
#include "quorvane/message.h"
#include "reach.h"
#include "support/entry_points.h"
#include "support/text_form.h"

namespace quorvane {
namespace {

using fuzz::ExactOctets;
using fuzz::Require;
using fuzz::RequireEqual;
using Octets = std::span<const std::uint8_t>;

void CheckForm(Decoding decoding, const Result& result) {
    RequireEqual(test::TextFormProblem(facade::RowOf(decoding).textName, result.found, result.text),
                 "", "the text is not well formed");
    std::string_view rest = result.diagnostics;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        Require(end != std::string_view::npos && rest.starts_with("<ERRID:"),
                "the diagnostics are not well formed");
        rest.remove_prefix(end + 1);
    }
}

void RequireSame(const Result& left, const Result& right, std::string_view what) {
    Require(left.found == right.found, what);
    RequireEqual(left.text, right.text, what);
    RequireEqual(left.diagnostics, right.diagnostics, what);
}

void RequireSame(const Result& padded, int value, const CString& text) {
    Require(value == (padded.found ? 1 : 0), "the plain function has another result");
    RequireEqual(test::ToUtf8(text), padded.text, "the plain function has another text");
}

/// As many fields as a message says, each with contents that can be read and a path that leads to
/// it.
void CheckFields(const Message& message) {
    constexpr std::size_t kFewFaults = 20;
    for (std::size_t index = 0; index < std::min(message.FaultCount(), kFewFaults); ++index) {
        const Fault fault = message.GetFault(index);
        Require(!fault.field || fault.field.Status() == FieldStatus::kRefused,
                "a fault tells of a field that was not refused");
        std::string path;
        if (message.AppendPath(fault.field, path)) {
            Require(static_cast<bool>(message.Find(path)), "a path leads nowhere");
        }
    }
    std::uint32_t sum = 0;
    Visit(message.Root(), [&sum](const Field& field, unsigned) {
        for (const std::uint8_t octet : field.Octets()) {
            sum += octet;
        }
        if (field.BitCount() % 8 != 0) {
            Require((field.Octets().back() & 0xFFU >> field.BitCount() % 8) == 0,
                    "bits behind a bit string are set");
        }
        sum += field.Number() + static_cast<std::uint32_t>(field.Words().size());
        return field.Status() != FieldStatus::kAbsent || field.empty();
    });
    volatile std::uint32_t used = sum;  // so that all of it was read
    static_cast<void>(used);
}

std::string TextOf(const Message& message) {
    std::string text;
    message.AppendText(text);
    return text;
}

/// The message as data is that of its text.
void CheckMessage(const Message& message, const Result& result) {
    Require(message.IsFound() == result.found, "a message differs from its text");
    const auto lines = std::count(result.diagnostics.begin(), result.diagnostics.end(), '\n');
    Require(message.FaultCount() == static_cast<std::size_t>(lines), "a fault has no line");
    RequireEqual(TextOf(message), result.text, "a message has another text");
    Require(message.SurplusCount() == 0 && !message.Security(), "strict reading is tolerant");
    CheckFields(message);
}

/// Whether `surplus` is bits of the message, and those that stood there.
bool IsOf(const Surplus& surplus, Octets octets) {
    const std::size_t end = std::size_t{surplus.place.offset} + surplus.place.length;
    if (surplus.bitCount == 0 || surplus.place.length != surplus.bitCount ||
        end > 8 * octets.size() || surplus.octets.size() != (surplus.bitCount + 7) / 8) {
        return false;
    }
    for (std::size_t bit = 0; bit < 8 * surplus.octets.size(); ++bit) {
        const std::size_t at = surplus.place.offset + bit;
        const bool own = bit < surplus.bitCount;
        const int there = own ? octets[at / 8] >> (7 - at % 8) & 1 : 0;
        if ((surplus.octets[bit / 8] >> (7 - bit % 8) & 1) != there) {
            return false;
        }
    }
    return true;
}

/// Tolerant reading has another record only where strict reading has a fault or a security header
/// stands in front. What it sets aside are bits of the message, one behind the other.
void CheckTolerant(Decoding decoding, Octets octets, const Message& strict, bool deciphered) {
    static Message message;
    const DecodeOptions options{.tolerant = true, .deciphered = deciphered};
    Require(message.Decode(decoding, octets, options) == strict.IsFound(),
            "tolerant reading knows other messages");
    CheckFields(message);
    const bool good = strict.IsFound() && strict.Code() == 0 && strict.FaultCount() == 0;
    if (!message.Security()) {
        Require(message.TypeName() == strict.TypeName(), "tolerant reading finds another message");
        if (good) {
            RequireEqual(TextOf(message), TextOf(strict), "tolerant reading has another record");
            Require(message.Code() == 0 && message.FaultCount() == 0 &&
                        message.BitsConsumed() == strict.BitsConsumed(),
                    "tolerant reading comes to something else");
        }
    }
    std::size_t passed = 0;
    for (std::size_t index = 0; index < message.SurplusCount(); ++index) {
        const Surplus surplus = message.GetSurplus(index);
        Require(IsOf(surplus, octets), "what is set aside did not stand there");
        Require(surplus.place.offset >= passed, "what is set aside stands twice");
        passed = std::size_t{surplus.place.offset} + surplus.place.length;
    }
}

void CheckSpan(Decoding decoding, Octets octets) {
    const ExactOctets message(octets);
    const Result result = Decode(decoding, message.View());
    CheckForm(decoding, result);
    static Message strict;
    strict.Decode(decoding, message.View());
    CheckMessage(strict, result);
    CheckTolerant(decoding, message.View(), strict, false);
    CheckTolerant(decoding, message.View(), strict, true);

    Result again{false, "what stood here before", "and here"};
    again.found = DecodeInto(decoding, message.View(), again.text, again.diagnostics);
    RequireSame(result, again, "the second call differs from the first");

    const ExactOctets padded(octets, octets.size() + kReadAhead);
    const auto length = static_cast<std::int32_t>(octets.size());
    RequireSame(result, Decode(decoding, PaddedMessage(padded.Data(), length, padded.Size())),
                "a span differs from the same octets with zeros behind");
}

void CheckPadded(Decoding decoding, Octets readable, std::int32_t length) {
    const ExactOctets buffer(readable, static_cast<std::size_t>(std::max(length, 0)) + kReadAhead);
    const Result padded = Decode(decoding, PaddedMessage(buffer.Data(), length, buffer.Size()));
    CheckForm(decoding, padded);

    const ExactOctets shorter(readable);
    RequireSame(padded, Decode(decoding, PaddedMessage(shorter.Data(), length, shorter.Size())),
                "behind the capacity stands something else than zeros");

    const test::EntryPoint& entry = test::EntryPoints()[static_cast<std::size_t>(decoding)];
    CString text(L"what stood here before");
    const int value = entry.plain(buffer.Data(), length, text);
    RequireSame(padded, value, text);
}

/// Room for a message of any length and what a decoder may look at behind it: address space, of
/// which only what is written to takes memory.
std::uint8_t* HugeRoom() {
    static void* const memory =
        mmap(nullptr, std::size_t{INT32_MAX} + kReadAhead, PROT_READ | PROT_WRITE,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(memory);
}

void CheckHuge(Decoding decoding, Octets readable, std::int32_t length) {
    std::uint8_t* const room = HugeRoom();
    Require(room != nullptr, "no address space for a huge message");
    std::copy(readable.begin(), readable.end(), room);
    const std::size_t capacity = static_cast<std::size_t>(length) + kReadAhead;
    const Result padded = Decode(decoding, PaddedMessage(room, length, capacity));
    CheckForm(decoding, padded);
    const test::EntryPoint& entry = test::EntryPoints()[static_cast<std::size_t>(decoding)];
    CString text;
    const int value = entry.plain(room, length, text);
    RequireSame(padded, value, text);
    std::fill_n(room, readable.size(), std::uint8_t{0});
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    constexpr std::int32_t kHuge = 1 << 16;  // where all checks together take seconds
    const fuzz::DecodeInput input = fuzz::ReadDecodeInput({octets, size});
    if (input.length > kHuge) {
        CheckHuge(input.decoding, input.readable, input.length);
        return 0;
    }
    CheckPadded(input.decoding, input.readable, input.length);
    const auto whole = static_cast<std::int32_t>(input.readable.size());
    const auto shown = static_cast<std::size_t>(std::clamp(input.length, 0, whole));
    CheckSpan(input.decoding, input.readable.first(shown));
    fuzz::ReachOfThisRun().NoteMessage(
        input.decoding, PaddedMessage(input.readable.data(), input.length, input.readable.size()));
    return 0;
}
