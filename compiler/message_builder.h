#pragma once

// Builds the rows of messages and message sets, and numbers the diagnostics.

#include <map>
#include <string>

#include "compiler/skip_table.h"
#include "compiler/type_resolver.h"
#include "compiler/value_builder.h"

namespace quorvane::compiler {

class MessageBuilder {
  public:
    MessageBuilder(Reporter& reporter, const FamilySyntax& family, TypeResolver& types,
                   ValueBuilder& values, FamilyModel& model);

    void BuildMessage(const MessageSyntax& syntax);
    void BuildSet(const SetSyntax& syntax);
    /// Makes a message with mistakes known by its name.
    void DeclareBroken(const Name& name);
    void BuildDecoding(const SetSyntax& syntax);

    /// Ends the tables, when all messages and sets stand.
    void Finish();

  private:
    /// Gives each place of the codec that can report a fault a number of its own: message by
    /// message, field by field, then the types.
    void NumberDiagnostics();
    void CheckUses();
    iecodec::FieldRow FieldOf(const MessageSyntax& message, const FieldSyntax& field,
                              const TypeModel& type, std::uint16_t element);
    void PairHalfOctets(const MessageSyntax& message, std::size_t firstField);
    void CheckFit(const FieldSyntax& field, const iecodec::FieldRow& row);
    void AddCondition(const MessageSyntax& message, const FieldSyntax& field, const TypeModel& type,
                      iecodec::FieldRow& row);
    void CheckLimits(const MessageSyntax& message, const FieldSyntax& field);
    void CheckIdentifiers(const MessageSyntax& message);
    void AddSet(const Name& name, SetModel set);
    void AddOrderRows(std::size_t firstField);

    struct Header {
        const HeaderSyntax* syntax;
        std::vector<const HeaderItemSyntax*> members;  // in the order of the record
        std::uint16_t firstItem = iecodec::kNone;      // when its rows stand
        std::uint8_t typeBits = 0;                     // of the message type
    };
    void AddHeader(Header& header);

    Reporter& reporter_;
    const FamilySyntax& family_;
    TypeResolver& types_;
    ValueBuilder& values_;
    FamilyModel& model_;
    SkipTable skipTable_;
    std::map<std::string, Header> headers_;
    std::map<std::string, std::uint16_t> messages_;  // kNone: one with a mistake
};

}  // namespace quorvane::compiler
