// What a call costs, in instructions as callgrind counts them: never more than a ceiling that is
// linear in the message's length. The dearest messages that are known stand in tests/cost.
//
// The program runs itself under valgrind to decode them: `cost_test --decode`.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/message.h"
#include "tools/hex.h"

namespace {

namespace fs = std::filesystem;
using namespace quorvane;

using Octets = std::vector<std::uint8_t>;

struct Input {
    std::string name;
    Decoding decoding{};
    Octets octets;
};

/// What calls write to.
struct Answers {
    std::string text;
    std::string diagnostics;
    Message message;
};

/// Decodes to text, or tolerantly to a message. Callgrind is told to count this function's calls,
/// each by itself.
extern "C" [[gnu::noinline]] void quorvane_counted_call(const Input& input, bool tolerant,
                                                        Answers& answers) {
    if (tolerant) {
        answers.message.Decode(input.decoding, input.octets,
                               {.tolerant = true, .deciphered = true});
    } else {
        DecodeInto(input.decoding, input.octets, answers.text, answers.diagnostics);
    }
}

Octets ReadHex(const std::string& digits) {
    Octets octets;
    EXPECT_EQ(tool::ParseHex(digits, octets), "") << digits;
    return octets;
}

/// The lines of a file of tests/cost, in words, without those of decodings that this build does not
/// describe: the function and `parts` groups of hexadecimal digits. What stands behind # is for
/// people.
struct Line {
    Decoding decoding;
    std::string name;  // the line itself
    std::vector<Octets> parts;
};

std::vector<Line> ReadLines(const char* file, std::size_t parts) {
    std::vector<Line> lines;
    std::ifstream in(std::string(QUORVANE_SOURCE_DIR "/tests/cost/") + file);
    EXPECT_TRUE(in) << file;
    for (std::string text; std::getline(in, text);) {
        std::istringstream words(text.substr(0, text.find('#')));
        std::string function;
        if (!(words >> function)) {
            continue;
        }
        const auto decoding = FindDecoding(function);
        EXPECT_TRUE(decoding) << text;
        Line line{decoding.value_or(Decoding{}), text, {}};
        for (std::string digits; words >> digits;) {
            line.parts.push_back(ReadHex(digits));
        }
        EXPECT_EQ(line.parts.size(), parts) << text;
        if (Decodings()[static_cast<std::size_t>(line.decoding)].described) {
            lines.push_back(line);
        }
    }
    return lines;
}

constexpr std::size_t kLeastGrown = std::size_t{1} << 10;
constexpr std::size_t kMostGrown = std::size_t{1} << 16;

/// A message that begins with `head` and repeats `element` up to `size` octets.
Octets Grown(const Octets& head, const Octets& element, std::size_t size) {
    Octets octets = head;
    while (octets.size() < size) {
        octets.insert(octets.end(), element.begin(), element.end());
    }
    return octets;
}

/// All that is counted, in this order: the dearest messages, and the others in growing sizes.
std::vector<Input> Inputs() {
    std::vector<Input> inputs;
    for (const Line& line : ReadLines("dearest.txt", 1)) {
        inputs.push_back({line.name, line.decoding, line.parts[0]});
    }
    for (const Line& line : ReadLines("growing.txt", 2)) {
        for (std::size_t size = kLeastGrown; size <= kMostGrown; size *= 2) {
            inputs.push_back({line.name + ", " + std::to_string(size) + " octets", line.decoding,
                              Grown(line.parts[0], line.parts[1], size)});
        }
    }
    return inputs;
}

void DecodeAll() {
    Answers answers;
    for (const Input& input : Inputs()) {
        for (const bool tolerant : {false, true}) {
            // So that the thread has its memory.
            DecodeInto(input.decoding, input.octets, answers.text, answers.diagnostics);
            quorvane_counted_call(input, tolerant, answers);
        }
    }
}

/// What callgrind has written to a file; 0 if there is none.
std::uint64_t TotalIn(const fs::path& file) {
    constexpr std::string_view kLabel = "totals: ";
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with(kLabel)) {
            return std::strtoull(line.c_str() + kLabel.size(), nullptr, 10);
        }
    }
    return 0;
}

struct Instructions {
    std::uint64_t text = 0;
    std::uint64_t tolerant = 0;
};

/// Of each of so many inputs.
std::vector<Instructions> CountedInstructions(std::size_t count) {
    const fs::path folder =
        fs::path(testing::TempDir()) / ("cost_test." + std::to_string(getpid()));
    fs::create_directories(folder);
    const std::string out = (folder / "out").string();
    const std::string command =
        QUORVANE_VALGRIND " --quiet --tool=callgrind --callgrind-out-file='" + out +
        "' --toggle-collect=quorvane_counted_call --dump-after=quorvane_counted_call '" +
        fs::read_symlink("/proc/self/exe").string() + "' --decode";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::vector<Instructions> instructions;
    for (std::size_t index = 0; index < count; ++index) {
        instructions.push_back({TotalIn(out + '.' + std::to_string(2 * index + 1)),
                                TotalIn(out + '.' + std::to_string(2 * index + 2))});
    }
    fs::remove_all(folder);
    return instructions;
}

// docs/reliability.md tells how these were come by.
constexpr std::uint64_t kMostOfAMessage = 50000;
constexpr std::uint64_t kMostOfAnOctet = 5000;

void ExpectNoMoreThan(std::uint64_t most, std::uint64_t count) {
    EXPECT_GT(count, 0U);
    EXPECT_LE(count, most);
}

TEST(Cost, StaysBelowItsCeilingAndGrowsNoFasterThanTheMessage) {
    const std::vector<Input> inputs = Inputs();
    if (inputs.empty()) {
        GTEST_SKIP() << "this build describes none of the messages";
    }
    const std::vector<Instructions> instructions = CountedInstructions(inputs.size());
    ASSERT_GT(instructions.front().text, 0U) << "nothing was counted";
    for (std::size_t index = 0; index < inputs.size(); ++index) {
        const Input& input = inputs[index];
        const Instructions& counted = instructions[index];
        const std::size_t size = input.octets.size();
        SCOPED_TRACE(input.name);
        std::printf("%10llu instructions, tolerant %10llu, %6zu octets: %.60s\n",
                    static_cast<unsigned long long>(counted.text),
                    static_cast<unsigned long long>(counted.tolerant), size, input.name.c_str());
        ExpectNoMoreThan(kMostOfAMessage + kMostOfAnOctet * size, counted.text);
        ExpectNoMoreThan(kMostOfAMessage + kMostOfAnOctet * size, counted.tolerant);
        if (size >= 2 * kLeastGrown) {
            // Twice, and a little for memory that grows with a call and is copied.
            const Instructions& ofHalf = instructions[index - 1];
            ExpectNoMoreThan(ofHalf.text * 21 / 10, counted.text);
            ExpectNoMoreThan(ofHalf.tolerant * 21 / 10, counted.tolerant);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--decode") {
        DecodeAll();
        return 0;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
