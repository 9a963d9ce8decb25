#include "tools/function_name.h"

#include <gtest/gtest.h>
#include <string>

namespace quorvane::tool {
namespace {

TEST(FunctionName, IsFoundInAnyCase) {
    for (const char* name : {"EPC_SS2UE", "epc_ss2ue", "Epc_Ss2Ue"}) {
        const auto function = FindFunction(name);
        ASSERT_TRUE(function) << name;
        EXPECT_EQ(function->decoding, Decoding::EPC_SS2UE);
        EXPECT_EQ(function->name, "EPC_SS2UE");
    }
    EXPECT_EQ(FindFunction("AUTO-uplink")->name, "auto-uplink");
    EXPECT_FALSE(FindFunction("auto")->decoding);
    for (const char* name : {"", "EPC_SS2U", "EPC_SS2UEE", "EPC-SS2UE"}) {
        EXPECT_FALSE(FindFunction(name)) << name;
    }
}

TEST(FunctionName, OfASlipHasTheNearest) {
    EXPECT_EQ(NearestFunctions("EPC_SS2U"), "EPC_SS2UE");          // one letter is missing,
    EXPECT_EQ(NearestFunctions("EPC_SS2UEE"), "EPC_SS2UE");        // too many,
    EXPECT_EQ(NearestFunctions("epc-ss2ue"), "EPC_SS2UE");         // wrong,
    EXPECT_EQ(NearestFunctions("PEC_SS2UE"), "EPC_SS2UE");         // exchanged
    EXPECT_EQ(NearestFunctions("RLCMACUplnik"), "RLC_MACUplink");  // two slips
    EXPECT_EQ(NearestFunctions("EPS_Uplink"), "EPS_MMUplink or EPS_SMUplink");
    EXPECT_EQ(NearestFunctions("atuo"), "auto");
    for (const char* name : {"", "NOPE", "decode", "x"}) {
        EXPECT_EQ(NearestFunctions(name), "") << name;
    }
    EXPECT_EQ(NearestFunctions(std::string(1000000, 'R')), "");
}

}  // namespace
}  // namespace quorvane::tool
