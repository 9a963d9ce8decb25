#pragma once

// Value trees: one decoded message in a form that needs no knowledge of the message to read. Each
// node points at the descriptor of its type, which outlives it, and owns its children and nothing
// else; deleting the root deletes the tree. A tree belongs to one thread.
//
// A node lives on the heap, as NewData and Clone make it, or in an arena, as the converters make
// it with `new (arena) T(arena, ...)`; its arrays come from where it lives itself. The owner of an
// arena tree resets the arena instead of deleting the tree (see placeable.h).
//
// No index is checked. No operation reports a failure.
//
// Tests: tests/unit/reflect_data_test.cpp, tests/unit/reflect_ownership_test.cpp,
// tests/unit/reflect_print_test.cpp.

#include <cstdint>

#include "bits/arena.h"
#include "bits/bit_buffer.h"
#include "reflect/placeable.h"
#include "reflect/ted_class.h"
#include "reflect/ted_vector.h"
#include "reflect/text_buffer.h"
#include "reflect/type_tables.h"

namespace quorvane::reflect {

/// Asks a struct's constructor for no more than the node: no default members.
struct Bare {};
inline constexpr Bare kBare{};

class TEDDataBase : public Placeable {
  private:
    TypeKind kind_;

  public:
    /// Where the field stood in the message; 0 if that is not known.
    bits::FieldLocator location = 0;

    /// A copy on the heap, and not always a full one: an integer or enumerated copy has no
    /// descriptor, a struct's copy has no members, a union's copy has its choice but neither
    /// descriptor nor index. Copy construction and assignment follow the same rule; assignment
    /// deletes first what the target held.
    [[nodiscard]] virtual TEDDataBase* Clone() const = 0;
    /// The node's descriptor, the same object that the catalogue holds; null if it has none.
    [[nodiscard]] virtual const TEDClassBase* GetClass() const = 0;
    /// Writes location and value, in most kinds without an end to the last line; a struct ends it.
    /// `indent` counts the levels at which the lines inside stand.
    virtual void Print(TextBuffer& stream, std::uint32_t indent) const = 0;

    /// Bit position and length in bits of the field, -1 if the location is not known.
    [[nodiscard]] std::int32_t GetLocationOffset() const {
        return location == 0 ? -1 : static_cast<std::int32_t>(location >> 16);
    }
    [[nodiscard]] std::int32_t GetLocationLength() const {
        return location == 0 ? -1 : static_cast<std::int32_t>(location & 0xFFFFU);
    }

    /// What kind of node this is, also where the descriptor is missing.
    [[nodiscard]] TypeKind GetNodeKind() const { return kind_; }

  protected:
    explicit TEDDataBase(TypeKind kind) : kind_(kind) {}
    TEDDataBase(bits::Arena& arena, TypeKind kind) : Placeable(arena), kind_(kind) {}
    TEDDataBase(const TEDDataBase&) = default;
    TEDDataBase& operator=(const TEDDataBase& other) {
        location = other.location;  // the kind belongs to the object
        return *this;
    }
};

class TEDDataInteger : public TEDDataBase {
  public:
    TEDDataInteger(const TEDClassInteger* descriptor, std::int32_t value)
        : TEDDataInteger(TypeKind::kInteger, descriptor, value) {}
    TEDDataInteger(bits::Arena& arena, const TEDClassInteger* descriptor, std::int32_t value)
        : TEDDataInteger(arena, TypeKind::kInteger, descriptor, value) {}
    TEDDataInteger(const TEDDataInteger& other) : TEDDataInteger(TypeKind::kInteger, other) {}
    TEDDataInteger& operator=(const TEDDataInteger& other);

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataInteger(*this); }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return descriptor_; }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    [[nodiscard]] std::int32_t GetValue() const { return value_; }

  protected:
    TEDDataInteger(TypeKind kind, const TEDClassInteger* descriptor, std::int32_t value)
        : TEDDataBase(kind), descriptor_(descriptor), value_(value) {}
    TEDDataInteger(bits::Arena& arena, TypeKind kind, const TEDClassInteger* descriptor,
                   std::int32_t value)
        : TEDDataBase(arena, kind), descriptor_(descriptor), value_(value) {}
    TEDDataInteger(TypeKind kind, const TEDDataInteger& other)
        : TEDDataInteger(kind, nullptr, other.value_) {
        location = other.location;
    }

    [[nodiscard]] const TEDClassInteger* GetDescriptor() const { return descriptor_; }

  private:
    const TEDClassInteger* descriptor_;
    std::int32_t value_;
};

class TEDDataEnumerated : public TEDDataInteger {
  public:
    TEDDataEnumerated(const TEDClassEnumerated* descriptor, std::int32_t value)
        : TEDDataInteger(TypeKind::kEnumerated, descriptor, value) {}
    TEDDataEnumerated(bits::Arena& arena, const TEDClassEnumerated* descriptor, std::int32_t value)
        : TEDDataInteger(arena, TypeKind::kEnumerated, descriptor, value) {}
    TEDDataEnumerated(const TEDDataEnumerated& other)
        : TEDDataInteger(TypeKind::kEnumerated, other) {}
    TEDDataEnumerated& operator=(const TEDDataEnumerated& other) = default;

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataEnumerated(*this); }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    /// The descriptor; null if the node has none.
    [[nodiscard]] const TEDClassEnumerated* GetEnumerated() const {
        return static_cast<const TEDClassEnumerated*>(GetDescriptor());
    }
};

class TEDDataBinary : public TEDDataBase {
  public:
    /// All zero: as many octets as the descriptor allows, of which none is in use, or all are if
    /// the descriptor is fixed.
    explicit TEDDataBinary(const TEDClassBinary* descriptor);
    /// The first `bits` bits of `source`, which is copied.
    TEDDataBinary(const TEDClassBinary* descriptor, const std::uint8_t* source, std::uint32_t bits);
    /// Views `bits` bits of `data` without copying: they must live as long as the node, best in
    /// the same arena. Unused bits of the last octet must be 0. Writing to the node copies first.
    TEDDataBinary(bits::Arena& arena, const TEDClassBinary* descriptor, const std::uint8_t* data,
                  std::uint32_t bits);
    TEDDataBinary(const TEDDataBinary& other);
    TEDDataBinary& operator=(const TEDDataBinary& other);
    ~TEDDataBinary() override { Release(); }

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataBinary(*this); }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return descriptor_; }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    /// Takes the first `bits` bits of `source`; the bits behind them stay as they were. `bits` is
    /// not compared with the descriptor: the octets grow if they do not hold it.
    void SetBits(const std::uint8_t* source, std::uint32_t bits);
    /// No bits in use, as many zeroed octets as the descriptor allows.
    void ClearBits();

    /// The bits from the top of the first octet on.
    [[nodiscard]] const std::uint8_t* GetData() const { return data_; }
    [[nodiscard]] std::uint32_t GetBitCount() const { return bitCount_; }
    /// Octets at GetData().
    [[nodiscard]] std::uint32_t GetByteCapacity() const { return byteCapacity_; }

  private:
    void Release();
    void AllocateAsDescribed();
    void MakeWritable(std::uint32_t octets);

    const TEDClassBinary* descriptor_;
    const std::uint8_t* data_ = nullptr;
    std::uint8_t* owned_ = nullptr;  // what data_ points at, unless that is viewed
    std::uint32_t bitCount_ = 0;
    std::uint32_t byteCapacity_ = 0;
    bits::Arena* arena_ = nullptr;
};

class TEDDataSequence : public TEDDataBase {
  public:
    /// Empty, or with `bound` default items if the descriptor is fixed.
    explicit TEDDataSequence(const TEDClassSequence* descriptor);
    /// Empty, with room for `count` items.
    TEDDataSequence(bits::Arena& arena, const TEDClassSequence* descriptor, std::uint32_t count);
    TEDDataSequence(const TEDDataSequence& other);
    TEDDataSequence& operator=(const TEDDataSequence& other);

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataSequence(*this); }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return descriptor_; }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    /// Appends `node`, which is taken over, and returns its index. The bound is not looked at. Null
    /// is an item that is missing.
    std::uint32_t Append(TEDDataBase* node) { return items_.PushBack(node); }
    [[nodiscard]] std::uint32_t GetCount() const { return items_.GetCount(); }
    [[nodiscard]] TEDDataBase* GetItem(std::uint32_t i) const { return items_[i]; }

  private:
    void CopyItems(const TEDDataSequence& other);

    const TEDClassSequence* descriptor_;
    TEDVector<TEDDataBase> items_;
};

class TEDDataStruct : public TEDDataBase {
  public:
    /// With a default node for every member that is not optional.
    explicit TEDDataStruct(const TEDClassStruct* descriptor);
    /// Without any member, for a converter that sets them all.
    TEDDataStruct(bits::Arena& arena, Bare, const TEDClassStruct* descriptor)
        : TEDDataBase(arena, TypeKind::kStruct), descriptor_(descriptor), arena_(&arena) {
        AllocateMembers();
    }
    TEDDataStruct(const TEDDataStruct& other);
    TEDDataStruct& operator=(const TEDDataStruct& other);
    ~TEDDataStruct() override { Release(); }

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataStruct(*this); }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return descriptor_; }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    /// Stores `node`, which is taken over, as member `i`; deletes what was there, if it is another
    /// node.
    void SetMember(std::uint32_t i, TEDDataBase* node);
    /// Member `i`, null if it is absent.
    [[nodiscard]] TEDDataBase* GetMember(std::uint32_t i) const {
        return members_ == nullptr ? nullptr : members_[i];
    }
    [[nodiscard]] bool HasMember(std::uint32_t i) const { return GetMember(i) != nullptr; }

    /// The slots of all members, for a converter that fills a bare struct.
    [[nodiscard]] TEDDataBase** GetSlots() { return members_; }

  private:
    TEDDataStruct(Bare, const TEDClassStruct* descriptor);

    void AllocateMembers() {
        members_ = NewArray<TEDDataBase*>(arena_, descriptor_->GetElementCount());
    }
    void Release();

    const TEDClassStruct* descriptor_;
    TEDDataBase** members_ = nullptr;
    bits::Arena* arena_ = nullptr;
};

class TEDDataUnion : public TEDDataBase {
  public:
    /// With a default node of the first alternative.
    explicit TEDDataUnion(const TEDClassUnion* descriptor);
    /// With alternative `i` and its value `node`, which is taken over.
    TEDDataUnion(bits::Arena& arena, const TEDClassUnion* descriptor, std::uint32_t i,
                 TEDDataBase* node)
        : TEDDataBase(arena, TypeKind::kUnion),
          descriptor_(descriptor),
          choice_(node),
          choiceIndex_(i) {}
    TEDDataUnion(const TEDDataUnion& other);
    TEDDataUnion& operator=(const TEDDataUnion& other);
    ~TEDDataUnion() override { delete choice_; }

    [[nodiscard]] TEDDataBase* Clone() const override { return new TEDDataUnion(*this); }
    [[nodiscard]] const TEDClassBase* GetClass() const override { return descriptor_; }
    void Print(TextBuffer& stream, std::uint32_t indent) const override;

    /// Chooses alternative `i` with the value `node`, which is taken over; null leaves the union
    /// without a choice. Deletes the choice before, if it is another node.
    void SetChoice(std::uint32_t i, TEDDataBase* node);
    [[nodiscard]] TEDDataBase* GetChoice() const { return choice_; }
    [[nodiscard]] std::uint32_t GetChoiceIndex() const { return choiceIndex_; }

  private:
    const TEDClassUnion* descriptor_ = nullptr;
    TEDDataBase* choice_ = nullptr;
    std::uint32_t choiceIndex_ = 0;
};

/// Writes "LOC:[", the bit position, ",", the length in bits and "] " if the node has a location.
void PrintLocation(const TEDDataBase& node, TextBuffer& stream);

/// Writes two blanks for each level.
inline void PrintIndent(TextBuffer& stream, std::uint32_t level) {
    stream.AppendIndent(level);
}

}  // namespace quorvane::reflect
