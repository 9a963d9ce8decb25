#include "reflect/ted_data.h"

#include <algorithm>

namespace quorvane::reflect {
namespace {

using bits::OctetsOf;

TEDDataBase* CloneOf(const TEDDataBase* node) {
    return node == nullptr ? nullptr : node->Clone();
}

}  // namespace

// A constructor that allocates several things delegates to one that allocates the first: should a
// later one fail to come about, the destructor runs for what is there.

TEDDataInteger& TEDDataInteger::operator=(const TEDDataInteger& other) {
    TEDDataBase::operator=(other);
    value_ = other.value_;
    descriptor_ = nullptr;
    return *this;
}

TEDDataBinary::TEDDataBinary(const TEDClassBinary* descriptor)
    : TEDDataBase(TypeKind::kBinary), descriptor_(descriptor) {
    AllocateAsDescribed();
    bitCount_ = descriptor->IsFixed() ? descriptor->GetMaxBits() : 0;
}

TEDDataBinary::TEDDataBinary(const TEDClassBinary* descriptor, const std::uint8_t* source,
                             std::uint32_t bits)
    : TEDDataBinary(descriptor) {
    SetBits(source, bits);
}

TEDDataBinary::TEDDataBinary(bits::Arena& arena, const TEDClassBinary* descriptor,
                             const std::uint8_t* data, std::uint32_t bits)
    : TEDDataBase(arena, TypeKind::kBinary),
      descriptor_(descriptor),
      data_(data),
      bitCount_(bits),
      byteCapacity_(OctetsOf(bits)),
      arena_(&arena) {}

TEDDataBinary::TEDDataBinary(const TEDDataBinary& other)
    : TEDDataBinary(other.descriptor_, other.data_, other.bitCount_) {
    location = other.location;
}

TEDDataBinary& TEDDataBinary::operator=(const TEDDataBinary& other) {
    if (this != &other) {
        TEDDataBase::operator=(other);
        Release();
        descriptor_ = other.descriptor_;
        AllocateAsDescribed();
        SetBits(other.data_, other.bitCount_);
    }
    return *this;
}

void TEDDataBinary::Release() {
    DeleteArray(arena_, owned_);
    owned_ = nullptr;
    data_ = nullptr;
    byteCapacity_ = 0;
    bitCount_ = 0;
}

void TEDDataBinary::AllocateAsDescribed() {
    byteCapacity_ = OctetsOf(descriptor_->GetMaxBits());
    owned_ = NewArray<std::uint8_t>(arena_, byteCapacity_);
    data_ = owned_;
}

void TEDDataBinary::MakeWritable(std::uint32_t octets) {
    if (owned_ != nullptr && octets <= byteCapacity_) {
        return;
    }
    const std::uint32_t capacity =
        std::max({octets, byteCapacity_, OctetsOf(descriptor_->GetMaxBits())});
    std::uint8_t* grown = NewArray<std::uint8_t>(arena_, capacity);
    std::copy_n(data_, byteCapacity_, grown);
    DeleteArray(arena_, owned_);
    owned_ = grown;
    data_ = grown;
    byteCapacity_ = capacity;
}

void TEDDataBinary::SetBits(const std::uint8_t* source, std::uint32_t bits) {
    MakeWritable(OctetsOf(bits));
    // BitBufferCopy counts in fewer bits.
    const std::uint32_t whole = bits / 8;
    std::copy_n(source, whole, owned_);
    bits::BitBufferCopy(owned_ + whole, 0, source + whole, 0, static_cast<std::int32_t>(bits % 8));
    bitCount_ = bits;
}

void TEDDataBinary::ClearBits() {
    Release();
    AllocateAsDescribed();
}

TEDDataSequence::TEDDataSequence(const TEDClassSequence* descriptor)
    : TEDDataBase(TypeKind::kSequence), descriptor_(descriptor) {
    if (descriptor->IsFixed()) {
        for (std::uint32_t index = 0; index < descriptor->GetBound(); ++index) {
            Append(descriptor->GetItemType().NewData());
        }
    }
}

TEDDataSequence::TEDDataSequence(bits::Arena& arena, const TEDClassSequence* descriptor,
                                 std::uint32_t count)
    : TEDDataBase(arena, TypeKind::kSequence), descriptor_(descriptor), items_(&arena) {
    items_.Reserve(count);
}

TEDDataSequence::TEDDataSequence(const TEDDataSequence& other)
    : TEDDataBase(other), descriptor_(other.descriptor_) {
    CopyItems(other);
}

TEDDataSequence& TEDDataSequence::operator=(const TEDDataSequence& other) {
    if (this != &other) {
        TEDDataBase::operator=(other);
        descriptor_ = other.descriptor_;
        items_.Clear();
        CopyItems(other);
    }
    return *this;
}

void TEDDataSequence::CopyItems(const TEDDataSequence& other) {
    for (std::uint32_t index = 0; index < other.GetCount(); ++index) {
        Append(CloneOf(other.GetItem(index)));
    }
}

TEDDataStruct::TEDDataStruct(Bare, const TEDClassStruct* descriptor)
    : TEDDataBase(TypeKind::kStruct), descriptor_(descriptor) {
    AllocateMembers();
}

TEDDataStruct::TEDDataStruct(const TEDClassStruct* descriptor) : TEDDataStruct(kBare, descriptor) {
    for (std::uint32_t index = 0; index < descriptor->GetElementCount(); ++index) {
        const TEDClassStructuredElement* element = descriptor->GetElement(index);
        if (!element->IsOptional()) {
            SetMember(index, element->GetType().NewData());
        }
    }
}

TEDDataStruct::TEDDataStruct(const TEDDataStruct& other)
    : TEDDataBase(other), descriptor_(other.descriptor_) {
    AllocateMembers();
}

TEDDataStruct& TEDDataStruct::operator=(const TEDDataStruct& other) {
    TEDDataBase::operator=(other);
    Release();
    descriptor_ = other.descriptor_;
    AllocateMembers();
    return *this;
}

void TEDDataStruct::Release() {
    if (members_ == nullptr) {
        return;
    }
    for (std::uint32_t index = 0; index < descriptor_->GetElementCount(); ++index) {
        delete members_[index];
    }
    DeleteArray(arena_, members_);
    members_ = nullptr;
}

void TEDDataStruct::SetMember(std::uint32_t i, TEDDataBase* node) {
    if (members_ == nullptr) {
        AllocateMembers();
    }
    if (members_[i] != node) {
        delete members_[i];
        members_[i] = node;
    }
}

TEDDataUnion::TEDDataUnion(const TEDClassUnion* descriptor)
    : TEDDataBase(TypeKind::kUnion), descriptor_(descriptor) {
    if (descriptor->GetElementCount() > 0) {
        SetChoice(0, descriptor->GetElement(0)->GetType().NewData());
    }
}

TEDDataUnion::TEDDataUnion(const TEDDataUnion& other)
    : TEDDataBase(other), choice_(CloneOf(other.choice_)) {}

TEDDataUnion& TEDDataUnion::operator=(const TEDDataUnion& other) {
    if (this != &other) {
        TEDDataBase::operator=(other);
        SetChoice(0, CloneOf(other.choice_));
        descriptor_ = nullptr;
    }
    return *this;
}

void TEDDataUnion::SetChoice(std::uint32_t i, TEDDataBase* node) {
    if (choice_ != node) {
        delete choice_;
        choice_ = node;
    }
    choiceIndex_ = i;
}

}  // namespace quorvane::reflect
