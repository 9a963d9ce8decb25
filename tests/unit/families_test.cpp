// What must hold of every described family as a whole.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "csn/csn_record.h"
#include "csn/machine.h"
#include "families/family.h"
#include "reflect/catalogue.h"
#include "reflect/text_buffer.h"
#include "support/family_files.h"
#include "support/sample_family.h"
#include "tools/catalogue_report.h"

namespace quorvane::families {
namespace {

/// What src/families/<name>/<name>.counts pins, with comments and empty lines left out.
class Counts {
  public:
    explicit Counts(const Family& family)
        : path_("src/families/" + std::string(family.name) + "/" + std::string(family.name) +
                ".counts") {
        std::istringstream text(test::SourceText(path_));
        for (std::string line; std::getline(text, line);) {
            std::istringstream words(line);
            std::string key;
            if (!(words >> key) || key.starts_with('#')) {
                continue;
            }
            if (key == "diagnostics") {
                words >> firstNumber >> mostNumber;
            } else if (key == "ceiling") {
                std::string structure;
                words >> structure;
                words >> ceilings[structure];
            } else {
                shape += line + "\n";
                continue;
            }
            EXPECT_FALSE(words.fail()) << path_ << ": " << line;
        }
    }

    /// All lines but those for the members below.
    std::string shape;
    std::uint32_t firstNumber = 0;
    std::uint32_t mostNumber = 0;
    std::map<std::string, std::uint64_t, std::less<>> ceilings;

    [[nodiscard]] const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

std::string ShapeOf(const Family& family) {
    const reflect::Catalogue catalogue(family.types);
    reflect::TextBuffer census;
    tool::ListCensus(catalogue, census);
    std::string shape(census.View());
    for (const auto& set : family.codec.sets) {
        const std::string name(set.name);
        shape += set.type == iecodec::kNone
                     ? "decoding " + name + "\n"
                     : "set " + name + " " + std::to_string(set.messages.size()) + "\n";
    }
    const auto& structures = family.codec.structures;
    const std::size_t fields = structures.empty() ? 0 : structures.front().program->fieldCount;
    return shape + "skip_rows " + std::to_string(family.codec.formats.size()) + "\nimage_fields " +
           std::to_string(fields) + "\n";
}

TEST(Families, HaveTheirPinnedCounts) {
    for (const Family* family : AllFamilies()) {
        const Counts counts(*family);
        EXPECT_EQ(counts.shape, ShapeOf(*family)) << counts.Path();
    }
}

TEST(Families, HaveSpareHalfOctetsOfFourBitsInLayer3Alone) {
    for (const Family* family : AllFamilies()) {
        const auto& tables = family->types;
        std::size_t count = 0;
        for (const auto& element : tables.elements) {
            if (tables.TextAt(element.label).starts_with("SpareHalfOctet")) {
                EXPECT_EQ(tables.types[element.type].size, family->name == "l3" ? 4U : 0U);
                ++count;
            }
        }
        if (family->name == "l3") {
            EXPECT_EQ(count, 13U);
        }
    }
}

TEST(Families, EndTheirCataloguesWithTheMessageSets) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        const auto& tables = family->types;
        std::vector<iecodec::MessageSetRow> sets(family->codec.sets.begin(),
                                                 family->codec.sets.end());
        // The one message of a decoding without a set needs no union.
        std::erase_if(sets, [](const auto& set) { return set.type == iecodec::kNone; });
        ASSERT_GE(tables.named.size(), sets.size());
        std::size_t index = tables.named.size() - sets.size();
        for (const auto& set : sets) {
            EXPECT_EQ(tables.NameOf(tables.types[tables.named[index]]), set.name);
            EXPECT_EQ(tables.named[index++], set.type);
            EXPECT_EQ(tables.types[set.type].count, set.messages.size());
        }
    }
}

// What JSON strings take as it stands (RFC 8259, 7), of ASCII.
bool NeedsNoEscape(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char octet) {
        return std::string_view("\"\\").find(octet) != std::string_view::npos ||
               !(octet >= ' ' && octet <= '~');
    });
}

bool IsName(std::string_view name) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return !name.empty() && !isDigit(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    });
}

// JSON has members by name, and paths lead to them.
TEST(Families, HaveMembersWithPlainNamesOfTheirOwn) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        for (const reflect::TypeRow& type : family->types.types) {
            if (type.count == 0) {
                continue;
            }
            std::set<std::string_view> names;
            for (const reflect::ElementRow& element : family->types.ElementsOf(type)) {
                const std::string_view name = family->types.NameOf(element);
                EXPECT_TRUE(IsName(name)) << name;
                EXPECT_TRUE(names.insert(name).second) << family->types.NameOf(type) << name;
            }
        }
    }
}

// What one search tells holds for the fields behind.
TEST(Families, HaveOrdersThatRiseWithTheFields) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        for (const iecodec::MessageRow& message : family->codec.messages) {
            std::optional<std::uint16_t> last;
            for (const iecodec::FieldRow& field :
                 family->codec.fields.subspan(message.firstField, message.fieldCount)) {
                if (field.presence == iecodec::FieldPresence::kOptional) {
                    EXPECT_TRUE(!last || field.order > *last) << message.name << field.name;
                    last = field.order;
                }
            }
        }
    }
}

// Decoding looks at the part alone, encoding at the value.
TEST(Families, HaveIntegerPartsThatSayWhatTheirValuesSay) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        for (const iecodec::PartRow& part : family->codec.parts) {
            if (part.kind == iecodec::PartKind::kInteger) {
                const iecodec::ValueRow& value = family->codec.values[part.value];
                EXPECT_EQ(value.shape, iecodec::Shape::kInteger) << value.name;
                EXPECT_EQ(part.width, value.width) << value.name;
                EXPECT_EQ(part.located, value.located) << value.name;
            }
        }
    }
}

// What the rendering goes by without a look at the types.
TEST(Families, HaveStructsThatKnowTheirLines) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        const auto& tables = family->types;
        for (const reflect::TypeRow& type : tables.types) {
            if (type.kind != reflect::TypeKind::kStruct) {
                continue;
            }
            std::size_t labels = 0;
            for (const reflect::ElementRow& element : tables.ElementsOf(type)) {
                labels += tables.TextAt(element.label).size();
                const reflect::TypeRow& member = tables.types[element.type];
                const bool number =
                    member.size > 0 && (member.kind == reflect::TypeKind::kInteger ||
                                        member.kind == reflect::TypeKind::kEnumerated);
                const reflect::LineKind wanted = !number ? reflect::LineKind::kOther
                                                 : member.kind == reflect::TypeKind::kEnumerated
                                                     ? reflect::LineKind::kEnumerated
                                                     : reflect::LineKind::kInteger;
                EXPECT_EQ(element.line, wanted) << tables.NameOf(element);
            }
            EXPECT_EQ(type.size, labels) << tables.NameOf(type);
        }
    }
}

TEST(Families, HaveTheirTextsReadyForTheRendering) {
    for (const Family* family : AllFamiliesAndTheSample()) {
        const auto& tables = family->types;
        for (const reflect::ElementRow& element : tables.elements) {
            const std::string_view label = tables.TextAt(element.label);
            EXPECT_TRUE(label.ends_with(": ")) << label;
            EXPECT_TRUE(NeedsNoEscape(label)) << label;
        }
        for (const reflect::EnumValueRow& value : tables.enumValues) {
            const std::string_view text = tables.TextOf(value);
            EXPECT_EQ(tables.TextAt(value.rendered),
                      std::string(text) + " (" + std::to_string(value.value) + ")");
            EXPECT_EQ(value.plain, NeedsNoEscape(text)) << text;
        }
        // What a copying step reads behind the last text is there to be read.
        std::size_t end = 0;
        const auto reachTo = [&end](reflect::TextRef text) {
            end = std::max<std::size_t>(end, text.offset + text.length);
        };
        for (const reflect::ElementRow& element : tables.elements) {
            reachTo(element.label);
        }
        for (const reflect::EnumValueRow& value : tables.enumValues) {
            reachTo(value.rendered);
        }
        for (const reflect::EnumRow& row : tables.enums) {
            reachTo(row.otherText);
        }
        for (const reflect::TypeRow& type : tables.types) {
            reachTo(type.name);
        }
        EXPECT_EQ(std::string(tables.texts + end, reflect::kCopyStep),
                  std::string(reflect::kCopyStep, '\0'));
        for (const reflect::EnumRow& row : tables.enums) {
            const auto values = tables.enumValues.subspan(row.firstValue, row.valueCount);
            const std::string_view other = tables.TextAt(row.otherText);
            EXPECT_EQ(row.otherIsPlain, NeedsNoEscape(other)) << other;
            for (const reflect::EnumValueRow& value : values) {
                const auto first =
                    std::find_if(values.begin(), values.end(),
                                 [&](const auto& listed) { return listed.value == value.value; });
                EXPECT_EQ(tables.FindValue(row, value.value), &*first) << tables.TextOf(value);
            }
        }
    }
}

std::multiset<std::uint32_t> NumbersOf(const Family& family) {
    std::multiset<std::uint32_t> numbers;
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
    return numbers;
}

TEST(Families, NumberTheirDiagnosticsOnceEach) {
    for (const Family* family : AllFamilies()) {
        const Counts counts(*family);
        const std::multiset<std::uint32_t> numbers = NumbersOf(*family);
        EXPECT_EQ(numbers.size(), (std::set<std::uint32_t>(numbers.begin(), numbers.end()).size()))
            << family->name;
        ASSERT_FALSE(numbers.empty()) << family->name;
        EXPECT_EQ(*numbers.begin(), counts.firstNumber) << counts.Path();
        EXPECT_LE(*numbers.rbegin(), counts.mostNumber) << counts.Path();
    }
}

TEST(Families, SortTheirSkipTables) {
    for (const Family* family : AllFamilies()) {
        const auto& formats = family->codec.formats;
        EXPECT_TRUE(std::is_sorted(formats.begin(), formats.end(),
                                   [](const auto& a, const auto& b) { return a.iei < b.iei; }))
            << family->name;
    }
}

std::uint64_t InstructionsOf(const csn::CsnStructure& structure,
                             const std::vector<std::uint8_t>& octets) {
    csn::CsnMachine machine;
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    csn::CsnMachineInit(machine, *structure.program, structure.label, reader, 0,
                        static_cast<std::int32_t>(8 * octets.size()));
    machine.rootTag = structure.rootTag;
    const std::uint64_t ceiling = machine.instructionsLeft;
    static_cast<void>(csn::CsnMachineRun(machine, nullptr));
    return ceiling - machine.instructionsLeft;
}

TEST(Families, StayBelowTheInstructionCeilings) {
    std::mt19937 random(7);
    for (const Family* family : AllFamilies()) {
        Counts counts(*family);
        for (const csn::CsnStructure& structure : family->codec.structures) {
            const auto ceiling = counts.ceilings.find(structure.name);
            ASSERT_NE(ceiling, counts.ceilings.end()) << counts.Path() << ": " << structure.name;
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
            counts.ceilings.erase(ceiling);
        }
        EXPECT_TRUE(counts.ceilings.empty())
            << counts.Path() << ": no structure " << counts.ceilings.begin()->first;
    }
}

// The ceiling of every run is for code that spins: what is described takes no eighth of it, also
// over the longest element that a message can hold.
TEST(Families, StayFarBelowTheCeilingOfARun) {
    constexpr std::size_t kLongest = 65535;
    std::mt19937 random(11);
    std::vector<std::vector<std::uint8_t>> elements;
    for (const int octet : {0x00, 0xFF, 0x2B, 0xD4, 0xAA, 0x55}) {
        elements.emplace_back(kLongest, static_cast<std::uint8_t>(octet));
    }
    for (int count = 0; count < 4; ++count) {
        for (std::uint8_t& octet : elements.emplace_back(kLongest)) {
            octet = static_cast<std::uint8_t>(random());
        }
    }
    const std::uint64_t ceiling = csn::InstructionCeiling(std::int64_t{8} * kLongest);
    for (const Family* family : AllFamilies()) {
        for (const csn::CsnStructure& structure : family->codec.structures) {
            for (const std::vector<std::uint8_t>& octets : elements) {
                EXPECT_LT(InstructionsOf(structure, octets), ceiling / 8) << structure.name;
            }
        }
    }
}

}  // namespace
}  // namespace quorvane::families
