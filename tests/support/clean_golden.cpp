#include "support/clean_golden.h"

#include <algorithm>
#include <map>
#include <optional>

#include "support/reviewed_list.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = QUORVANE_SOURCE_DIR "/tests/golden";

/// A golden file by its name below the folder, without its ending: "eps/esm_status_uplink".
std::string NameOf(const fs::path& path) {
    fs::path name = path.lexically_relative(kGolden);
    return name.replace_extension().generic_string();
}

bool DecodesWithoutFault(const GoldenFile& golden) {
    return golden.result == 1 && golden.diagnostics.empty() &&
           golden.text.find("Decoder reported the following error") == std::string::npos;
}

}  // namespace

std::vector<std::uint8_t> CleanGolden::Octets() const {
    std::vector<std::uint8_t> octets = file.octets;
    octets.resize(static_cast<std::size_t>(std::max(file.length, 0)));
    return octets;
}

std::vector<CleanGolden> FindCleanGolden(std::vector<std::string>& problems) {
    std::map<std::string, std::string> reviewed =
        ReadReviewedList(kGolden / "not_canonical.txt", problems);
    std::vector<CleanGolden> found;
    for (const fs::path& path : FindGoldenFiles(kGolden)) {
        std::string problem;
        const std::optional<GoldenFile> golden = ReadGoldenFile(path, problem);
        if (!golden || !DecodesWithoutFault(*golden)) {
            continue;  // what is no golden file fails in golden_test
        }
        const auto reason = reviewed.extract(NameOf(path));
        found.push_back({path, *golden, reason ? reason.mapped() : std::string()});
    }
    for (const auto& [name, reason] : reviewed) {
        if (!OfLeftOutFamily(name)) {
            problems.push_back("no golden message that decodes without a fault: " + name);
        }
    }
    return found;
}

std::vector<std::uint8_t> WithoutPadding(std::vector<std::uint8_t> octets) {
    constexpr std::uint8_t kPadding = 0x2B;
    while (!octets.empty() && octets.back() == kPadding) {
        octets.pop_back();
    }
    return octets;
}

}  // namespace quorvane::test
