// What must hold of every described family as a whole.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>

#include "csn/csn_record.h"
#include "csn/machine.h"
#include "families/family.h"
#include "reflect/catalogue.h"
#include "reflect/catalogue_report.h"
#include "reflect/text_buffer.h"

namespace quorvane::families {
namespace {

std::string CensusOf(const Family& family) {
    const reflect::Catalogue catalogue(family.types);
    reflect::TextBuffer text;
    reflect::ListCensus(catalogue, text);
    return std::string(text.View());
}

TEST(Families, HaveTheCountsOfTheOriginalCatalogues) {
    EXPECT_EQ(CensusOf(kEpsFamily),
              "named 119\nstruct 116\nunion 9\nsequence 14\ninteger 411\nenumerated 107\n"
              "binary 28\nelements 772\noptional 186\n");
    EXPECT_EQ(CensusOf(kEpcFamily),
              "named 17\nstruct 14\nunion 2\nsequence 1\ninteger 12\nenumerated 2\n"
              "binary 1\nelements 28\noptional 3\n");
    EXPECT_EQ(CensusOf(kL3Family),
              "named 197\nstruct 198\nunion 6\nsequence 18\ninteger 558\nenumerated 207\n"
              "binary 96\nelements 1258\noptional 406\n");
}

TEST(Families, NumberTheFieldsOfTheirImages) {
    ASSERT_FALSE(kEpsFamily.codec.structures.empty());
    ASSERT_FALSE(kL3Family.codec.structures.empty());
    EXPECT_EQ(kEpsFamily.codec.structures.front().program->fieldCount, 206U);
    EXPECT_EQ(kL3Family.codec.structures.front().program->fieldCount, 173U);
}

TEST(Families, EndTheirCataloguesWithTheMessageSets) {
    for (const Family* family : AllFamilies()) {
        const auto& tables = family->types;
        const auto& sets = family->codec.sets;
        ASSERT_GE(tables.named.size(), sets.size());
        std::size_t index = tables.named.size() - sets.size();
        for (const auto& set : sets) {
            EXPECT_EQ(tables.types[tables.named[index]].name, set.name);
            EXPECT_EQ(tables.named[index++], set.type);
            EXPECT_EQ(tables.types[set.type].count, set.messages.size());
        }
    }
}

TEST(Families, OrderTheirMessageSets) {
    const std::vector<std::string_view> wanted = {
        "Message_set_EPS_MM_Uplink",   "Message_set_EPS_MM_Downlink", "Message_set_EPS_SM_Uplink",
        "Message_set_EPS_SM_Downlink", "Message_set_SS_to_UE",        "Message_set_UE_to_SS",
        "Message_set_L3Uplink",        "Message_set_DummyDownlink",   "Message_set_L3Downlink",
        "Message_set_XTIDUplink",      "Message_set_XTIDDownlink"};
    std::vector<std::string_view> names;
    for (const Family* family : AllFamilies()) {
        for (const auto& set : family->codec.sets) {
            names.push_back(set.name);
        }
    }
    EXPECT_EQ(names, wanted);
}

void CollectNumbers(const Family& family, std::multiset<std::uint32_t>& numbers) {
    for (const auto& field : family.codec.fields) {
        numbers.insert(
            {field.encodeNumber, field.sizeNumber, field.valueNumber, field.shortNumber});
    }
    for (const auto& value : family.codec.values) {
        numbers.insert({value.encodeNumber, value.decodeNumber, value.shortNumber});
    }
    for (const auto& group : family.codec.groups) {
        numbers.insert(group.missingNumber);
    }
    numbers.erase(0);  // what reports nothing
}

TEST(Families, NumberTheirDiagnosticsOnceEach) {
    // EPS and UE test mode share their numbers.
    std::multiset<std::uint32_t> eps;
    CollectNumbers(kEpsFamily, eps);
    CollectNumbers(kEpcFamily, eps);
    EXPECT_EQ(eps.size(), (std::set<std::uint32_t>(eps.begin(), eps.end()).size()));
    EXPECT_EQ(*eps.begin(), 1U);
    EXPECT_LE(*eps.rbegin(), 1182U);

    std::multiset<std::uint32_t> l3;
    CollectNumbers(kL3Family, l3);
    EXPECT_EQ(l3.size(), (std::set<std::uint32_t>(l3.begin(), l3.end()).size()));
    EXPECT_EQ(*l3.begin(), 2U);
    EXPECT_LE(*l3.rbegin(), 2476U);
}

TEST(Families, SortTheirSkipTables) {
    const std::map<std::string_view, std::size_t> rows = {{"eps", 48}, {"epc", 0}, {"l3", 74}};
    for (const Family* family : AllFamilies()) {
        const auto& formats = family->codec.formats;
        EXPECT_EQ(formats.size(), rows.at(family->name)) << family->name;
        EXPECT_TRUE(std::is_sorted(formats.begin(), formats.end(),
                                   [](const auto& a, const auto& b) { return a.tag < b.tag; }));
    }
}

// The most instructions that a structure may take over any element of up to 64 octets, by name.
// A description that comes to backtrack more than it should passes its ceiling.
const std::map<std::string_view, std::uint64_t>& Ceilings() {
    static const std::map<std::string_view, std::uint64_t> ceilings = {
        {"UESecurityCapability", 100},
        {"APNAggregateMaxBitRate", 100},
        {"EPS_QOS", 100},
        {"epsQualityOfServ", 100},
        {"UENetworkCapability", 1300},
        {"epsClassmark3Value", 1700},
        {"epsMsNetwkCpblty", 1300},
        {"Classmark3Value", 1700},
        {"ReceiveNPduNumbersList", 400},
        {"MsNetwkCpblty", 1300},
        {"MsRadioAccessCpblty", 6000},
        {"ProtocolCfgOpt", 3000},
    };
    return ceilings;
}

std::uint64_t InstructionsOf(const csn::CsnStructure& structure,
                             const std::vector<std::uint8_t>& octets) {
    csn::CsnMachine machine;
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    csn::CsnMachineInit(machine, *structure.program, structure.label, reader, 0,
                        static_cast<std::int32_t>(8 * octets.size()));
    machine.rootTag = structure.rootTag;
    static_cast<void>(csn::CsnMachineRun(machine, nullptr));
    return machine.executed;
}

TEST(Families, StayBelowTheInstructionCeilings) {
    if (!csn::CsnMachineCounts()) {
        GTEST_SKIP() << "this build counts no instructions";
    }
    std::mt19937 random(7);
    for (const Family* family : AllFamilies()) {
        for (const csn::CsnStructure& structure : family->codec.structures) {
            const auto ceiling = Ceilings().find(structure.name);
            ASSERT_NE(ceiling, Ceilings().end()) << structure.name;
            std::uint64_t most = 0;
            for (int count = 0; count < 4000; ++count) {
                std::vector<std::uint8_t> octets(random() % 65);
                const auto mask = static_cast<std::uint32_t>(random());
                for (std::uint8_t& octet : octets) {
                    octet = static_cast<std::uint8_t>(random() & (mask | random()));
                }
                most = std::max(most, InstructionsOf(structure, octets));
            }
            EXPECT_LE(most, ceiling->second) << structure.name;
        }
    }
}

}  // namespace
}  // namespace quorvane::families
