// Changing a message: a field is looked for first, and made only when it is known that it can be
// set.

#include <algorithm>
#include <string>

#include "facade/field_path.h"
#include "facade/message_contents.h"
#include "reflect/record_values.h"
#include "reflect/type_tables.h"

namespace quorvane {

using bits::Cell;
using reflect::ElementRow;
using reflect::TypeKind;
using reflect::TypeRow;
using reflect::TypeTables;

namespace {

using enum MessageErrorKind;

std::string_view WordsOf(TypeKind kind) {
    switch (kind) {
        case TypeKind::kInteger:
        case TypeKind::kEnumerated:
            return "a number";
        case TypeKind::kBinary:
            return "a bit string";
        case TypeKind::kSequence:
            return "a list";
        case TypeKind::kStruct:
            return "a structure";
        case TypeKind::kUnion:
            break;
    }
    return "a choice of alternatives";
}

/// The names that `nameAt` gives for 0 up to `count`, the first ones if they are many.
template <typename NameAt>
std::string Listed(std::size_t count, const NameAt& nameAt) {
    constexpr std::size_t kMostNames = 40;
    std::string list;
    for (std::size_t index = 0; index < std::min(count, kMostNames); ++index) {
        list.append(index == 0 ? "" : ", ").append(nameAt(index));
    }
    return list + (count > kMostNames ? ", ..." : "");
}

std::string NamesOf(const reflect::TypeTables& types, std::span<const ElementRow> elements) {
    return Listed(elements.size(),
                  [&](std::size_t index) { return types.NameOf(elements[index]); });
}

/// "there are none", "there is 1", "there are 2".
std::string CountWords(std::size_t count) {
    return count == 0   ? "there are none"
           : count == 1 ? "there is 1"
                        : "there are " + std::to_string(count);
}

Cell& Mutable(const void* cell) {
    return *static_cast<Cell*>(const_cast<void*>(cell));  // the Message is not const
}

/// Makes the value one that is there. What an absent one held is not taken up again.
void Mark(Cell& cell, bool optional) {
    if (optional && !cell.present && !cell.refused) {
        cell = {};
    }
    cell.present = optional;
    cell.refused = false;
    cell.reached = true;
}

}  // namespace

/// The way to one field.
class Message::Editor {
  public:
    Editor(const Message& message, const FieldAt& at) : message_(message), at_(at) {
        if (!message.IsFound()) {
            error_ = {kNoMessage, "",
                      "there is no message to change; decode one, or make one anew"};
        } else if (at.IsPath()) {
            Walk(false);
        } else {
            LookAt(at.GetField());
        }
    }

    /// Whether there is such a field, or can be.
    [[nodiscard]] bool Found() const { return !error_; }
    [[nodiscard]] MessageError TakeError() { return std::move(error_); }

    // What follows is for one that was found.

    [[nodiscard]] const TypeTables& Types() const { return message_.contents_->Types(); }
    [[nodiscard]] const TypeRow& Row() const { return Types().types[type_]; }
    [[nodiscard]] std::span<const ElementRow> Elements() const { return Types().ElementsOf(Row()); }
    [[nodiscard]] bool IsOptional() const { return optional_; }
    [[nodiscard]] bits::Arena& Arena() const { return message_.contents_->arena; }

    /// The items of a list.
    [[nodiscard]] std::uint32_t Items() const { return IsThere() ? reflect::ItemCount(*cell_) : 0; }

    [[nodiscard]] MessageError Refuse(MessageErrorKind kind, std::string words) const {
        std::string path;
        if (at_.IsPath()) {
            path = at_.Path();
        } else {
            message_.AppendPath(at_.GetField(), path);
        }
        return {kind, std::move(path), std::move(words)};
    }
    [[nodiscard]] MessageError RefuseKind(std::string_view wanted) const {
        return Refuse(
            kWrongKind,
            std::string("is ").append(WordsOf(Row().kind)).append(", not ").append(wanted));
    }

    /// The field's value, made with all around it, with no place.
    Cell& Make() {
        if (at_.IsPath()) {
            Walk(true);
        } else if (cell_ == nullptr) {
            MakeMember(at_.GetField());
        }
        Mark(*cell_, optional_);
        cell_->location = 0;
        return *cell_;
    }

    void Clear() {
        if (cell_ != nullptr) {
            *cell_ = {};
        }
    }

  private:
    [[nodiscard]] bool IsThere() const {
        return cell_ != nullptr && (!optional_ || cell_->present || cell_->refused);
    }

    void Start() {
        cell_ = &message_.contents_->decoded.container.body;
        type_ = message_.contents_->decoded.Type();
        optional_ = false;
    }

    /// Goes along the path; `making` what is not there, once it is known that there is a way.
    void Walk(bool making) {
        Start();
        std::string_view rest = at_.Path();
        for (bool first = true; !rest.empty(); first = false) {
            const std::optional<facade::PathStep> step = facade::CutStep(rest, first);
            if (making) {
                Mark(*cell_, optional_);
            }
            if (!step) {
                Stop(kUnknownName, at_.Path(),
                     "is no path: a path is names with dots between, and items as [0]");
                return;
            }
            const std::string_view behind = at_.Path().substr(0, at_.Path().size() - rest.size());
            if (step->index ? !ToItem(*step->index, behind)
                            : !ToMember(step->name, behind, making)) {
                return;
            }
        }
    }

    bool Stop(MessageErrorKind kind, std::string_view path, std::string words) {
        error_ = {kind, std::string(path), std::move(words)};
        return false;
    }

    bool ToItem(std::size_t index, std::string_view path) {
        if (Row().kind != TypeKind::kSequence) {
            return Stop(kWrongKind, path, std::string(WordsOf(Row().kind)) + " has no items");
        }
        if (index >= Items()) {
            return Stop(kIndexOutOfRange, path,
                        "there is no such item: " + CountWords(Items()) + ", counted from 0");
        }
        cell_ = &cell_->cells[index];
        type_ = Row().first;
        optional_ = false;
        return true;
    }

    bool ToMember(std::string_view name, std::string_view path, bool making) {
        const TypeRow& row = Row();
        const bool isUnion = row.kind == TypeKind::kUnion;
        if (row.kind == TypeKind::kSequence) {
            return Stop(kWrongKind, path, "a list has items, such as [0], and no members");
        }
        if (!isUnion && row.kind != TypeKind::kStruct) {
            return Stop(kWrongKind, path, std::string(WordsOf(row.kind)) + " has no members");
        }
        const std::span<const ElementRow> elements = Elements();
        const auto found = std::find_if(
            elements.begin(), elements.end(),
            [&](const ElementRow& element) { return Types().NameOf(element) == name; });
        if (found == elements.end()) {
            return Stop(kUnknownName, path,
                        std::string("there is no such ") + (isUnion ? "alternative" : "member") +
                            "; there are " + NamesOf(Types(), elements));
        }
        const auto index = static_cast<std::uint32_t>(found - elements.begin());
        if (isUnion) {
            const std::uint32_t tag = IsThere() ? cell_->number : 0;
            if (reflect::IsTagOf(row, tag) && tag != index + 1) {
                return Stop(kOtherAlternative, path,
                            std::string("another alternative is chosen, ")
                                .append(Types().NameOf(elements[tag - 1]))
                                .append("; choose this one first"));
            }
            cell_ = making     ? &bits::ChooseAlternative(Arena(), *cell_, index + 1)
                    : tag != 0 ? cell_->cells
                               : nullptr;
        } else if (making) {
            cell_ = &bits::StructCells(Arena(), *cell_, row.count)[index];
        } else {
            cell_ = IsThere() && cell_->cells != nullptr ? &cell_->cells[index] : nullptr;
        }
        type_ = found->type;
        optional_ = !isUnion && found->optional;
        return true;
    }

    /// Whether `field` stands where it did when it was looked up, or would stand there.
    static bool IsCurrent(const Field& field, const TypeRow& rowAround) {
        const Cell& around = Mutable(field.around_);
        const bool wasMade = field.cell_ != &bits::kEmptyCell;
        switch (rowAround.kind) {
            case TypeKind::kStruct:
                return around.cells == nullptr ? !wasMade
                                               : &around.cells[field.index_] == field.cell_;
            case TypeKind::kSequence:
                return field.index_ < reflect::ItemCount(around) &&
                       &around.cells[field.index_] == field.cell_;
            default:
                return reflect::IsTagOf(rowAround, around.number)
                           ? around.number == field.index_ + 1 && around.cells == field.cell_
                           : !wasMade;
        }
    }

    void LookAt(const Field& field) {
        if (!field || field.message_ != message_.contents_.get()) {
            error_ = {kNotThere, "", "is no field of this message"};
            return;
        }
        Start();
        if (field.around_ == nullptr) {
            return;
        }
        if (field.around_ == &bits::kEmptyCell) {
            error_ = {kNotThere, "", "the structure around it is not there; add that first"};
            return;
        }
        if (!IsCurrent(field, Types().types[field.typeAround_])) {
            error_ = {kNotThere, "", "the field was replaced; look it up again"};
            return;
        }
        cell_ = field.cell_ == &bits::kEmptyCell ? nullptr : &Mutable(field.cell_);
        type_ = field.type_;
        optional_ = field.IsOptional();
    }

    /// Makes a member of a structure, or of a union, that is there but holds nothing yet.
    void MakeMember(const Field& field) {
        const TypeRow& rowAround = Types().types[field.typeAround_];
        Cell& around = Mutable(field.around_);
        around.reached = true;
        cell_ = rowAround.kind == TypeKind::kStruct
                    ? &bits::StructCells(Arena(), around, rowAround.count)[field.index_]
                    : &bits::ChooseAlternative(Arena(), around, field.index_ + 1);
    }

    const Message& message_;
    const FieldAt& at_;
    MessageError error_;
    Cell* cell_ = nullptr;  // null: a structure around it was never made
    std::uint16_t type_ = 0;
    bool optional_ = false;
};

MessageError Message::New(Decoding decoding, std::string_view name) {
    const facade::Binding binding = facade::BindingOf(decoding);
    if (binding.set == nullptr) {
        return {kNoMessage, "", "this build does not describe the messages of the decoding"};
    }
    const reflect::TypeTables& types = binding.family->types;
    const std::span<const std::uint16_t> messages = binding.set->memberTypes;
    const auto nameAt = [&](std::size_t index) {
        return types.NameOf(types.types[messages[index]]);
    };
    std::size_t index = 0;
    while (index < messages.size() && nameAt(index) != name) {
        ++index;
    }
    if (index == messages.size()) {
        return {kUnknownName, "",
                std::string("there is no message ")
                    .append(name)
                    .append("; there are ")
                    .append(Listed(messages.size(), nameAt))};
    }
    Contents& contents = facade::ReadyFor(contents_);
    contents.Clear(decoding);
    contents.made = true;
    contents.decoded.binding = binding;
    contents.decoded.outcome = 0;
    iecodec::SetTag(contents.decoded.container, static_cast<std::uint32_t>(index + 1));
    Cell& body = contents.decoded.container.body;
    body.reached = true;
    bits::StructCells(contents.arena, body, contents.Types().types[messages[index]].count);
    return {};
}

MessageError Message::Set(FieldAt field, std::uint32_t number) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    const TypeRow& row = editor.Row();
    if (row.kind != TypeKind::kInteger && row.kind != TypeKind::kEnumerated) {
        return editor.RefuseKind("a number");
    }
    const std::uint64_t limit = std::uint64_t{1} << row.size;
    if (number >= limit) {
        return editor.Refuse(kValueTooLarge, std::to_string(number) + " is too large for its " +
                                                 std::to_string(row.size) + " bits, up to " +
                                                 std::to_string(limit - 1));
    }
    editor.Make().number = number;
    return {};
}

MessageError Message::SetWords(FieldAt field, std::string_view words) {
    std::uint32_t number = 0;
    {
        Editor editor(*this, field);
        if (!editor.Found()) {
            return editor.TakeError();
        }
        const TypeRow& row = editor.Row();
        if (row.kind != TypeKind::kEnumerated) {
            return editor.Refuse(kWrongKind, "its values have no words");
        }
        const reflect::EnumRow& values = editor.Types().enums[row.first];
        const auto rows = editor.Types().enumValues.subspan(values.firstValue, values.valueCount);
        const auto listed =
            std::find_if(rows.begin(), rows.end(), [&](const reflect::EnumValueRow& value) {
                return editor.Types().TextOf(value) == words;
            });
        if (listed == rows.end()) {
            return editor.Refuse(kUnknownName,
                                 std::string("no value has the words \"")
                                     .append(words)
                                     .append("\"; there are ")
                                     .append(Listed(rows.size(), [&](std::size_t index) {
                                         return editor.Types().TextAt(rows[index].rendered);
                                     })));
        }
        number = listed->value;
    }
    return Set(field, number);
}

MessageError Message::SetBits(FieldAt field, std::span<const std::uint8_t> octets,
                              std::uint32_t bits) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    const TypeRow& row = editor.Row();
    const std::string count = std::to_string(bits);
    if (row.kind != TypeKind::kBinary) {
        return editor.RefuseKind("a bit string");
    }
    if (row.fixed && bits != row.size) {
        return editor.Refuse(kWrongBitCount,
                             "has always " + std::to_string(row.size) + " bits, not " + count);
    }
    if (bits > row.size) {
        return editor.Refuse(kTooManyBits, count + " bits are too many: it has " +
                                               std::to_string(row.size) + " at most");
    }
    const std::uint32_t needed = bits::OctetsOf(bits);
    if (octets.size() < needed) {
        return editor.Refuse(kWrongBitCount, "there are " + std::to_string(octets.size()) +
                                                 " octets for " + count + " bits, which take " +
                                                 std::to_string(needed));
    }
    std::uint8_t* copy = nullptr;
    if (bits > 0) {
        copy = editor.Arena().AllocateZeroed<std::uint8_t>(needed);
        bits::BitReader(octets.data(), needed).Copy(copy, 0, bits);
    }
    Cell& cell = editor.Make();
    cell.octets = copy;
    cell.number = bits;
    return {};
}

MessageError Message::Choose(FieldAt field, std::string_view alternative) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    if (editor.Row().kind != TypeKind::kUnion) {
        return editor.RefuseKind("a choice of alternatives");
    }
    const std::span<const ElementRow> elements = editor.Elements();
    const auto found = std::find_if(
        elements.begin(), elements.end(),
        [&](const ElementRow& element) { return editor.Types().NameOf(element) == alternative; });
    if (found == elements.end()) {
        return editor.Refuse(kUnknownName, std::string("there is no alternative ")
                                               .append(alternative)
                                               .append("; there are ")
                                               .append(NamesOf(editor.Types(), elements)));
    }
    const auto tag = static_cast<std::uint32_t>(found - elements.begin()) + 1;
    Cell& body = bits::ChooseAlternative(editor.Arena(), editor.Make(), tag);
    const TypeRow& row = editor.Types().types[found->type];
    if (row.kind == TypeKind::kStruct) {
        bits::StructCells(editor.Arena(), body, row.count);
    }
    // Structures are there with the choice; what has to be set in them is asked for there.
    body.reached = body.reached || row.kind == TypeKind::kStruct || row.kind == TypeKind::kUnion;
    return {};
}

MessageError Message::Resize(FieldAt field, std::size_t items) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    const TypeRow& row = editor.Row();
    if (row.kind != TypeKind::kSequence) {
        return editor.RefuseKind("a list");
    }
    if (items > row.size) {
        return editor.Refuse(kTooManyItems, std::to_string(items) + " items are too many: it has " +
                                                std::to_string(row.size) + " at most");
    }
    // There are not more than the type has.
    static_cast<void>(
        bits::SetSize(editor.Arena(), editor.Make(), static_cast<std::int32_t>(items), row.size));
    return {};
}

MessageError Message::Append(FieldAt field) {
    const Editor editor(*this, field);
    const bool isList = editor.Found() && editor.Row().kind == TypeKind::kSequence;
    return Resize(field, isList ? std::size_t{editor.Items()} + 1 : 0);
}

MessageError Message::Add(FieldAt field) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    Cell& cell = editor.Make();
    if (editor.Row().kind == TypeKind::kStruct) {
        bits::StructCells(editor.Arena(), cell, editor.Row().count);
    }
    return {};
}

MessageError Message::Clear(FieldAt field) {
    Editor editor(*this, field);
    if (!editor.Found()) {
        return editor.TakeError();
    }
    if (!editor.IsOptional()) {
        return editor.Refuse(kNotOptional, "the message cannot do without it");
    }
    editor.Clear();
    return {};
}

}  // namespace quorvane
