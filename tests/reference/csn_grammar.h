#pragma once

// A description under test: compiled, and ready both for the machine and for the reference reader.

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "compiler/csn/csn_generator.h"
#include "compiler/csn/csn_syntax.h"
#include "compiler/csn/csn_types.h"
#include "compiler/reporter.h"
#include "csn/assembly/planner.h"
#include "csn/csn_program.h"
#include "csn/machine.h"
#include "families/family.h"
#include "reference/csn_reference.h"

namespace quorvane::reference {

/// The octets of a bit string, the last one filled up with zeros. Blanks are skipped.
[[nodiscard]] std::vector<std::uint8_t> OctetsOf(const std::string& bits);

/// The first `count` bits of `octets`.
[[nodiscard]] std::string BitsOf(const std::vector<std::uint8_t>& octets, std::int32_t count);

class Grammar {
  public:
    /// Compiles `text`. A text without a structure becomes one structure T.
    /// `enumerations`: names of those that fields may be of, besides those that the text names.
    explicit Grammar(std::string text, std::set<std::string> enumerations = {});
    /// Compiles the CSN.1 descriptions of a family, and runs them with the family's functions.
    explicit Grammar(const families::Family& family);
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    [[nodiscard]] const std::string& Text() const { return text_; }
    [[nodiscard]] const std::string& Errors() const { return errors_; }

    [[nodiscard]] const compiler::CsnRule& Entry(std::size_t structure = 0) const;
    [[nodiscard]] const compiler::CsnImage& Image() const { return image_; }
    [[nodiscard]] const compiler::CsnStructureTypes& Types(std::size_t structure = 0) const {
        return types_.structures[structure];
    }
    [[nodiscard]] const compiler::CsnTypeTables& AllTypes() const { return types_; }
    [[nodiscard]] std::size_t StructureCount() const { return structures_.size(); }
    [[nodiscard]] const csn::CsnStructure& Structure(std::size_t structure = 0) const {
        return structures_[structure];
    }

    /// Runs the machine, and the plan beside it, over `bits` from bit `start` on; the reading
    /// without matches has a result of -1 in `taken`.
    [[nodiscard]] Reading Decode(const std::string& bits, std::int32_t start = 0,
                                 std::size_t structure = 0);

    /// What the last run left.
    [[nodiscard]] const csn::CsnMachine& Machine() const { return *machine_; }

  private:
    void Compile(const std::vector<std::uint32_t>& files, const std::set<std::string>& structures);
    void Link();
    [[nodiscard]] std::vector<Event> Events(std::size_t structure) const;

    std::string text_;
    std::string errors_;
    compiler::Reporter reporter_;
    compiler::CsnSyntax syntax_;
    compiler::TypeStore store_;
    std::set<std::string> enumerations_;
    std::vector<std::unique_ptr<compiler::EnumModel>> enums_;
    compiler::CsnTypeTables types_;
    compiler::CsnImage image_;
    std::vector<csn::CsnAction> actions_;
    std::vector<csn::CsnValueFunction> functions_;
    csn::Plan plan_;
    csn::CsnProgram program_{};
    std::vector<csn::CsnStructure> structures_;
    std::vector<std::vector<std::string>> names_;  // of fields, by structure and tag
    std::unique_ptr<csn::CsnMachine> machine_ = std::make_unique<csn::CsnMachine>();
};

}  // namespace quorvane::reference
