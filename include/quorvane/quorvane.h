#pragma once

// The library for C, and for languages that call C: a message's text, JSON and fields.
//
//     #include <quorvane/quorvane.h>
//
//     const uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};
//     quorvane_message* message = quorvane_message_create();
//     const int decoding = quorvane_find_decoding("EPS_SMUplink");
//     if (quorvane_message_decode(message, decoding, octets, sizeof octets) == QUORVANE_FOUND) {
//         const quorvane_field type = quorvane_message_find(message, "PDNType");
//         const quorvane_text words = quorvane_field_words(type);
//         printf("%.*s\n", (int)words.size, words.data);
//     }
//     quorvane_message_destroy(message);
//
// prints "IPv4v6". What goes in and comes out is what quorvane/decode.h, quorvane/message.h and
// quorvane/json.h describe: this header gives the same in plain C.
//
// Safety. Any octets give an answer. Null messages and fields that stand for nothing answer every
// question: with no name, no contents, no children. No C++ exception leaves; memory that runs out
// is QUORVANE_NO_MEMORY (it ends the program if the library was built without exceptions).
//
// Threads. All functions may be called from any number of threads at once, but a message is used by
// one at a time while it decodes or is destroyed.
//
// Lifetime. A field looks into its message: it is valid until that decodes again or is destroyed.
// Names and words are valid as long as the library is loaded, but for those of faults, which are
// valid as long as a field.
//
// The binary interface is stable: within a major version functions and constants are added, none is
// changed.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "quorvane/export.h"

#ifdef __cplusplus
#define QUORVANE_NOEXCEPT noexcept
extern "C" {
#else
#define QUORVANE_NOEXCEPT
#endif

/// The version of the library that is linked, e.g. "1.0.0".
QUORVANE_API const char* quorvane_version(void) QUORVANE_NOEXCEPT;

/// `size` octets, which no null character ends. `data` is never null.
typedef struct quorvane_text {
    const char* data;
    size_t size;
} quorvane_text;

// ---- Decodings: what a message is of. They have the numbers from 0 on.

/// How many there are.
QUORVANE_API int quorvane_decoding_count(void) QUORVANE_NOEXCEPT;
/// The number of the decoding of that name, to the letter; -1 if there is none.
QUORVANE_API int quorvane_find_decoding(const char* name) QUORVANE_NOEXCEPT;
/// Its name, as in "EPS_SMUplink"; empty if there is no such number.
QUORVANE_API quorvane_text quorvane_decoding_name(int decoding) QUORVANE_NOEXCEPT;
/// A few words, with the standard.
QUORVANE_API quorvane_text quorvane_decoding_purpose(int decoding) QUORVANE_NOEXCEPT;
/// Whether this build of the library knows its messages.
QUORVANE_API bool quorvane_decoding_is_described(int decoding) QUORVANE_NOEXCEPT;

// ---- One call: octets to text or JSON.

/// What a call came to. Failures are negative.
typedef enum quorvane_result {
    QUORVANE_FOUND = 1,
    QUORVANE_NOT_FOUND = 0,  // the octets start no message that the decoding knows
    QUORVANE_NO_MEMORY = -1,
    QUORVANE_WRONG_ARGUMENT = -2  // no such decoding, or null where something has to be
} quorvane_result;

/// Writes the text of the message of `length` octets, UTF-8 with a null character behind it, into
/// `buffer`, which has room for `size` octets. Returns the length of the whole text, without the
/// null character, or a failure. If that is `size` or more the text was cut, perhaps inside of a
/// character. A null `buffer` needs a `size` of 0, as null `octets` need a `length` of 0.
QUORVANE_API ptrdiff_t quorvane_decode_to_text(int decoding, const uint8_t* octets, size_t length,
                                               char* buffer, size_t size) QUORVANE_NOEXCEPT;
/// The same with the message as JSON.
QUORVANE_API ptrdiff_t quorvane_decode_to_json(int decoding, const uint8_t* octets, size_t length,
                                               char* buffer, size_t size) QUORVANE_NOEXCEPT;

// ---- Messages.

/// Holds one decoded message, and is used again for the next.
typedef struct quorvane_message quorvane_message;

/// A message that has decoded nothing; null if there is no memory. The caller destroys it.
QUORVANE_API quorvane_message* quorvane_message_create(void) QUORVANE_NOEXCEPT;
/// Null is allowed.
QUORVANE_API void quorvane_message_destroy(quorvane_message* message) QUORVANE_NOEXCEPT;

/// Replaces what `message` holds by the message of `length` octets, which may be cut short or
/// malformed. After any other answer than QUORVANE_FOUND it holds none.
QUORVANE_API quorvane_result quorvane_message_decode(quorvane_message* message, int decoding,
                                                     const uint8_t* octets,
                                                     size_t length) QUORVANE_NOEXCEPT;

/// The message's name; empty if there is none.
QUORVANE_API quorvane_text quorvane_message_type(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// What it was decoded as; -1 if nothing was.
QUORVANE_API int quorvane_message_decoding(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// 0 if it was decoded to its end; else what ended the decoding, -2 if there is no message.
QUORVANE_API int quorvane_message_code(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// The words of that code, e.g. "MESSAGE TOO SHORT"; empty for 0 and codes without.
QUORVANE_API quorvane_text quorvane_message_code_words(const quorvane_message* message)
    QUORVANE_NOEXCEPT;
/// How many bits the decoder took; 0 if the code is not 0.
QUORVANE_API int64_t quorvane_message_bits(const quorvane_message* message) QUORVANE_NOEXCEPT;

/// The message as JSON, written as quorvane_decode_to_json writes it.
QUORVANE_API ptrdiff_t quorvane_message_to_json(const quorvane_message* message, char* buffer,
                                                size_t size) QUORVANE_NOEXCEPT;

// ---- Fields.

/// What a field is made of.
typedef enum quorvane_kind {
    QUORVANE_NUMBER = 0,
    QUORVANE_ENUMERATED = 1,  // a number whose values have words
    QUORVANE_BITS = 2,        // a bit string
    QUORVANE_STRUCT = 3,      // members, all of them side by side
    QUORVANE_UNION = 4,       // one of several alternatives
    QUORVANE_SEQUENCE = 5     // items of one type
} quorvane_kind;

/// What became of a field; quorvane/message.h says more.
typedef enum quorvane_status {
    QUORVANE_DECODED = 0,  // the decoder came to it and took it
    QUORVANE_DEFAULT = 1,  // it has to be there, but the decoder never came to it
    QUORVANE_REFUSED = 2,  // a fault tells of it; it holds what was stored by then
    QUORVANE_ABSENT = 3    // it is not in the message
} quorvane_status;

/// A field of a message: a member, the alternative that a union holds, an item, or the message
/// itself. To be copied and passed by value; all zeros are no field.
typedef struct quorvane_field {
    const void* opaque[5];
} quorvane_field;

/// Octets that belong to a message. `data` is null if there are none.
typedef struct quorvane_octets {
    const uint8_t* data;
    size_t size;
} quorvane_octets;

/// Where a value stood in the message, in bits from its first bit.
typedef struct quorvane_place {
    uint32_t offset;
    uint32_t length;
} quorvane_place;

/// The message itself, a struct; no field if there is none.
QUORVANE_API quorvane_field quorvane_message_root(const quorvane_message* message)
    QUORVANE_NOEXCEPT;
/// The field at `path`, as in "EPSMobileIdentity.GUTI.M_TMSI" or "ProtocolCfgs[1].Contents"; no
/// field if the path leads nowhere.
QUORVANE_API quorvane_field quorvane_message_find(const quorvane_message* message,
                                                  const char* path) QUORVANE_NOEXCEPT;
/// The same below a field.
QUORVANE_API quorvane_field quorvane_field_find(quorvane_field field,
                                                const char* path) QUORVANE_NOEXCEPT;

/// How many children it has: members of a struct, absent ones included, the alternative of a union,
/// items of a sequence.
QUORVANE_API size_t quorvane_field_count(quorvane_field field) QUORVANE_NOEXCEPT;
/// Child `index`, from 0, in the order of the text; no field if there are not so many.
QUORVANE_API quorvane_field quorvane_field_at(quorvane_field field, size_t index) QUORVANE_NOEXCEPT;

/// Whether it is a field.
QUORVANE_API bool quorvane_field_exists(quorvane_field field) QUORVANE_NOEXCEPT;
/// The name of the member or alternative; that of an item is empty, that of the message its name.
QUORVANE_API quorvane_text quorvane_field_name(quorvane_field field) QUORVANE_NOEXCEPT;
QUORVANE_API quorvane_kind quorvane_field_kind(quorvane_field field) QUORVANE_NOEXCEPT;
QUORVANE_API quorvane_status quorvane_field_status(quorvane_field field) QUORVANE_NOEXCEPT;
/// Whether a message can do without it.
QUORVANE_API bool quorvane_field_is_optional(quorvane_field field) QUORVANE_NOEXCEPT;
/// The value of a number or an enumeration; else 0.
QUORVANE_API uint32_t quorvane_field_number(quorvane_field field) QUORVANE_NOEXCEPT;
/// The words of an enumeration's value, ASCII but for a letter that is the octet DF for U+00DF;
/// empty if it has none.
QUORVANE_API quorvane_text quorvane_field_words(quorvane_field field) QUORVANE_NOEXCEPT;
/// How many bits a bit string has.
QUORVANE_API uint32_t quorvane_field_bit_count(quorvane_field field) QUORVANE_NOEXCEPT;
/// The bits from the top of the first octet on; the low bits of the last octet that do not belong
/// to it are 0. Valid as long as the field.
QUORVANE_API quorvane_octets quorvane_field_octets(quorvane_field field) QUORVANE_NOEXCEPT;
/// Where it stood, in `place`, which may be null. False, with `place` as it was, if that was not
/// noted.
QUORVANE_API bool quorvane_field_place(quorvane_field field,
                                       quorvane_place* place) QUORVANE_NOEXCEPT;
/// Writes the path that quorvane_message_find knows the field by, as quorvane_decode_to_text writes
/// a text. QUORVANE_WRONG_ARGUMENT if the message has no such field.
QUORVANE_API ptrdiff_t quorvane_field_path(const quorvane_message* message, quorvane_field field,
                                           char* buffer, size_t size) QUORVANE_NOEXCEPT;

// ---- Faults that the decoder met.

typedef struct quorvane_fault {
    uint32_t number;       // that of its line "<ERRID:n> ..."
    int64_t offset;        // the bit of the message where the decoder stood; -1: not known
    quorvane_text words;   // what is wrong
    quorvane_field field;  // what it tells of; no field if that is not known
} quorvane_fault;

/// How many there are.
QUORVANE_API size_t quorvane_message_fault_count(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// Fault `index`, from 0, in `fault`. False, with `fault` as it was, if there are not so many.
QUORVANE_API bool quorvane_message_fault(const quorvane_message* message, size_t index,
                                         quorvane_fault* fault) QUORVANE_NOEXCEPT;

#ifdef __cplusplus
}
#endif
