#include "reference/csn_slow_random.h"

#include <cstdlib>

namespace quorvane::reference {

std::uint32_t FirstSeed() {
    const char* given = std::getenv("QUORVANE_TEST_SEED");
    return given == nullptr ? 1 : static_cast<std::uint32_t>(std::strtoul(given, nullptr, 0));
}

std::uint32_t Below(std::mt19937& random, std::uint32_t count) {
    return static_cast<std::uint32_t>(random() % count);
}

std::vector<std::uint8_t> RandomOctets(std::mt19937& random, std::size_t size) {
    std::vector<std::uint8_t> octets(size);
    const std::uint32_t density = Below(random, 4);
    for (std::uint8_t& octet : octets) {
        const auto noise = static_cast<std::uint8_t>(random());
        octet = density == 0   ? bits::kFillOctet
                : density == 1 ? static_cast<std::uint8_t>(noise & random())
                : density == 2 ? static_cast<std::uint8_t>(noise | random())
                               : noise;
    }
    return octets;
}

void FlipBits(std::mt19937& random, std::uint32_t count, std::vector<std::uint8_t>& octets) {
    for (; count > 0 && !octets.empty(); --count) {
        const std::uint32_t bit = Below(random, static_cast<std::uint32_t>(octets.size()) * 8);
        octets[bit / 8] = static_cast<std::uint8_t>(octets[bit / 8] ^ 0x80U >> bit % 8);
    }
}

std::int32_t RandomSource(csn::CsnFieldEvent& event) {
    auto& random = *static_cast<std::mt19937*>(event.machine->userRecord);
    const auto number = static_cast<std::uint32_t>(random());
    if (event.machine->writer != nullptr && event.kind != csn::kGroupCloses) {
        const bool asGiven = event.literalWidth >= 0 && number % 4 != 0;
        const auto width = static_cast<std::int32_t>(number >> 8 & 15U);
        const std::int32_t length = event.bitLength > 0 && number % 16 != 1 ? event.bitLength
                                    : number % 3 == 0                       ? 0
                                                                            : width;
        event.machine->writer->Write(
            event.bitPos, asGiven ? event.literalValue : static_cast<std::uint32_t>(random()),
            length);
        event.bitLength = length;
    }
    const std::uint32_t choice = number >> 16 & 63U;
    return choice < 4 ? csn::kNotThere : choice == 4 ? csn::kGiveUp : choice == 5 ? 7 : csn::kGoOn;
}

}  // namespace quorvane::reference
