#pragma once

// Type descriptors: what a decoded value looks like. They describe, they hold no values. A
// descriptor is made by a catalogue (or by hand), filled, and from then on only read, by any number
// of threads. Descriptors outlive every value tree.
//
// Who owns a type: what refers to it through a TEDClassReference whose `owned` flag is set, or the
// list of its catalogue. Functions that return a pointer to something new leave it to the caller to
// delete. No index is checked.
//
// Each class has a constructor that takes an arena first: for objects placed with
// `new (arena) T(arena, ...)`. Those only view the texts they are given.
//
// Tests: tests/unit/reflect_class_test.cpp, tests/unit/reflect_definition_test.cpp.

#include <cstdint>
#include <string_view>

#include "bits/arena.h"
#include "reflect/held_text.h"
#include "reflect/placeable.h"
#include "reflect/ted_vector.h"
#include "reflect/text_buffer.h"

namespace quorvane::reflect {

class TEDDataBase;

// What GetKind returns.
inline constexpr int kBaseKind = 1;
inline constexpr int kReferenceKind = 2;
inline constexpr int kStructuredElementKind = 3;
inline constexpr int kStructuredKind = 4;
inline constexpr int kStructKind = 5;
inline constexpr int kUnionKind = 6;
inline constexpr int kIntegerKind = 7;
inline constexpr int kBinaryKind = 8;
inline constexpr int kSequenceKind = 9;
inline constexpr int kEnumeratedKind = 10;

/// A type that can be named.
class TEDClassBase : public Placeable {
  public:
    /// A name without data (a default std::string_view) leaves the type without a name.
    explicit TEDClassBase(std::string_view name) { name_.Copy(name); }
    TEDClassBase(bits::Arena& arena, std::string_view name) : Placeable(arena) {
        name_.Borrow(name);
    }
    TEDClassBase(const TEDClassBase&) = delete;
    TEDClassBase& operator=(const TEDClassBase&) = delete;

    /// A deep copy on the heap.
    [[nodiscard]] virtual TEDClassBase* Clone() const = 0;
    /// A value of this type with its default contents, on the heap.
    [[nodiscard]] virtual TEDDataBase* NewData() const = 0;
    [[nodiscard]] virtual int GetKind() const { return kBaseKind; }
    /// Whether `kind` is this object's own kind. The kinds of its base classes don't count: a
    /// struct is of kind kStructKind and neither of kStructuredKind nor of kBaseKind.
    [[nodiscard]] virtual bool IsKind(int kind) const { return kind == GetKind(); }
    /// Writes the definition at `indent` levels. Types that are not owned are followed if `expand`
    /// is set and only named otherwise.
    virtual void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const = 0;

    void SetName(std::string_view text) { name_.Copy(text); }
    [[nodiscard]] std::string_view GetName() const { return name_.View(); }

  private:
    HeldText name_;
};

/// A pointer to a type, with a flag that says whether the type goes with it.
class TEDClassReference {
  public:
    TEDClassReference() = default;
    /// Takes the pointer as it stands, null for "undefined".
    TEDClassReference(TEDClassBase* target, bool owned) : target_(target), owned_(owned) {}
    TEDClassReference(const TEDClassReference& other) { Assign(other); }
    /// Lets go of the present target, then: the copy of an owning reference owns a deep copy, the
    /// copy of another points at the same type. Assignment to itself lets go of the target too.
    TEDClassReference& operator=(const TEDClassReference& other) {
        Assign(other);
        return *this;
    }
    virtual ~TEDClassReference() { Reset(); }

    [[nodiscard]] virtual TEDClassReference* Clone() const { return new TEDClassReference(*this); }
    /// NewData of the target, which must not be null.
    [[nodiscard]] virtual TEDDataBase* NewData() const { return target_->NewData(); }
    [[nodiscard]] virtual int GetKind() const { return kReferenceKind; }
    [[nodiscard]] virtual bool IsKind(int kind) const { return kind == GetKind(); }

    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const;

    /// Deletes the target if it is owned; the reference is undefined afterwards.
    void Reset();

    [[nodiscard]] TEDClassBase* GetTarget() const { return target_; }
    [[nodiscard]] bool IsOwned() const { return owned_; }

  private:
    void Assign(const TEDClassReference& other);

    TEDClassBase* target_ = nullptr;
    bool owned_ = false;
};

/// An integer field.
class TEDClassInteger : public TEDClassBase {
  public:
    /// `bits` is the width that the protocol gives the field. It may be 0, and it limits nothing.
    TEDClassInteger(std::string_view name, std::uint32_t bits) : TEDClassBase(name), bits_(bits) {}
    TEDClassInteger(bits::Arena& arena, std::string_view name, std::uint32_t bits)
        : TEDClassBase(arena, name), bits_(bits) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kIntegerKind; }
    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const override;

    [[nodiscard]] std::uint32_t GetBits() const { return bits_; }

  private:
    std::uint32_t bits_;
};

/// A value of an enumeration and its text.
class TEDEnumValue : public Placeable {
  public:
    TEDEnumValue(std::string_view text, std::uint32_t value);
    /// `rendered` is the text followed by " (", the value in decimal and ")", with kCopyStep
    /// readable octets behind.
    TEDEnumValue(bits::Arena& arena, std::string_view rendered, std::size_t textLength,
                 std::uint32_t value);

    [[nodiscard]] std::uint32_t GetValue() const { return value_; }
    [[nodiscard]] std::string_view GetText() const { return rendered_.View().substr(0, length_); }
    [[nodiscard]] std::string_view GetRendered() const { return rendered_.View(); }

  private:
    HeldText rendered_;
    std::uint32_t length_;  // of the text alone
    std::uint32_t value_;
};

/// An integer field with texts for its values.
class TEDClassEnumerated : public TEDClassInteger {
  public:
    TEDClassEnumerated(std::string_view name, std::uint32_t bits) : TEDClassInteger(name, bits) {}
    TEDClassEnumerated(bits::Arena& arena, std::string_view name, std::uint32_t bits)
        : TEDClassInteger(arena, name, bits), values_(&arena) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kEnumeratedKind; }
    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const override;

    /// Appends a value and returns its index. Values keep this order and need not be distinct.
    std::uint32_t AddValue(std::string_view text, std::uint32_t value) {
        return AdoptValue(new TEDEnumValue(text, value));
    }
    /// Appends `value`, which is taken over.
    std::uint32_t AdoptValue(TEDEnumValue* value);
    /// Room for `count` more values.
    void ReserveValues(std::uint32_t count) { values_.Reserve(count); }

    /// The text of every value that is not listed; a view without data for none.
    void SetOtherText(std::string_view text) { otherText_.Copy(text); }
    void BorrowOtherText(std::string_view text) { otherText_.Borrow(text); }

    [[nodiscard]] std::uint32_t GetValueCount() const { return values_.GetCount(); }
    [[nodiscard]] std::uint32_t GetValue(std::uint32_t i) const { return values_[i]->GetValue(); }
    [[nodiscard]] std::string_view GetValueText(std::uint32_t i) const {
        return values_[i]->GetText();
    }
    [[nodiscard]] bool HasOtherText() const { return otherText_.HasText(); }
    [[nodiscard]] std::string_view GetOtherText() const { return otherText_.View(); }

    /// The first listed entry for `value`, or null.
    [[nodiscard]] const TEDEnumValue* Find(std::uint32_t value) const {
        return value < inPlace_ ? values_[value] : FindByWalk(value);
    }

  private:
    [[nodiscard]] const TEDEnumValue* FindByWalk(std::uint32_t value) const;

    TEDVector<TEDEnumValue> values_;
    HeldText otherText_;
    std::uint32_t inPlace_ = 0;  // how many entries from the first on have their index as value
};

/// A run of bits.
class TEDClassBinary : public TEDClassBase {
  public:
    /// From 0 up to `maxBits` bits, or always exactly `maxBits` if `fixed`.
    TEDClassBinary(std::string_view name, std::uint32_t maxBits, bool fixed)
        : TEDClassBase(name), maxBits_(maxBits), fixed_(fixed) {}
    TEDClassBinary(bits::Arena& arena, std::string_view name, std::uint32_t maxBits, bool fixed)
        : TEDClassBase(arena, name), maxBits_(maxBits), fixed_(fixed) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kBinaryKind; }
    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const override;

    [[nodiscard]] std::uint32_t GetMaxBits() const { return maxBits_; }
    [[nodiscard]] bool IsFixed() const { return fixed_; }

  private:
    std::uint32_t maxBits_;
    bool fixed_;
};

/// A member of a struct or an alternative of a union.
class TEDClassStructuredElement : public Placeable {
  public:
    TEDClassStructuredElement(std::string_view name, const TEDClassReference& type, bool optional);
    /// `label` is the name followed by ": ", with kCopyStep readable octets behind. `type` is
    /// taken over if `owned`.
    TEDClassStructuredElement(bits::Arena& arena, std::string_view label, TEDClassBase* type,
                              bool owned, bool optional);
    TEDClassStructuredElement(const TEDClassStructuredElement& other)
        : TEDClassStructuredElement(other.GetName(), other.type_, other.optional_) {}
    TEDClassStructuredElement& operator=(const TEDClassStructuredElement&) = delete;

    [[nodiscard]] virtual int GetKind() const { return kStructuredElementKind; }
    [[nodiscard]] virtual bool IsKind(int kind) const { return kind == GetKind(); }
    virtual void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const;

    [[nodiscard]] std::string_view GetName() const {
        const std::string_view label = label_.View();
        return label.substr(0, label.size() - 2);
    }
    [[nodiscard]] std::string_view GetLabel() const { return label_.View(); }
    [[nodiscard]] const TEDClassReference& GetType() const { return type_; }
    [[nodiscard]] bool IsOptional() const { return optional_; }

  private:
    HeldText label_;  // the name and ": ", which a line starts with
    TEDClassReference type_;
    bool optional_;
};

/// Anything with named members.
class TEDClassStructured : public TEDClassBase {
  public:
    [[nodiscard]] int GetKind() const override { return kStructuredKind; }
    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const override;

    [[nodiscard]] const TEDClassStructuredElement* GetElement(std::uint32_t i) const {
        return elements_[i];
    }
    [[nodiscard]] std::uint32_t GetElementCount() const { return elements_.GetCount(); }

    /// Appends `element`, which is taken over, and returns its index.
    std::uint32_t AdoptElement(TEDClassStructuredElement* element) {
        return elements_.PushBack(element);
    }
    /// Room for `count` more elements.
    void ReserveElements(std::uint32_t count) { elements_.Reserve(count); }

  protected:
    explicit TEDClassStructured(std::string_view name) : TEDClassBase(name) {}
    TEDClassStructured(bits::Arena& arena, std::string_view name)
        : TEDClassBase(arena, name), elements_(&arena) {}

    void CopyElements(const TEDClassStructured& other);

  private:
    TEDVector<TEDClassStructuredElement> elements_;
};

/// All members side by side, some of them optional.
class TEDClassStruct : public TEDClassStructured {
  public:
    explicit TEDClassStruct(std::string_view name) : TEDClassStructured(name) {}
    TEDClassStruct(bits::Arena& arena, std::string_view name) : TEDClassStructured(arena, name) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kStructKind; }

    /// Appends a member whose type is a copy of `type`: the caller's object is never taken over.
    void AddMember(std::string_view name, const TEDClassReference& type, bool optional) {
        AdoptElement(new TEDClassStructuredElement(name, type, optional));
    }
};

/// Exactly one of its alternatives.
class TEDClassUnion : public TEDClassStructured {
  public:
    explicit TEDClassUnion(std::string_view name) : TEDClassStructured(name) {}
    TEDClassUnion(bits::Arena& arena, std::string_view name) : TEDClassStructured(arena, name) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kUnionKind; }

    /// As AddMember of a struct, always with the optional flag. Returns the index.
    std::uint32_t AddAlternative(std::string_view name, const TEDClassReference& type) {
        return AdoptElement(new TEDClassStructuredElement(name, type, true));
    }
};

/// A bounded list of values of one type.
class TEDClassSequence : public TEDClassBase {
  public:
    /// From 0 up to `bound` items, or always exactly `bound` if `fixed`. The item type is a copy
    /// of `itemType`.
    TEDClassSequence(std::string_view name, const TEDClassReference& itemType, std::uint32_t bound,
                     bool fixed)
        : TEDClassBase(name), bound_(bound), fixed_(fixed), itemType_(itemType) {}
    /// `itemType` is taken over if `owned`.
    TEDClassSequence(bits::Arena& arena, std::string_view name, TEDClassBase* itemType, bool owned,
                     std::uint32_t bound, bool fixed)
        : TEDClassBase(arena, name), bound_(bound), fixed_(fixed), itemType_(itemType, owned) {}

    [[nodiscard]] TEDClassBase* Clone() const override;
    [[nodiscard]] TEDDataBase* NewData() const override;
    [[nodiscard]] int GetKind() const override { return kSequenceKind; }
    void PrintDefinition(TextBuffer& stream, bool expand, std::uint32_t indent) const override;

    [[nodiscard]] std::uint32_t GetBound() const { return bound_; }
    [[nodiscard]] bool IsFixed() const { return fixed_; }
    [[nodiscard]] const TEDClassReference& GetItemType() const { return itemType_; }

  private:
    std::uint32_t bound_;
    bool fixed_;
    TEDClassReference itemType_;
};

}  // namespace quorvane::reflect
