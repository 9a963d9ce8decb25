#include "all_structures.h"

#include "csn_limits.h"

namespace quorvane::fuzz {
namespace {

std::vector<Structure> FindStructures() {
    std::vector<Structure> all;
    for (const families::Family* family : families::AllFamilies()) {
        for (const csn::CsnStructure& structure : family->codec.structures) {
            for (const std::uint16_t type : family->types.named) {
                if (family->types.NameOf(family->types.types[type]) == structure.name) {
                    all.push_back({&structure, family, type, IsLossy(*family, structure)});
                }
            }
        }
    }
    return all;
}

}  // namespace

const std::vector<Structure>& AllStructures() {
    static const std::vector<Structure> kStructures = FindStructures();
    return kStructures;
}

}  // namespace quorvane::fuzz
