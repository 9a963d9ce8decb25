#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "reflect/catalogue.h"
#include "reflect/ted_class.h"
#include "reflect/ted_data.h"
#include "reflect_test_types.h"

namespace quorvane::reflect {
namespace {

using test::kMixedTables;
using test::Printed;

template <typename Class>
const Class& DescriptorAs(const Catalogue& catalogue, std::uint16_t type) {
    return static_cast<const Class&>(*catalogue.GetDescriptor(type));
}

TEST(Catalogue, NamedTypesStandInOrderOfBuilding) {
    const Catalogue catalogue(kMixedTables);
    ASSERT_EQ(catalogue.GetNamed().GetCount(), 7U);
    EXPECT_EQ(catalogue.GetNamed().GetCapacity(), 8U);
    for (std::uint32_t index = 0; index < 7; ++index) {
        EXPECT_EQ(catalogue.GetNamed()[index], catalogue.GetDescriptor(kMixedTables.named[index]));
    }
    EXPECT_EQ(catalogue.GetNamed()[0]->GetName(), "Small");
    EXPECT_EQ(catalogue.GetNamed()[6]->GetName(), "Message_set_Mixed");
}

TEST(Catalogue, DescriptorsSayWhatTheTablesSay) {
    const Catalogue catalogue(kMixedTables);
    for (std::uint16_t type = 0; type < kMixedTables.types.size(); ++type) {
        ASSERT_NE(catalogue.GetDescriptor(type), nullptr) << type;
        const TypeRow& row = kMixedTables.types[type];
        if (row.IsNamed()) {
            EXPECT_EQ(catalogue.GetDescriptor(type)->GetName(), kMixedTables.NameOf(row));
        }
    }
    EXPECT_EQ(catalogue.GetDescriptor(test::kSmallFlag)->GetName(), "Small_Flag");
    EXPECT_EQ(catalogue.GetDescriptor(test::kGridItem)->GetName(),
              "Everything_Inner_Grid_data_data");
    EXPECT_EQ(DescriptorAs<TEDClassInteger>(catalogue, test::kWide).GetBits(), 32U);
    const auto& fixed = DescriptorAs<TEDClassBinary>(catalogue, test::kFixed);
    EXPECT_EQ(fixed.GetKind(), kBinaryKind);
    EXPECT_EQ(fixed.GetMaxBits(), 36U);
    EXPECT_TRUE(fixed.IsFixed());
    const auto& octets = DescriptorAs<TEDClassBinary>(catalogue, test::kOctets);
    EXPECT_EQ(octets.GetMaxBits(), 16U);
    EXPECT_FALSE(octets.IsFixed());
    const auto& grid = DescriptorAs<TEDClassSequence>(catalogue, test::kGrid);
    EXPECT_EQ(grid.GetKind(), kSequenceKind);
    EXPECT_EQ(grid.GetBound(), 2U);
    EXPECT_FALSE(grid.IsFixed());
    EXPECT_EQ(grid.GetItemType().GetTarget(), catalogue.GetDescriptor(test::kGridRow));
    EXPECT_TRUE(grid.GetItemType().IsOwned());
    EXPECT_EQ(catalogue.GetDescriptor(test::kChoice)->GetKind(), kUnionKind);
    EXPECT_EQ(catalogue.GetDescriptor(test::kEmpty)->GetKind(), kStructKind);
}

TEST(Catalogue, EnumerationsHaveTheirValuesAndTexts) {
    const Catalogue catalogue(kMixedTables);
    const auto& kind = DescriptorAs<TEDClassEnumerated>(catalogue, test::kEnumKind);
    EXPECT_EQ(kind.GetKind(), kEnumeratedKind);
    EXPECT_EQ(kind.GetBits(), 8U);
    ASSERT_EQ(kind.GetValueCount(), 3U);
    EXPECT_EQ(kind.GetValue(2), 3U);
    EXPECT_EQ(kind.GetValueText(2), "three again");
    EXPECT_EQ(kind.Find(3)->GetText(), "three");
    EXPECT_EQ(kind.Find(3)->GetRendered(), "three (3)");
    EXPECT_EQ(kind.GetOtherText(), "reserved");
    const auto& bare = DescriptorAs<TEDClassEnumerated>(catalogue, test::kBareEnum);
    EXPECT_FALSE(bare.HasOtherText());
    EXPECT_NE(&bare, catalogue.GetDescriptor(test::kGridItem));  // one table, two objects
    EXPECT_EQ(bare.GetValueText(0), "five");
}

TEST(Catalogue, ElementsStandAtTheirPositions) {
    const Catalogue catalogue(kMixedTables);
    for (std::uint16_t type = 0; type < kMixedTables.types.size(); ++type) {
        const TypeRow& row = kMixedTables.types[type];
        if (row.kind != TypeKind::kStruct && row.kind != TypeKind::kUnion) {
            continue;
        }
        const auto& structured = DescriptorAs<TEDClassStructured>(catalogue, type);
        ASSERT_EQ(structured.GetElementCount(), row.count);
        for (std::uint32_t index = 0; index < row.count; ++index) {
            const ElementRow& expected = kMixedTables.ElementsOf(row)[index];
            const TEDClassStructuredElement* element = structured.GetElement(index);
            EXPECT_EQ(element->GetName(), kMixedTables.NameOf(expected));
            EXPECT_EQ(element->GetLabel(), kMixedTables.TextAt(expected.label));
            EXPECT_EQ(element->IsOptional(), expected.optional);
            EXPECT_EQ(element->GetType().GetTarget(), catalogue.GetDescriptor(expected.type));
            EXPECT_EQ(element->GetType().IsOwned(), !kMixedTables.types[expected.type].IsNamed());
        }
    }
}

TEST(Catalogue, NewDataOfATypeIsItsDefault) {
    const Catalogue catalogue(kMixedTables);
    const std::unique_ptr<TEDDataBase> node(catalogue.GetDescriptor(test::kEverything)->NewData());
    EXPECT_EQ(Printed(*node), test::kDefaultText);
}

TEST(Catalogue, CopiesOfDescriptorsOutliveIt) {
    std::unique_ptr<TEDClassBase> copy;
    {
        const Catalogue catalogue(kMixedTables);
        copy.reset(catalogue.GetDescriptor(test::kSmall)->Clone());
    }
    const std::unique_ptr<TEDDataBase> node(copy->NewData());
    EXPECT_EQ(Printed(*node), "{\n  Number: 0\n  Flag: MISSING\n}\n");
}

TEST(Catalogue, ItsCapacityIsTheNextMultipleOfEight) {
    std::vector<TypeRow> rows(119, TypeRow{test::Stored("T"), TypeKind::kInteger, false, 8, 0, 0});
    std::vector<std::uint16_t> named;
    for (std::uint16_t type = 0; type < rows.size(); ++type) {
        named.push_back(type);
    }
    const Catalogue catalogue(TypeTables{test::TableTexts(), rows, {}, {}, {}, named});
    EXPECT_EQ(catalogue.GetNamed().GetCount(), 119U);
    EXPECT_EQ(catalogue.GetNamed().GetCapacity(), 120U);
}

TEST(Catalogue, OfNothing) {
    const Catalogue catalogue(TypeTables{});
    EXPECT_EQ(catalogue.GetNamed().GetCount(), 0U);
}

}  // namespace
}  // namespace quorvane::reflect
