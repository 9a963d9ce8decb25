#include "reflect/ted_class.h"

#include <memory>
#include <string>

#include "reflect/ted_data.h"

namespace quorvane::reflect {
namespace {

void PrintName(TextBuffer& stream, std::string_view name, std::uint32_t indent) {
    stream.AppendIndent(indent);
    stream.Append(name);
}

}  // namespace

// Destruction runs from the last declared field to the first: the other text of an enumeration
// before its values, these before the name; elements and item types before the name.

void TEDClassReference::Reset() {
    if (owned_) {
        delete target_;
    }
    target_ = nullptr;
    owned_ = false;
}

void TEDClassReference::Assign(const TEDClassReference& other) {
    Reset();
    if (!other.owned_) {
        target_ = other.target_;
    } else if (other.target_ != nullptr) {
        target_ = other.target_->Clone();
    }
    owned_ = other.owned_;
}

void TEDClassReference::PrintDefinition(TextBuffer& stream, bool expand,
                                        std::uint32_t indent) const {
    if (target_ == nullptr) {
        PrintName(stream, "UNDEFINED\n", indent);
    } else if (!owned_ && !expand) {
        PrintName(stream, "->", indent);
        stream.Append(target_->GetName());
        stream.AppendLineEnd();
    } else {
        target_->PrintDefinition(stream, expand, indent);
    }
}

TEDClassBase* TEDClassInteger::Clone() const {
    return new TEDClassInteger(GetName(), bits_);
}

TEDDataBase* TEDClassInteger::NewData() const {
    return new TEDDataInteger(this, 0);
}

void TEDClassInteger::PrintDefinition(TextBuffer& stream, bool, std::uint32_t indent) const {
    PrintName(stream, GetName(), indent);
    stream.Append(" (int, ");
    stream.AppendUnsigned(bits_);
    stream.Append(" bits)\n");
}

TEDEnumValue::TEDEnumValue(std::string_view text, std::uint32_t value)
    : length_(static_cast<std::uint32_t>(text.size())), value_(value) {
    std::string rendered(text);
    rendered.append(" (").append(std::to_string(value)).append(")");
    rendered_.Copy(rendered);
}

TEDEnumValue::TEDEnumValue(bits::Arena& arena, std::string_view rendered, std::size_t textLength,
                           std::uint32_t value)
    : Placeable(arena), length_(static_cast<std::uint32_t>(textLength)), value_(value) {
    rendered_.Borrow(rendered);
}

TEDClassBase* TEDClassEnumerated::Clone() const {
    auto copy = std::make_unique<TEDClassEnumerated>(GetName(), GetBits());
    for (std::uint32_t index = 0; index < GetValueCount(); ++index) {
        copy->AddValue(GetValueText(index), GetValue(index));
    }
    copy->SetOtherText(GetOtherText());
    return copy.release();
}

TEDDataBase* TEDClassEnumerated::NewData() const {
    return new TEDDataEnumerated(this, 0);
}

void TEDClassEnumerated::PrintDefinition(TextBuffer& stream, bool, std::uint32_t indent) const {
    PrintName(stream, GetName(), indent);
    stream.Append(" (int, ");
    stream.AppendUnsigned(GetBits());
    stream.Append(" bits) ENUMERATED\n");
}

std::uint32_t TEDClassEnumerated::AdoptValue(TEDEnumValue* value) {
    const std::uint32_t index = values_.PushBack(value);
    if (inPlace_ == index && value->GetValue() == index) {
        ++inPlace_;
    }
    return index;
}

const TEDEnumValue* TEDClassEnumerated::FindByWalk(std::uint32_t value) const {
    // The entries in place have other values.
    for (std::uint32_t index = inPlace_; index < values_.GetCount(); ++index) {
        if (values_[index]->GetValue() == value) {
            return values_[index];
        }
    }
    return nullptr;
}

TEDClassBase* TEDClassBinary::Clone() const {
    return new TEDClassBinary(GetName(), maxBits_, fixed_);
}

TEDDataBase* TEDClassBinary::NewData() const {
    return new TEDDataBinary(this);
}

void TEDClassBinary::PrintDefinition(TextBuffer& stream, bool, std::uint32_t indent) const {
    PrintName(stream, GetName(), indent);
    stream.Append(" (binary, max ");
    stream.AppendUnsigned(maxBits_);
    stream.Append(" bits, ");
    stream.Append(fixed_ ? "fixed)\n" : "dynamic)\n");
}

TEDClassStructuredElement::TEDClassStructuredElement(std::string_view name,
                                                     const TEDClassReference& type, bool optional)
    : type_(type), optional_(optional) {
    label_.Copy(std::string(name).append(": "));
}

TEDClassStructuredElement::TEDClassStructuredElement(bits::Arena& arena, std::string_view label,
                                                     TEDClassBase* type, bool owned, bool optional)
    : Placeable(arena), type_(type, owned), optional_(optional) {
    label_.Borrow(label);
}

void TEDClassStructuredElement::PrintDefinition(TextBuffer& stream, bool expand,
                                                std::uint32_t indent) const {
    PrintName(stream, GetName(), indent);
    stream.Append(optional_ ? " OPTIONAL:\n" : ":\n");
    type_.PrintDefinition(stream, expand, indent + 1);
}

void TEDClassStructured::CopyElements(const TEDClassStructured& other) {
    for (std::uint32_t index = 0; index < other.GetElementCount(); ++index) {
        AdoptElement(new TEDClassStructuredElement(*other.GetElement(index)));
    }
}

void TEDClassStructured::PrintDefinition(TextBuffer& stream, bool expand,
                                         std::uint32_t indent) const {
    PrintName(stream, GetKind() == kStructKind ? "struct " : "union ", indent);
    stream.Append(GetName());
    stream.Append(" {\n");
    for (std::uint32_t index = 0; index < GetElementCount(); ++index) {
        GetElement(index)->PrintDefinition(stream, expand, indent + 1);
    }
    PrintName(stream, "}\n", indent);
}

TEDClassBase* TEDClassStruct::Clone() const {
    auto copy = std::make_unique<TEDClassStruct>(GetName());
    copy->CopyElements(*this);
    return copy.release();
}

TEDDataBase* TEDClassStruct::NewData() const {
    return new TEDDataStruct(this);
}

TEDClassBase* TEDClassUnion::Clone() const {
    auto copy = std::make_unique<TEDClassUnion>(GetName());
    copy->CopyElements(*this);
    return copy.release();
}

TEDDataBase* TEDClassUnion::NewData() const {
    return new TEDDataUnion(this);
}

TEDClassBase* TEDClassSequence::Clone() const {
    return new TEDClassSequence(GetName(), itemType_, bound_, fixed_);
}

TEDDataBase* TEDClassSequence::NewData() const {
    return new TEDDataSequence(this);
}

void TEDClassSequence::PrintDefinition(TextBuffer& stream, bool expand,
                                       std::uint32_t indent) const {
    PrintName(stream, GetName(), indent);
    stream.Append(" array [");
    stream.Append(fixed_ ? "" : "0..");
    stream.AppendUnsigned(bound_);
    stream.Append("] of:\n");
    itemType_.PrintDefinition(stream, expand, indent + 1);
}

}  // namespace quorvane::reflect
