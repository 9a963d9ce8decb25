#pragma once

// A message family as the facade and the tools see it. The tables are compiled from the
// descriptions beside the family's room.

#include <cstdint>
#include <span>
#include <string_view>

#include "iecodec/tables.h"
#include "reflect/type_tables.h"

namespace quorvane::families {

struct Family {
    std::string_view name;  // "eps", "epc", "l3", "rr", "rlcmac"
    reflect::TypeTables types;
    iecodec::CodecTables codec;
};

extern const Family kEpsFamily;
extern const Family kEpcFamily;
extern const Family kL3Family;

/// The described families.
std::span<const Family* const> AllFamilies();

/// The set of that name ("Message_set_EPS_SM_Uplink"), or null.
const iecodec::MessageSetRow* FindSet(const Family& family, std::string_view name);

}  // namespace quorvane::families
