#pragma once

// Builds the rows that tell how values lie on the wire.

#include <map>
#include <string>
#include <string_view>
#include <tuple>

#include "compiler/type_resolver.h"

namespace quorvane::compiler {

/// The bits that a value may have; without a known bound, kMostBits.
struct BitRange {
    static constexpr std::uint64_t kMostBits = std::uint64_t{1} << 32;

    std::uint64_t least = 0;
    std::uint64_t most = kMostBits;

    [[nodiscard]] bool Holds(std::uint64_t bits) const { return bits >= least && bits <= most; }
};
std::string Shown(const BitRange& range);

class ValueBuilder {
  public:
    ValueBuilder(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
                 TypeResolver& types, FamilyModel& model);

    /// The row of a field, part or item of this type. `wireBits` is its width, 0 if the length
    /// decides. `located`: an integer notes its location. kNone if there is nothing to store.
    /// `name` is the member's or field's, as diagnostics tell it.
    std::uint16_t RowOf(const TypeSyntax& syntax, const TypeModel* type, std::string_view name,
                        const WideNumber& wireBits, bool located);

    // The rows of the named types, in the order of their declarations.
    void BuildStruct(const StructSyntax& syntax);
    void BuildUnion(const UnionSyntax& syntax);
    void BuildSequence(const SequenceSyntax& syntax);
    void BuildCsn(const Name& name);

    /// Tells the builder the row of a message, for unions of messages and nested bodies.
    void NoteMessage(const std::string& name, std::uint16_t message);

    /// The bits that a value of the row may take; from 0 to kMostBits if that is not known.
    [[nodiscard]] BitRange BitsOf(std::uint16_t row) const;
    /// Whether every value of the row, of `bits` bits or more, holds the number at `element`.
    [[nodiscard]] bool AlwaysHolds(std::uint16_t row, std::uint16_t element,
                                   std::uint64_t bits) const;

  private:
    std::uint16_t Add(iecodec::ValueRow row);
    std::uint16_t AddNamed(const Name& name, iecodec::ValueRow row);
    std::uint16_t RowOfNamed(const Name& use);
    /// The type that was declared by that name; null if another has the name, which is reported, or
    /// it is broken.
    [[nodiscard]] const TypeModel* TypeToBuild(const Name& name, TypeModel::Kind kind) const;
    std::uint16_t Special(const Name& name);
    /// The width of the value in bits if it is the same always, else 0.
    [[nodiscard]] std::uint32_t WidthOf(std::uint16_t row) const;
    iecodec::ValueRow StructRow(const TypeModel& type);

    /// Adds a row for each member, so that the C++ of a special struct finds the wire forms of its
    /// members of named types.
    std::uint16_t AddSpecialParts(const StructSyntax& syntax);

    /// Adds the parts of `members`; returns the bits that those of known width take together.
    std::uint16_t AddParts(const StructSyntax& owner, const std::vector<MemberSyntax>& members,
                           std::uint64_t offset);
    iecodec::PartRow PartOf(const StructSyntax& owner, const MemberSyntax& member,
                            const TypeModel* type);
    void AddOctet(const StructSyntax& owner, const OctetSyntax& octet, bool flagged);
    std::uint16_t BuildExtension(const StructSyntax& syntax, iecodec::ValueRow row);

    Reporter& reporter_;
    const FamilySyntax& family_;
    const CsnTypes& csn_;
    TypeResolver& types_;
    FamilyModel& model_;
    std::map<std::string, std::uint16_t> named_;
    std::map<std::string, std::uint16_t> messages_;  // kNone: one with a mistake
    std::map<std::tuple<std::uint32_t, bool>, std::uint16_t> integers_;  // by width, located
};

}  // namespace quorvane::compiler
