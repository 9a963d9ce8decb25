// Memory of a call: none from the heap once a thread has decoded a few messages, nothing kept from
// call to call, and nothing lost when there is none left. A program of its own, since it replaces
// operator new.

#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <new>
#include <string>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/json.h"
#include "quorvane/message.h"
#include "quorvane/quorvane.h"
#include "support/entry_points.h"
#include "support/golden_file.h"
#include "support/sanitized.h"

namespace {

thread_local long allocations = 0;
thread_local std::size_t octetsHeld = 0;
thread_local long allocationsLeft = -1;  // -1: as many as one likes

void* Allocate(std::size_t size) {
    ++allocations;
    if (allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    octetsHeld += malloc_usable_size(memory);
    return memory;
}

void Free(void* memory) {
    octetsHeld -= malloc_usable_size(memory);
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
// The sanitizers have one of their own, which does not call the one above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    Free(memory);
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete[](void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    Free(memory);
}

namespace quorvane {
namespace {

std::vector<test::GoldenFile> AllGolden() {
    std::vector<test::GoldenFile> all;
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        if (auto golden = test::ReadGoldenFile(path, problem)) {
            all.push_back(std::move(*golden));
        }
    }
    return all;
}

bool DecodeOne(const test::GoldenFile& golden, std::string& text, std::string& diagnostics) {
    const PaddedMessage message(golden.octets.data(), golden.length, golden.octets.size());
    return DecodeInto(golden.decoding, message, text, diagnostics);
}

// First in this program, so that the failures meet the first use of each family, too.
TEST(Allocation, AFailureLeavesTheNextCallAsGoodAsNew) {
    const std::vector<test::GoldenFile> all = AllGolden();
    ASSERT_FALSE(all.empty());
    for (const test::GoldenFile& golden : all) {
        for (long allowed = 0;; ++allowed) {
            std::string text;
            std::string diagnostics;
            bool failed = false;
            allocationsLeft = allowed;
            try {
                DecodeOne(golden, text, diagnostics);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            allocationsLeft = -1;
            if (!failed) {
                std::string again;
                DecodeOne(golden, again, diagnostics);
                EXPECT_EQ(text, again);
                break;
            }
        }
    }
}

TEST(Allocation, NoneInTheSteadyState) {
    const std::vector<test::GoldenFile> all = AllGolden();
    std::string text;
    std::string diagnostics;
    constexpr int kRoundsToSettle = 2;
    for (int round = 0; round < kRoundsToSettle; ++round) {
        for (const test::GoldenFile& golden : all) {
            DecodeOne(golden, text, diagnostics);
        }
    }
    const long before = allocations;
    for (const test::GoldenFile& golden : all) {
        DecodeOne(golden, text, diagnostics);
    }
    EXPECT_EQ(allocations, before);
}

// All entry points, with lengths within and behind the octets.
TEST(Allocation, AMillionCallsHoldNoMoreThanTheFirst) {
    constexpr long kCalls = test::kSanitized ? 90000 : 1000000;
    std::vector<test::GoldenFile> all = AllGolden();
    for (test::GoldenFile& golden : all) {
        golden.octets.resize(golden.octets.size() + 1 + kReadAhead);
    }
    std::string text;
    std::string diagnostics;
    Message message;
    CString wide;
    long calls = 0;
    const auto callAll = [&](const test::GoldenFile& golden, std::int32_t length) {
        const PaddedMessage octets(golden.octets.data(), length, golden.octets.size());
        DecodeInto(golden.decoding, octets, text, diagnostics);
        message.Decode(golden.decoding, octets, {.tolerant = true, .deciphered = true});
        calls += 2;
        if (diagnostics.empty()) {  // else it prints them
            const auto function = static_cast<std::size_t>(golden.decoding);
            test::EntryPoints()[function].plain(golden.octets.data(), length, wide);
            ++calls;
        }
    };
    std::size_t held = 0;
    for (int round = 0; calls < kCalls; ++round) {
        for (const test::GoldenFile& golden : all) {
            for (const std::int32_t length :
                 {golden.length, golden.length / 2, golden.length - 1, golden.length + 1}) {
                callAll(golden, length);
            }
        }
        if (round == 1) {
            held = octetsHeld;
        } else if (round > 1) {
            ASSERT_EQ(octetsHeld, held) << "after " << calls << " calls";
        }
    }
}

constexpr DecodeOptions kWays[] = {{}, {.tolerant = true, .deciphered = true}};

bool DecodeOne(const test::GoldenFile& golden, Message& message, DecodeOptions options) {
    return message.Decode(golden.decoding,
                          PaddedMessage(golden.octets.data(), golden.length, golden.octets.size()),
                          options);
}

TEST(Allocation, NoneOfAMessageFromItsSecondDecodeOn) {
    std::size_t kept = 0;
    for (const test::GoldenFile& golden : AllGolden()) {
        for (const DecodeOptions& options : kWays) {
            Message message;
            std::string text;
            DecodeOne(golden, message, options);
            message.AppendText(text);
            text.clear();
            const long before = allocations;
            DecodeOne(golden, message, options);
            std::size_t octets = 0;
            Visit(message.Root(), [&octets](const Field& field, unsigned) {
                octets += field.Name().size() + field.Words().size() + field.Octets().size();
                return field.Status() != FieldStatus::kAbsent;
            });
            for (std::size_t index = 0; index < message.FaultCount(); ++index) {
                octets += message.GetFault(index).words.size();
            }
            for (std::size_t index = 0; index < message.SurplusCount(); ++index) {
                kept += message.GetSurplus(index).octets.size();
            }
            message.AppendText(text);
            EXPECT_EQ(message.Find(octets == 0 ? "A" : "A.B[1].C").size(), 0U);
            EXPECT_EQ(allocations, before) << golden.text;
        }
    }
    const auto eps = static_cast<std::size_t>(Decoding::EPS_MMDownlink);
    EXPECT_TRUE(kept > 0 || !Decodings()[eps].described);
}

TEST(Allocation, NoneOfJsonThatHasRoom) {
    const std::vector<test::GoldenFile> all = AllGolden();
    Message message;
    std::string json;
    const auto allocationsOfAll = [&] {
        long made = 0;
        for (const test::GoldenFile& golden : all) {
            for (const DecodeOptions& options : kWays) {
                DecodeOne(golden, message, options);
                json.clear();
                const long before = allocations;
                AppendJson(message, json);
                made += allocations - before;
            }
        }
        return made;
    };
    EXPECT_GT(allocationsOfAll(), 0);
    EXPECT_EQ(allocationsOfAll(), 0);
}

TEST(Allocation, AMessageThatGetsNoneHasFoundNothing) {
    for (const test::GoldenFile& golden : AllGolden()) {
        for (const DecodeOptions& options : kWays) {
            Message message;
            for (long allowed = 0;; ++allowed) {
                bool failed = false;
                allocationsLeft = allowed;
                try {
                    DecodeOne(golden, message, options);
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
                allocationsLeft = -1;
                if (!failed) {
                    break;
                }
                EXPECT_FALSE(message.IsFound());
                EXPECT_FALSE(message.Root());
                EXPECT_EQ(message.FaultCount(), 0U);
                EXPECT_EQ(message.SurplusCount(), 0U);
                EXPECT_FALSE(message.Security());
            }
        }
    }
}

// In C there are no exceptions.
TEST(Allocation, TheInterfaceForCAnswersThatThereIsNone) {
    const std::uint8_t octets[] = {0x0F, 0x87};
    const int decoding = quorvane_find_decoding("EPC_UE2SS");
    allocationsLeft = 0;
    EXPECT_EQ(quorvane_message_create(), nullptr);
    EXPECT_EQ(quorvane_decode_to_text(decoding, octets, sizeof octets, nullptr, 0),
              QUORVANE_NO_MEMORY);
    EXPECT_EQ(quorvane_decode_to_json(decoding, octets, sizeof octets, nullptr, 0),
              QUORVANE_NO_MEMORY);
    allocationsLeft = 1;
    quorvane_message* message = quorvane_message_create();
    EXPECT_EQ(quorvane_message_decode(message, decoding, octets, sizeof octets),
              QUORVANE_NO_MEMORY);
    allocationsLeft = -1;
    EXPECT_FALSE(quorvane_field_exists(quorvane_message_root(message)));
    quorvane_message_destroy(message);
}

TEST(Allocation, TheInterfaceForCAnswersThatThereIsNoneToSetAndToWrite) {
    const int decoding = quorvane_find_decoding("EPC_UE2SS");
    const char* type = "DEACTIVATE_TEST_MODE_COMPLETE";
    const char* unknown = "NoFieldHasSuchALongName";
    if (!quorvane_decoding_is_described(decoding)) {
        return;
    }
    allocationsLeft = 1;
    quorvane_message* message = quorvane_message_create();
    EXPECT_EQ(quorvane_message_make(message, decoding, type), QUORVANE_NO_MEMORY);
    EXPECT_EQ(quorvane_message_error(message).kind, QUORVANE_ERROR_NONE);
    EXPECT_FALSE(quorvane_field_exists(quorvane_message_root(message)));
    allocationsLeft = -1;
    EXPECT_EQ(quorvane_message_make(message, decoding, type), 0);
    EXPECT_EQ(quorvane_message_set_number(message, unknown, 0), QUORVANE_ERROR_UNKNOWN_NAME);
    allocationsLeft = 0;
    EXPECT_EQ(quorvane_message_set_number(message, unknown, 0), QUORVANE_NO_MEMORY);
    EXPECT_EQ(quorvane_message_error(message).kind, QUORVANE_ERROR_NONE);
    EXPECT_EQ(quorvane_message_error(message).words.size, 0U);
    std::uint8_t octets[2] = {7, 7};
    std::int64_t bits = 7;
    EXPECT_EQ(quorvane_message_encode(message, octets, 2, &bits), QUORVANE_NO_MEMORY);
    EXPECT_EQ(octets[0], 7);
    EXPECT_EQ(bits, 7);
    EXPECT_EQ(quorvane_message_to_text(message, nullptr, 0), QUORVANE_NO_MEMORY);
    allocationsLeft = -1;
    EXPECT_EQ(quorvane_message_encode(message, octets, 2, &bits), 2);
    EXPECT_EQ(octets[0], 0x0F);
    EXPECT_EQ(octets[1], 0x87);
    EXPECT_EQ(bits, 16);
    quorvane_message_destroy(message);
}

}  // namespace
}  // namespace quorvane
