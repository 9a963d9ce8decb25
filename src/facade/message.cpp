// A decoded record, walked together with the type tables of its family: a Field is a cell with its
// type, and where it stands in the cell around it.

#include "quorvane/message.h"

#include <algorithm>

#include "facade/field_path.h"
#include "facade/field_status.h"
#include "facade/message_contents.h"
#include "facade/utf8.h"
#include "reflect/record_values.h"
#include "reflect/type_tables.h"

namespace quorvane {

using bits::Cell;
using reflect::IsNumber;
using reflect::TypeKind;
using reflect::TypeRow;
using reflect::TypeTables;

namespace {

const TypeTables& TablesOf(const void* tables) {
    return *static_cast<const TypeTables*>(tables);
}

const Cell& CellOf(const void* cell) {
    return *static_cast<const Cell*>(cell);
}

FieldKind KindOf(TypeKind kind) {
    switch (kind) {
        case TypeKind::kInteger:
            return FieldKind::kNumber;
        case TypeKind::kEnumerated:
            return FieldKind::kEnumerated;
        case TypeKind::kBinary:
            return FieldKind::kBits;
        case TypeKind::kSequence:
            return FieldKind::kSequence;
        case TypeKind::kStruct:
            return FieldKind::kStruct;
        case TypeKind::kUnion:
            break;
    }
    return FieldKind::kUnion;
}

bool HasMembers(const TypeRow& row) {
    return row.kind == TypeKind::kStruct || row.kind == TypeKind::kUnion;
}

/// Whether `matches` takes a field below `around`. The path to it is appended to `path`, with
/// `separator` ahead of a name that comes first.
template <typename Matches>
bool AppendPathOf(const Matches& matches, const Field& around, std::string& path,
                  std::string_view separator = "") {
    std::size_t index = 0;
    for (const Field child : around) {
        const std::size_t before = path.size();
        if (around.Kind() == FieldKind::kSequence) {
            path.append("[").append(std::to_string(index)).append("]");
        } else {
            path.append(separator).append(child.Name());
        }
        if (matches(child) || AppendPathOf(matches, child, path, ".")) {
            return true;
        }
        path.resize(before);
        ++index;
    }
    return false;
}

}  // namespace

// ---- Type
// ----------------------------------------------------------------------------------------

std::string_view Type::Name() const noexcept {
    if (tables_ == nullptr) {
        return {};
    }
    const TypeTables& tables = TablesOf(tables_);
    return tables.NameOf(tables.types[index_]);
}

FieldKind Type::Kind() const noexcept {
    return tables_ == nullptr ? FieldKind::kNumber : KindOf(TablesOf(tables_).types[index_].kind);
}

std::uint32_t Type::Bits() const noexcept {
    if (tables_ == nullptr) {
        return 0;
    }
    const TypeRow& row = TablesOf(tables_).types[index_];
    return IsNumber(row) || row.kind == TypeKind::kBinary ? row.size : 0;
}

bool Type::IsFixed() const noexcept {
    return Kind() == FieldKind::kBits && TablesOf(tables_).types[index_].fixed;
}

std::uint32_t Type::MostItems() const noexcept {
    return Kind() == FieldKind::kSequence ? TablesOf(tables_).types[index_].size : 0;
}

Type Type::ItemType() const noexcept {
    return Kind() == FieldKind::kSequence ? Type(tables_, TablesOf(tables_).types[index_].first)
                                          : Type();
}

std::size_t Type::MemberCount() const noexcept {
    if (tables_ == nullptr) {
        return 0;
    }
    const TypeRow& row = TablesOf(tables_).types[index_];
    return HasMembers(row) ? row.count : 0;
}

TypeMember Type::Member(std::size_t index) const noexcept {
    if (index >= MemberCount()) {
        return {};
    }
    const TypeTables& tables = TablesOf(tables_);
    const reflect::ElementRow& element = tables.ElementsOf(tables.types[index_])[index];
    return {tables.NameOf(element), Type(tables_, element.type), element.optional};
}

std::size_t Type::ValueCount() const noexcept {
    if (Kind() != FieldKind::kEnumerated) {
        return 0;
    }
    const TypeTables& tables = TablesOf(tables_);
    return tables.enums[tables.types[index_].first].valueCount;
}

EnumeratedValue Type::Value(std::size_t index) const noexcept {
    if (index >= ValueCount()) {
        return {};
    }
    const TypeTables& tables = TablesOf(tables_);
    const reflect::EnumRow& values = tables.enums[tables.types[index_].first];
    const reflect::EnumValueRow& value = tables.enumValues[values.firstValue + index];
    return {value.value, tables.TextOf(value)};
}

std::string_view Type::OtherWords() const noexcept {
    if (Kind() != FieldKind::kEnumerated) {
        return {};
    }
    const TypeTables& tables = TablesOf(tables_);
    return tables.TextAt(tables.enums[tables.types[index_].first].otherText);
}

std::string_view Type::WordsOf(std::uint32_t number) const noexcept {
    if (Kind() != FieldKind::kEnumerated) {
        return {};
    }
    const TypeTables& tables = TablesOf(tables_);
    const reflect::EnumRow& values = tables.enums[tables.types[index_].first];
    const reflect::EnumValueRow* listed = tables.FindValue(values, number);
    return listed == nullptr ? tables.TextAt(values.otherText) : tables.TextOf(*listed);
}

std::size_t MessageTypes::Count(Decoding decoding) noexcept {
    const facade::Binding binding = facade::BindingOf(decoding);
    return binding.set == nullptr ? 0 : binding.set->memberTypes.size();
}

Type MessageTypes::At(Decoding decoding, std::size_t index) noexcept {
    const facade::Binding binding = facade::BindingOf(decoding);
    return index >= Count(decoding) ? Type()
                                    : Type(&binding.family->types, binding.set->memberTypes[index]);
}

// ---- Field
// ---------------------------------------------------------------------------------------

Type Field::GetType() const noexcept {
    return cell_ == nullptr
               ? Type()
               : Type(&static_cast<const Message::Contents*>(message_)->Types(), type_);
}

FieldKind Field::Kind() const noexcept {
    return GetType().Kind();
}

std::string_view Field::Name() const noexcept {
    if (around_ == nullptr) {
        return GetType().Name();
    }
    return Type(GetType().tables_, typeAround_).Member(index_).name;
}

bool Field::IsOptional() const noexcept {
    if (around_ == nullptr) {
        return false;
    }
    const TypeTables& tables = TablesOf(GetType().tables_);
    const TypeRow& around = tables.types[typeAround_];
    return around.kind == TypeKind::kStruct && tables.ElementsOf(around)[index_].optional;
}

FieldStatus Field::Status() const noexcept {
    if (cell_ == nullptr) {
        return FieldStatus::kAbsent;
    }
    if (around_ == nullptr) {
        return CellOf(cell_).refused ? FieldStatus::kRefused : FieldStatus::kDecoded;
    }
    const TypeTables& tables = TablesOf(GetType().tables_);
    return facade::StatusOf(tables, tables.types[typeAround_], CellOf(around_), index_,
                            CellOf(cell_), static_cast<const Message::Contents*>(message_)->made);
}

std::uint32_t Field::Number() const noexcept {
    if (cell_ == nullptr) {
        return 0;
    }
    const TypeRow& row = TablesOf(GetType().tables_).types[type_];
    return IsNumber(row) ? reflect::NumberCell(row, CellOf(cell_)).number : 0;
}

std::string_view Field::Words() const noexcept {
    return GetType().WordsOf(Number());
}

std::uint32_t Field::BitCount() const noexcept {
    if (Kind() != FieldKind::kBits || cell_ == nullptr) {
        return 0;
    }
    const TypeRow& row = TablesOf(GetType().tables_).types[type_];
    const Cell& cell = CellOf(cell_);
    return reflect::HeldBitCount(row, cell);
}

std::span<const std::uint8_t> Field::Octets() const noexcept {
    const std::uint32_t bits = BitCount();
    return bits == 0 ? std::span<const std::uint8_t>()
                     : std::span<const std::uint8_t>(CellOf(cell_).octets, bits::OctetsOf(bits));
}

std::optional<Place> Field::GetPlace() const noexcept {
    if (cell_ == nullptr) {
        return std::nullopt;
    }
    const TypeRow& row = TablesOf(GetType().tables_).types[type_];
    const bits::FieldLocator location = reflect::LocationOf(row, CellOf(cell_));
    if (location == 0) {
        return std::nullopt;
    }
    return Place{location >> 16, location & 0xFFFFU};
}

std::size_t Field::size() const noexcept {
    if (cell_ == nullptr) {
        return 0;
    }
    const Cell& cell = CellOf(cell_);
    if (IsOptional() && !cell.present && !cell.refused) {
        return 0;
    }
    const TypeRow& row = TablesOf(GetType().tables_).types[type_];
    switch (row.kind) {
        case TypeKind::kSequence:
            return reflect::ItemCount(cell);
        case TypeKind::kStruct:
            return row.count;
        case TypeKind::kUnion:
            return row.count == 0 ? 0 : 1;
        case TypeKind::kInteger:
        case TypeKind::kEnumerated:
        case TypeKind::kBinary:
            break;
    }
    return 0;
}

Field Field::operator[](std::size_t index) const noexcept {
    if (index >= size()) {
        return {};
    }
    const TypeTables& tables = TablesOf(GetType().tables_);
    const TypeRow& row = tables.types[type_];
    const Cell& cell = CellOf(cell_);
    Field child = *this;
    child.around_ = cell_;
    child.typeAround_ = type_;
    child.index_ = static_cast<std::uint32_t>(index);
    if (row.kind == TypeKind::kSequence) {
        child.cell_ = &cell.cells[index];
        child.type_ = row.first;
        return child;
    }
    child.cell_ = &reflect::CellAt(cell.cells, index);
    if (row.kind == TypeKind::kUnion) {
        const reflect::Choice choice = reflect::ChoiceOf(row, cell);
        child.cell_ = choice.body;
        child.index_ = choice.index;
    }
    child.type_ = tables.ElementsOf(row)[child.index_].type;
    return child;
}

Field::Iterator Field::begin() const noexcept {
    return {*this, 0};
}

Field::Iterator Field::end() const noexcept {
    return {*this, size()};
}

Field Field::Find(std::string_view path) const noexcept {
    Field field = *this;
    for (bool first = true; !path.empty() && field; first = false) {
        const std::optional<facade::PathStep> step = facade::CutStep(path, first);
        if (!step) {
            return {};
        }
        if (step->index) {
            field = field.Kind() == FieldKind::kSequence ? field[*step->index] : Field();
            continue;
        }
        const auto found = std::find_if(field.begin(), field.end(), [&](const Field& child) {
            return child.Name() == step->name;
        });
        field = found != field.end() && field.Kind() != FieldKind::kSequence ? *found : Field();
    }
    return field;
}

// ---- Message
// -------------------------------------------------------------------------------------

Message::Message() noexcept = default;
Message::Message(Message&& other) noexcept = default;
Message& Message::operator=(Message&& other) noexcept = default;
Message::~Message() = default;

bool Message::Decode(Decoding decoding, std::span<const std::uint8_t> octets) {
    return Decode(decoding, octets, DecodeOptions());
}

bool Message::Decode(Decoding decoding, PaddedMessage octets) {
    return Decode(decoding, octets, DecodeOptions());
}

bool Message::Decode(Decoding decoding, std::span<const std::uint8_t> octets,
                     DecodeOptions options) {
    const auto length = static_cast<std::int64_t>(octets.size());
    return facade::ReadyFor(contents_).Decode(decoding, {octets.data(), length}, length, options);
}

bool Message::Decode(Decoding decoding, PaddedMessage octets, DecodeOptions options) {
    return facade::ReadyFor(contents_).Decode(decoding, facade::ReaderOf(octets), octets.length,
                                              options);
}

std::optional<Decoding> Message::GetDecoding() const noexcept {
    const bool known = contents_ != nullptr && facade::IsDecoding(contents_->decoding);
    return known ? std::optional(contents_->decoding) : std::nullopt;
}

bool Message::IsFound() const noexcept {
    return contents_ != nullptr && contents_->decoded.Found();
}

std::string_view Message::TypeName() const noexcept {
    return GetType().Name();
}

Type Message::GetType() const noexcept {
    return IsFound() ? Type(&contents_->Types(), contents_->decoded.Type()) : Type();
}

int Message::Code() const noexcept {
    if (!IsFound()) {
        return static_cast<int>(bits::Code::kUnknownMessage);
    }
    const bits::Outcome outcome = contents_->decoded.outcome;
    return outcome.Failed() ? static_cast<int>(outcome.Error()) : 0;
}

std::string_view Message::CodeWords() const noexcept {
    return facade::ErrorText(static_cast<bits::Code>(Code()));
}

std::int64_t Message::BitsConsumed() const noexcept {
    return Code() == 0 ? contents_->decoded.outcome.Bits() : 0;
}

std::size_t Message::FaultCount() const noexcept {
    return IsFound() ? contents_->diagnostics.Faults().size() : 0;
}

Fault Message::GetFault(std::size_t index) const noexcept {
    if (index >= FaultCount()) {
        return {};
    }
    const iecodec::Fault& fault = contents_->diagnostics.Faults()[index];
    Fault made{fault.number, contents_->diagnostics.WordsOf(fault), {}, std::nullopt};
    made.field = contents_->FieldOf(fault.place.cell);
    if (fault.place.position >= 0) {
        made.offset = static_cast<std::uint32_t>(fault.place.position);
    }
    return made;
}

std::size_t Message::SurplusCount() const noexcept {
    return IsFound() ? contents_->tolerated.surplus.Items().size() : 0;
}

Surplus Message::GetSurplus(std::size_t index) const noexcept {
    if (index >= SurplusCount()) {
        return {};
    }
    // All of it lies ahead of bit 2^32.
    const iecodec::Surplus& kept = contents_->tolerated.surplus.Items()[index];
    const auto bits = static_cast<std::uint32_t>(kept.bitCount);
    return {kept.element ? Surplus::Kind::kElement : Surplus::Kind::kRest,
            contents_->FieldOf(kept.cell),
            kept.iei,
            {kept.octets, bits::OctetsOf(bits)},
            bits,
            {static_cast<std::uint32_t>(kept.position), bits}};
}

std::optional<SecurityHeader> Message::Security() const noexcept {
    return IsFound() ? contents_->tolerated.security : std::nullopt;
}

Field Message::Root() const noexcept {
    return IsFound() ? contents_->Root() : Field();
}

Field Message::Find(std::string_view path) const noexcept {
    return Root().Find(path);
}

bool Message::AppendPath(const Field& field, std::string& path) const {
    if (!field || field.message_ != contents_.get() || field.around_ == &bits::kEmptyCell) {
        return false;
    }
    if (field.around_ == nullptr) {
        return true;
    }
    const auto matches = [&](const Field& candidate) {
        return candidate.around_ == field.around_ && candidate.index_ == field.index_;
    };
    return AppendPathOf(matches, Root(), path);
}

void Message::AppendText(std::string& text) const {
    if (contents_ == nullptr) {
        return;
    }
    facade::CallMemory memory;
    const facade::Answer answer = facade::TextOf(memory, contents_->decoding, contents_->decoded);
    if (answer.plain) {
        text.append(answer.text);
    } else {
        facade::AppendAsUtf8(text, answer.text);
    }
}

}  // namespace quorvane
