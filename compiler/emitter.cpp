#include "compiler/emitter.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <type_traits>

#include "bits/named_enum.h"

namespace quorvane::compiler {
namespace {

using bits::EnumeratorText;
using Kind = TypeModel::Kind;

std::string Quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (octet < 0x20 || octet > 0x7E) {
            // Octal: three digits at most, whatever follows.
            result += '\\';
            result += static_cast<char>('0' + (octet >> 6));
            result += static_cast<char>('0' + (octet >> 3 & 7U));
            result += static_cast<char>('0' + (octet & 7U));
        } else {
            result += c;
        }
    }
    return result + "\"";
}

/// An expression that stands as it is, such as the name of another table.
struct Expression {
    std::string text;
};

/// A member of a row as C++ writes it.
template <typename Value>
std::string Cell(const Value& value) {
    if constexpr (std::is_same_v<Value, Expression>) {
        return value.text;
    } else if constexpr (std::is_same_v<Value, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_same_v<Value, std::uint16_t>) {
        return value == iecodec::kNone ? "kNone" : std::to_string(value);
    } else if constexpr (std::is_same_v<Value, std::uint32_t>) {
        return std::to_string(value) + "U";
    } else if constexpr (std::is_enum_v<Value>) {
        return EnumeratorText(value);
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return std::to_string(value);
    } else {
        return Quoted(value) + "sv";  // whose length no compiler has to count
    }
}

/// One table: rows with their index and a remark behind them.
class Table {
  public:
    Table(std::string type, std::string name) : type_(std::move(type)), name_(std::move(name)) {}

    template <typename... Values>
    void Row(const Values&... values) {
        Remarked("", values...);
    }

    template <typename... Values>
    void Remarked(std::string_view remark, const Values&... values) {
        std::string cells;
        ((cells += (cells.empty() ? "" : ", ") + Cell(values)), ...);
        Plain("{" + cells + "}", remark);
    }

    void Plain(const std::string& cell, std::string_view remark) {
        body_ += "    " + cell + ",  // " + std::to_string(count_++);
        body_.append(remark.empty() ? "" : " ").append(remark).append("\n");
    }

    [[nodiscard]] std::size_t Count() const { return count_; }

    friend std::ostream& operator<<(std::ostream& out, const Table& table) {
        out << "constexpr std::array<" << table.type_ << ", " << table.count_ << "> "
            << table.name_;
        if (table.count_ == 0) {
            return out << "{};\n\n";
        }
        return out << "{{\n" << table.body_ << "}};\n\n";
    }

  private:
    std::string type_;
    std::string name_;
    std::string body_;
    std::size_t count_ = 0;
};

/// The texts that rows refer to, each once, in one array. Behind each text are as many octets as
/// the rendering copies at a time.
class TextPool {
  public:
    /// The reference to `text` as C++ writes it.
    Expression Add(const std::string& text) {
        const auto [entry, isNew] = references_.try_emplace(text);
        if (isNew) {
            entry->second = "{" + std::to_string(size_) + ", " + std::to_string(text.size()) + "}";
            body_ += "    " + Quoted(text) + "\n";
            size_ += text.size();
        }
        return {entry->second};
    }

    friend std::ostream& operator<<(std::ostream& out, const TextPool& pool) {
        return out << "constexpr char kTexts[] =\n"
                   << pool.body_ << "    " << Quoted(std::string(reflect::kCopyStep, '\0'))
                   << ";\nstatic_assert(sizeof kTexts <= kMostTexts);\n\n";
    }

  private:
    std::map<std::string, std::string> references_;
    std::string body_;
    std::size_t size_ = 0;
};

/// Numbers all types that the catalogue holds: each named one, its inline ones behind it.
std::vector<TypeModel*> NumberTypes(const std::vector<TypeModel*>& named) {
    std::vector<TypeModel*> ordered;
    const auto add = [&ordered](TypeModel* type, const auto& self) -> void {
        type->index = static_cast<std::uint32_t>(ordered.size());
        ordered.push_back(type);
        const auto descend = [&](TypeModel* inner) {
            if (inner != nullptr && !inner->named) {
                self(inner, self);
            }
        };
        for (const ElementModel& element : type->elements) {
            descend(element.type);
        }
        descend(type->item);
    };
    for (TypeModel* type : named) {
        add(type, add);
    }
    return ordered;
}

std::string LabelOf(const ElementModel& element) {
    return element.name + ": ";
}

std::size_t LabelOctets(const TypeModel& type) {
    std::size_t octets = 0;
    for (const ElementModel& element : type.elements) {
        octets += LabelOf(element).size();
    }
    return octets;
}

reflect::LineKind LineOf(const TypeModel& type) {
    if (type.size > 0 && type.kind == Kind::kInteger) {
        return reflect::LineKind::kInteger;
    }
    return type.size > 0 && type.kind == Kind::kEnumerated ? reflect::LineKind::kEnumerated
                                                           : reflect::LineKind::kOther;
}

class Emitter {
  public:
    Emitter(std::ostream& out, const FamilySyntax& family, FamilyModel& model)
        : out_(out), family_(family), model_(model), types_(NumberTypes(model.named)) {}

    void Types() {
        Table types("TypeRow", "kTypes");
        Table elements("ElementRow", "kElements");
        Table enums("EnumRow", "kEnums");
        Table values("EnumValueRow", "kEnumValues");
        TextPool texts;
        std::map<const EnumModel*, std::size_t> enumIndex;
        for (const TypeModel* type : types_) {
            std::size_t first = 0;
            if (type->kind == Kind::kSequence) {
                first = type->item->index;
            } else if (type->kind == Kind::kEnumerated) {
                const auto [entry, isNew] = enumIndex.emplace(type->enumeration, enumIndex.size());
                first = entry->second;
                if (isNew) {
                    AddEnum(*type->enumeration, texts, enums, values);
                }
            } else if (!type->elements.empty()) {
                first = elements.Count();
                for (const ElementModel& element : type->elements) {
                    elements.Remarked(type->name + " " + element.name, texts.Add(LabelOf(element)),
                                      element.type->index, element.optional, LineOf(*element.type));
                }
            }
            types.Remarked(type->name, texts.Add(type->named ? type->name : ""), type->kind,
                           type->fixed,
                           type->kind == Kind::kStruct ? LabelOctets(*type) : type->size, first,
                           type->elements.size());
        }
        Table named("std::uint16_t", "kNamed");
        for (const TypeModel* type : model_.named) {
            named.Plain(Cell(type->index), type->name);
        }
        out_ << texts << values << enums << elements << types << named;
    }

    void Codec() {
        const auto fill = [](Table& table, const std::vector<iecodec::IeFormatRow>& rows) {
            for (const auto& row : rows) {
                table.Row(row.iei, row.mask, row.size);
            }
        };
        Table formats("IeFormatRow", "kFormats");
        fill(formats, model_.formats);
        Table unknown("IeFormatRow", "kUnknownFormats");
        fill(unknown, model_.unknownFormats);
        Table orders("IeOrderRow", "kOrders");
        for (const auto& row : model_.orders) {
            orders.Row(row.iei, row.mask, row.kind);
        }
        out_ << formats << unknown << orders;
        Fields();
        Values();
        Parts();
        Messages();
        Sets();
    }

    void Family(const EmittedCsn& csn) {
        out_ << "constexpr std::array<const SpecialElement*, " << model_.specials.size()
             << "> kSpecials{{\n";
        for (const std::string& name : model_.specials) {
            out_ << "    &" << name << ",\n";
        }
        out_ << "}};\n\n}  // namespace\n\n";
        std::string variable = family_.family.text;
        if (!variable.empty() && variable[0] >= 'a' && variable[0] <= 'z') {
            variable[0] = static_cast<char>(variable[0] - 'a' + 'A');
        }
        out_ << "extern const Family k" << variable << "Family;  // also where no header has it\n"
             << "const Family k" << variable << "Family = {\n    " << Quoted(family_.family.text)
             << ",\n    {kTexts, kTypes, kElements, kEnums, kEnumValues, kNamed},\n"
             << "    {kFormats, kUnknownFormats, kOrders, kFields, kValues, kParts, "
                "kAlternatives,\n"
             << "     kGroups, kOctets, kHeaderItems, kMessages, kSets, " << csn.structures
             << ", kSpecials}};\n";
    }

  private:
    static void AddEnum(const EnumModel& model, TextPool& texts, Table& enums, Table& values) {
        std::uint32_t inPlace = 0;
        while (inPlace < model.values.size() && model.values[inPlace].value.value == inPlace) {
            ++inPlace;
        }
        const std::string otherText = model.otherText.value_or("");
        enums.Remarked(model.name, values.Count(), model.values.size(), inPlace,
                       texts.Add(otherText), model.otherText.has_value(),
                       reflect::IsPlain(otherText));
        for (const EnumModel::Value& value : model.values) {
            const std::string rendered =
                value.text + " (" + std::to_string(value.value.value) + ")";
            values.Remarked(model.name + " " + Quoted(value.text), texts.Add(rendered),
                            value.text.size(), reflect::IsPlain(value.text), value.value.value);
        }
    }

    void Fields() {
        Table fields("FieldRow", "kFields");
        for (const auto& row : model_.fields) {
            fields.Row(row.name, row.format, row.presence, row.iei, row.element, row.value,
                       row.width, row.leastOctets, std::uint32_t{row.mostOctets}, row.order,
                       row.unchecked, row.conditionElement, row.conditionMember, row.conditionMask,
                       row.conditionValue, row.encodeNumber, row.sizeNumber, row.valueNumber,
                       row.shortNumber);
        }
        out_ << fields;
    }

    void Values() {
        Table values("ValueRow", "kValues");
        for (const auto& row : model_.values) {
            values.Row(row.name, row.shape, row.located, row.members, row.capacity, row.width,
                       row.first, row.count, row.item, row.element, row.selectorOffset,
                       row.selectorWidth, row.decodeNumber, row.encodeNumber, row.shortNumber);
        }
        out_ << values;
    }

    void Parts() {
        Table parts("PartRow", "kParts");
        for (const auto& row : model_.parts) {
            parts.Row(row.kind, row.element, row.offset, row.width, row.value, row.located);
        }
        Table alternatives("AlternativeRow", "kAlternatives");
        for (const auto& row : model_.alternatives) {
            alternatives.Row(row.selector, row.isDefault, row.tag, row.value);
        }
        Table groups("GroupRow", "kGroups");
        for (const auto& row : model_.groups) {
            groups.Row(row.mandatory, row.number, row.firstOctet, row.octetCount,
                       row.missingNumber);
        }
        Table octets("OctetRow", "kOctets");
        for (const auto& row : model_.octets) {
            octets.Row(row.firstPart, row.partCount, row.flagElement);
        }
        out_ << parts << alternatives << groups << octets;
    }

    void Messages() {
        Table items("HeaderItemRow", "kHeaderItems");
        for (const auto& row : model_.headerItems) {
            items.Row(row.kind, row.element, row.width, row.constant);
        }
        Table messages("MessageRow", "kMessages");
        for (const auto& row : model_.messages) {
            messages.Row(row.name, row.members, row.code, row.firstHeaderItem, row.headerItemCount,
                         row.firstField, row.fieldCount, row.countedFields, row.value);
        }
        out_ << items << messages;
    }

    void Sets() {
        Table sets("MessageSetRow", "kSets");
        for (std::size_t index = 0; index < model_.sets.size(); ++index) {
            const SetModel& set = model_.sets[index];
            const std::string suffix = std::to_string(index);
            Table masks("KeyMaskRow", "kMasks" + suffix);
            for (const iecodec::KeyMaskRow& row : set.masks) {
                masks.Row(row.highNibbles, row.lowNibbles, row.mask);
            }
            Table keys("KeyRow", "kKeys" + suffix);
            for (const auto& key : set.keys) {
                keys.Row(key.key, key.tag);
            }
            Table messages("std::uint16_t", "kSetMessages" + suffix);
            Table memberTypes("std::uint16_t", "kSetTypes" + suffix);
            for (const std::uint16_t message : set.messages) {
                messages.Plain(Cell(message), model_.messages[message].name);
                memberTypes.Plain(Cell(model_.messageTypes[message]->index),
                                  model_.messages[message].name);
            }
            out_ << masks << keys << messages << memberTypes;
            sets.Row(
                set.row.name,
                set.type == nullptr ? iecodec::kNone : static_cast<std::uint16_t>(set.type->index),
                set.row.keyForm, set.row.highOctet, set.row.lowOctet, set.row.typeOctet,
                Expression{"kMasks" + suffix}, Expression{"kKeys" + suffix},
                Expression{"kSetMessages" + suffix}, Expression{"kSetTypes" + suffix});
        }
        out_ << sets;
    }

    std::ostream& out_;
    const FamilySyntax& family_;
    FamilyModel& model_;
    std::vector<TypeModel*> types_;
};

}  // namespace

void Emit(std::ostream& out, const FamilySyntax& family, FamilyModel& model, const EmittedCsn& csn,
          const std::vector<std::string>& sources) {
    out << "// Generated by quorvane_describe from";
    for (const std::string& source : sources) {
        out << " " << source;
    }
    out << ".\n\n#include <array>\n#include <cstdint>\n#include <string_view>\n"
           "\n#include \"families/family.h\"\n";
    for (const SpecialsSyntax& specials : family.specials) {
        out << "#include \"" << specials.header << "\"\n";
    }
    if (!csn.code.empty()) {
        out << "#include \"csn/functions.h\"\n";
    }
    for (const std::string& header : csn.headers) {
        out << "#include \"" << header << "\"\n";
    }
    out << "\nnamespace quorvane::families {\nnamespace {\n\n"
           "using namespace quorvane::iecodec;\nusing namespace quorvane::reflect;\n"
           "using namespace std::string_view_literals;\n\n";
    Emitter emitter(out, family, model);
    emitter.Types();
    out << csn.code;
    emitter.Codec();
    emitter.Family(csn);
    out << "\n}  // namespace quorvane::families\n";
}

}  // namespace quorvane::compiler
