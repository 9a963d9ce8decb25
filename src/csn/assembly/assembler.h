#pragma once

// Puts byte-code together. Labels may be used before they are bound; distances are packed when the
// code is finished, in as few octets as they need. JMP and ALT lead forward as far as they like:
// one that does not reach its target leads to a JMP that the assembler puts on the way.
//
//   Assembler code;
//   const auto end = code.NewLabel();
//   code.Emit(Opcode::kRepAny, {Assembler::Exit(end, false)});
//   const auto body = code.BindNew();
//   code.Emit(Opcode::kBit1);
//   code.Emit(Opcode::kField, {3, 8});
//   code.Emit(Opcode::kLoop, {body});
//   code.Bind(end);
//   code.Emit(Opcode::kBit0);
//   const std::vector<std::uint8_t> image = code.Finish();  // then ask Errors()
//
// Tests: tests/unit/csn_assembler_test.cpp.

#include <cstdint>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "csn/assembly/instruction.h"

namespace quorvane::csn {

class Assembler {
  public:
    /// A place in the code, bound once.
    struct Label {
        std::uint32_t index;
    };

    /// One operand of an instruction, as the operand kinds of byte_code.h ask for it.
    struct Operand {
        enum class Form : std::uint8_t { kNumber, kLabel, kFlaggedLabel, kDelimiter, kLiteral };

        Operand(std::uint32_t plain) : form(Form::kNumber), number(plain) {}  // NOLINT: implicit
        Operand(Label place) : form(Form::kLabel), number(place.index) {}     // NOLINT: implicit
        Operand(Form operandForm, std::uint32_t first, std::uint32_t second)
            : form(operandForm), number(first), extra(second) {}

        Form form;
        std::uint32_t number;     // the number, the label's index, the field or the literal's value
        std::uint32_t extra = 0;  // the flag, `sized` or the literal's width
    };

    /// End of a repetition; a writer leaves the repetition out once its least count is reached if
    /// `skipWhenWriting` is set.
    static Operand Exit(Label label, bool skipWhenWriting) {
        return {Operand::Form::kFlaggedLabel, label.index, skipWhenWriting ? 1U : 0U};
    }
    /// The next branch of a choice; `last` marks the last one, which a writer in an open repetition
    /// passes over.
    static Operand Branch(Label label, bool last) {
        return {Operand::Form::kFlaggedLabel, label.index, last ? 1U : 0U};
    }
    /// A field that BEGIN opens or END closes.
    static Operand Delimiter(std::uint32_t fieldId, bool sized) {
        return {Operand::Form::kDelimiter, fieldId, sized ? 1U : 0U};
    }
    /// A pattern of 1 to 16 bits.
    static Operand Literal(std::uint32_t value, std::uint32_t width) {
        return {Operand::Form::kLiteral, value, width};
    }

    [[nodiscard]] Label NewLabel();
    /// Binds `label` to the next instruction.
    void Bind(Label label);
    [[nodiscard]] Label BindNew();

    /// Appends an instruction. Operands that do not fit the opcode are an error.
    void Emit(Opcode opcode, std::initializer_list<Operand> operands = {});

    /// Packs what was appended. The result is of use only if there are no errors.
    [[nodiscard]] std::vector<std::uint8_t> Finish();

    /// Offset of a bound label, known once the code is finished.
    [[nodiscard]] std::uint32_t OffsetOf(Label label) const;

    /// What went wrong, in the order in which it was found.
    [[nodiscard]] const std::vector<std::string>& Errors() const { return errors_; }

  private:
    struct Item {
        const OpcodeInfo* info = nullptr;  // null: NOPs up to a multiple of 8
        std::vector<Operand> operands;
        std::vector<std::uint32_t> sizes;  // octets of each operand
        std::uint32_t offset = 0;
    };

    /// JMPs that go in front of an item: their labels by where they lead.
    using Bridges = std::map<std::uint32_t, Label>;

    bool Place();
    bool ReachFar();
    [[nodiscard]] bool IsTooFar(const Item& item) const;
    void Insert(const std::map<std::size_t, Bridges>& bridges,
                const std::set<std::uint32_t>& aligned);
    [[nodiscard]] std::uint32_t Packed(const Item& item, std::size_t place) const;
    void Check(const Item& item);
    void CheckReach(const Item& item, std::size_t place);
    void Append(const Item& item, std::vector<std::uint8_t>& code) const;
    void Report(const Item& item, const std::string& what);

    std::vector<Item> items_;
    std::vector<std::size_t> labels_;  // index of the item that a label stands before
    std::vector<std::uint32_t> labelOffsets_;
    std::map<std::uint32_t, std::uint32_t> bridgeTargets_;  // labels: where bridges lead
    std::vector<std::string> errors_;
};

/// Appends `value` as a variable-length operand of at least `octets` octets.
void AppendOperand(std::vector<std::uint8_t>& code, std::uint32_t value, std::uint32_t octets = 1);

/// How many octets `value` takes as a variable-length operand.
[[nodiscard]] std::uint32_t OperandSize(std::uint32_t value);

}  // namespace quorvane::csn
