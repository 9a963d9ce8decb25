#include "support/random_messages.h"

#include <algorithm>
#include <string>

namespace quorvane::test {

RandomMessages::RandomMessages(std::uint32_t seed) : random_(seed) {
    for (const auto& path : FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        if (std::optional<GoldenFile> golden = ReadGoldenFile(path, problem)) {
            seeds_.push_back(std::move(*golden));
        }
    }
}

std::vector<std::uint8_t> RandomMessages::Noise(std::size_t count) {
    std::vector<std::uint8_t> octets(count);
    std::generate(octets.begin(), octets.end(),
                  [&] { return static_cast<std::uint8_t>(random_()); });
    return octets;
}

RandomMessages::Message RandomMessages::Next() {
    constexpr std::size_t kMostNoise = 80;
    if (seeds_.empty() || Below(8) == 0) {
        return {static_cast<Decoding>(Below(Decodings().size())), Noise(Below(kMostNoise))};
    }
    const GoldenFile& seed = seeds_[Below(seeds_.size())];
    Message message{seed.decoding, seed.octets};
    for (std::size_t times = Below(4); times > 0; --times) {
        Damage(message.octets);
    }
    return message;
}

void RandomMessages::Damage(std::vector<std::uint8_t>& octets) {
    constexpr std::size_t kLongestPiece = 16;
    const std::size_t at = Below(octets.size() + 1);
    const auto place = octets.begin() + static_cast<std::ptrdiff_t>(at);
    switch (Below(5)) {
        case 0:  // cut the end off
            octets.resize(at);
            break;
        case 1: {  // put something in
            const std::vector<std::uint8_t> piece = Noise(1 + Below(kLongestPiece));
            octets.insert(place, piece.begin(), piece.end());
            break;
        }
        case 2:  // take something out
            octets.erase(place, place + static_cast<std::ptrdiff_t>(std::min(
                                            octets.size() - at, 1 + Below(kLongestPiece))));
            break;
        case 3:  // change an octet
            if (at < octets.size()) {
                octets[at] = static_cast<std::uint8_t>(random_());
            }
            break;
        default:  // change a bit
            if (at < octets.size()) {
                octets[at] = static_cast<std::uint8_t>(octets[at] ^ 1U << Below(8));
            }
            break;
    }
}

}  // namespace quorvane::test
