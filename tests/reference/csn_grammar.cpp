#include "reference/csn_grammar.h"

#include <map>
#include <utility>

#include "bits/bit_reader.h"
#include "compiler/csn/csn_parser.h"
#include "compiler/csn/csn_reporter.h"
#include "compiler/csn/csn_resolver.h"
#include "csn/functions.h"
#include "csn/verifier.h"

namespace quorvane::reference {
namespace {

// The image names its functions as C++; these are the ones that descriptions under test use.
#define QUORVANE_ACTION(...) \
    { "&csn::functions::" #__VA_ARGS__, &csn::functions::__VA_ARGS__ }

const std::map<std::string, csn::CsnAction>& Actions() {
    static const std::map<std::string, csn::CsnAction> kActions = {
        QUORVANE_ACTION(NotePosition<1>),
        QUORVANE_ACTION(NotePosition<2>),
        QUORVANE_ACTION(NotePosition<3>),
        QUORVANE_ACTION(NotePosition<4>),
        QUORVANE_ACTION(NotePosition<6>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<1, 2>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<1, 3>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<2, 3>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<2, 4>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<5, 7>),
        QUORVANE_ACTION(OpenScopeAtLengthEnd<7, 7>),
        QUORVANE_ACTION(OpenScopeAtLengthStart<2, 8, 8>),
        QUORVANE_ACTION(OpenFixedScope<1, 4>),
        QUORVANE_ACTION(CloseScope<1>),
        QUORVANE_ACTION(CloseScope<2>),
        QUORVANE_ACTION(CloseScope<5>),
        QUORVANE_ACTION(CloseScope<7>),
        QUORVANE_ACTION(WriteBackLength<1, 4, 0, 7>),
        QUORVANE_ACTION(WriteBackLength<1, 8, 8, 0>),
        QUORVANE_ACTION(WriteBackLength<4, 7, 0, 7>),
        QUORVANE_ACTION(WriteBackLength<6, 7, 0, 7>),
    };
    return kActions;
}

const std::map<std::string, csn::CsnValueFunction>& Functions() {
    static const std::map<std::string, csn::CsnValueFunction> kFunctions = {
        QUORVANE_ACTION(BitsToOctetBoundary),
        QUORVANE_ACTION(OctetsToBits<1>),
        QUORVANE_ACTION(OctetsToBits<3>),
        QUORVANE_ACTION(TagPlus<1, 1>),
        QUORVANE_ACTION(TagPlus<1, -1>),
        QUORVANE_ACTION(TagPlus<2, 1>),
        QUORVANE_ACTION(RestOf<1, 3>),
        QUORVANE_ACTION(FddCellInfo<1>),
    };
    return kFunctions;
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

Grammar::Grammar(std::string text) : text_(std::move(text)) {
    Compile();
    if (errors_.empty()) {
        Link();
    }
}

void Grammar::Compile() {
    const bool whole = text_.find("structure ") != std::string::npos;
    const std::uint32_t file =
        reporter_.AddFile("T.csn1", whole ? text_ : "structure T \"test\" ;\n" + text_);
    compiler::CsnReporter reporter(reporter_);
    compiler::ParseCsn(reporter, file, syntax_);
    const auto findEnum = [this](const std::string& name) -> const compiler::EnumModel* {
        enums_.push_back(std::make_unique<compiler::EnumModel>());
        enums_.back()->name = name;
        return enums_.back().get();
    };
    if (!reporter.HasErrors()) {
        compiler::ResolveCsn(reporter, syntax_);
    }
    if (!reporter.HasErrors()) {
        compiler::CheckCsn(reporter, syntax_);
    }
    if (!reporter.HasErrors()) {
        types_ = compiler::DeriveCsnTypes(reporter, syntax_, findEnum, store_);
    }
    if (!reporter.HasErrors()) {
        image_ = compiler::GenerateCsn(reporter, syntax_, types_);
    }
    errors_ = reporter_.Text();
}

void Grammar::Link() {
    errors_ += Bind(image_.actions, Actions(), actions_);
    errors_ += Bind(image_.functions, Functions(), functions_);
    program_ = {image_.code.data(), static_cast<std::uint32_t>(image_.code.size()),
                image_.fieldTable.data(), actions_.data(),
                functions_.data(), image_.fieldCount};
    csn::VerifierInput input;
    input.code = image_.code;
    input.fieldTable = image_.fieldTable;
    input.actionCount = static_cast<std::uint32_t>(actions_.size());
    input.functionCount = static_cast<std::uint32_t>(functions_.size());
    input.actionTags = image_.actionTags;
    for (std::size_t index = 0; index < types_.structures.size(); ++index) {
        const compiler::CsnStructureTypes& types = types_.structures[index];
        const auto fieldCount = static_cast<std::uint16_t>(types.fields.size());
        structures_.push_back({types.type->name, &program_, image_.entries[index], types.rootTag,
                               types.firstTag,
                               static_cast<std::uint16_t>(types.type->elements.size()),
                               types.fields});
        input.entries.push_back({types.type->name, image_.entries[index], types.rootTag,
                                 types.firstTag, fieldCount});
    }
    errors_ += csn::Verify(input).Text();
}

const compiler::CsnRule& Grammar::Entry(std::size_t structure) const {
    return *types_.structures[structure].section->rules.front();
}

Reading Grammar::Decode(const std::string& bits, std::int32_t start, std::size_t structure) {
    const std::vector<std::uint8_t> octets = OctetsOf(bits);
    const bits::BitReader reader(octets.data(), static_cast<std::int64_t>(octets.size()));
    const csn::CsnStructure& target = structures_[structure];
    csn::CsnMachineInit(*machine_, program_, target.label, reader, start,
                        static_cast<std::int32_t>(bits.size()) - start);
    machine_->rootTag = target.rootTag;
    Reading reading;
    reading.taken = csn::CsnMachineRun(*machine_, nullptr);
    reading.matches = reading.taken >= 0;
    reading.events = Events(structure);
    return reading;
}

std::vector<Event> Grammar::Events(std::size_t structure) const {
    const compiler::CsnStructureTypes& types = types_.structures[structure];
    std::vector<Event> events;
    for (std::int32_t index = 0; index < machine_->recordCount; ++index) {
        const csn::CsnFieldRecord& record = machine_->records[index];
        std::string name;
        if (record.occurrence >= 0) {
            const auto row = static_cast<std::size_t>(record.tag - types.firstTag);
            name = row < types.paths.size() ? types.paths[row] : "?";
            name = name.substr(name.rfind('.') + 1);
            name = name.substr(0, name.find('['));
        }
        events.push_back({name, record.occurrence, record.bitPos, record.depth});
    }
    return events;
}

}  // namespace quorvane::reference
