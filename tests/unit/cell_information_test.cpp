#include "families/common/cell_information.h"

#include <gtest/gtest.h>
#include <vector>

namespace quorvane::families {
namespace {

TEST(CellInformation, WidthsByNumberOfCells) {
    const std::vector<std::uint32_t> fdd = {0,  10, 19, 28, 36,  44,  52,  60,  67,
                                            74, 81, 88, 95, 102, 109, 116, 122, 0};
    for (std::size_t cells = 0; cells < fdd.size(); ++cells) {
        EXPECT_EQ(FddCellInfoBits(static_cast<std::int32_t>(cells)), fdd[cells]) << cells;
    }
    const std::vector<std::uint32_t> tdd = {0,  9,  17, 25, 32,  39,  46,  53,  59,  65,  71,
                                            77, 83, 89, 95, 101, 106, 111, 116, 121, 126, 0};
    for (std::size_t cells = 0; cells < tdd.size(); ++cells) {
        EXPECT_EQ(TddCellInfoBits(static_cast<std::int32_t>(cells)), tdd[cells]) << cells;
    }
    EXPECT_EQ(FddCellInfoBits(-1), 0U);
    EXPECT_EQ(TddCellInfoBits(-1), 0U);
}

}  // namespace
}  // namespace quorvane::families
