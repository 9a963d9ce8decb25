#pragma once

// The types, field tags and rows that follow from CSN.1 descriptions.

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "compiler/csn/csn_syntax.h"
#include "compiler/model.h"
#include "compiler/reporter.h"
#include "csn/csn_program.h"

namespace quorvane::compiler {

/// Finds an enumeration by name; null if there is none.
using CsnEnumFinder = std::function<const EnumModel*(const std::string& name)>;

/// What a family's other descriptions say about its CSN.1.
struct CsnFamily {
    CsnEnumFinder findEnum;
    std::set<std::string> structures = {};  // that they name
    bool itemsLocated = false;  // numbers and bit strings in sequences note their locations
};

/// What the fields of a structure are. Tags are numbered over all structures of an image: first
/// one for each structure, which its outermost fields have as their parent, then those of the
/// fields, structure by structure and in each from the outside inwards.
struct CsnStructureTypes {
    const CsnSection* section = nullptr;
    TypeModel* type = nullptr;
    std::uint16_t rootTag = 0;
    std::uint16_t firstTag = 0;
    std::vector<csn::CsnFieldRow> fields;  // by tag, from firstTag on
    std::vector<std::string> paths;        // by tag: Member.Member[].Member
};

struct CsnTypeTables {
    struct TagPair {
        std::uint16_t parent;
        std::uint16_t tag;
        friend auto operator<=>(const TagPair&, const TagPair&) = default;
    };

    std::vector<CsnStructureTypes> structures;
    /// For each field of the description its tags, by parent.
    std::map<const CsnNode*, std::vector<TagPair>> tags;
};

/// Derives the types of the structures of `syntax`, which has been checked, into `store`. Mistakes
/// go to the reporter.
CsnTypeTables DeriveCsnTypes(Reporter& reporter, const CsnSyntax& syntax, const CsnFamily& family,
                             TypeStore& store);

}  // namespace quorvane::compiler
