#include "reference/csn_reference_writer.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>
#include <utility>
#include <vector>

#include "compiler/csn/csn_members.h"
#include "reference/csn_walk.h"

namespace quorvane::reference {
namespace {

using compiler::CsnNode;
using compiler::CsnRule;
using compiler::CsnVariable;
using Kind = CsnNode::Kind;
using Form = CsnNode::Repetition::Form;
using FieldKind = csn::CsnFieldKind;
using Names = std::set<std::string>;

/// The members that are in all that the node stands for.
Names NamesInAll(const CsnNode& node) {
    switch (node.kind) {
        case Kind::kField:
            return {compiler::CsnMemberName(node)};
        case Kind::kReference:
            return node.rule->recursive ? Names() : NamesInAll(*node.rule->body);
        case Kind::kTruncate:
            return {};
        case Kind::kRepeat: {
            const bool count = node.repetition.form == Form::kCount &&
                               node.repetition.count.form == compiler::CsnCount::Form::kNumber &&
                               node.repetition.count.number > 0;
            const bool range = node.repetition.form == Form::kRange && node.low > 0;
            return count || range ? NamesInAll(*node.children[0]) : Names();
        }
        case Kind::kChoice:
        case Kind::kError:
        case Kind::kSend: {
            Names names = NamesInAll(*node.children[0]);
            for (const CsnNode* branch : node.children) {
                const Names others = NamesInAll(*branch);
                std::erase_if(names,
                              [&](const std::string& name) { return others.count(name) == 0; });
            }
            return names;
        }
        default: {
            Names names;
            for (const CsnNode* child : node.children) {
                names.merge(NamesInAll(*child));
            }
            return names;
        }
    }
}

}  // namespace

class Writer : Walk {
  public:
    Writer(ReferenceWriter& facts, const SlowValue& record, std::int32_t start)
        : Walk(std::string(static_cast<std::size_t>(start), '0'), start),
          facts_(facts),
          structure_(facts.structure_),
          members_(&record) {}

    std::optional<std::string> Run() {
        const std::int32_t start = position_;
        try {
            if (!Rule(*structure_.section->entry)) {
                return std::nullopt;
            }
        } catch (const Ended&) {
            return std::nullopt;
        }
        bits_.resize(static_cast<std::size_t>(position_), '0');
        return bits_.substr(static_cast<std::size_t>(start));
    }

  private:
    /// Rules inside of each other: the machine has no room for more.
    static constexpr std::size_t kDeepest = 300;

    /// A field, open or not, by its tag and the open field around it.
    struct Opened {
        std::uint16_t tag;
        std::optional<std::size_t> parent;
    };

    /// How a choice stands to the open repetition around it, with no field between.
    enum class Around : std::uint8_t { kNothing, kRepetition, kRepetitionThatAFieldEnds };

    struct Place {
        std::int32_t position;
        std::size_t variables;
        std::size_t opened;
    };

    [[nodiscard]] Place Here() const { return {position_, variables_.size(), opened_.size()}; }
    void Back(const Place& place) {
        position_ = place.position;
        variables_.resize(place.variables);
        opened_.resize(place.opened);
    }
    [[nodiscard]] bool Writing() const { return !again_ && !inWhole_; }

    // ---- Nodes -----------------------------------------------------------------------------

    bool Rule(const CsnRule& rule) {
        const std::size_t variables = variables_.size();
        if (++depth_ > kDeepest) {
            throw Ended();
        }
        const bool written = Node(*rule.body);
        --depth_;
        if (!written) {
            return false;
        }
        if (!rule.keepsTags) {
            variables_.resize(variables);
        }
        return true;
    }

    bool Node(const CsnNode& node) {
        switch (node.kind) {
            case Kind::kNull:
                return true;
            case Kind::kBits:
                return std::all_of(node.text.begin(), node.text.end(),
                                   [&](char bit) { return Bit(bit); });
            case Kind::kAnyBits:
                return AnyBits(static_cast<std::int32_t>(node.width));
            case Kind::kConcat:
                return Concatenation(node);
            case Kind::kChoice:
                return Choice(node);
            case Kind::kError: {
                const Place before = Here();
                if (Node(*node.children[0])) {
                    return true;
                }
                Back(before);
                return !node.readOnly && Branch(*node.children[1]);
            }
            case Kind::kRepeat:
                return Repetition(node);
            case Kind::kTruncate:
                return Truncation(node);
            case Kind::kIntersection: {
                const std::int32_t begin = position_;
                return Node(*node.children[0]) && Again(begin, *node.children[1]);
            }
            case Kind::kExclude:
                return Exclusion(node);
            case Kind::kSend:
                return Node(*node.children[1]);
            case Kind::kRange: {
                const std::int32_t begin = position_;
                if (!Node(*node.children[0])) {
                    return false;
                }
                const std::uint32_t value = Value(begin, position_);
                return value >= node.low && value <= node.high;
            }
            case Kind::kField:
                return Field(node);
            case Kind::kReference:
                return Rule(*node.rule);
            case Kind::kAction:
                if (node.direction != CsnNode::Direction::kReading) {
                    Action(node);
                }
                return true;
        }
        return false;
    }

    void Put(bool bit) {
        const auto at = static_cast<std::size_t>(position_++);
        bits_.resize(std::max(bits_.size(), at + 1), '0');
        bits_[at] = bit ? '1' : '0';
    }

    bool Bit(char wanted) {
        const bool bit = Meaning(wanted);
        if (Writing()) {
            Put(bit);
            return true;
        }
        if (position_ + 1 > end_ || At(position_) != bit) {
            return false;
        }
        ++position_;
        return true;
    }

    bool AnyBits(std::int32_t count) {
        if (Writing()) {
            for (std::int32_t bit = 0; bit < count; ++bit) {
                Put(false);
            }
            return true;
        }
        if (position_ + count > end_) {
            return false;
        }
        position_ += count;
        return true;
    }

    bool Concatenation(const CsnNode& node) {
        const Around around = around_;
        for (const CsnNode* child : node.children) {
            const bool ended =
                std::any_of(node.children.begin(), node.children.end(), [&](const CsnNode* other) {
                    return other != child && facts_.AlwaysHasAField(*other);
                });
            around_ =
                around == Around::kRepetition && ended ? Around::kRepetitionThatAFieldEnds : around;
            const bool written = Node(*child);
            around_ = around;
            if (!written) {
                return false;
            }
        }
        return true;
    }

    bool Choice(const CsnNode& node) {
        const Place before = Here();
        for (const CsnNode* branch : facts_.branches_.Of(node)) {
            if (Branch(*branch)) {
                return true;
            }
            Back(before);
        }
        return false;
    }

    bool Branch(const CsnNode& branch) {
        const bool passedOver = Writing() && around_ == Around::kRepetition && !HasFields(branch);
        return !passedOver && Node(branch);
    }

    bool Repetition(const CsnNode& node) {
        std::uint64_t least = 0;
        std::uint64_t most = UINT64_MAX;
        if (node.repetition.form == Form::kCount || node.repetition.form == Form::kWriteCount) {
            least = most = Count(node.repetition.count);
        } else if (node.repetition.form == Form::kRange) {
            least = node.low;
            most = node.high == compiler::kUnbounded ? UINT64_MAX : node.high;
        }
        if (node.repetition.leftOut && !inWhole_) {
            most = least;
        }
        const Around around = around_;
        bool written = true;
        for (std::uint64_t done = 0; done < most; ++done) {
            // What has to be there up to a bound is written whatever it holds.
            const bool isOpen = most == UINT64_MAX || (done >= least && least != most);
            around_ = isOpen                                 ? Around::kRepetition
                      : node.repetition.form == Form::kCount ? around
                                                             : Around::kNothing;
            const Place before = Here();
            if (!Node(*node.children[0])) {
                written = done >= least;
                if (written) {
                    Back(before);
                }
                break;
            }
            variables_.resize(before.variables);
        }
        around_ = around;
        return written;
    }

    bool Truncation(const CsnNode& node) {
        Place kept = Here();
        for (const CsnNode* child : node.children) {
            if (!Node(*child)) {
                Back(kept);
                return true;
            }
            if (child->kind != Kind::kAction) {
                kept = Here();
            }
        }
        return true;
    }

    /// Reads the bits from `begin` up to here by the node.
    bool Again(std::int32_t begin, const CsnNode& node) {
        const std::int32_t end = std::exchange(end_, position_);
        const bool again = std::exchange(again_, true);
        position_ = begin;
        const bool matches = Node(node);
        end_ = end;
        again_ = again;
        return matches;
    }

    bool Exclusion(const CsnNode& node) {
        const std::int32_t begin = position_;
        if (!Node(*node.children[0])) {
            return false;
        }
        const Place behind = Here();
        if (Again(begin, *node.children[1])) {
            return false;
        }
        Back(behind);
        return true;
    }

    void Action(const CsnNode& node) {
        if (Act(node)) {
            return;
        }
        if (node.name.text != "write_back") {
            std::abort();  // no description writes with it
        }
        const auto number = [&](std::size_t index) {
            return static_cast<std::int32_t>(node.arguments[index].count->number);
        };
        const std::int32_t noted = Variable(node.arguments[0].variable);
        const std::int32_t here = std::exchange(position_, noted - number(3));
        const auto length = static_cast<std::uint32_t>(here - noted - number(2));
        for (std::int32_t bit = number(1); bit > 0; --bit) {
            Put((length >> static_cast<std::uint32_t>(bit - 1) & 1U) != 0);
        }
        position_ = here;
    }

    // ---- Fields ----------------------------------------------------------------------------

    bool Field(const CsnNode& node) {
        const std::uint16_t tag = TagOf(node);
        const csn::CsnFieldRow* row = RowOf(tag);
        opened_.push_back({tag, parent_});
        const std::optional<std::size_t> parent = std::exchange(parent_, opened_.size() - 1);
        const SlowValue* members = members_;
        members_ = row == nullptr ? nullptr : members_;
        const Around around = std::exchange(around_, Around::kNothing);
        const bool isPlain = PlainWidth(node) >= 0 && !node.annotations.sized;
        const bool written = isPlain ? PlainField(node, row) : OpenField(node, row);
        parent_ = parent;
        members_ = members;
        around_ = around;
        return written;
    }

    bool PlainField(const CsnNode& node, const csn::CsnFieldRow* row) {
        const CsnNode& content = *node.children[0];
        const auto width = static_cast<std::size_t>(PlainWidth(node));
        const std::string fixed = content.kind == Kind::kBits ? content.text : std::string();
        if (again_ && !fixed.empty()) {
            return Node(content);
        }
        if (Writing()) {
            const std::optional<std::string> bits = IsStored(row)   ? Supplied(*row)
                                                    : fixed.empty() ? std::string(width, '0')
                                                                    : fixed;
            if (!bits) {
                return false;
            }
            PutAll(*bits);  // also of another length: what is read again may reach these bits
            if (bits->size() != width) {
                return false;
            }
        } else {
            position_ += static_cast<std::int32_t>(width);
        }
        return fixed.empty() || Value(position_ - static_cast<std::int32_t>(width), position_) ==
                                    static_cast<std::uint32_t>(std::stoul(fixed, nullptr, 2));
    }

    bool OpenField(const CsnNode& node, const csn::CsnFieldRow* row) {
        const CsnNode& content = *node.children[0];
        const std::int32_t begin = position_;
        const bool isGroup = HasFields(content) || content.kind == Kind::kNull;
        bool matches = false;
        std::string whole;
        if (Writing() && IsStored(row)) {
            const std::optional<std::string> bits = Supplied(*row);
            if (!bits) {
                return false;
            }
            whole = *bits;
        }
        if (Writing() && (!isGroup || node.annotations.sized || !whole.empty())) {
            PutAll(whole);
            const std::int32_t behind = std::exchange(position_, begin);
            const std::int32_t end = std::exchange(end_, behind);
            inWhole_ = true;
            matches = Node(content) && position_ == behind;
            inWhole_ = false;
            end_ = end;
        } else {
            matches = Node(content);
        }
        if (matches && node.variable != nullptr) {
            variables_.emplace_back(node.variable,
                                    static_cast<std::int32_t>(Value(begin, position_)));
        }
        return matches;
    }

    void PutAll(const std::string& bits) {
        for (const char bit : bits) {
            Put(bit == '1');
        }
    }

    static bool IsStored(const csn::CsnFieldRow* row) {
        return row != nullptr && row->kind != FieldKind::kNone;
    }

    /// The bits of the field that was opened last, or nothing if the record has not got it. What is
    /// inside of a struct belongs to its members from here on.
    std::optional<std::string> Supplied(const csn::CsnFieldRow& row) {
        static const SlowValue kNothing;
        const SlowValue* value = members_ == nullptr || members_->members.empty()
                                     ? &kNothing
                                     : &members_->members.at(row.element);
        if (row.optional && !value->present) {
            return std::nullopt;
        }
        const std::size_t before = OthersBefore(row);
        if (row.bound > 0 && before >= value->items.size()) {
            return std::nullopt;
        }
        if (row.bound == 0 && before > 0 && !row.repeats) {
            return std::nullopt;
        }
        value = row.bound > 0 ? &value->items[before] : value;
        members_ = row.kind == FieldKind::kStruct ? value : nullptr;
        std::string bits;
        if (row.kind == FieldKind::kInteger) {
            for (std::uint32_t bit = row.width; bit > 0; --bit) {
                bits += (value->number >> (bit - 1) & 1U) != 0 ? '1' : '0';
            }
        } else if (row.kind == FieldKind::kBinary) {
            bits = value->bits.substr(0, row.mostBits);
            bits.resize(row.fixed ? row.mostBits : bits.size(), '0');
        }
        return bits;
    }

    /// How many fields like the one opened last came before it under the same parent: of its tag,
    /// or where several tags share a sequence of that sequence.
    [[nodiscard]] std::size_t OthersBefore(const csn::CsnFieldRow& row) const {
        const Opened& field = opened_.back();
        return static_cast<std::size_t>(
            std::count_if(opened_.begin(), std::prev(opened_.end()), [&](const Opened& other) {
                const csn::CsnFieldRow* otherRow = RowOf(other.tag);
                const bool sameMember = row.mixed && otherRow != nullptr &&
                                        otherRow->kind != FieldKind::kNone &&
                                        otherRow->element == row.element;
                return other.parent == field.parent && (other.tag == field.tag || sameMember);
            }));
    }

    [[nodiscard]] const csn::CsnFieldRow* RowOf(std::uint16_t tag) const {
        const bool own =
            tag >= structure_.firstTag && tag < structure_.firstTag + structure_.fields.size();
        return own ? &structure_.fields[tag - structure_.firstTag] : nullptr;
    }

    [[nodiscard]] std::uint16_t TagOf(const CsnNode& field) const {
        const std::uint16_t around = parent_ ? opened_[*parent_].tag : structure_.rootTag;
        for (const auto& [parent, tag] : facts_.tables_.tags.at(&field)) {
            if (parent == around) {
                return tag;
            }
        }
        std::abort();  // the description has been checked
    }

    ReferenceWriter& facts_;
    const compiler::CsnStructureTypes& structure_;
    std::vector<Opened> opened_;
    std::optional<std::size_t> parent_;  // the open field around, in `opened_`
    const SlowValue* members_;           // the struct that fields are members of; null: of none
    Around around_ = Around::kNothing;
    std::size_t depth_ = 0;  // rules around
    bool again_ = false;     // reading a second time
    bool inWhole_ = false;   // reading what was written whole
};

std::optional<std::string> ReferenceWriter::Write(const SlowValue& record, std::int32_t start) {
    return Writer(*this, record, start).Run();
}

bool ReferenceWriter::AlwaysHasAField(const CsnNode& node) {
    const auto [entry, isNew] = alwaysHaveAField_.try_emplace(&node);
    if (isNew) {
        entry->second = !NamesInAll(node).empty();
    }
    return entry->second;
}

}  // namespace quorvane::reference
