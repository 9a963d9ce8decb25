#pragma once

// Names for what the CSN.1 image of a family only numbers: its rules and fields. A field is called
// as the member that it is stored in.

#include <cstdint>
#include <map>
#include <string>

#include "csn/assembly/disassembler.h"
#include "families/family.h"

namespace quorvane::tool {

class ImageNames {
  public:
    /// The family must have structures.
    explicit ImageNames(const families::Family& family);

    /// For the disassembler; must not outlive this object.
    [[nodiscard]] csn::ListingNames Listing() const;

  private:
    using Type = const reflect::TypeRow*;

    /// A field tag of the image.
    struct Field {
        const reflect::ElementRow* element;
        Type insides;  // of a struct: its type
    };

    void CollectParents(const csn::CsnProgram& program);
    [[nodiscard]] Type TypeNamed(std::string_view name) const;
    [[nodiscard]] Field FieldOf(const csn::CsnStructure& structure, std::uint16_t tag) const;

    const families::Family& family_;
    std::map<std::uint32_t, std::uint16_t> tagOfField_;  // by field identifier
    std::map<std::uint16_t, std::uint16_t> parentOfTag_;
};

}  // namespace quorvane::tool
