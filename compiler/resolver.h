#pragma once

// From syntax to the tables of a family: names are looked up, types and rows are built, and
// everything that can be checked is. Rows hold names by view: the syntax must outlive them.

#include <map>
#include <set>
#include <string>
#include <vector>

#include "compiler/model.h"
#include "compiler/syntax.h"
#include "iecodec/tables.h"

namespace quorvane::compiler {

/// The CSN.1 structures of the family, by type name.
struct CsnTypes {
    struct Entry {
        TypeModel* type;          // null if the structure has mistakes
        std::uint16_t structure;  // in the family's CsnStructure table
    };
    std::map<std::string, Entry> byName;
};

/// A message set before its spans can point anywhere.
struct SetModel {
    TypeModel* type = nullptr;
    iecodec::MessageSetRow row{};
    std::vector<iecodec::KeyMaskRow> masks;
    std::vector<iecodec::KeyRow> keys;
    std::vector<std::uint16_t> messages;
};

/// Everything that the emitter writes of a family.
struct FamilyModel {
    TypeStore store;
    std::vector<TypeModel*> named;  // in build order
    std::vector<iecodec::IeFormatRow> formats;
    std::vector<iecodec::IeFormatRow> unknownFormats;
    std::vector<iecodec::IeOrderRow> orders;
    std::vector<iecodec::FieldRow> fields;
    std::vector<iecodec::ValueRow> values;
    std::vector<iecodec::PartRow> parts;
    std::vector<iecodec::AlternativeRow> alternatives;
    std::vector<iecodec::GroupRow> groups;
    std::vector<iecodec::OctetRow> octets;
    std::vector<iecodec::HeaderItemRow> headerItems;
    std::vector<iecodec::MessageRow> messages;
    std::vector<const TypeModel*> messageTypes;
    std::set<std::uint16_t> usedMessages;  // by sets, unions and fields
    std::vector<SetModel> sets;
    std::vector<std::string> specials;  // C++ names
};

/// Resolves `family` into `model`, whose store already holds the types of `csn`. Mistakes go to
/// the reporter.
void Resolve(Reporter& reporter, const FamilySyntax& family, const CsnTypes& csn,
             FamilyModel& model);

}  // namespace quorvane::compiler
