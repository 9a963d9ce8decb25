#include "reference/csn_grammar.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <map>
#include <utility>

#include "bits/bit_reader.h"
#include "compiler/csn/csn_parser.h"
#include "compiler/csn/csn_resolver.h"
#include "compiler/reporter.h"
#include "csn/assembly/verifier.h"
#include "csn/functions.h"
#include "families/common/cell_information.h"
#include "support/family_files.h"
#include "support/plain_decode.h"

namespace quorvane::reference {
namespace {

// The image names its functions as C++. The tables hold those that descriptions under test can
// need, for the first tags.

using ActionTable = std::map<std::string, csn::CsnAction>;
using FunctionTable = std::map<std::string, csn::CsnValueFunction>;

std::string Name(const char* function, std::initializer_list<int> constants) {
    std::string name = "&csn::functions::" + std::string(function);
    const char* separator = "<";
    for (const int constant : constants) {
        name += separator + std::to_string(constant);
        separator = ", ";
    }
    return constants.size() == 0 ? name : name + ">";
}

std::string Declared(int tag, const std::string& function) {
    return "&csn::functions::Declared<" + std::to_string(tag) + ", " + function + ">";
}

template <int T, csn::CsnValueFunction Count>
void AddCounting(ActionTable& table, const std::string& count) {
    const std::string arguments = "<" + std::to_string(T) + ", " + count + ">";
    table["&csn::functions::SetCount" + arguments] = &csn::functions::SetCount<T, Count>;
    table["&csn::functions::AddCount" + arguments] = &csn::functions::AddCount<T, Count>;
}

template <int T, int Other>
void AddCountingBy(ActionTable& table) {
    AddCounting<T, &csn::functions::TagPlus<Other, 0>>(table, Name("TagPlus", {Other, 0}));
    AddCounting<T, &csn::functions::OnesOf<Other>>(table, Name("OnesOf", {Other}));
}

template <int T>
void AddActions(ActionTable& table) {
    namespace f = csn::functions;
    table[Name("NotePosition", {T})] = &f::NotePosition<T>;
    table[Name("OpenScopeAtLengthEnd", {T, 2})] = &f::OpenScopeAtLengthEnd<T, 2>;
    table[Name("OpenScopeAtLengthEnd", {T, 3})] = &f::OpenScopeAtLengthEnd<T, 3>;
    table[Name("OpenScopeAtLengthEnd", {T, 4})] = &f::OpenScopeAtLengthEnd<T, 4>;
    table[Name("OpenScopeAtLengthEnd", {T, 7})] = &f::OpenScopeAtLengthEnd<T, 7>;
    table[Name("OpenScopeAtLengthStart", {T, 8, 8})] = &f::OpenScopeAtLengthStart<T, 8, 8>;
    table[Name("OpenScopeAtCodedLength", {T})] = &f::OpenScopeAtCodedLength<T>;
    table[Name("OpenFixedScope", {T, 4})] = &f::OpenFixedScope<T, 4>;
    table[Name("CloseScope", {T})] = &f::CloseScope<T>;
    table[Name("WriteBackLength", {T, 4, 0, 7})] = &f::WriteBackLength<T, 4, 0, 7>;
    table[Name("WriteBackLength", {T, 7, 0, 7})] = &f::WriteBackLength<T, 7, 0, 7>;
    table[Name("WriteBackLength", {T, 8, 8, 0})] = &f::WriteBackLength<T, 8, 8, 0>;
    table[Name("OpenScopeAtLengthStart", {T, 8, 9})] = &f::OpenScopeAtLengthStart<T, 8, 9>;
    table[Name("KeepCount", {T, 3})] = &f::KeepCount<T, 3>;
    AddCounting<T, &f::Ones<8>>(table, Name("Ones", {8}));
    AddCounting<T, &f::Constant<0>>(table, Name("Constant", {0}));
    AddCounting<T, &f::Constant<1>>(table, Name("Constant", {1}));
    AddCounting<T, &f::Constant<2>>(table, Name("Constant", {2}));
    AddCountingBy<T, 1>(table);
    AddCountingBy<T, 2>(table);
}

template <int T>
void AddFunctions(FunctionTable& table) {
    namespace f = csn::functions;
    table[Name("TagPlus", {T, -1})] = &f::TagPlus<T, -1>;
    table[Name("TagPlus", {T, 1})] = &f::TagPlus<T, 1>;
    table[Name("TagPlus", {T, 3})] = &f::TagPlus<T, 3>;
    table[Name("TagPlus", {T, 6})] = &f::TagPlus<T, 6>;
    table[Name("RestOf", {T, 1})] = &f::RestOf<T, 1>;
    table[Name("RestOf", {T, 3})] = &f::RestOf<T, 3>;
    table[Name("OctetsToBits", {T})] = &f::OctetsToBits<T>;
    table[Name("BitsLeftInSpan", {T, 24})] = &f::BitsLeftInSpan<T, 24>;
    table[Declared(T, "FddCellInfoBits")] = &f::Declared<T, families::FddCellInfoBits>;
    table[Declared(T, "TddCellInfoBits")] = &f::Declared<T, families::TddCellInfoBits>;
}

template <std::size_t... Index>
ActionTable AllActions(std::index_sequence<Index...>) {
    ActionTable table;
    (AddActions<static_cast<int>(Index) + 1>(table), ...);
    return table;
}

template <std::size_t... Index>
FunctionTable AllFunctions(std::index_sequence<Index...>) {
    FunctionTable table;
    (AddFunctions<static_cast<int>(Index) + 1>(table), ...);
    table[Name("BitsToOctetBoundary", {})] = &csn::functions::BitsToOctetBoundary;
    return table;
}

const ActionTable& Actions() {
    static const ActionTable kTable = AllActions(std::make_index_sequence<8>{});
    return kTable;
}

const FunctionTable& Functions() {
    static const FunctionTable kTable = AllFunctions(std::make_index_sequence<16>{});
    return kTable;
}

/// Looks the functions up; a name that is not in the table is an error.
template <typename Function>
std::string Bind(const std::vector<std::string>& names,
                 const std::map<std::string, Function>& known, std::vector<Function>& functions) {
    std::string missing;
    for (const std::string& name : names) {
        const auto found = known.find(name);
        if (found == known.end()) {
            missing += "the test's table of functions lacks " + name + "\n";
        }
        functions.push_back(found == known.end() ? nullptr : found->second);
    }
    return missing;
}

}  // namespace

std::vector<std::uint8_t> OctetsOf(const std::string& bits) {
    std::vector<std::uint8_t> octets;
    std::size_t count = 0;
    for (const char bit : bits) {
        if (bit == ' ') {
            continue;
        }
        if (count % 8 == 0) {
            octets.push_back(0);
        }
        if (bit == '1') {
            octets.back() = static_cast<std::uint8_t>(octets.back() | 0x80U >> count % 8);
        }
        ++count;
    }
    return octets;
}

std::string BitsOf(const std::vector<std::uint8_t>& octets, std::int32_t count) {
    std::string bits;
    for (std::size_t bit = 0; bit < static_cast<std::size_t>(count); ++bit) {
        bits += (octets[bit / 8] >> (7 - bit % 8) & 1) != 0 ? '1' : '0';
    }
    return bits;
}

Grammar::Grammar(std::string text, std::set<std::string> enumerations)
    : text_(std::move(text)), enumerations_(std::move(enumerations)) {
    const bool whole = text_.find("structure ") != std::string::npos;
    Compile({reporter_.AddFile("T.csn1", whole ? text_ : "structure T \"test\" ;\n" + text_)}, {});
    if (errors_.empty()) {
        errors_ += Bind(image_.actions, Actions(), actions_);
        errors_ += Bind(image_.functions, Functions(), functions_);
        Link();
    }
}

Grammar::Grammar(const families::Family& family)
    : enumerations_(test::EnumerationsOf(family.name)) {
    std::vector<std::uint32_t> files;
    for (const std::string& path : test::DescriptionsOf(family.name, ".csn1")) {
        files.push_back(reporter_.AddFile(path, test::SourceText(path)));
    }
    std::set<std::string> structures;
    for (const csn::CsnStructure& structure : family.codec.structures) {
        structures.emplace(structure.name);
    }
    Compile(files, structures);
    if (errors_.empty()) {
        // The same descriptions have the same functions, in the same order.
        const csn::CsnProgram& program = *family.codec.structures.front().program;
        actions_.assign(program.actionTable, program.actionTable + image_.actions.size());
        functions_.assign(program.valueTable, program.valueTable + image_.functions.size());
        Link();
    }
}

void Grammar::Compile(const std::vector<std::uint32_t>& files,
                      const std::set<std::string>& structures) {
    for (const std::uint32_t file : files) {
        compiler::ParseCsn(reporter_, file, syntax_);
    }
    const auto findEnum = [this](const std::string& name) -> const compiler::EnumModel* {
        if (text_.find("enum " + name) == std::string::npos && !enumerations_.contains(name)) {
            return nullptr;
        }
        enums_.push_back(std::make_unique<compiler::EnumModel>());
        enums_.back()->name = name;
        return enums_.back().get();
    };
    if (!reporter_.HasErrors()) {
        compiler::ResolveCsn(reporter_, syntax_, structures);
    }
    if (!reporter_.HasErrors()) {
        compiler::CheckCsn(reporter_, syntax_);
    }
    if (!reporter_.HasErrors()) {
        types_ = compiler::DeriveCsnTypes(reporter_, syntax_, {findEnum}, store_);
    }
    if (!reporter_.HasErrors()) {
        image_ = compiler::GenerateCsn(reporter_, syntax_, types_);
    }
    errors_ = reporter_.Text();
}

void Grammar::Link() {
    program_ = {image_.code.data(),
                static_cast<std::uint32_t>(image_.code.size()),
                image_.fieldTable.data(),
                actions_.data(),
                functions_.data(),
                image_.fieldCount,
                nullptr};
    csn::VerifierInput input;
    input.code = image_.code;
    input.fieldTable = image_.fieldTable;
    input.actions = image_.actionEffects;
    input.functions = image_.functionBounds;
    for (std::size_t index = 0; index < types_.structures.size(); ++index) {
        const compiler::CsnStructureTypes& types = types_.structures[index];
        const auto fieldCount = static_cast<std::uint16_t>(types.fields.size());
        structures_.push_back(
            {types.type->name, &program_, image_.entries[index], 0, types.rootTag, types.firstTag,
             static_cast<std::uint16_t>(types.type->elements.size()), types.fields});
        std::vector<std::string>& names = names_.emplace_back();
        for (const std::string& path : types.paths) {
            const std::string name = path.substr(path.rfind('.') + 1);
            names.push_back(name.substr(0, name.find('[')));
        }
        input.entries.push_back(
            {types.type->name, image_.entries[index], types.rootTag, types.firstTag, fieldCount});
    }
    errors_ += csn::Verify(input).Text();
    if (errors_.empty()) {
        plan_ = csn::MakePlan(image_.code, image_.fieldTable);
        errors_ = plan_.error;
        program_.plan = plan_.steps.data();
        for (csn::CsnStructure& structure : structures_) {
            structure.step = plan_.stepAt.at(structure.label);
        }
    }
}

const compiler::CsnRule& Grammar::Entry(std::size_t structure) const {
    return *types_.structures[structure].section->entry;
}

Reading Grammar::Decode(const std::string& bits, std::int32_t start, std::size_t structure) {
    const std::vector<std::uint8_t> octets = OctetsOf(bits);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    const csn::CsnStructure& target = structures_[structure];
    csn::CsnMachineInit(*machine_, program_, target.label, reader, start,
                        static_cast<std::int32_t>(bits.size()) - start);
    machine_->rootTag = target.rootTag;
    Reading reading;
    bits::Outcome outcome = 0;
    EXPECT_EQ(csn::test::DifferenceOfPlan(*machine_, target.step, outcome), "") << bits;
    reading.matches = !outcome.Failed();
    reading.taken = static_cast<std::int32_t>(outcome.Bits());
    reading.events = Events(structure);
    return reading;
}

std::vector<Event> Grammar::Events(std::size_t structure) const {
    // A structure that runs another one's rule has that one's fields.
    const auto isOwner = [&](const compiler::CsnStructureTypes& types) {
        return !types.section->runs && types.section->entry == &Entry(structure);
    };
    const auto owner = std::find_if(types_.structures.begin(), types_.structures.end(), isOwner);
    const compiler::CsnStructureTypes& types = *owner;
    const auto& names = names_[static_cast<std::size_t>(owner - types_.structures.begin())];
    std::vector<Event> events;
    events.reserve(static_cast<std::size_t>(machine_->recordCount));
    for (std::int32_t index = 0; index < machine_->recordCount; ++index) {
        const csn::CsnFieldRecord& record = machine_->records[index];
        const auto row = static_cast<std::size_t>(record.tag - types.firstTag);
        const bool opens = record.occurrence >= 0;
        events.push_back({opens ? names.at(row) : std::string(), record.occurrence, record.bitPos,
                          record.depth});
    }
    return events;
}

}  // namespace quorvane::reference
