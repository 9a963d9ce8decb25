// The compiled CSN.1 structures of a family.

#include <algorithm>
#include <string>

#include "csn/assembly/disassembler.h"
#include "tools/commands.h"
#include "tools/described_family.h"
#include "tools/image_names.h"

namespace quorvane::tool {

int Disassemble(const std::string& family, const std::string& structure) {
    const families::Family& described = DescribedFamily(family);
    const auto structures = described.codec.structures;
    if (structures.empty()) {
        throw UsageError("the family " + family + " has no CSN.1 structures");
    }
    const csn::CsnProgram& program = *structures.front().program;
    const std::span<const std::uint8_t> code(program.code, program.codeSize);
    const ImageNames imageNames(described);
    const csn::ListingNames names = imageNames.Listing();
    if (structure.empty()) {
        Print(csn::Disassemble(code, names));
        return kDone;
    }
    const auto found = std::find_if(structures.begin(), structures.end(),
                                    [&](const auto& one) { return one.name == structure; });
    if (found == structures.end()) {
        std::string known;
        for (const csn::CsnStructure& one : structures) {
            known += known.empty() ? "" : ", ";
            known += one.name;
        }
        throw UsageError("the family " + family + " has no structure '" + structure + "'; it has " +
                         known);
    }
    Print(csn::DisassembleRule(code, found->label, names));
    return kDone;
}

}  // namespace quorvane::tool
