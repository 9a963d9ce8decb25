#include "tools/catalogue_report.h"

#include <gtest/gtest.h>
#include <string>

#include "reflect/catalogue.h"
#include "reflect_test_types.h"

namespace quorvane::tool {

using namespace reflect;

namespace {

using Lister = void (*)(const Catalogue&, TextBuffer&);

std::string Listed(Lister list) {
    const Catalogue catalogue(test::kMixedTables);
    TextBuffer stream;
    list(catalogue, stream);
    return std::string(stream.View());
}

TEST(CatalogueReport, Definitions) {
    EXPECT_EQ(Listed(ListDefinitions),
              "struct Small {\n"
              "  Number:\n"
              "    Small_Number (int, 8 bits)\n"
              "  Flag OPTIONAL:\n"
              "    Small_Flag (int, 1 bits)\n"
              "}\n"
              "SmallList array [0..3] of:\n"
              "  ->Small\n"
              "Colour (int, 2 bits) ENUMERATED\n"
              "union Choice {\n"
              "  Num OPTIONAL:\n"
              "    Choice_Num (int, 8 bits)\n"
              "  Item OPTIONAL:\n"
              "    ->Small\n"
              "  Octets OPTIONAL:\n"
              "    Choice_Octets (binary, max 16 bits, dynamic)\n"
              "}\n"
              "struct Everything {\n"
              "  Plain:\n"
              "    Everything_Plain (int, 16 bits)\n"
              "  Spare:\n"
              "    Everything_Spare (int, 0 bits)\n"
              "  TypeOnly OPTIONAL:\n"
              "    Everything_TypeOnly (int, 0 bits)\n"
              "  Kind:\n"
              "    Everything_Kind (int, 8 bits) ENUMERATED\n"
              "  Fixed:\n"
              "    Everything_Fixed (binary, max 36 bits, fixed)\n"
              "  Octets OPTIONAL:\n"
              "    Everything_Octets (binary, max 16 bits, dynamic)\n"
              "  Numbers:\n"
              "    Everything_Numbers array [0..4] of:\n"
              "      Everything_Numbers_data (int, 8 bits)\n"
              "  Smalls:\n"
              "    ->SmallList\n"
              "  Choice:\n"
              "    ->Choice\n"
              "  Inner:\n"
              "    struct Everything_Inner {\n"
              "      Wide:\n"
              "        Everything_Inner_Wide (int, 32 bits)\n"
              "      Grid:\n"
              "        Everything_Inner_Grid array [0..2] of:\n"
              "          Everything_Inner_Grid_data array [0..3] of:\n"
              "            Everything_Inner_Grid_data_data (int, 8 bits) ENUMERATED\n"
              "    }\n"
              "  MaybeSmall OPTIONAL:\n"
              "    ->Small\n"
              "  Bare:\n"
              "    Everything_Bare (int, 4 bits) ENUMERATED\n"
              "  Colour OPTIONAL:\n"
              "    ->Colour\n"
              "}\n"
              "struct Empty {\n"
              "}\n"
              "union Message_set_Mixed {\n"
              "  Small OPTIONAL:\n"
              "    ->Small\n"
              "  Everything OPTIONAL:\n"
              "    ->Everything\n"
              "  Empty OPTIONAL:\n"
              "    ->Empty\n"
              "}\n");
}

TEST(CatalogueReport, CensusCountsEachKindByItself) {
    // Structs: Small, Everything, Empty, Everything_Inner. Unions: Choice, the set. Sequences:
    // SmallList, Numbers, Grid and its rows. Integers: Number, Flag, Num, Plain, Spare, TypeOnly,
    // the item of Numbers, Wide. Enumerated: Colour, Kind, Bare, the items of the rows. Binaries:
    // two called Octets, Fixed. Elements: 2 + 3 + 13 + 0 + 3 + 2. Optional: Flag, TypeOnly,
    // Octets, MaybeSmall, Colour.
    EXPECT_EQ(Listed(ListCensus),
              "named 7\n"
              "struct 4\n"
              "union 2\n"
              "sequence 4\n"
              "integer 8\n"
              "enumerated 4\n"
              "binary 3\n"
              "elements 23\n"
              "optional 5\n");
}

TEST(CatalogueReport, Elements) {
    EXPECT_EQ(Listed(ListElements),
              "Small.Number\tinteger\t8\tfixed\tmandatory\n"
              "Small.Flag\tinteger\t1\tfixed\toptional\n"
              "Choice.Num\tinteger\t8\tfixed\toptional\n"
              "Choice.Item\tstruct\t0\tfixed\toptional\n"
              "Choice.Octets\tbinary\t16\tdynamic\toptional\n"
              "Everything.Plain\tinteger\t16\tfixed\tmandatory\n"
              "Everything.Spare\tinteger\t0\tfixed\tmandatory\n"
              "Everything.TypeOnly\tinteger\t0\tfixed\toptional\n"
              "Everything.Kind\tenumerated\t8\tfixed\tmandatory\n"
              "Everything.Fixed\tbinary\t36\tfixed\tmandatory\n"
              "Everything.Octets\tbinary\t16\tdynamic\toptional\n"
              "Everything.Numbers[]\tsequence\t4\tdynamic\tmandatory\n"
              "Everything.Smalls[]\tsequence\t3\tdynamic\tmandatory\n"
              "Everything.Choice\tunion\t0\tfixed\tmandatory\n"
              "Everything.Inner\tstruct\t0\tfixed\tmandatory\n"
              "Everything.Inner.Wide\tinteger\t32\tfixed\tmandatory\n"
              "Everything.Inner.Grid[]\tsequence\t2\tdynamic\tmandatory\n"
              "Everything.MaybeSmall\tstruct\t0\tfixed\toptional\n"
              "Everything.Bare\tenumerated\t4\tfixed\tmandatory\n"
              "Everything.Colour\tenumerated\t2\tfixed\toptional\n"
              "Message_set_Mixed.Small\tstruct\t0\tfixed\toptional\n"
              "Message_set_Mixed.Everything\tstruct\t0\tfixed\toptional\n"
              "Message_set_Mixed.Empty\tstruct\t0\tfixed\toptional\n");
}

TEST(CatalogueReport, Enumerations) {
    EXPECT_EQ(Listed(ListEnumerations),
              "Colour\t0\tred\n"
              "Colour\t1\tgreen\n"
              "Colour\t2\tblue\n"
              "Everything.Kind\t1\tone\n"
              "Everything.Kind\t3\tthree\n"
              "Everything.Kind\t3\tthree again\n"
              "Everything.Kind\tother\treserved\n"
              "Everything.Inner.Grid[][]\t5\tfive\n"
              "Everything.Bare\t5\tfive\n");
}

TEST(CatalogueReport, ElementsInsideSequencesAreListedBelowThem) {
    const std::array kElements = {ElementRow{test::Label("Item"), 2, false}};
    const std::array kRows = {
        TypeRow{test::Stored("List"), TypeKind::kSequence, false, 20, 1, 0},
        TypeRow{{}, TypeKind::kStruct, false, 0, 0, 1},
        TypeRow{{}, TypeKind::kBinary, true, 40, 0, 0},
    };
    static constexpr std::array<std::uint16_t, 1> kNamed = {0};
    const Catalogue catalogue(TypeTables{test::TableTexts(), kRows, kElements, {}, {}, kNamed});
    TextBuffer stream;
    ListElements(catalogue, stream);
    EXPECT_EQ(stream.View(), "List[].Item\tbinary\t40\tfixed\tmandatory\n");
}

}  // namespace
}  // namespace quorvane::tool
