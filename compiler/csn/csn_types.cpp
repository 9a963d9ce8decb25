#include "compiler/csn/csn_types.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <optional>
#include <set>
#include <utility>

#include "compiler/csn/csn_members.h"
#include "compiler/csn/csn_resolver.h"
#include "compiler/type_resolver.h"

namespace quorvane::compiler {
namespace {

using csn::CsnFieldRow;
using Kind = TypeModel::Kind;
using TypeAnnotation = CsnAnnotations::Type;

constexpr std::uint32_t kOpenBound = 20;         // of a repetition without a bound
constexpr std::uint32_t kMostVariableBits = 64;  // of a bit string of variable length
constexpr std::uint32_t kMostIntegerBits = 32;
constexpr std::uint32_t kMostBound = std::numeric_limits<std::uint16_t>::max();
constexpr std::size_t kMostTags = std::numeric_limits<std::uint16_t>::max() - 1;

/// A struct whose members are still to be numbered.
struct OpenStruct {
    TypeModel* type;
    CsnMembers members;
    std::uint16_t parentTag;
    std::string path;
    std::set<const CsnNode*> around;  // the fields that it is nested in
};

/// What is known of a value from all of its occurrences.
struct ValueFacts {
    bool isVariable = false;  // in length
    std::uint64_t width = 0;  // bits on the wire, the most of all occurrences
    bool sameWidth = true;
    const EnumModel* values = nullptr;
    TypeAnnotation annotation = TypeAnnotation::kByRule;
    std::uint32_t annotatedSize = 0;
};

class Deriver {
  public:
    Deriver(Reporter& reporter, const CsnSyntax& syntax, const CsnFamily& family, TypeStore& store)
        : reporter_(reporter), syntax_(syntax), family_(family), store_(store) {}

    CsnTypeTables Run() {
        for (const CsnSection& section : syntax_.sections) {
            if (section.structure) {
                CsnStructureTypes& structure = tables_.structures.emplace_back();
                structure.section = &section;
                structure.rootTag = static_cast<std::uint16_t>(tables_.structures.size());
            }
        }
        for (CsnStructureTypes& structure : tables_.structures) {
            for (const CsnStructureTypes& other : tables_.structures) {
                if (!other.section->runs && other.section->entry == structure.section->entry) {
                    structure.rootTag = other.rootTag;
                }
            }
        }
        nextTag_ = tables_.structures.size() + 1;
        for (CsnStructureTypes& structure : tables_.structures) {
            Structure(structure);
            if (nextTag_ > kMostTags) {
                reporter_.Error(structure.section->structure->span,
                                "the fields up to this structure need more than " +
                                    std::to_string(kMostTags) + " tags");
                break;
            }
        }
        return std::move(tables_);
    }

  private:
    void Structure(CsnStructureTypes& structure) {
        const Name& name = *structure.section->structure;
        structure.type = store_.NewType(Kind::kStruct, name.text, name.span);
        structure.type->named = true;
        structure.firstTag = static_cast<std::uint16_t>(nextTag_);
        if (structure.section->runs) {
            return;  // the fields are the other structure's
        }
        structure_ = &structure;
        open_.push_back({structure.type,
                         finder_.Of(*EntryRule(*structure.section).body),
                         structure.rootTag,
                         "",
                         {}});
        while (!open_.empty() && nextTag_ <= kMostTags) {
            const OpenStruct next = std::move(open_.front());
            open_.pop_front();
            Struct(next);
        }
        open_.clear();
    }

    void Struct(const OpenStruct& open) {
        const std::size_t firstRow = structure_->fields.size();
        std::vector<std::size_t> memberOfRow;
        for (std::size_t index = 0; index < open.members.All().size(); ++index) {
            Member(open, open.members.All()[index]);
            memberOfRow.resize(structure_->fields.size() - firstRow, index);
        }
        // Members stand in the order of their names' bytes; rows say where.
        std::vector<ElementModel>& elements = open.type->elements;
        std::vector<std::size_t> order(elements.size());
        for (std::size_t index = 0; index < order.size(); ++index) {
            order[index] = index;
        }
        std::sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
            return elements[left].name < elements[right].name;
        });
        std::vector<std::uint16_t> placeOf(order.size());
        std::vector<ElementModel> sorted;
        for (const std::size_t index : order) {
            placeOf[index] = static_cast<std::uint16_t>(sorted.size());
            sorted.push_back(elements[index]);
        }
        elements = std::move(sorted);
        for (std::size_t row = 0; row < memberOfRow.size(); ++row) {
            structure_->fields[firstRow + row].element = placeOf[memberOfRow[row]];
        }
    }

    void Member(const OpenStruct& open, const CsnMember& member) {
        const CsnNode& first = *member.occurrences.front().field;
        const CsnAnnotations annotations = AnnotationsOf(member);
        std::uint32_t bound = BoundOf(member, annotations);
        ElementModel element;
        element.name = member.name;
        element.optional = annotations.optional.value_or(bound == 0 && member.least == 0);
        if (bound > kMostBound) {
            reporter_.Error(first.span, "'" + member.name + "' could hold " +
                                            std::to_string(bound) +
                                            " items, more than a sequence can; give its bound "
                                            "with 'most'");
            bound = 1;
        }
        const std::string name = reflect::InlineName(open.type->name, member.name);
        const std::string path = open.path + (open.path.empty() ? "" : ".") + member.name;
        std::string valueName = name;
        if (bound != 0) {
            element.type = store_.NewType(Kind::kSequence, name, first.span);
            element.type->size = bound;
            valueName = reflect::InlineName(name, reflect::kItemName);
        }
        CsnFieldRow row{};
        row.optional = element.optional;
        row.bound = static_cast<std::uint16_t>(bound);
        row.located = bound == 0 || family_.itemsLocated;
        row.repeats = annotations.single;
        TypeModel* value =
            Value(open, member, annotations, valueName, path + (bound != 0 ? "[]" : ""), row);
        if (bound != 0) {
            element.type->item = value;
        } else {
            element.type = value;
        }
        open.type->elements.push_back(std::move(element));
    }

    /// What the brackets of all occurrences say together.
    CsnAnnotations AnnotationsOf(const CsnMember& member) {
        CsnAnnotations all;
        bool agree = true;
        const auto take = [&agree](auto& known, const auto& one, const auto& nothing) {
            if (known == nothing) {
                known = one;
            }
            agree = agree && (one == nothing || one == known);
        };
        for (const CsnMember::Occurrence& occurrence : member.occurrences) {
            const CsnAnnotations& one = occurrence.field->annotations;
            agree = !all.enumeration || !one.enumeration ||
                    all.enumeration->text == one.enumeration->text;
            take(all.type, one.type, TypeAnnotation::kByRule);
            take(all.typeSize, one.typeSize, 0U);
            take(all.most, one.most, std::nullopt);
            take(all.optional, one.optional, std::nullopt);
            all.enumeration = all.enumeration ? all.enumeration : one.enumeration;
            all.single |= one.single;
            if (one.single || one.most) {
                all.span = one.span;
            }
            if (!agree || (all.single && all.most)) {
                reporter_.Error(one.span, "the brackets of '" + member.name +
                                              "' contradict each other or those of another "
                                              "place where it stands");
            }
        }
        return all;
    }

    /// The bound of the sequence that the member is; 0 if it is none.
    std::uint32_t BoundOf(const CsnMember& member, const CsnAnnotations& annotations) {
        const bool isOpen = member.most == kUnbounded;
        if (annotations.most == 0U) {
            reporter_.Error(annotations.span, "a sequence has room for at least one item");
        } else if (annotations.single && (isOpen || member.most == 1)) {
            reporter_.Error(
                annotations.span,
                isOpen ? "'" + member.name +
                             "' is repeated without a bound; a single member would be "
                             "written for ever"
                       : "'" + member.name + "' is single already, as it stands once at most");
        }
        if (annotations.single) {
            return 0;
        }
        return annotations.most.value_or(member.most == 1 ? 0 : isOpen ? kOpenBound : member.most);
    }

    TypeModel* Value(const OpenStruct& open, const CsnMember& member,
                     const CsnAnnotations& annotations, const std::string& name,
                     const std::string& path, const CsnFieldRow& row) {
        std::optional<CsnMembers> inner;
        for (const CsnMember::Occurrence& occurrence : member.occurrences) {
            const CsnMembers members = finder_.Of(*occurrence.field->children.front());
            if (inner && members.Empty() != inner->Empty()) {
                reporter_.Error(occurrence.field->span,
                                "'" + member.name +
                                    "' has fields inside in one place and none in "
                                    "another; give one of them another name with 'as'");
            }
            if (inner) {
                inner->Alternate(members);
            } else {
                inner = members;
            }
        }
        if (inner->Empty()) {
            return Plain(open, member, annotations, name, path, row);
        }
        return Nested(open, member, name, path, row, std::move(*inner));
    }

    TypeModel* Nested(const OpenStruct& open, const CsnMember& member, const std::string& name,
                      const std::string& path, CsnFieldRow row, CsnMembers inner) {
        const CsnNode& first = *member.occurrences.front().field;
        TypeModel* type = store_.NewType(Kind::kStruct, name, first.span);
        std::set<const CsnNode*> around = open.around;
        for (const CsnMember::Occurrence& occurrence : member.occurrences) {
            if (!around.insert(occurrence.field).second) {
                reporter_.Error(occurrence.field->span, "the field '" + member.name +
                                                            "' contains itself; a recursion "
                                                            "must not pass through a named field");
                return type;
            }
            const CsnAnnotations& annotations = occurrence.field->annotations;
            if (annotations.enumeration || annotations.type != TypeAnnotation::kByRule) {
                reporter_.Error(annotations.span, "'" + member.name +
                                                      "' is a struct, since it "
                                                      "has fields inside");
            }
        }
        row.kind = CsnFieldRow::Kind::kStruct;
        row.width = static_cast<std::uint16_t>(inner.All().size());
        const std::uint16_t tag = AddRow(open, member.occurrences, row, path);
        open_.push_back({type, std::move(inner), tag, path, std::move(around)});
        return type;
    }

    TypeModel* Plain(const OpenStruct& open, const CsnMember& member,
                     const CsnAnnotations& annotations, const std::string& name,
                     const std::string& path, CsnFieldRow row) {
        const CsnNode& first = *member.occurrences.front().field;
        const ValueFacts facts = FactsOf(member, annotations, name);
        TypeModel* type = store_.NewType(Kind::kInteger, name, first.span);
        Choose(*type, facts, member);
        if (type->kind == Kind::kBinary) {
            row.kind = CsnFieldRow::Kind::kBinary;
            row.mostBits = type->size;
            row.fixed = type->fixed;
            AddRow(open, member.occurrences, row, path);
            return type;
        }
        // Occurrences of another width have a tag of their own, as they are read differently.
        std::map<std::uint64_t, std::vector<CsnMember::Occurrence>> byWidth;
        for (const CsnMember::Occurrence& occurrence : member.occurrences) {
            byWidth[FixedWidth(*occurrence.field).value_or(0)].push_back(occurrence);
        }
        row.mixed = row.bound != 0 && byWidth.size() > 1;
        for (const auto& [width, occurrences] : byWidth) {
            row.kind = width == 0 ? CsnFieldRow::Kind::kMarker : CsnFieldRow::Kind::kInteger;
            row.width = static_cast<std::uint16_t>(width);
            AddRow(open, occurrences, row, path);
        }
        return type;
    }

    ValueFacts FactsOf(const CsnMember& member, const CsnAnnotations& annotations,
                       const std::string& name) {
        ValueFacts facts;
        facts.annotation = annotations.type;
        facts.annotatedSize = annotations.typeSize;
        bool isFirst = true;
        for (const CsnMember::Occurrence& occurrence : member.occurrences) {
            const auto width = FixedWidth(*occurrence.field);
            const bool isAny = occurrence.inErrorBranch && width != 1U;
            facts.isVariable |= !width || (isAny && annotations.type == TypeAnnotation::kByRule);
            facts.sameWidth &= isFirst || width == facts.width;
            facts.width = std::max(facts.width, width.value_or(0));
            isFirst = false;
        }
        if (family_.findEnum) {
            facts.values =
                family_.findEnum(annotations.enumeration ? annotations.enumeration->text : name);
        }
        if (annotations.enumeration && facts.values == nullptr) {
            reporter_.Error(annotations.enumeration->span,
                            "there is no enumeration '" + annotations.enumeration->text + "'");
        }
        return facts;
    }

    /// The rule by which a value gets its type.
    void Choose(TypeModel& type, const ValueFacts& facts, const CsnMember& member) {
        const Span span = member.occurrences.front().field->span;
        const bool isNumber = facts.annotation == TypeAnnotation::kInteger ||
                              (facts.annotation == TypeAnnotation::kByRule && !facts.isVariable &&
                               facts.width <= kMostIntegerBits);
        if (isNumber && (facts.isVariable || facts.width > kMostIntegerBits)) {
            reporter_.Error(span, "'" + member.name +
                                      "' can be no integer: its length varies or "
                                      "is above 32 bits");
        } else if (isNumber) {
            type.kind = facts.values == nullptr ? Kind::kInteger : Kind::kEnumerated;
            type.enumeration = facts.values;
            CheckValues(reporter_, type, facts.width);
            const auto width = static_cast<std::uint32_t>(facts.width);
            type.size = width > 1 && width < 8 ? 8 : width;
            if (facts.annotation == TypeAnnotation::kInteger) {
                type.size = facts.annotatedSize;
            }
        } else {
            type.kind = Kind::kBinary;
            type.fixed = facts.annotation == TypeAnnotation::kFixedBinary ||
                         (facts.annotation == TypeAnnotation::kByRule && !facts.isVariable &&
                          facts.sameWidth);
            type.size = facts.annotation != TypeAnnotation::kByRule ? facts.annotatedSize
                        : facts.isVariable                          ? kMostVariableBits
                                           : static_cast<std::uint32_t>(facts.width);
            if (facts.values != nullptr) {
                reporter_.Error(span, "'" + member.name +
                                          "' is a bit string and can have no "
                                          "enumeration");
            }
        }
    }

    /// Gives the occurrences a tag and its row.
    std::uint16_t AddRow(const OpenStruct& open,
                         const std::vector<CsnMember::Occurrence>& occurrences,
                         const CsnFieldRow& row, const std::string& path) {
        const auto tag = static_cast<std::uint16_t>(nextTag_++);
        structure_->fields.push_back(row);
        structure_->paths.push_back(path);
        for (const CsnMember::Occurrence& occurrence : occurrences) {
            tables_.tags[occurrence.field].push_back({open.parentTag, tag});
        }
        return tag;
    }

    Reporter& reporter_;
    const CsnSyntax& syntax_;
    const CsnFamily& family_;
    TypeStore& store_;
    CsnMemberFinder finder_;
    CsnTypeTables tables_;
    CsnStructureTypes* structure_ = nullptr;  // the current one
    std::deque<OpenStruct> open_;             // of it, from the outside inwards
    std::size_t nextTag_ = 1;
};

}  // namespace

CsnTypeTables DeriveCsnTypes(Reporter& reporter, const CsnSyntax& syntax, const CsnFamily& family,
                             TypeStore& store) {
    return Deriver(reporter, syntax, family, store).Run();
}

}  // namespace quorvane::compiler
