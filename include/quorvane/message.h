#pragma once

// A message as data: its fields to walk, with their values, words and places, to set, and to write
// as octets; and what a message of a type could hold. quorvane/decode.h gives a message as a text.
//
//     #include <quorvane/message.h>
//
//     const std::uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};
//     quorvane::Message message;
//     if (message.Decode(quorvane::Decoding::EPS_SMUplink, octets)) {
//         const quorvane::Field type = message.Find("PDNType");
//         std::cout << type.Words() << " (" << type.Number() << ")";  // IPv4v6 (3)
//     }
//
// What goes in is what quorvane/decode.h takes, and the message found is the one it shows: the
// fields, their order and their names are those of the text.
//
// Lifetime. A Message keeps what it decodes; the octets may go. A Field looks into its Message: it
// is valid until that decodes again, is made anew, is moved from or ends; the fields in a list or
// union also until that is resized or chosen. A Type and all words and names look
// into constant tables and are valid as long as the library is loaded.
//
// Cost. The first calls of Decode take memory, later ones use it again: a Message that has decoded
// one like it before allocates nothing. It keeps at most 1 MiB of what a large message took, and
// goes on without the rest. A Field is five words, made and copied without allocating. Nothing that
// is const needs memory but Encode and what appends to a string. What needs memory can throw
// std::bad_alloc, and nothing else throws: Decode leaves the Message as one that has found nothing
// then; a field that was to be set, and optional ones around it, may be there without contents.
// What is replaced is given back with the whole message only.
//
// Words and names are ASCII, but for the words of one enumeration of the core network, which have
// the octet DF for U+00DF.
//
// Nothing is undefined. A Field or Type that stands for nothing, such as that of a name not found,
// answers every question: with no name, no contents, no members.
//
// Threads. A Message is used by one thread at a time; its const functions, and those of its fields,
// may be called from several threads at once while none of them decodes.
//
// docs/message.md has more examples.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/export.h"

namespace quorvane {

/// What a field is made of.
enum class FieldKind : std::uint8_t {
    kNumber,
    kEnumerated,  // a number whose values have words
    kBits,        // a bit string
    kStruct,      // members, all of them side by side
    kUnion,       // one of several alternatives
    kSequence,    // items of one type
};

/// What became of a field.
enum class FieldStatus : std::uint8_t {
    /// The decoder came to it and took it, or it was set.
    kDecoded,
    /// It has to be there, and holds its default contents as the decoder never came to it: decoding
    /// stopped before, or the structure around it was cut short.
    ///
    /// In a few elements whose parts have no places (traffic flow templates, channel descriptions
    /// and the like), a decoded 0 with nothing but such behind it in its structure cannot be told
    /// from a default, and is called one.
    kDefault,
    /// A fault tells of it: its contents are wrong, or the message ended inside of it. It holds
    /// what the decoder had stored by then, also where the text shows MISSING as it is optional.
    kRefused,
    /// It is optional and not in the message, or decoding stopped ahead of it.
    kAbsent,
};

class Type;
struct TypeMember;

/// A value of an enumeration.
struct EnumeratedValue {
    std::uint32_t number = 0;
    std::string_view words;
};

/// What a field could hold. Two words, to be passed by value; constant data, never changed. The
/// types of a family refer to each other without cycles.
class QUORVANE_API Type {
  public:
    /// No type.
    Type() noexcept = default;

    /// Whether it is a type.
    [[nodiscard]] explicit operator bool() const noexcept { return tables_ != nullptr; }

    /// The name in the protocol's descriptions; empty for a type that belongs to one member or to
    /// the items of one sequence.
    [[nodiscard]] std::string_view Name() const noexcept;
    [[nodiscard]] FieldKind Kind() const noexcept;

    /// kNumber, kEnumerated: the field's width in bits; 0 for what has no bits to show, such as
    /// spare bits. kBits: the most bits. Else 0.
    [[nodiscard]] std::uint32_t Bits() const noexcept;
    /// kBits: whether it has always so many.
    [[nodiscard]] bool IsFixed() const noexcept;

    /// kSequence: the most items.
    [[nodiscard]] std::uint32_t MostItems() const noexcept;
    /// kSequence: the type of the items.
    [[nodiscard]] Type ItemType() const noexcept;

    /// kStruct: how many members; kUnion: how many alternatives. Else 0.
    [[nodiscard]] std::size_t MemberCount() const noexcept;
    /// Member or alternative `index`, from 0, in the order of the text.
    [[nodiscard]] TypeMember Member(std::size_t index) const noexcept;

    /// kEnumerated: how many values have words of their own.
    [[nodiscard]] std::size_t ValueCount() const noexcept;
    /// Value `index`, from 0, in the order of the standard's table.
    [[nodiscard]] EnumeratedValue Value(std::size_t index) const noexcept;
    /// kEnumerated: the words of every other value; empty if these have none.
    [[nodiscard]] std::string_view OtherWords() const noexcept;
    /// kEnumerated: the words of `number`; empty if it has none. Mostly one step, never more than
    /// there are values.
    [[nodiscard]] std::string_view WordsOf(std::uint32_t number) const noexcept;

    friend bool operator==(const Type&, const Type&) noexcept = default;

  private:
    friend class Field;
    friend class Message;
    friend struct MessageTypes;
    Type(const void* tables, std::uint16_t index) noexcept : tables_(tables), index_(index) {}

    const void* tables_ = nullptr;
    std::uint16_t index_ = 0;
};

/// A member of a struct or an alternative of a union.
struct TypeMember {
    std::string_view name;
    Type type;
    bool optional = false;  // alternatives always are
};

/// The types of the messages that a decoding knows.
struct QUORVANE_API MessageTypes {
    /// How many; 0 if this build does not describe them.
    [[nodiscard]] static std::size_t Count(Decoding decoding) noexcept;
    /// Number `index`, from 0. `Type::Name` is the message's name.
    [[nodiscard]] static Type At(Decoding decoding, std::size_t index) noexcept;
};

/// Where a value stood in the message, in bits from its first bit, most significant bit of an octet
/// first. Length is that in the message, even if the value kept is shorter.
struct Place {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

/// A field of a decoded message: a member, the alternative that a union holds, an item, or the
/// message itself.
class QUORVANE_API Field {
  public:
    /// No field.
    Field() noexcept = default;

    /// Whether it is a field.
    [[nodiscard]] explicit operator bool() const noexcept { return cell_ != nullptr; }

    /// The name of the member or alternative; that of an item is empty, that of the message its
    /// name.
    [[nodiscard]] std::string_view Name() const noexcept;
    [[nodiscard]] Type GetType() const noexcept;
    [[nodiscard]] FieldKind Kind() const noexcept;
    /// Whether a message can do without it.
    [[nodiscard]] bool IsOptional() const noexcept;
    /// Costs at most one look at each of the fields beside it.
    [[nodiscard]] FieldStatus Status() const noexcept;

    /// kNumber, kEnumerated: the value. The text shows a number of 32 bits with its top bit set as
    /// negative; here it is as it stands on the wire. Else 0.
    [[nodiscard]] std::uint32_t Number() const noexcept;
    /// kEnumerated: the words of the value; empty if it has none.
    [[nodiscard]] std::string_view Words() const noexcept;

    /// kBits: how many bits there are. One of fixed length that was never decoded has 0, where the
    /// text shows zeros.
    [[nodiscard]] std::uint32_t BitCount() const noexcept;
    /// kBits: the bits from the top of the first octet on; the low bits of the last octet that do
    /// not belong to it are 0. Valid as long as the field.
    [[nodiscard]] std::span<const std::uint8_t> Octets() const noexcept;

    /// Where it stood, if that was noted: not for structures as a whole, header fields, digits and
    /// a few other elements, nor behind bit 65535.
    [[nodiscard]] std::optional<Place> GetPlace() const noexcept;

    /// kStruct: how many members, absent ones included; kUnion: 1; kSequence: how many items. 0 for
    /// all others and for what is absent.
    [[nodiscard]] std::size_t size() const noexcept;
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    /// Child `index`, from 0, in the order of the text; no field if there are not so many.
    [[nodiscard]] Field operator[](std::size_t index) const noexcept;

    /// The field below this one at `path`: names of members and alternatives behind dots, items as
    /// [index] from 0, as in "EPSMobileIdentity.GUTI.M_TMSI" or "ProtocolCfgs[1].Contents". No
    /// field if the path leads nowhere, also to an alternative that was not chosen. An empty path
    /// gives the field itself. Costs a comparison for each member passed over.
    [[nodiscard]] Field Find(std::string_view path) const noexcept;

    class Iterator;
    [[nodiscard]] Iterator begin() const noexcept;
    [[nodiscard]] Iterator end() const noexcept;

  private:
    friend class Message;
    const void* message_ = nullptr;  // what the Message holds
    const void* cell_ = nullptr;     // the value; null: no field
    const void* around_ = nullptr;   // that of the field around it; null: the message itself
    std::uint32_t index_ = 0;        // among the children of the field around it
    std::uint16_t type_ = 0;
    std::uint16_t typeAround_ = 0;
};

/// Goes over the children of a field, each made when it is looked at.
class Field::Iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;
    using value_type = Field;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Field;

    Iterator() noexcept = default;

    [[nodiscard]] Field operator*() const noexcept { return around_[index_]; }
    Iterator& operator++() noexcept {
        ++index_;
        return *this;
    }
    Iterator operator++(int) noexcept {
        Iterator before = *this;
        ++index_;
        return before;
    }
    /// Of iterators over the same field.
    friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
        return a.index_ == b.index_;
    }

  private:
    friend class Field;
    Iterator(const Field& around, std::size_t index) noexcept : around_(around), index_(index) {}

    Field around_;
    std::size_t index_ = 0;
};

/// How to read.
struct DecodeOptions {
    /// Tolerant reading goes on where a message of a later release ends strict reading: what the
    /// descriptions have no place for is set aside, see Surplus; so is what strict reading passes
    /// over without a word. It also finds the message behind a security header, see
    /// SecurityHeader. A message that strict reading takes without a fault has the same fields and
    /// code.
    bool tolerant = false;
    /// With `tolerant`: what stands behind a security header that says "ciphered" is plain, as it
    /// was deciphered before or the null algorithm is in use.
    bool deciphered = false;
};

/// Bits of a message that tolerant reading set aside, as no field has them.
struct Surplus {
    enum class Kind : std::uint8_t {
        kRest,     // what a known element has behind all that its type takes, or behind its limit;
                   // or, with no field, what is left of a message and is no whole element
        kElement,  // an element that is unknown, of other messages, out of order or repeated,
                   // whole: identifier, length if it has one, and contents
    };

    Kind kind = Kind::kRest;
    /// kRest: the field whose element it is. kElement: the message that it stands in, which may be
    /// one inside of the message found. No field if that is not known.
    Field field;
    /// The element's identifier, if it has one; of half an octet it is the upper one, and the lower
    /// one is 0. Of an unknown element of one octet it is that octet, as nothing tells whether its
    /// lower half is a value.
    std::optional<std::uint8_t> iei;
    /// The bits, from the top of the first octet on; the low bits of the last octet that do not
    /// belong to them are 0. Valid as long as a field.
    std::span<const std::uint8_t> octets;
    std::uint32_t bitCount = 0;
    Place place;
};

/// The header in front of a protected NAS message of EPS (TS 24.301, 9.1).
struct SecurityHeader {
    std::uint8_t type = 0;
    std::uint32_t authenticationCode = 0;
    std::uint8_t sequenceNumber = 0;

    friend bool operator==(const SecurityHeader&, const SecurityHeader&) noexcept = default;
};

/// Why a message cannot be changed or written as asked.
enum class MessageErrorKind : std::uint8_t {
    kNone,
    kNoMessage,        // there is no message, or this build does not describe those of the decoding
    kUnknownName,      // no message, member, alternative or value has that name
    kIndexOutOfRange,  // the list has not so many items
    kWrongKind,        // the field is of a kind that this cannot be done with
    kNotThere,  // the field is of another message or was replaced, or a structure around it was
                // never made
    kOtherAlternative,  // the union holds another alternative
    kNotOptional,       // the message cannot do without the field
    kValueTooLarge,     // the number has more bits than the field
    kTooManyItems,
    kTooManyBits,
    kWrongBitCount,  // the bit string has always the same count, or fewer bits are given than said
    kMissing,        // a field that has to be there was never set
    kRefused,        // the decoder refused the field, and it was not set since
    kWrongLength,    // the value is shorter or longer than its place in the message allows
    kContradiction,  // one field says otherwise than another: a count, a length, a selector, a flag
    kNotWritable,    // the structure has no form for such a value
    kNoRoom,         // the octets do not fit
};

/// An error, or none. Most errors have a path.
struct [[nodiscard]] MessageError {
    MessageErrorKind kind = MessageErrorKind::kNone;
    std::string path;   // of the field, as Message::Find takes it; empty: the message itself
    std::string words;  // what is wrong and what would be right, in English, without a full stop

    /// Whether it is one.
    [[nodiscard]] explicit operator bool() const noexcept {
        return kind != MessageErrorKind::kNone;
    }
};

/// What was written.
struct [[nodiscard]] EncodeResult {
    MessageError error;
    std::size_t octets = 0;  // with kNoRoom how many it would take; else 0 if there is an error
    std::int64_t bits = 0;   // of the message, which need not end with an octet
};

/// Which field is meant: one of the message, or the one at a path, see Field::Find.
class FieldAt {
  public:
    // All conversions are meant.
    // NOLINTBEGIN(google-explicit-constructor)
    FieldAt(std::string_view path) noexcept : path_(path) {}
    FieldAt(const std::string& path) noexcept : path_(path) {}
    FieldAt(const char* path) noexcept : path_(path) {}
    FieldAt(const Field& field) noexcept : field_(field), isPath_(false) {}
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] bool IsPath() const noexcept { return isPath_; }
    [[nodiscard]] std::string_view Path() const noexcept { return path_; }
    [[nodiscard]] const Field& GetField() const noexcept { return field_; }

  private:
    std::string_view path_;
    Field field_;
    bool isPath_ = true;
};

/// A fault that the decoder met.
struct Fault {
    std::uint32_t number = 0;  // that of its line "<ERRID:n> ...": the place in the decoder
    std::string_view words;    // "Error decoding subfield PDNType"; valid as long as a field
    Field field;               // what it tells of; no field if that is not known
    std::optional<std::uint32_t> offset;  // the bit of the message where the decoder stood
};

/// One message, used again from call to call.
class QUORVANE_API Message {
  public:
    /// Without a message. Takes no memory.
    Message() noexcept;
    Message(Message&& other) noexcept;
    Message& operator=(Message&& other) noexcept;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message();

    /// Replaces the message by the one in `octets`. Returns whether there is one that `decoding`
    /// knows, also if it is cut short or malformed. `decoding` must be one of the enumerators. The
    /// call does what DecodeInto does but for the text.
    bool Decode(Decoding decoding, std::span<const std::uint8_t> octets);
    bool Decode(Decoding decoding, PaddedMessage octets);

    /// The same as `options` say.
    ///
    /// Tolerant reading of EPS mobility management follows into messages behind a security header:
    /// of type 1 or 3 (integrity protected), and of type 2 or 4 (ciphered as well) with
    /// `deciphered`. The message found is the one inside, of mobility or session management, with
    /// places and BitsConsumed counted from the header's first bit; a protected message in it is
    /// not followed into. If there is none inside that is known, the protected message itself is
    /// found, as in strict reading.
    bool Decode(Decoding decoding, std::span<const std::uint8_t> octets, DecodeOptions options);
    bool Decode(Decoding decoding, PaddedMessage octets, DecodeOptions options);

    /// What the last call of Decode was given; nothing before the first, and if that was none of
    /// the enumerators.
    [[nodiscard]] std::optional<Decoding> GetDecoding() const noexcept;

    /// Whether the last call found a message.
    [[nodiscard]] bool IsFound() const noexcept;
    /// The message's name, as behind "MESSAGE: " in the text; empty if none was found.
    [[nodiscard]] std::string_view TypeName() const noexcept;
    /// Its type; no type if none was found.
    [[nodiscard]] Type GetType() const noexcept;

    /// 0 if it was decoded to its end; else what ended the decoding: -1 syntax error, -2 unknown
    /// message, -3 unknown identifier, -4 message too short, -7 mandatory and -8 conditional
    /// element in error, -12 length outside its limits, -13 too many items.
    [[nodiscard]] int Code() const noexcept;
    /// The words of that code in the text's error line, e.g. "MESSAGE TOO SHORT"; empty for 0 and
    /// codes without.
    [[nodiscard]] std::string_view CodeWords() const noexcept;
    /// How many bits the decoder took, header included; 0 if the code is not 0.
    [[nodiscard]] std::int64_t BitsConsumed() const noexcept;

    /// How many faults the decoder met: as many as the text's diagnostics have lines.
    [[nodiscard]] std::size_t FaultCount() const noexcept;
    /// Fault `index`, from 0, in the order they were met; an empty one if there are not so many.
    /// Looks through the message for the field.
    [[nodiscard]] Fault GetFault(std::size_t index) const noexcept;

    /// How many pieces tolerant reading has set aside; 0 after strict reading. At most 1000: of a
    /// message with more it passes over the others.
    [[nodiscard]] std::size_t SurplusCount() const noexcept;
    /// Piece `index`, from 0, in the order they were met; an empty one if there are not so many.
    /// Looks through the message for the field.
    [[nodiscard]] Surplus GetSurplus(std::size_t index) const noexcept;
    /// The header that the message stands behind, if tolerant reading has followed into it.
    [[nodiscard]] std::optional<SecurityHeader> Security() const noexcept;

    /// The message itself, a struct; no field if none was found.
    [[nodiscard]] Field Root() const noexcept;
    /// Root().Find(path).
    [[nodiscard]] Field Find(std::string_view path) const noexcept;
    /// Over the members of the message.
    [[nodiscard]] Field::Iterator begin() const noexcept { return Root().begin(); }
    [[nodiscard]] Field::Iterator end() const noexcept { return Root().end(); }

    /// Appends the path that Find knows `field` by, and returns true; false, with nothing appended,
    /// for a field of another message, and for members of a structure that was never decoded. Looks
    /// through the message; throws std::bad_alloc if the string cannot grow.
    bool AppendPath(const Field& field, std::string& path) const;

    /// Appends the text that DecodeInto gives for the message, in UTF-8: "Failed to decode ..." if
    /// the last call found none, nothing if there was no call. Surplus is no part of it. Throws
    /// std::bad_alloc if memory runs out.
    void AppendText(std::string& text) const;

    /// Replaces the message by one of the type with that name, no field of which is set. An error
    /// leaves the message as it is.
    MessageError New(Decoding decoding, std::string_view name);

    // What follows sets one field. Structures around it that are not there are made and the
    // optional ones among them are there then, and so are alternatives of unions that hold nothing
    // yet. An error changes nothing. The place of what was set is not known any more; those of
    // other fields, Code, BitsConsumed and the faults go on to tell of what was decoded.

    /// A number or enumerated value. What has no bits takes 0 alone.
    MessageError Set(FieldAt field, std::uint32_t number);
    /// An enumerated value by its words; of several values with the same words the first.
    MessageError SetWords(FieldAt field, std::string_view words);
    /// The first `bits` bits of `octets`, which are copied.
    MessageError SetBits(FieldAt field, std::span<const std::uint8_t> octets, std::uint32_t bits);
    /// The alternative of that name; contents of another one are dropped.
    MessageError Choose(FieldAt field, std::string_view alternative);
    /// So many items; new ones are not set.
    MessageError Resize(FieldAt field, std::size_t items);
    /// One item more, which is not set.
    MessageError Append(FieldAt field);
    /// An optional field is there, a structure is made; members and contents stay as they are.
    MessageError Add(FieldAt field);
    /// An optional field is absent, with all that it held.
    MessageError Clear(FieldAt field);

    /// Writes the message: what is decoded from the octets again has the same fields, or there is
    /// an error and nothing is written. Fields that have to be there have to be set, but for
    /// selectors of alternatives and lengths, which the encoder works out, the end of structures
    /// that may be cut short, which is left out, and parts of CSN.1 structures and of elements with
    /// a hand-written encoder, which are 0. Spare bits are 0, padding is not written. Bits behind
    /// the message in its last octet are 0. Surplus and a security header are not written. Takes
    /// memory for the octets and for decoding them.
    EncodeResult Encode(std::span<std::uint8_t> octets) const;
    /// Appends the octets.
    EncodeResult Encode(std::vector<std::uint8_t>& octets) const;

  private:
    friend class Field;
    friend class JsonWriter;
    struct Contents;
    class Editor;
    class Writer;

    std::unique_ptr<Contents> contents_;
};

/// Calls `visitor(field, depth)` for `field` at depth 0 and all fields below it, each ahead of its
/// children, in the order of the text. The visitor returns whether to go into the field's children.
template <typename Visitor>
void Visit(const Field& field, Visitor&& visitor, unsigned depth = 0) {
    if (!visitor(field, depth)) {
        return;
    }
    for (const Field child : field) {
        Visit(child, visitor, depth + 1);
    }
}

}  // namespace quorvane
