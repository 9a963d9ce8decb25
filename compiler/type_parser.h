#pragma once

// Reads enumerations and types: structs, unions, sequences and what stands behind a colon.

#include "compiler/syntax.h"
#include "compiler/token_stream.h"

namespace quorvane::compiler {

class TypeParser {
  public:
    TypeParser(Reporter& reporter, std::uint32_t file, FamilySyntax& family)
        : reporter_(reporter), tokens_(reporter, file, kDescriptionNotation), family_(family) {}

  protected:
    void ParseEnum();
    TypeSyntax ParseType();
    StructSyntax ParseStruct();
    UnionSyntax ParseUnion();
    SequenceSyntax ParseSequence();

    /// Runs `entry` for each line of a block.
    template <typename Entry>
    void ParseBlock(Entry entry) {
        if (!tokens_.Expect("{")) {
            return;
        }
        tokens_.SkipLineEnds();
        while (!tokens_.AtEnd() && !tokens_.At("}")) {
            tokens_.BeginEntry();
            entry();
            tokens_.ExpectLineEnd();
        }
        tokens_.Expect("}");
    }

    /// Whether the declaration that is being read has had a mistake.
    [[nodiscard]] bool IsBroken() const { return reporter_.ErrorCount() != errorsBefore_; }
    /// An error at `span` unless `what` stands here for the first time.
    void Once(bool first, Span span, const std::string& what);
    /// The names up to the end of the line, one at least.
    void ParseNames(std::string_view what, std::vector<Name>& names);
    /// Takes a line that gives the order of members in the record, if one stands here.
    bool AcceptRecord(std::string_view what, std::vector<Name>& record);

    Reporter& reporter_;
    TokenStream tokens_;
    FamilySyntax& family_;
    std::size_t errorsBefore_ = 0;  // of this declaration

  private:
    void ParseEnumValues(EnumModel& model);
    /// An enumeration that stands with its only user: it gets a name that no description can use.
    Name ParseInlineEnum();
    std::string ExpectText();
    /// A text's octets: \t is a tab, \xHH the octet HH, \\ a backslash.
    std::string Unescaped(const Token& token);
    MemberSyntax ParseMember();
    void ParseExtensionPart(StructSyntax& owner);

    int depth_ = 0;  // types that are being read
};

}  // namespace quorvane::compiler
