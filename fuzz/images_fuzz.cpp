// The CSN.1 machine on images that the verifier has accepted: compiled ones with a few octets
// changed, and random ones. Whatever the bits and whatever a source answers, a run keeps to its
// memory and to what the verifier has promised for it.
//
// Input: how long the recipe of the image is, in units of two octets; the recipe; how to run it;
// the bits, or what the source answers.

#include <set>
#include <string>

#include "compiler/csn/csn_compiler.h"
#include "csn/machine.h"
#include "families/family.h"
#include "fuzz_support.h"
#include "random_image.h"
#include "support/family_files.h"

namespace quorvane {
namespace {

using fuzz::ExactOctets;
using fuzz::Image;
using fuzz::Input;
using fuzz::Require;

/// An image may be made to run for ages. That is not what is looked for here.
constexpr std::uint64_t kCeiling = 100000;

// ---- Compiled images ----

/// A family's image with the tables that the library has not got the sizes of.
Image CompiledImage(const families::Family& family) {
    compiler::Reporter reporter;
    compiler::TypeStore store;
    std::vector<std::uint32_t> files;
    for (const std::string& path : test::DescriptionsOf(family.name, ".csn1")) {
        files.push_back(reporter.AddFile(path, test::SourceText(path)));
    }
    // Which values an enumeration has makes no difference to the code.
    compiler::EnumModel& anyEnum = store.enums.emplace_back();
    const std::set<std::string> enumerations = test::EnumerationsOf(family.name);
    const auto findEnum = [&](const std::string& name) {
        return enumerations.contains(name) ? &anyEnum : nullptr;
    };
    std::set<std::string> structures;
    for (const csn::CsnStructure& structure : family.codec.structures) {
        structures.emplace(structure.name);
    }
    const auto csn = compiler::CompileCsn(reporter, files, {findEnum, structures}, store);
    Require(!reporter.HasErrors(), "the family's description compiles");

    const csn::CsnProgram& program = *family.codec.structures.front().program;
    Image image;
    image.code = csn.image.code;
    image.fieldTable = csn.image.fieldTable;
    image.actions = {program.actionTable, csn.image.actions.size()};
    image.actionEffects = csn.image.actionEffects;
    image.functions = {program.valueTable, csn.image.functions.size()};
    image.functionBounds = csn.image.functionBounds;
    for (const csn::CsnStructure& structure : family.codec.structures) {
        image.entries.push_back({std::string(structure.name), structure.label, structure.rootTag,
                                 structure.firstTag,
                                 static_cast<std::uint16_t>(structure.fields.size())});
    }
    return image;
}

std::vector<Image> CompiledImages() {
    std::vector<Image> images;
    for (const families::Family* family : families::AllFamilies()) {
        if (!family->codec.structures.empty()) {
            images.push_back(CompiledImage(*family));
        }
    }
    return images;
}

// ---- Runs ----

/// Answers the machine with whatever the input says.
class AnySource {
  public:
    explicit AnySource(Input& input) : input_(input) {}

    static std::int32_t Answer(csn::CsnFieldEvent& event) {
        return static_cast<AnySource*>(event.machine->userRecord)->Supply(event);
    }

  private:
    std::int32_t Supply(csn::CsnFieldEvent& event) {
        csn::CsnMachine& machine = *event.machine;
        Require(event.fieldId > 0, "a field has no identifier");
        const std::uint8_t choice = input_.Octet();
        if (machine.writer != nullptr && event.kind != csn::kGroupCloses) {
            const std::int32_t width =
                event.kind == csn::kWholeField && event.bitLength > 0 && choice % 8 != 7
                    ? event.bitLength
                : choice % 8 < 3 ? 0
                                 : static_cast<std::int32_t>(choice >> 3U);
            machine.writer->Write(machine.bitPos, input_.Number(), width);
            event.bitLength = width;
        }
        return choice % 16 == 15 ? csn::kNotThere : choice == 254 ? csn::kGiveUp : csn::kGoOn;
    }

    Input& input_;
};

void CheckRecords(const csn::CsnMachine& machine) {
    std::int32_t open = 0;
    for (std::int32_t index = 0; index < machine.recordCount; ++index) {
        const csn::CsnFieldRecord& record = machine.records[index];
        const bool closes = record.occurrence < 0;
        if (!closes && record.parent != nullptr) {
            Require(record.parent >= machine.records && record.parent < &record,
                    "a field's parent is no record in front of it");
            Require(record.parent->occurrence >= 0, "a field's parent is no opening record");
        }
        Require(record.depth == open, "the depth of a record is not the count of open fields");
        open += closes ? -1 : 1;
        Require(open >= 0, "a field closes that is not open");
    }
}

void Run(const Image& image, const csn::VerifierReport& report, Input& input) {
    const csn::CsnProgram program = image.Program();
    const std::size_t which = input.Below(image.entries.size());
    const csn::VerifierEntry& entry = image.entries[which];
    const std::uint8_t form = input.Octet();
    csn::CsnMachine machine;
    if ((form & 1U) == 0) {
        const ExactOctets octets(input.Rest());
        const bits::BitReader reader(octets.Data(), static_cast<std::int64_t>(octets.Size()));
        const auto first = static_cast<std::int32_t>(form >> 5U);
        const auto count = static_cast<std::int32_t>(8 * octets.Size()) - first;
        csn::CsnMachineInit(machine, program, entry.label, reader, first, count);
        machine.instructionsLeft = kCeiling;
        machine.rootTag = (form & 2U) != 0 ? csn::kNoRecords : entry.rootTag;
        const bits::Outcome result = csn::CsnMachineRun(machine, nullptr);
        if (!result.Failed() && machine.rootTag != csn::kNoRecords) {
            CheckRecords(machine);
        }
    } else {
        const ExactOctets octets({}, 4 * std::size_t{form});
        bits::BitWriter writer(octets.Data(), static_cast<std::int64_t>(octets.Size()));
        AnySource source(input);
        csn::CsnMachineInit(machine, program, entry.label, writer, 0);
        machine.instructionsLeft = kCeiling;
        machine.rootTag = (form & 2U) != 0 ? csn::kNoRecords : entry.rootTag;
        machine.userRecord = &source;
        static_cast<void>(csn::CsnMachineRun(machine, AnySource::Answer));
    }
    const csn::VerifierNeed& need = report.needs[which];
    Require(machine.tagCount <= static_cast<std::int32_t>(need.tags),
            "the run ends with more tags than the verifier has counted");
}

}  // namespace
}  // namespace quorvane

int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
    using namespace quorvane;
    static const std::vector<Image> kCompiled = CompiledImages();
    Input input(octets, size);
    const std::span<const std::uint8_t> taken = input.Take(std::size_t{2} * input.Octet());
    Input recipe(taken.data(), taken.size());
    const std::size_t kind = recipe.Below(16);
    Image image = kind == 0 ? kCompiled[recipe.Below(kCompiled.size())] : fuzz::MakeImage(recipe);
    if (kind < 6) {
        fuzz::DamageImage(recipe, image);
    }
    const csn::VerifierReport report = image.Verify();
    if (report.findings.empty()) {
        Run(image, report, input);
    }
    return 0;
}
