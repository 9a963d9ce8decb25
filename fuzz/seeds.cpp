// Writes to a folder what a hunt begins with: for each target that decodes a folder of its name
// with the golden messages in the form of its input, and two dictionaries, messages.dict with
// elements of the tables and json.dict with the names of fields. What else is there stays.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "all_structures.h"
#include "csn/csn_record.h"
#include "decode_input.h"
#include "facade/decoder.h"
#include "message_codec.h"
#include "quorvane/json.h"
#include "reflect/convert.h"
#include "support/golden_file.h"

namespace fs = std::filesystem;

namespace quorvane {
namespace {

using Octets = std::vector<std::uint8_t>;

void WriteFile(const fs::path& path, std::string_view contents) {
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out << contents;
    if (!out.flush()) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(1);
    }
}

void WriteFile(const fs::path& path, const Octets& octets) {
    WriteFile(path, {reinterpret_cast<const char*>(octets.data()), octets.size()});
}

// ---- Golden messages, all of their octets that are readable ----

/// `octets` behind a number of one octet and, if so wanted, how many they are.
Octets Numbered(std::size_t number, const Octets& octets, bool withLength) {
    Octets input{static_cast<std::uint8_t>(number)};
    if (withLength) {
        input.push_back(static_cast<std::uint8_t>(octets.size() >> 8U));
        input.push_back(static_cast<std::uint8_t>(octets.size()));
    }
    input.insert(input.end(), octets.begin(), octets.end());
    return input;
}

std::size_t SetOf(Decoding decoding) {
    const auto& sets = fuzz::AllSets();
    const auto* set = facade::BindingOf(decoding).set;
    return static_cast<std::size_t>(
        std::find_if(sets.begin(), sets.end(), [set](const auto& row) { return row.set == set; }) -
        sets.begin());
}

std::string JsonOf(const test::GoldenFile& golden) {
    Message message;
    message.Decode(golden.decoding, golden.octets);
    std::string json;
    AppendJson(message, json);
    return json;
}

/// Inputs of structures_fuzz for the structures that a message has in it.
class StructureSeeds {
  public:
    StructureSeeds(const test::GoldenFile& golden, fs::path file)
        : message_(golden.octets), file_(std::move(file)) {
        iecodec::Diagnostics diagnostics;
        facade::DecodedRecord decoded;
        facade::DecodeRecord(golden.decoding, Reader(), Size(), arena_, diagnostics, decoded);
        if (decoded.Found()) {
            family_ = decoded.binding.family;
            Walk(decoded.Type(), decoded.container.body);
        }
    }

  private:
    /// Gives the first bit that a location in the value tells of.
    std::int32_t Walk(std::uint16_t type, const bits::Cell& cell) {
        const reflect::TypeRow& row = family_->types.types[type];
        std::int32_t first = INT32_MAX;
        if (cell.location != 0) {
            first = static_cast<std::int32_t>(cell.location >> 16U);
        }
        if (row.kind != reflect::TypeKind::kStruct || cell.cells == nullptr) {
            return first;
        }
        const auto elements = family_->types.ElementsOf(row);
        for (std::size_t index = 0; index < elements.size(); ++index) {
            first = std::min(first, Walk(elements[index].type, cell.cells[index]));
        }
        const auto& structures = fuzz::AllStructures();
        for (std::size_t index = 0; index < structures.size(); ++index) {
            if (structures[index].family == family_ && structures[index].type == type) {
                Write(index, first, cell);
            }
        }
        return first;
    }

    /// The structure begins a few bits ahead of its first field with a location: where it decodes
    /// to the same.
    void Write(std::size_t index, std::int32_t firstField, const bits::Cell& cell) {
        constexpr std::int32_t kMostBitsAhead = 64;
        const fuzz::Structure& structure = fuzz::AllStructures()[index];
        const auto bits = static_cast<std::int32_t>(8 * Size());
        for (std::int32_t ahead = 0; ahead <= kMostBitsAhead; ++ahead) {
            const std::int32_t first = firstField - ahead;
            if (first < 0 || first > bits) {
                return;
            }
            bits::Cell again{};
            static_cast<void>(
                csn::DecodeCsn(*structure.csn, Reader(), arena_, first, bits - first, again));
            if (reflect::RecordsEqual(family_->types, structure.type, cell, again, true)) {
                Octets input{static_cast<std::uint8_t>(index), 0,
                             static_cast<std::uint8_t>(first % 8)};
                input.insert(input.end(), message_.begin() + first / 8, message_.end());
                return WriteFile(file_.string() + "_" + std::to_string(index), input);
            }
        }
    }

    [[nodiscard]] std::int64_t Size() const { return static_cast<std::int64_t>(message_.size()); }
    [[nodiscard]] bits::BitReader Reader() const { return {message_.data(), Size()}; }

    Octets message_;
    fs::path file_;
    bits::Arena arena_;
    const families::Family* family_ = nullptr;
};

void WriteSeeds(const fs::path& folder, const std::string& name, const test::GoldenFile& golden) {
    const auto decoding = static_cast<std::size_t>(golden.decoding);
    const Octets calls = fuzz::WriteDecodeInput({golden.decoding, golden.length, golden.octets});
    WriteFile(folder / "decode_fuzz" / name, calls);
    WriteFile(folder / "plain_fuzz" / name, calls);
    WriteFile(folder / "cost_fuzz" / name, Numbered(decoding, golden.octets, false));
    WriteFile(folder / "fields_fuzz" / name, Numbered(decoding, golden.octets, true));
    WriteFile(folder / "round_trip_fuzz" / name,
              Numbered(SetOf(golden.decoding), golden.octets, false));
    WriteFile(folder / "tree_fuzz" / name, Numbered(SetOf(golden.decoding), golden.octets, true));
    WriteFile(folder / "json_fuzz" / name, JsonOf(golden));
    StructureSeeds(golden, folder / "structures_fuzz" / name);
}

// ---- Dictionaries ----

/// How a dictionary has these octets.
std::string Word(const Octets& octets) {
    std::string word = "\"";
    for (const std::uint8_t octet : octets) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", unsigned{octet});
        word += escaped;
    }
    return word + "\"\n";
}

/// The shortest element that the field takes, all its bits 0; nothing without an identifier.
Octets ShortestElement(const iecodec::FieldRow& field) {
    const iecodec::FieldFormatInfo& format = iecodec::InfoOf(field.format);
    Octets element;
    if (format.ieiWidth == 0) {
        return element;
    }
    element.push_back(field.iei);
    if (format.lengthWidth == 16) {
        element.push_back(static_cast<std::uint8_t>(field.leastOctets >> 8U));
    }
    if (format.lengthWidth > 0) {
        element.push_back(static_cast<std::uint8_t>(field.leastOctets));
        element.resize(element.size() + field.leastOctets);
    } else if (format.ieiWidth == 8) {
        element.resize(1 + field.width / 8U);
    }
    return element;
}

void WriteDictionaries(const fs::path& folder) {
    constexpr std::size_t kMostOctets = 64;  // that libFuzzer takes
    std::set<std::string> elements;
    std::set<std::string> names;
    for (const families::Family* family : families::AllFamilies()) {
        for (const iecodec::FieldRow& field : family->codec.fields) {
            const Octets element = ShortestElement(field);
            if (!element.empty() && element.size() <= kMostOctets) {
                elements.insert(Word(element));
            }
        }
        for (const reflect::ElementRow& element : family->types.elements) {
            const std::string name(family->types.NameOf(element));
            if (name.size() + 6 <= kMostOctets) {
                names.insert("\"\\\"" + name + "\\\":\"\n");
            }
        }
    }
    const auto joined = [](const std::set<std::string>& words) {
        std::string all;
        for (const std::string& word : words) {
            all += word;
        }
        return all;
    };
    WriteFile(folder / "messages.dict", joined(elements));
    WriteFile(folder / "json.dict", joined(names));
}

}  // namespace
}  // namespace quorvane

int main(int argc, char** argv) {
    using namespace quorvane;
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const fs::path folder = argv[1];
    for (const fs::path& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        if (!golden) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), problem.c_str());
            return 1;
        }
        WriteSeeds(folder, path.parent_path().filename().string() + "_" + path.stem().string(),
                   *golden);
    }
    WriteDictionaries(folder);
    return 0;
}
