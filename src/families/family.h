#pragma once

// A message family as the facade and the tools see it. The tables are compiled from the family's
// descriptions; src/families/families.cmake is the list of all families.

#include <cstdint>
#include <span>
#include <string_view>

#include "iecodec/tables.h"
#include "reflect/type_tables.h"

namespace quorvane::families {

struct Family {
    std::string_view name;  // "eps"
    reflect::TypeTables types;
    iecodec::CodecTables codec;
};

// kEpsFamily and so on: the families of this build.
#define QUORVANE_FAMILY(variable, ...) extern const Family variable;
#define QUORVANE_LEFT_OUT_FAMILY(...)
#include "families/family_list.def"
#undef QUORVANE_FAMILY
#undef QUORVANE_LEFT_OUT_FAMILY

/// The families that this build describes.
std::span<const Family* const> AllFamilies();

struct FamilyInfo {
    std::string_view name;
    std::string_view title;  // what its messages are, and the standard
    const Family* tables;    // null if this build does not describe it
};

/// All families that there are, also those that this build does not describe.
std::span<const FamilyInfo> KnownFamilies();

/// The set of that name ("Message_set_EPS_SM_Uplink"), or null.
const iecodec::MessageSetRow* FindSet(const Family& family, std::string_view name);

}  // namespace quorvane::families
