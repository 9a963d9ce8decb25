#include "csn/assembly/assembler.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace quorvane::csn {
namespace {

using Form = Assembler::Operand::Form;

constexpr std::size_t kUnbound = static_cast<std::size_t>(-1);

// The scaled form of JMP: it counts granules, from where the plain form ends.
constexpr std::uint32_t kScaled = 0x2000;
constexpr std::uint32_t kScaledStart = 4096;
constexpr std::uint32_t kGranule = 8;
constexpr std::uint32_t kMostScaledJump = kScaledStart + kGranule * kMostJump;

/// What a jump to a bridge leaves of its reach, for code on the way that still grows.
constexpr std::uint32_t kReserve = 256;

/// How an operand of `kind` is written down in Emit.
Form FormOf(OperandKind kind) {
    switch (kind) {
        case OperandKind::kLabel:
        case OperandKind::kDistance:
        case OperandKind::kBackDistance:
        case OperandKind::kJumpDistance:
            return Form::kLabel;
        case OperandKind::kExit:
        case OperandKind::kAltDistance:
            return Form::kFlaggedLabel;
        case OperandKind::kDelimiter:
            return Form::kDelimiter;
        case OperandKind::kLiteral:
            return Form::kLiteral;
        default:
            return Form::kNumber;
    }
}

/// Whether the operand shares the instruction's first octets.
bool IsShort(OperandKind kind) {
    return kind == OperandKind::kJumpDistance || kind == OperandKind::kAltDistance ||
           kind == OperandKind::kSkipBits;
}

/// The distance code of a JMP from `base` to `target`, or nothing if none leads there.
std::optional<std::uint32_t> JumpCode(std::uint32_t base, std::uint32_t target) {
    if (target < base) {
        return std::nullopt;
    }
    const std::uint32_t distance = target - base;
    if (distance <= kMostJump) {
        return distance;
    }
    const std::uint32_t granules = (distance - kScaledStart) / kGranule;
    const std::uint32_t code = kScaled | granules;
    if (granules > kMostJump || JumpDistance(base, code) != target) {
        return std::nullopt;
    }
    return code;
}

}  // namespace

std::uint32_t OperandSize(std::uint32_t value) {
    std::uint32_t octets = 1;
    while (octets < 5 && value >> 7 * octets != 0) {
        ++octets;
    }
    return octets;
}

void AppendOperand(std::vector<std::uint8_t>& code, std::uint32_t value, std::uint32_t octets) {
    const std::uint32_t count = std::max(octets, OperandSize(value));
    // The fifth octet holds but 4 bits.
    const std::uint32_t lastBits = count == 5 ? 4 : 7;
    for (std::uint32_t left = count; left > 1; --left) {
        const std::uint32_t group = value >> (7 * (left - 2) + lastBits) & 0x7FU;
        code.push_back(static_cast<std::uint8_t>(group | 0x80U));
    }
    code.push_back(static_cast<std::uint8_t>(value & ((1U << lastBits) - 1)));
}

Assembler::Label Assembler::NewLabel() {
    labels_.push_back(kUnbound);
    return {static_cast<std::uint32_t>(labels_.size() - 1)};
}

void Assembler::Bind(Label label) {
    if (labels_[label.index] != kUnbound) {
        errors_.push_back("label " + std::to_string(label.index) + " is bound twice");
        return;
    }
    labels_[label.index] = items_.size();
}

Assembler::Label Assembler::BindNew() {
    const Label label = NewLabel();
    Bind(label);
    return label;
}

void Assembler::Emit(Opcode opcode, std::initializer_list<Operand> operands) {
    Item item;
    item.info = &InfoOf(static_cast<std::uint8_t>(opcode));
    item.operands = operands;
    const auto& kinds = item.info->operands;
    const auto wanted = static_cast<std::size_t>(std::count_if(
        kinds.begin(), kinds.end(), [](OperandKind kind) { return kind != OperandKind::kNone; }));
    bool fits = wanted == item.operands.size();
    for (std::size_t place = 0; fits && place < wanted; ++place) {
        fits = item.operands[place].form == FormOf(kinds[place]);
    }
    if (!fits) {
        errors_.push_back("operands do not fit " + std::string(item.info->name));
        return;
    }
    for (std::size_t place = 0; place < wanted; ++place) {
        item.sizes.push_back(IsShort(kinds[place]) ? 0 : 1);
    }
    items_.push_back(std::move(item));
}

std::uint32_t Assembler::OffsetOf(Label label) const {
    return labelOffsets_[label.index];
}

/// Gives every item its offset by the sizes so far. True if an operand has to grow for it.
bool Assembler::Place() {
    std::vector<std::uint32_t> offsets;
    std::uint32_t offset = 0;
    for (Item& item : items_) {
        item.offset = offset;
        offsets.push_back(offset);
        if (item.info == nullptr) {
            offset += (kGranule - offset % kGranule) % kGranule;
            continue;
        }
        const OperandKind first = item.info->operands[0];
        offset += first == OperandKind::kJumpDistance || first == OperandKind::kAltDistance ? 2 : 1;
        for (const std::uint32_t size : item.sizes) {
            offset += size;
        }
    }
    offsets.push_back(offset);
    labelOffsets_.clear();
    for (const std::size_t index : labels_) {
        labelOffsets_.push_back(index == kUnbound ? 0 : offsets[index]);
    }
    bool grown = false;
    for (Item& item : items_) {
        for (std::size_t place = 0; place < item.sizes.size(); ++place) {
            if (item.sizes[place] == 0) {
                continue;
            }
            const std::uint32_t needed = OperandSize(Packed(item, place));
            if (needed > item.sizes[place]) {
                item.sizes[place] = needed;
                grown = true;
            }
        }
    }
    return grown;
}

/// Whether `item` is a jump forward that does not reach its target.
bool Assembler::IsTooFar(const Item& item) const {
    const OperandKind kind = item.info == nullptr ? OperandKind::kNone : item.info->operands[0];
    if (kind != OperandKind::kJumpDistance && kind != OperandKind::kAltDistance) {
        return false;
    }
    const std::uint32_t target = labelOffsets_[item.operands[0].number];
    return target > item.offset + kMostJump &&
           (kind == OperandKind::kAltDistance || !JumpCode(item.offset, target));
}

/// Helps the jumps that are too far: puts the target of a JMP on a multiple of the granule if that
/// is enough, else leads the jump to a bridge on the way. False if there were none.
bool Assembler::ReachFar() {
    std::map<std::uint32_t, std::map<std::uint32_t, Label>> known;  // bridges by target and offset
    for (const auto& [bridge, target] : bridgeTargets_) {
        known[target][labelOffsets_[bridge]] = {bridge};
    }
    std::map<std::size_t, Bridges> added;  // by the item that they go in front of
    std::set<std::uint32_t> aligned;       // labels
    for (Item& item : items_) {
        if (!IsTooFar(item)) {
            continue;
        }
        std::uint32_t& label = item.operands[0].number;
        const bool scales = item.info->operands[0] == OperandKind::kJumpDistance;
        const std::uint32_t farthest = item.offset + (scales ? kMostScaledJump : kMostJump);
        if (scales && labelOffsets_[label] <= farthest - kGranule) {
            aligned.insert(label);
            continue;
        }
        const auto bridge = bridgeTargets_.find(label);
        const std::uint32_t target = bridge == bridgeTargets_.end() ? label : bridge->second;
        auto next = known[target].upper_bound(farthest - kReserve);
        if (next == known[target].begin() || std::prev(next)->first <= item.offset) {
            const auto behind = std::upper_bound(
                items_.begin(), items_.end(), farthest - kReserve,
                [](std::uint32_t offset, const Item& other) { return offset < other.offset; });
            const auto place = std::prev(behind);
            const Label newLabel = NewLabel();
            added[static_cast<std::size_t>(place - items_.begin())][target] = newLabel;
            bridgeTargets_[newLabel.index] = target;
            next = std::next(known[target].insert_or_assign(place->offset, newLabel).first);
        }
        label = std::prev(next)->second.index;
    }
    if (added.empty() && aligned.empty()) {
        return false;
    }
    Insert(added, aligned);
    return true;
}

/// Labels of an item lead to what is put in front of it, but for those that are to be aligned.
void Assembler::Insert(const std::map<std::size_t, Bridges>& bridges,
                       const std::set<std::uint32_t>& aligned) {
    std::set<std::size_t> alignedItems;
    for (const std::uint32_t label : aligned) {
        alignedItems.insert(labels_[label]);
    }
    std::vector<Item> items;
    std::vector<std::size_t> starts;  // of what is in front of each old item
    std::vector<std::size_t> places;  // of the old items
    std::map<std::uint32_t, std::size_t> bound;
    const auto jump = [&items](Label target) {
        items.push_back({&InfoOf(static_cast<std::uint8_t>(Opcode::kJmp)), {target}, {0}});
    };
    for (std::size_t index = 0; index <= items_.size(); ++index) {
        starts.push_back(items.size());
        if (const auto here = bridges.find(index); here != bridges.end()) {
            const Label over = NewLabel();
            jump(over);
            for (const auto& [target, label] : here->second) {
                bound[label.index] = items.size();
                jump({target});
            }
            bound[over.index] = items.size();
        }
        if (alignedItems.contains(index)) {
            items.emplace_back();
        }
        places.push_back(items.size());
        if (index < items_.size()) {
            items.push_back(std::move(items_[index]));
        }
    }
    for (std::uint32_t label = 0; label < labels_.size(); ++label) {
        if (labels_[label] != kUnbound) {
            labels_[label] = (aligned.contains(label) ? places : starts)[labels_[label]];
        }
    }
    for (const auto& [label, index] : bound) {
        labels_[label] = index;
    }
    items_ = std::move(items);
}

std::uint32_t Assembler::Packed(const Item& item, std::size_t place) const {
    const Operand& operand = item.operands[place];
    const auto target = [&] { return labelOffsets_[operand.number]; };
    switch (item.info->operands[place]) {
        case OperandKind::kLabel:
            return target();
        case OperandKind::kDistance:
            return target() - item.offset;
        case OperandKind::kBackDistance:
            return item.offset - target();
        case OperandKind::kExit:
            return (target() - item.offset) << 1 | operand.extra;
        case OperandKind::kDelimiter:
            return operand.number << 1 | operand.extra;
        case OperandKind::kLiteral:
            return operand.number << 4 | ((operand.extra - 1) & 0xFU);
        case OperandKind::kJumpDistance:
            return JumpCode(item.offset, target()).value_or(0);
        case OperandKind::kAltDistance:
            return ((target() - item.offset) & kMostJump) | (operand.extra != 0 ? kAltFlag : 0);
        default:
            return operand.number;
    }
}

void Assembler::Report(const Item& item, const std::string& what) {
    errors_.push_back(std::string(item.info->name) + " at " + std::to_string(item.offset) + ": " +
                      what);
}

void Assembler::CheckReach(const Item& item, std::size_t place) {
    const std::uint32_t label = item.operands[place].number;
    if (labels_[label] == kUnbound) {
        Report(item, "label " + std::to_string(label) + " is not bound");
        return;
    }
    const std::uint32_t target = labelOffsets_[label];
    const std::string leads = " to " + std::to_string(target);
    switch (item.info->operands[place]) {
        case OperandKind::kBackDistance:
            if (target > item.offset) {
                Report(item, "leads forward" + leads);
            }
            break;
        case OperandKind::kJumpDistance:
            if (!JumpCode(item.offset, target)) {
                Report(item, "cannot reach " + std::to_string(target));
            }
            break;
        case OperandKind::kAltDistance:
            if (target < item.offset || target - item.offset > kMostJump) {
                Report(item, "cannot reach " + std::to_string(target));
            }
            break;
        case OperandKind::kDistance:
        case OperandKind::kExit:
            if (target < item.offset) {
                Report(item, "leads back" + leads);
            }
            break;
        default:
            break;
    }
}

/// Reports operands that cannot be packed.
void Assembler::Check(const Item& item) {
    for (std::size_t place = 0; place < item.operands.size(); ++place) {
        const Operand& operand = item.operands[place];
        switch (operand.form) {
            case Form::kLabel:
            case Form::kFlaggedLabel:
                CheckReach(item, place);
                break;
            case Form::kDelimiter:
                if (operand.number > 0x7FFFFFFFU) {
                    Report(item, "field identifier too large");
                }
                break;
            case Form::kLiteral:
                if (operand.extra < 1 || operand.extra > 16 ||
                    operand.number >> operand.extra != 0) {
                    Report(item, "a literal of " + std::to_string(operand.extra) +
                                     " bits cannot be " + std::to_string(operand.number));
                }
                break;
            case Form::kNumber:
                if (item.info->operands[place] == OperandKind::kSkipBits && operand.number > 63) {
                    Report(item, "more than 63 bits");
                }
                break;
        }
    }
}

void Assembler::Append(const Item& item, std::vector<std::uint8_t>& code) const {
    if (item.info == nullptr) {
        while (code.size() % kGranule != 0) {
            code.push_back(static_cast<std::uint8_t>(Opcode::kNop));
        }
        return;
    }
    const auto opcode = static_cast<std::uint32_t>(item.info->opcode);
    const OperandKind first = item.info->operands[0];
    if (first == OperandKind::kSkipBits) {
        code.push_back(static_cast<std::uint8_t>(opcode | (Packed(item, 0) & 0x3FU)));
        return;
    }
    if (IsShort(first)) {
        const std::uint32_t packed = Packed(item, 0);
        code.push_back(static_cast<std::uint8_t>(opcode | (packed >> 8 & 0x3FU)));
        code.push_back(static_cast<std::uint8_t>(packed & 0xFFU));
        return;
    }
    code.push_back(static_cast<std::uint8_t>(opcode));
    for (std::size_t place = 0; place < item.operands.size(); ++place) {
        AppendOperand(code, Packed(item, place), item.sizes[place]);
    }
}

std::vector<std::uint8_t> Assembler::Finish() {
    for (const Item& item : items_) {
        for (const Operand& operand : item.operands) {
            const bool label = operand.form == Form::kLabel || operand.form == Form::kFlaggedLabel;
            if (label && operand.number >= labels_.size()) {
                Report(item, "label " + std::to_string(operand.number) + " does not exist");
                return {};
            }
        }
    }
    // Operands and bridges only get more, so this ends.
    do {
        while (Place()) {
        }
    } while (ReachFar());
    std::vector<std::uint8_t> code;
    for (const Item& item : items_) {
        if (item.info != nullptr) {
            Check(item);
        }
        Append(item, code);
    }
    return code;
}

}  // namespace quorvane::csn
