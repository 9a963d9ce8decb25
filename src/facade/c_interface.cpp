// The interface for C, over the one for C++.
//
// Tests: tests/package/user.c, tests/allocation_test.cpp, tests/abi.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "quorvane/message.h"
#include "quorvane/quorvane.h"
#include "quorvane/version.h"

namespace {

using quorvane::Decoding;
using quorvane::DecodingInfo;
using quorvane::Field;
using quorvane::FieldKind;
using quorvane::FieldStatus;
using quorvane::Message;
using quorvane::MessageError;
using quorvane::MessageErrorKind;
using quorvane::Surplus;

using Octets = std::span<const std::uint8_t>;

static_assert(static_cast<int>(FieldKind::kNumber) == QUORVANE_NUMBER &&
              static_cast<int>(FieldKind::kEnumerated) == QUORVANE_ENUMERATED &&
              static_cast<int>(FieldKind::kBits) == QUORVANE_BITS &&
              static_cast<int>(FieldKind::kStruct) == QUORVANE_STRUCT &&
              static_cast<int>(FieldKind::kUnion) == QUORVANE_UNION &&
              static_cast<int>(FieldKind::kSequence) == QUORVANE_SEQUENCE);
static_assert(static_cast<int>(FieldStatus::kDecoded) == QUORVANE_DECODED &&
              static_cast<int>(FieldStatus::kDefault) == QUORVANE_DEFAULT &&
              static_cast<int>(FieldStatus::kRefused) == QUORVANE_REFUSED &&
              static_cast<int>(FieldStatus::kAbsent) == QUORVANE_ABSENT);
static_assert(static_cast<int>(Surplus::Kind::kRest) == QUORVANE_REST &&
              static_cast<int>(Surplus::Kind::kElement) == QUORVANE_ELEMENT);
static_assert(
    static_cast<int>(MessageErrorKind::kNone) == QUORVANE_ERROR_NONE &&
    static_cast<int>(MessageErrorKind::kNoMessage) == QUORVANE_ERROR_NO_MESSAGE &&
    static_cast<int>(MessageErrorKind::kUnknownName) == QUORVANE_ERROR_UNKNOWN_NAME &&
    static_cast<int>(MessageErrorKind::kIndexOutOfRange) == QUORVANE_ERROR_INDEX_OUT_OF_RANGE &&
    static_cast<int>(MessageErrorKind::kWrongKind) == QUORVANE_ERROR_WRONG_KIND &&
    static_cast<int>(MessageErrorKind::kNotThere) == QUORVANE_ERROR_NOT_THERE &&
    static_cast<int>(MessageErrorKind::kOtherAlternative) == QUORVANE_ERROR_OTHER_ALTERNATIVE &&
    static_cast<int>(MessageErrorKind::kNotOptional) == QUORVANE_ERROR_NOT_OPTIONAL &&
    static_cast<int>(MessageErrorKind::kValueTooLarge) == QUORVANE_ERROR_VALUE_TOO_LARGE &&
    static_cast<int>(MessageErrorKind::kTooManyItems) == QUORVANE_ERROR_TOO_MANY_ITEMS &&
    static_cast<int>(MessageErrorKind::kTooManyBits) == QUORVANE_ERROR_TOO_MANY_BITS &&
    static_cast<int>(MessageErrorKind::kWrongBitCount) == QUORVANE_ERROR_WRONG_BIT_COUNT &&
    static_cast<int>(MessageErrorKind::kMissing) == QUORVANE_ERROR_MISSING &&
    static_cast<int>(MessageErrorKind::kRefused) == QUORVANE_ERROR_REFUSED &&
    static_cast<int>(MessageErrorKind::kWrongLength) == QUORVANE_ERROR_WRONG_LENGTH &&
    static_cast<int>(MessageErrorKind::kContradiction) == QUORVANE_ERROR_CONTRADICTION &&
    static_cast<int>(MessageErrorKind::kNotWritable) == QUORVANE_ERROR_NOT_WRITABLE &&
    static_cast<int>(MessageErrorKind::kNoRoom) == QUORVANE_ERROR_NO_ROOM);

// A Field is handed out as its octets.
static_assert(std::is_trivially_copyable_v<Field> && sizeof(Field) <= sizeof(quorvane_field));

quorvane_field Wrapped(const Field& field) {
    quorvane_field wrapped{};
    std::memcpy(&wrapped, &field, sizeof field);
    return wrapped;
}

Field Unwrapped(const quorvane_field& wrapped) {
    Field field;
    std::memcpy(static_cast<void*>(&field), &wrapped, sizeof field);
    return field;
}

quorvane_text TextOf(std::string_view text) {
    return {text.empty() ? "" : text.data(), text.size()};
}

/// What a pointer to a quorvane_message points at: that type is never defined.
struct Handle {
    Message message;
    MessageError error;  // of the last call that was to change or write it
};

Handle* Unwrapped(quorvane_message* message) {
    return reinterpret_cast<Handle*>(message);
}

const Handle* Unwrapped(const quorvane_message* message) {
    return reinterpret_cast<const Handle*>(message);
}

/// A null pointer stands for a message that has decoded nothing: `none`, which lives as long as the
/// expression around the call.
const Message& MessageOf(const quorvane_message* message, const Message& none = Message()) {
    return message == nullptr ? none : Unwrapped(message)->message;
}

/// What is known of the decoding; null if there is no such number.
const DecodingInfo* InfoOf(int decoding) {
    const std::span<const DecodingInfo> all = quorvane::Decodings();
    const bool known = decoding >= 0 && static_cast<std::size_t>(decoding) < all.size();
    return known ? &all[static_cast<std::size_t>(decoding)] : nullptr;
}

bool AreRight(int decoding, const std::uint8_t* octets, std::size_t length) {
    return InfoOf(decoding) != nullptr && (octets != nullptr || length == 0);
}

/// The answer of `call`, or `failure` if an exception leaves it: memory has run out.
template <typename Call, typename Answer>
Answer Guarded(const Call& call, Answer failure) {
#if defined(__cpp_exceptions)
    try {
        return call();
    } catch (...) {
        return failure;
    }
#else
    static_cast<void>(failure);
    return call();
#endif
}

std::ptrdiff_t CopyOut(std::string_view text, char* buffer, std::size_t size) {
    if (size > 0) {
        const std::size_t count = std::min(text.size(), size - 1);
        buffer[text.copy(buffer, count)] = '\0';
    }
    return static_cast<std::ptrdiff_t>(text.size());
}

/// Copies what `append` adds to a string; `append` returns whether there is something to tell.
template <typename Append>
std::ptrdiff_t WriteOut(char* buffer, std::size_t size, const Append& append) {
    if (buffer == nullptr && size > 0) {
        return QUORVANE_WRONG_ARGUMENT;
    }
    const auto write = [&]() -> std::ptrdiff_t {
        std::string text;
        return append(text) ? CopyOut(text, buffer, size) : std::ptrdiff_t{QUORVANE_WRONG_ARGUMENT};
    };
    return Guarded(write, std::ptrdiff_t{QUORVANE_NO_MEMORY});
}

/// What `change` answers, a MessageError, which is kept to be asked for.
template <typename Change>
int Changed(quorvane_message* message, bool argumentsAreRight, const Change& change) {
    if (message == nullptr) {
        return QUORVANE_WRONG_ARGUMENT;
    }
    Handle& handle = *Unwrapped(message);
    const auto keep = [&] {
        handle.error = change(handle.message);
        return static_cast<int>(handle.error.kind);
    };
    const int answer =
        argumentsAreRight ? Guarded(keep, int{QUORVANE_NO_MEMORY}) : QUORVANE_WRONG_ARGUMENT;
    if (answer < 0) {
        handle.error = {};
    }
    return answer;
}

}  // namespace

const char* quorvane_version(void) noexcept {
    return quorvane::Version();
}

int quorvane_decoding_count(void) noexcept {
    return static_cast<int>(quorvane::Decodings().size());
}

int quorvane_find_decoding(const char* name) noexcept {
    const std::optional<Decoding> found =
        name == nullptr ? std::nullopt : quorvane::FindDecoding(name);
    return found ? static_cast<int>(*found) : -1;
}

quorvane_text quorvane_decoding_name(int decoding) noexcept {
    const DecodingInfo* info = InfoOf(decoding);
    return TextOf(info == nullptr ? std::string_view() : info->name);
}

quorvane_text quorvane_decoding_purpose(int decoding) noexcept {
    const DecodingInfo* info = InfoOf(decoding);
    return TextOf(info == nullptr ? std::string_view() : info->purpose);
}

bool quorvane_decoding_is_described(int decoding) noexcept {
    const DecodingInfo* info = InfoOf(decoding);
    return info != nullptr && info->described;
}

ptrdiff_t quorvane_decode_to_text(int decoding, const uint8_t* octets, size_t length, char* buffer,
                                  size_t size) noexcept {
    return WriteOut(buffer, size, [&](std::string& text) {
        if (!AreRight(decoding, octets, length)) {
            return false;
        }
        std::string diagnostics;
        quorvane::DecodeInto(static_cast<Decoding>(decoding), Octets(octets, length), text,
                             diagnostics);
        return true;
    });
}

ptrdiff_t quorvane_decode_to_json(int decoding, const uint8_t* octets, size_t length, char* buffer,
                                  size_t size) noexcept {
    return WriteOut(buffer, size, [&](std::string& json) {
        if (!AreRight(decoding, octets, length)) {
            return false;
        }
        Message message;
        message.Decode(static_cast<Decoding>(decoding), Octets(octets, length));
        quorvane::AppendJson(message, json);
        return true;
    });
}

quorvane_message* quorvane_message_create(void) noexcept {
    return reinterpret_cast<quorvane_message*>(new (std::nothrow) Handle);
}

void quorvane_message_destroy(quorvane_message* message) noexcept {
    delete Unwrapped(message);
}

quorvane_result quorvane_message_decode(quorvane_message* message, int decoding,
                                        const uint8_t* octets, size_t length) noexcept {
    return quorvane_message_decode_with(message, decoding, octets, length, 0);
}

quorvane_result quorvane_message_decode_with(quorvane_message* message, int decoding,
                                             const uint8_t* octets, size_t length,
                                             uint32_t options) noexcept {
    constexpr std::uint32_t kKnownOptions = QUORVANE_TOLERANT | QUORVANE_DECIPHERED;
    if (message == nullptr) {
        return QUORVANE_WRONG_ARGUMENT;
    }
    Message& decoded = Unwrapped(message)->message;
    if (!AreRight(decoding, octets, length) || (options & ~kKnownOptions) != 0) {
        decoded = Message();
        return QUORVANE_WRONG_ARGUMENT;
    }
    const auto decode = [&] {
        return decoded.Decode(static_cast<Decoding>(decoding), Octets(octets, length),
                              {.tolerant = (options & QUORVANE_TOLERANT) != 0,
                               .deciphered = (options & QUORVANE_DECIPHERED) != 0})
                   ? QUORVANE_FOUND
                   : QUORVANE_NOT_FOUND;
    };
    return Guarded(decode, QUORVANE_NO_MEMORY);
}

quorvane_text quorvane_message_type(const quorvane_message* message) noexcept {
    return TextOf(MessageOf(message).TypeName());
}

int quorvane_message_decoding(const quorvane_message* message) noexcept {
    const std::optional<Decoding> decoding = MessageOf(message).GetDecoding();
    return decoding ? static_cast<int>(*decoding) : -1;
}

int quorvane_message_code(const quorvane_message* message) noexcept {
    return MessageOf(message).Code();
}

quorvane_text quorvane_message_code_words(const quorvane_message* message) noexcept {
    return TextOf(MessageOf(message).CodeWords());
}

int64_t quorvane_message_bits(const quorvane_message* message) noexcept {
    return MessageOf(message).BitsConsumed();
}

ptrdiff_t quorvane_message_to_text(const quorvane_message* message, char* buffer,
                                   size_t size) noexcept {
    return WriteOut(buffer, size, [&](std::string& text) {
        MessageOf(message).AppendText(text);
        return true;
    });
}

ptrdiff_t quorvane_message_to_json(const quorvane_message* message, char* buffer,
                                   size_t size) noexcept {
    return WriteOut(buffer, size, [&](std::string& json) {
        quorvane::AppendJson(MessageOf(message), json);
        return true;
    });
}

quorvane_field quorvane_message_root(const quorvane_message* message) noexcept {
    return Wrapped(MessageOf(message).Root());
}

quorvane_field quorvane_message_find(const quorvane_message* message, const char* path) noexcept {
    return quorvane_field_find(quorvane_message_root(message), path);
}

quorvane_field quorvane_field_find(quorvane_field field, const char* path) noexcept {
    return Wrapped(path == nullptr ? Field() : Unwrapped(field).Find(path));
}

size_t quorvane_field_count(quorvane_field field) noexcept {
    return Unwrapped(field).size();
}

quorvane_field quorvane_field_at(quorvane_field field, size_t index) noexcept {
    return Wrapped(Unwrapped(field)[index]);
}

bool quorvane_field_exists(quorvane_field field) noexcept {
    return static_cast<bool>(Unwrapped(field));
}

quorvane_text quorvane_field_name(quorvane_field field) noexcept {
    return TextOf(Unwrapped(field).Name());
}

quorvane_kind quorvane_field_kind(quorvane_field field) noexcept {
    return static_cast<quorvane_kind>(Unwrapped(field).Kind());
}

quorvane_status quorvane_field_status(quorvane_field field) noexcept {
    return static_cast<quorvane_status>(Unwrapped(field).Status());
}

bool quorvane_field_is_optional(quorvane_field field) noexcept {
    return Unwrapped(field).IsOptional();
}

uint32_t quorvane_field_number(quorvane_field field) noexcept {
    return Unwrapped(field).Number();
}

quorvane_text quorvane_field_words(quorvane_field field) noexcept {
    return TextOf(Unwrapped(field).Words());
}

uint32_t quorvane_field_bit_count(quorvane_field field) noexcept {
    return Unwrapped(field).BitCount();
}

quorvane_octets quorvane_field_octets(quorvane_field field) noexcept {
    const Octets octets = Unwrapped(field).Octets();
    return {octets.data(), octets.size()};
}

bool quorvane_field_place(quorvane_field field, quorvane_place* place) noexcept {
    const std::optional<quorvane::Place> found = Unwrapped(field).GetPlace();
    if (found && place != nullptr) {
        *place = {found->offset, found->length};
    }
    return found.has_value();
}

ptrdiff_t quorvane_field_path(const quorvane_message* message, quorvane_field field, char* buffer,
                              size_t size) noexcept {
    return WriteOut(buffer, size, [&](std::string& path) {
        return MessageOf(message).AppendPath(Unwrapped(field), path);
    });
}

size_t quorvane_message_fault_count(const quorvane_message* message) noexcept {
    return MessageOf(message).FaultCount();
}

bool quorvane_message_fault(const quorvane_message* message, size_t index,
                            quorvane_fault* fault) noexcept {
    if (fault == nullptr || index >= quorvane_message_fault_count(message)) {
        return false;
    }
    const quorvane::Fault met = MessageOf(message).GetFault(index);
    *fault = {met.number, met.offset ? std::int64_t{*met.offset} : -1, TextOf(met.words),
              Wrapped(met.field)};
    return true;
}

size_t quorvane_message_surplus_count(const quorvane_message* message) noexcept {
    return MessageOf(message).SurplusCount();
}

bool quorvane_message_surplus(const quorvane_message* message, size_t index,
                              quorvane_surplus* surplus) noexcept {
    if (surplus == nullptr || index >= quorvane_message_surplus_count(message)) {
        return false;
    }
    const Surplus piece = MessageOf(message).GetSurplus(index);
    *surplus = {static_cast<quorvane_surplus_kind>(piece.kind),
                piece.iei ? int{*piece.iei} : -1,
                Wrapped(piece.field),
                {piece.octets.data(), piece.octets.size()},
                piece.bitCount,
                {piece.place.offset, piece.place.length}};
    return true;
}

bool quorvane_message_security(const quorvane_message* message,
                               quorvane_security_header* header) noexcept {
    const std::optional<quorvane::SecurityHeader> found = MessageOf(message).Security();
    if (found && header != nullptr) {
        *header = {found->type, found->sequenceNumber, found->authenticationCode};
    }
    return found.has_value();
}

quorvane_error quorvane_message_error(const quorvane_message* message) noexcept {
    if (message == nullptr) {
        return {QUORVANE_ERROR_NONE, TextOf({}), TextOf({})};
    }
    const MessageError& error = Unwrapped(message)->error;
    return {static_cast<quorvane_error_kind>(error.kind), TextOf(error.path), TextOf(error.words)};
}

int quorvane_message_make(quorvane_message* message, int decoding, const char* type) noexcept {
    return Changed(message, InfoOf(decoding) != nullptr && type != nullptr,
                   [&](Message& made) { return made.New(static_cast<Decoding>(decoding), type); });
}

int quorvane_message_set_number(quorvane_message* message, const char* path,
                                uint32_t number) noexcept {
    return Changed(message, path != nullptr,
                   [&](Message& changed) { return changed.Set(path, number); });
}

int quorvane_message_set_words(quorvane_message* message, const char* path,
                               const char* words) noexcept {
    return Changed(message, path != nullptr && words != nullptr,
                   [&](Message& changed) { return changed.SetWords(path, words); });
}

int quorvane_message_set_bits(quorvane_message* message, const char* path, const uint8_t* octets,
                              uint32_t bits) noexcept {
    return Changed(message, path != nullptr && (octets != nullptr || bits == 0),
                   [&](Message& changed) {
                       const std::size_t size = (std::size_t{bits} + 7) / 8;
                       return changed.SetBits(path, Octets(octets, size), bits);
                   });
}

int quorvane_message_choose(quorvane_message* message, const char* path,
                            const char* alternative) noexcept {
    return Changed(message, path != nullptr && alternative != nullptr,
                   [&](Message& changed) { return changed.Choose(path, alternative); });
}

int quorvane_message_resize(quorvane_message* message, const char* path, size_t items) noexcept {
    return Changed(message, path != nullptr,
                   [&](Message& changed) { return changed.Resize(path, items); });
}

int quorvane_message_append(quorvane_message* message, const char* path) noexcept {
    return Changed(message, path != nullptr,
                   [&](Message& changed) { return changed.Append(path); });
}

int quorvane_message_add(quorvane_message* message, const char* path) noexcept {
    return Changed(message, path != nullptr, [&](Message& changed) { return changed.Add(path); });
}

int quorvane_message_clear(quorvane_message* message, const char* path) noexcept {
    return Changed(message, path != nullptr, [&](Message& changed) { return changed.Clear(path); });
}

ptrdiff_t quorvane_message_encode(quorvane_message* message, uint8_t* octets, size_t size,
                                  int64_t* bits) noexcept {
    quorvane::EncodeResult result;
    const auto encode = [&](const Message& encoded) {
        result = encoded.Encode(std::span(octets, size));
        return std::move(result.error);
    };
    const int answer = Changed(message, octets != nullptr || size == 0, encode);
    if (answer < 0) {
        return answer;
    }
    if (answer == QUORVANE_ERROR_NONE && bits != nullptr) {
        *bits = result.bits;
    }
    const bool isWritable = answer == QUORVANE_ERROR_NONE || answer == QUORVANE_ERROR_NO_ROOM;
    return isWritable ? static_cast<std::ptrdiff_t>(result.octets) : std::ptrdiff_t{QUORVANE_ERROR};
}
