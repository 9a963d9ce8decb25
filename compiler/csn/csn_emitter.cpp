// Writes compiled CSN.1 descriptions as C++ tables.

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <ostream>

#include "bits/named_enum.h"
#include "compiler/csn/csn_compiler.h"
#include "csn/assembly/disassembler.h"

namespace quorvane::compiler {
namespace {

using csn::CsnFieldRow;

constexpr std::size_t kCommentColumn = 34;  // behind five octets

class CsnEmitter {
  public:
    CsnEmitter(std::ostream& out, const CompiledCsn& csn) : out_(out), csn_(csn) {}

    void Run() {
        Code();
        FieldTable();
        PlanSteps();
        Functions("csn::CsnAction", "kCsnActions", csn_.image.actions);
        Functions("csn::CsnValueFunction", "kCsnFunctions", csn_.image.functions);
        out_ << "constexpr csn::CsnProgram kCsnProgram = {\n    kCsnCode.data(), "
             << csn_.image.code.size()
             << ", kCsnFieldTable.data(),\n    kCsnActions.data(), kCsnFunctions.data(), "
             << csn_.image.fieldCount << ", kCsnPlan.data()};\n\n";
        Fields();
        Structures();
    }

  private:
    void Open(const std::string& type, const std::string& name, std::size_t count) {
        out_ << "constexpr std::array<" << type << ", " << count << "> " << name
             << (count == 0 ? "{};\n\n" : " = {{\n");
    }

    void Close(std::size_t count) { out_ << (count == 0 ? "" : "}};\n\n"); }

    /// Each instruction beside what it means, found by decoding it again.
    void Code() {
        const std::vector<std::uint8_t>& code = csn_.image.code;
        csn::ListingNames names;
        names.field = [this](std::uint32_t id) { return NameOf(csn_.image.fieldNames, id); };
        names.rule = [this](std::uint32_t offset) { return NameOf(csn_.image.ruleNames, offset); };
        names.tag = [this](std::uint32_t tag) { return NameOf(csn_.image.tagNames, tag); };
        Open("std::uint8_t", "kCsnCode", code.size());
        for (std::uint32_t offset = 0; offset < code.size();) {
            const auto instruction = csn::DecodeInstruction(code, offset);
            const std::string rule = NameOf(csn_.image.ruleNames, offset);
            if (!rule.empty()) {
                out_ << "    // " << rule << "\n";
            }
            std::string octets = "    ";
            for (std::uint32_t index = 0; index < instruction->size; ++index) {
                char octet[8];
                std::snprintf(octet, sizeof octet, "0x%02X, ",
                              static_cast<unsigned>(code[offset + index]));
                octets += octet;
            }
            octets.resize(std::max(octets.size(), kCommentColumn), ' ');
            out_ << octets << "// " << offset << ": "
                 << csn::DisassembleInstruction(*instruction, names) << "\n";
            offset += instruction->size;
        }
        Close(code.size());
    }

    void PlanSteps() {
        Open("csn::PlanStep", "kCsnPlan", csn_.plan.steps.size());
        std::size_t index = 0;
        for (const csn::PlanStep& step : csn_.plan.steps) {
            out_ << "    {csn::" << bits::EnumeratorText(step.op) << ", " << unsigned{step.width}
                 << ", " << step.a << ", " << step.b << ", " << step.c << "},  // " << index++
                 << "\n";
        }
        Close(csn_.plan.steps.size());
    }

    void FieldTable() {
        const std::vector<std::uint16_t>& table = csn_.image.fieldTable;
        Open("std::uint16_t", "kCsnFieldTable", table.size());
        const auto& names = csn_.image.fieldNames;
        for (auto entry = names.begin(); entry != names.end(); ++entry) {
            const auto next = std::next(entry);
            const std::size_t end = next == names.end() ? table.size() : next->first - 1;
            out_ << "    ";
            for (std::size_t index = entry->first - 1; index < end; ++index) {
                out_ << table[index] << ", ";
            }
            out_ << "// " << entry->first << ": " << entry->second << "\n";
        }
        Close(table.size());
    }

    void Functions(const std::string& type, const std::string& name,
                   const std::vector<std::string>& functions) {
        Open(type, name, functions.size());
        for (const std::string& function : functions) {
            out_ << "    " << function << ",\n";
        }
        Close(functions.size());
    }

    void Fields() {
        std::size_t count = 0;
        for (const CompiledCsnStructure& structure : csn_.structures) {
            count += structure.fields.size();
        }
        Open("csn::CsnFieldRow", "kCsnFields", count);
        for (const CompiledCsnStructure& structure : csn_.structures) {
            out_ << "    // " << structure.name << ", " << structure.citation << "\n";
            for (std::size_t index = 0; index < structure.fields.size(); ++index) {
                const CsnFieldRow& row = structure.fields[index];
                out_ << "    {csn::" << bits::EnumeratorText(row.kind) << ", " << Flag(row.optional)
                     << ", " << row.element << ", " << row.width << ", " << row.bound << ", "
                     << row.mostBits << ", " << Flag(row.fixed) << ", " << Flag(row.located) << ", "
                     << Flag(row.repeats) << ", " << Flag(row.mixed) << "},  // "
                     << structure.firstTag + index << " " << structure.paths[index] << "\n";
            }
        }
        Close(count);
    }

    void Structures() {
        Open("csn::CsnStructure", "kCsnStructures", csn_.structures.size());
        std::size_t first = 0;
        for (const CompiledCsnStructure& structure : csn_.structures) {
            out_ << "    {\"" << structure.name << "\", &kCsnProgram, " << structure.label << ", "
                 << csn_.plan.stepAt.at(structure.label) << ", " << structure.rootTag << ", "
                 << structure.firstTag << ", " << structure.type->elements.size()
                 << ",\n     std::span<const csn::CsnFieldRow>(kCsnFields).subspan(" << first
                 << ", " << structure.fields.size() << ")},\n";
            first += structure.fields.size();
        }
        Close(csn_.structures.size());
    }

    static std::string NameOf(const std::map<std::uint32_t, std::string>& names,
                              std::uint32_t number) {
        const auto found = names.find(number);
        return found == names.end() ? std::string() : found->second;
    }

    static const char* Flag(bool value) { return value ? "true" : "false"; }

    std::ostream& out_;
    const CompiledCsn& csn_;
};

}  // namespace

void EmitCsn(std::ostream& out, const CompiledCsn& csn) {
    CsnEmitter(out, csn).Run();
}

}  // namespace quorvane::compiler
