#include "csn/assembly/verifier.h"

#include <algorithm>

#include "csn/assembly/verifier_flow.h"
#include "csn/machine.h"

namespace quorvane::csn {
namespace {

constexpr std::uint32_t kMostFieldBits = 65535;  // a location has 16 bits for the length

// A full stack cannot go back any more.
constexpr std::uint32_t kMostEntriesOfUse = kMostStackEntries - 1;

class Verification {
  public:
    explicit Verification(const VerifierInput& input) : input_(input) {}

    VerifierReport Report() {
        if (Sweep() && CheckEntries()) {
            CheckFieldTable();
            CheckFlow();
        }
        report_.needs.resize(input_.entries.size());
        std::stable_sort(report_.findings.begin(), report_.findings.end(),
                         [](const VerifierFinding& left, const VerifierFinding& right) {
                             return left.offset < right.offset;
                         });
        return std::move(report_);
    }

  private:
    bool Sweep();
    void CheckOperands(const Instruction& instruction);
    void CheckTarget(const Instruction& instruction);
    bool CheckEntries();
    void CheckFieldTable();
    void CheckPairs(std::uint32_t id);
    void CheckFlow();

    [[nodiscard]] std::uint32_t EndOfPairs(std::uint32_t id) const;
    [[nodiscard]] std::optional<std::uint16_t> FindTag(std::uint32_t id,
                                                       std::uint16_t parent) const;

    void Find(std::uint32_t offset, std::string text) {
        report_.findings.push_back({offset, std::move(text)});
    }

    const VerifierInput& input_;
    InstructionMap instructions_;
    std::map<std::uint32_t, std::uint32_t> fields_;  // identifiers, with the first use of each
    VerifierReport report_;
};

/// Decodes the image from end to end and checks each instruction for itself.
bool Verification::Sweep() {
    std::uint32_t offset = 0;
    while (offset < input_.code.size()) {
        const auto instruction = DecodeInstruction(input_.code, offset);
        if (!instruction) {
            Find(offset, "incomplete instruction");
            return false;
        }
        instructions_.emplace(offset, *instruction);
        offset += instruction->size;
    }
    for (const auto& [place, instruction] : instructions_) {
        CheckOperands(instruction);
        CheckTarget(instruction);
    }
    return report_.findings.empty();
}

void Verification::CheckOperands(const Instruction& instruction) {
    const auto check = [&](const char* what, std::uint32_t number, std::size_t count) {
        if (number >= count) {
            Find(instruction.offset,
                 std::string(what) + " " + std::to_string(number) + " of " + std::to_string(count));
        }
    };
    for (std::size_t place = 0; place < instruction.operands.size(); ++place) {
        const std::uint32_t operand = instruction.operands[place];
        switch (instruction.info->operands[place]) {
            case OperandKind::kAction:
                check("action", operand, input_.actions.size());
                break;
            case OperandKind::kFunction:
            case OperandKind::kEncodeFunction:
            case OperandKind::kDecodeFunction:
                check("value function", operand, input_.functions.size());
                break;
            case OperandKind::kWidth:
                if (operand > kMostFieldBits) {
                    Find(instruction.offset, "a field of " + std::to_string(operand) + " bits");
                }
                break;
            case OperandKind::kField:
            case OperandKind::kDelimiter: {
                const std::uint32_t id = instruction.FieldId();
                if (id < 1 || id >= input_.fieldTable.size()) {
                    Find(instruction.offset, "field " + std::to_string(id) +
                                                 " is not in a table of " +
                                                 std::to_string(input_.fieldTable.size()));
                } else {
                    fields_.emplace(id, instruction.offset);
                }
                break;
            }
            default:
                break;
        }
    }
}

void Verification::CheckTarget(const Instruction& instruction) {
    const std::optional<std::uint64_t> target = instruction.Target();
    if (!target) {
        return;
    }
    const bool inside =
        *target < input_.code.size() && instructions_.contains(static_cast<std::uint32_t>(*target));
    if (!inside) {
        Find(instruction.offset, "leads to no instruction");
        return;
    }
    const bool mayLeadBack =
        instruction.Code() == Opcode::kCall || instruction.Code() == Opcode::kLoop;
    if (!mayLeadBack && *target <= instruction.offset) {
        Find(instruction.offset, "leads nowhere");
    }
}

bool Verification::CheckEntries() {
    for (const VerifierEntry& entry : input_.entries) {
        if (!instructions_.contains(entry.label)) {
            Find(entry.label, "the entry of " + entry.name + " is no instruction");
        }
    }
    return report_.findings.empty();
}

/// The pairs of a field end where the next field's index stands.
std::uint32_t Verification::EndOfPairs(std::uint32_t id) const {
    const auto next = fields_.upper_bound(id);
    return next == fields_.end() ? static_cast<std::uint32_t>(input_.fieldTable.size())
                                 : next->first - 1;
}

std::optional<std::uint16_t> Verification::FindTag(std::uint32_t id, std::uint16_t parent) const {
    const std::uint32_t end = EndOfPairs(id);
    for (std::uint32_t place = id; place + 1 < end; place += 2) {
        if (input_.fieldTable[place] == parent) {
            return input_.fieldTable[place + 1];
        }
    }
    return std::nullopt;
}

void Verification::CheckFieldTable() {
    for (const auto& [id, offset] : fields_) {
        if ((EndOfPairs(id) - id) % 2 != 0) {
            Find(offset, "field " + std::to_string(id) + " has half a pair");
        }
        CheckPairs(id);
    }
}

/// A structure's tags lie side by side, and those inside its fields are its own too.
void Verification::CheckPairs(std::uint32_t id) {
    const std::uint32_t end = EndOfPairs(id);
    for (std::uint32_t place = id; place + 1 < end; place += 2) {
        const std::uint16_t parent = input_.fieldTable[place];
        const std::uint16_t tag = input_.fieldTable[place + 1];
        for (const VerifierEntry& entry : input_.entries) {
            const auto own = [&](std::uint16_t number) {
                return number >= entry.firstTag && number - entry.firstTag < entry.fieldCount;
            };
            if (entry.fieldCount > 0 && (parent == entry.rootTag || own(parent)) && !own(tag)) {
                Find(fields_[id], "field " + std::to_string(id) + " has the tag " +
                                      std::to_string(tag) + ", which is not of " + entry.name);
            }
        }
    }
}

void Verification::CheckFlow() {
    FlowVerifier flow(input_, instructions_, [this](std::uint32_t id, std::uint16_t parent) {
        return FindTag(id, parent);
    });
    flow.Run([this](std::uint32_t offset, const std::string& text) { Find(offset, text); });
    const bool sound = report_.findings.empty();
    for (const VerifierEntry& entry : input_.entries) {
        const RuleSummary summary = flow.Summary(entry.label, entry.rootTag);
        VerifierNeed need;
        need.tags = summary.tagsMost;
        if (summary.stackMost < RuleSummary::kTooMany) {
            need.stackEntries = summary.stackMost;
        }
        if (summary.tagsMost > kMostTags) {
            Find(entry.label, entry.name + " may keep more than " + std::to_string(kMostTags) +
                                  " tags at a time");
        }
        if (need.stackEntries.value_or(0) > kMostEntriesOfUse) {
            Find(entry.label,
                 entry.name + " may need " + std::to_string(*need.stackEntries) + " stack entries");
        }
        if (summary.commits) {
            Find(entry.label, entry.name + " may move up a choice point where there is none");
        }
        report_.needs.push_back(sound ? need : VerifierNeed{});
    }
}

}  // namespace

std::string VerifierReport::Text() const {
    std::string text;
    for (const VerifierFinding& finding : findings) {
        text += std::to_string(finding.offset) + ": " + finding.text + "\n";
    }
    return text;
}

VerifierReport Verify(const VerifierInput& input) {
    return Verification(input).Report();
}

}  // namespace quorvane::csn
