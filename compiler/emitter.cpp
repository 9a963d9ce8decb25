#include "compiler/emitter.h"

#include <map>
#include <ostream>

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

std::string Number(std::uint64_t value) {
    return value == iecodec::kNone ? "kNone" : std::to_string(value);
}

std::string Flag(bool value) {
    return value ? "true" : "false";
}

/// One table: rows with their index and a remark behind them.
class Table {
  public:
    Table(std::string type, std::string name) : type_(std::move(type)), name_(std::move(name)) {}

    void Row(const std::vector<std::string>& cells, std::string_view remark = {}) {
        body_ += "    {";
        for (std::size_t index = 0; index < cells.size(); ++index) {
            body_ += (index == 0 ? "" : ", ") + cells[index];
        }
        body_ += "},  // " + std::to_string(count_++);
        if (!remark.empty()) {
            body_ += " " + std::string(remark);
        }
        body_ += "\n";
    }

    void Plain(const std::string& cell, std::string_view remark) {
        body_ +=
            "    " + cell + ",  // " + std::to_string(count_++) + " " + std::string(remark) + "\n";
    }

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

class Emitter {
  public:
    Emitter(std::ostream& out, const FamilySyntax& family, FamilyModel& model)
        : out_(out), family_(family), model_(model), types_(NumberTypes(model.named)) {}

    void Types() {
        Table types("TypeRow", "kTypes");
        Table elements("ElementRow", "kElements");
        Table enums("EnumRow", "kEnums");
        Table values("EnumValueRow", "kEnumValues");
        std::map<const EnumModel*, std::size_t> enumIndex;
        std::size_t elementCount = 0;
        std::size_t valueCount = 0;
        for (const TypeModel* type : types_) {
            std::size_t first = 0;
            if (type->kind == Kind::kSequence) {
                first = type->item->index;
            } else if (type->kind == Kind::kEnumerated) {
                const auto [entry, isNew] = enumIndex.emplace(type->enumeration, enumIndex.size());
                first = entry->second;
                if (isNew) {
                    AddEnum(*type->enumeration, enums, values, valueCount);
                }
            } else if (!type->elements.empty()) {
                first = elementCount;
                for (const ElementModel& element : type->elements) {
                    elements.Row(
                        {Quoted(element.name), Number(element.type->index), Flag(element.optional)},
                        type->name);
                }
                elementCount += type->elements.size();
            }
            types.Row({Quoted(type->name), EnumeratorText(type->kind), Flag(type->named),
                       Flag(type->fixed), std::to_string(type->size), std::to_string(first),
                       std::to_string(type->elements.size())});
        }
        Table named("std::uint16_t", "kNamed");
        for (const TypeModel* type : model_.named) {
            named.Plain(Number(type->index), type->name);
        }
        out_ << values << enums << elements << types << named;
    }

    void Codec() {
        Table formats("IeFormatRow", "kFormats");
        for (const auto& row : model_.formats) {
            formats.Row({Number(row.tag), Number(row.mask), std::to_string(row.size)});
        }
        Table orders("IeOrderRow", "kOrders");
        for (const auto& row : model_.orders) {
            orders.Row({Number(row.value), Number(row.mask), EnumeratorText(row.kind)});
        }
        out_ << formats << orders;
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
             << ",\n    {kTypes, kElements, kEnums, kEnumValues, kNamed},\n"
             << "    {kFormats, kOrders, kFields, kValues, kParts, kAlternatives, kGroups, "
                "kOctets,\n"
             << "     kHeaderItems, kMessages, kSets, " << csn.structures << ", kSpecials}};\n";
    }

  private:
    void AddEnum(const EnumModel& model, Table& enums, Table& values, std::size_t& valueCount) {
        enums.Row({std::to_string(valueCount), std::to_string(model.values.size()),
                   Quoted(model.otherText.value_or("")), Flag(model.otherText.has_value())},
                  model.name);
        for (const EnumModel::Value& value : model.values) {
            values.Row({Quoted(value.text), std::to_string(value.value.value) + "U"}, model.name);
        }
        valueCount += model.values.size();
    }

    void Fields() {
        Table fields("FieldRow", "kFields");
        for (const auto& row : model_.fields) {
            fields.Row({Quoted(row.name), EnumeratorText(row.format), EnumeratorText(row.presence),
                        Number(row.tag), Number(row.element), Number(row.value), Number(row.width),
                        Number(row.leastOctets), std::to_string(row.mostOctets), Number(row.order),
                        Flag(row.unchecked), Number(row.conditionElement),
                        Number(row.conditionMember), std::to_string(row.conditionMask) + "U",
                        std::to_string(row.conditionValue) + "U", Number(row.encodeNumber),
                        Number(row.sizeNumber), Number(row.valueNumber), Number(row.shortNumber)});
        }
        out_ << fields;
    }

    void Values() {
        Table values("ValueRow", "kValues");
        for (const auto& row : model_.values) {
            values.Row({Quoted(row.name), EnumeratorText(row.shape), Flag(row.located),
                        Number(row.members), std::to_string(row.capacity), Number(row.width),
                        Number(row.first), Number(row.count), Number(row.item), Number(row.element),
                        Number(row.selectorOffset), Number(row.selectorWidth),
                        Number(row.decodeNumber), Number(row.encodeNumber),
                        Number(row.shortNumber)});
        }
        out_ << values;
    }

    void Parts() {
        Table parts("PartRow", "kParts");
        for (const auto& row : model_.parts) {
            parts.Row({EnumeratorText(row.kind), Number(row.element), Number(row.offset),
                       Number(row.width), Number(row.value)});
        }
        Table alternatives("AlternativeRow", "kAlternatives");
        for (const auto& row : model_.alternatives) {
            alternatives.Row({std::to_string(row.selector) + "U", Flag(row.isDefault),
                              Number(row.tag), Number(row.value)});
        }
        Table groups("GroupRow", "kGroups");
        for (const auto& row : model_.groups) {
            groups.Row({Flag(row.mandatory), Number(row.number), Number(row.firstOctet),
                        Number(row.octetCount), Number(row.missingNumber)});
        }
        Table octets("OctetRow", "kOctets");
        for (const auto& row : model_.octets) {
            octets.Row({Number(row.firstPart), Number(row.partCount), Number(row.flagElement)});
        }
        out_ << parts << alternatives << groups << octets;
    }

    void Messages() {
        Table items("HeaderItemRow", "kHeaderItems");
        for (const auto& row : model_.headerItems) {
            items.Row({EnumeratorText(row.kind), Number(row.element), Number(row.width),
                       std::to_string(row.constant) + "U"});
        }
        Table messages("MessageRow", "kMessages");
        for (const auto& row : model_.messages) {
            messages.Row({Quoted(row.name), Number(row.members), std::to_string(row.code) + "U",
                          Number(row.firstHeaderItem), Number(row.headerItemCount),
                          Number(row.firstField), Number(row.fieldCount), Number(row.countedFields),
                          Number(row.value)});
        }
        out_ << items << messages;
    }

    void Sets() {
        Table sets("MessageSetRow", "kSets");
        for (std::size_t index = 0; index < model_.sets.size(); ++index) {
            const SetModel& set = model_.sets[index];
            const std::string suffix = std::to_string(index);
            Table attempts("KeyAttemptRow", "kAttempts" + suffix);
            for (const iecodec::KeyAttemptRow& attempt : set.attempts) {
                attempts.Row({std::to_string(attempt.highNibbles),
                              std::to_string(attempt.lowNibbles), std::to_string(attempt.mask)});
            }
            Table keys("KeyRow", "kKeys" + suffix);
            for (const auto& key : set.keys) {
                keys.Row({std::to_string(key.key), Number(key.tag)});
            }
            Table messages("std::uint16_t", "kSetMessages" + suffix);
            Table memberTypes("std::uint16_t", "kSetTypes" + suffix);
            for (const std::uint16_t message : set.messages) {
                messages.Plain(Number(message), model_.messages[message].name);
                memberTypes.Plain(Number(model_.messageTypes[message]->index),
                                  model_.messages[message].name);
            }
            out_ << attempts << keys << messages << memberTypes;
            sets.Row({Quoted(set.row.name), set.type == nullptr ? "kNone" : Number(set.type->index),
                      EnumeratorText(set.row.keyForm), Number(set.row.highOctet),
                      Number(set.row.lowOctet), Number(set.row.typeOctet), "kAttempts" + suffix,
                      "kKeys" + suffix, "kSetMessages" + suffix, "kSetTypes" + suffix});
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
    out << ".\n\n#include <array>\n#include <cstdint>\n\n#include \"families/family.h\"\n";
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
           "using namespace quorvane::iecodec;\nusing namespace quorvane::reflect;\n\n";
    Emitter emitter(out, family, model);
    emitter.Types();
    out << csn.code;
    emitter.Codec();
    emitter.Family(csn);
    out << "\n}  // namespace quorvane::families\n";
}

}  // namespace quorvane::compiler
