#pragma once

// The library for C, and for languages that call C: a message's text, JSON and fields, to read, to
// set and to write as octets.
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
// Threads. All functions may be called from any number of threads at once, but a message that is
// handed over as not const is used by that call alone, with its fields.
//
// Lifetime. A field looks into its message: it is valid until that decodes again, is made anew or
// is destroyed; the fields in a list or union also until that is resized or chosen. Names and words
// are valid as long as the library is loaded, but for those of faults, which are valid as long as a
// field, and those of an error, see quorvane_message_error.
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
    QUORVANE_WRONG_ARGUMENT = -2,  // no such decoding or option, or null where something has to be
    QUORVANE_ERROR = -3            // the message has an error, see quorvane_message_error
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

/// Holds one message, decoded or made, and is used again for the next.
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

/// How to read, as bits of a number.
typedef enum quorvane_option {
    QUORVANE_TOLERANT = 1,   // sets aside what the descriptions have no place for and goes on, and
                             // finds the message behind a security header
    QUORVANE_DECIPHERED = 2  // with that: what stands behind a header that says "ciphered" is plain
} quorvane_option;

/// The same as `options` say, see DecodeOptions of quorvane/message.h. Bits that this version does
/// not know are QUORVANE_WRONG_ARGUMENT.
QUORVANE_API quorvane_result quorvane_message_decode_with(quorvane_message* message, int decoding,
                                                          const uint8_t* octets, size_t length,
                                                          uint32_t options) QUORVANE_NOEXCEPT;

/// The message's name; empty if there is none.
QUORVANE_API quorvane_text quorvane_message_type(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// What it was decoded as, or made for; -1 if nothing was.
QUORVANE_API int quorvane_message_decoding(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// 0 if it was decoded to its end; else what ended the decoding, -2 if there is no message.
QUORVANE_API int quorvane_message_code(const quorvane_message* message) QUORVANE_NOEXCEPT;
/// The words of that code, e.g. "MESSAGE TOO SHORT"; empty for 0 and codes without.
QUORVANE_API quorvane_text quorvane_message_code_words(const quorvane_message* message)
    QUORVANE_NOEXCEPT;
/// How many bits the decoder took; 0 if the code is not 0.
QUORVANE_API int64_t quorvane_message_bits(const quorvane_message* message) QUORVANE_NOEXCEPT;

/// The message's text, written as quorvane_decode_to_text writes it; empty if nothing was decoded.
QUORVANE_API ptrdiff_t quorvane_message_to_text(const quorvane_message* message, char* buffer,
                                                size_t size) QUORVANE_NOEXCEPT;
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

// ---- What tolerant reading has found besides.

typedef enum quorvane_surplus_kind {
    QUORVANE_REST = 0,    // what a known element has behind all that is taken of it
    QUORVANE_ELEMENT = 1  // an unknown element, whole
} quorvane_surplus_kind;

/// Bits that were set aside.
typedef struct quorvane_surplus {
    quorvane_surplus_kind kind;
    int iei;               // the element's identifier; -1 if it has none
    quorvane_field field;  // of a rest that of its element, else the message around it; no field if
                           // that is not known
    quorvane_octets octets;  // as those of a field
    uint32_t bit_count;
    quorvane_place place;
} quorvane_surplus;

/// How many pieces were set aside.
QUORVANE_API size_t quorvane_message_surplus_count(const quorvane_message* message)
    QUORVANE_NOEXCEPT;
/// Piece `index`, from 0, in `surplus`. False, with `surplus` as it was, if there are not so many.
QUORVANE_API bool quorvane_message_surplus(const quorvane_message* message, size_t index,
                                           quorvane_surplus* surplus) QUORVANE_NOEXCEPT;

/// The header in front of a protected NAS message of EPS (TS 24.301, 9.1).
typedef struct quorvane_security_header {
    uint8_t type;
    uint8_t sequence_number;
    uint32_t authentication_code;
} quorvane_security_header;

/// The header that the message was found behind, in `header`, which may be null. False, with
/// `header` as it was, if there is none.
QUORVANE_API bool quorvane_message_security(const quorvane_message* message,
                                            quorvane_security_header* header) QUORVANE_NOEXCEPT;

// ---- Setting fields and writing octets.
//
// The functions from quorvane_message_make to quorvane_message_clear return 0 if they have done
// what they say. Else they change nothing and return a quorvane_error_kind or
// QUORVANE_WRONG_ARGUMENT; or QUORVANE_NO_MEMORY, after which the field may be there without
// contents. What is around a field is made with it, but no items of lists, nor another alternative
// of a union than the one that it holds.

/// Why a message cannot be changed or written as asked.
typedef enum quorvane_error_kind {
    QUORVANE_ERROR_NONE = 0,
    QUORVANE_ERROR_NO_MESSAGE = 1,          // there is none, or this build does not describe it
    QUORVANE_ERROR_UNKNOWN_NAME = 2,        // no message, field, alternative or value is named so
    QUORVANE_ERROR_INDEX_OUT_OF_RANGE = 3,  // the list has not so many items
    QUORVANE_ERROR_WRONG_KIND = 4,          // this cannot be done with fields of the kind
    QUORVANE_ERROR_NOT_THERE = 5,           // the field is none of this message
    QUORVANE_ERROR_OTHER_ALTERNATIVE = 6,   // the union holds another alternative
    QUORVANE_ERROR_NOT_OPTIONAL = 7,        // the message cannot do without the field
    QUORVANE_ERROR_VALUE_TOO_LARGE = 8,     // the number has more bits than the field
    QUORVANE_ERROR_TOO_MANY_ITEMS = 9,
    QUORVANE_ERROR_TOO_MANY_BITS = 10,
    QUORVANE_ERROR_WRONG_BIT_COUNT = 11,  // the bit string has always the same count
    QUORVANE_ERROR_MISSING = 12,          // a field that has to be there was never set
    QUORVANE_ERROR_REFUSED = 13,          // the decoder refused the field, and it was not set since
    QUORVANE_ERROR_WRONG_LENGTH = 14,     // shorter or longer than its place in the message allows
    QUORVANE_ERROR_CONTRADICTION = 15,    // one field says otherwise than another
    QUORVANE_ERROR_NOT_WRITABLE = 16,     // the structure has no form for such a value
    QUORVANE_ERROR_NO_ROOM = 17           // the octets do not fit
} quorvane_error_kind;

typedef struct quorvane_error {
    quorvane_error_kind kind;
    quorvane_text path;   // of the field; empty: the message itself
    quorvane_text words;  // what is wrong and what would be right
} quorvane_error;

/// The error of the last function of this section that was called for `message`; none if that did
/// what it says, or failed otherwise. Path and words are valid until the next of them is called or
/// the message is destroyed.
QUORVANE_API quorvane_error quorvane_message_error(const quorvane_message* message)
    QUORVANE_NOEXCEPT;

/// Replaces what `message` holds by a message of the type with that name, no field of which is set.
QUORVANE_API int quorvane_message_make(quorvane_message* message, int decoding,
                                       const char* type) QUORVANE_NOEXCEPT;

/// Sets a number or the value of an enumeration.
QUORVANE_API int quorvane_message_set_number(quorvane_message* message, const char* path,
                                             uint32_t number) QUORVANE_NOEXCEPT;
/// Sets the value of an enumeration by its words.
QUORVANE_API int quorvane_message_set_words(quorvane_message* message, const char* path,
                                            const char* words) QUORVANE_NOEXCEPT;
/// Sets a bit string to the first `bits` bits of `octets`, which are copied. Null `octets` need
/// `bits` of 0.
QUORVANE_API int quorvane_message_set_bits(quorvane_message* message, const char* path,
                                           const uint8_t* octets, uint32_t bits) QUORVANE_NOEXCEPT;
/// Lets a union hold the alternative of that name; contents of another one are dropped.
QUORVANE_API int quorvane_message_choose(quorvane_message* message, const char* path,
                                         const char* alternative) QUORVANE_NOEXCEPT;
/// Gives a list so many items; new ones are not set.
QUORVANE_API int quorvane_message_resize(quorvane_message* message, const char* path,
                                         size_t items) QUORVANE_NOEXCEPT;
/// Gives a list one item more, which is not set.
QUORVANE_API int quorvane_message_append(quorvane_message* message,
                                         const char* path) QUORVANE_NOEXCEPT;
/// Makes an optional field one that is there, and a structure one that is set.
QUORVANE_API int quorvane_message_add(quorvane_message* message,
                                      const char* path) QUORVANE_NOEXCEPT;
/// Makes an optional field absent, with all that it held.
QUORVANE_API int quorvane_message_clear(quorvane_message* message,
                                        const char* path) QUORVANE_NOEXCEPT;

/// Writes the message as octets into `octets`, which has room for `size`, and returns how many they
/// are, or a failure. If they are more than `size`, nothing is written. A null `octets` needs a
/// `size` of 0. How many bits the message has, which need not end with an octet, comes into `bits`,
/// which may be null; it stays as it was if nothing is written.
QUORVANE_API ptrdiff_t quorvane_message_encode(quorvane_message* message, uint8_t* octets,
                                               size_t size, int64_t* bits) QUORVANE_NOEXCEPT;

#ifdef __cplusplus
}
#endif
