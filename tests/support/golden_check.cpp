#include "support/golden_check.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "tools/hex.h"

namespace quorvane::test {

bool AllEqual(const std::vector<NamedAnswer>& answers) {
    return std::all_of(answers.begin(), answers.end(), [&](const NamedAnswer& other) {
        return other.answer == answers.front().answer;
    });
}

std::string GoldenDifference(const std::filesystem::path& path, const GoldenFile& golden,
                             const std::vector<NamedAnswer>& answers) {
    std::vector<NamedAnswer> different;  // each answer once, with all interfaces that gave it
    for (const NamedAnswer& answer : answers) {
        if (answer.answer == static_cast<const GoldenAnswer&>(golden)) {
            continue;
        }
        const auto same =
            std::find_if(different.begin(), different.end(),
                         [&](const NamedAnswer& other) { return other.answer == answer.answer; });
        if (same == different.end()) {
            different.push_back(answer);
        } else {
            same->interface += ", " + answer.interface;
        }
    }
    if (different.empty()) {
        return {};
    }
    const std::string_view function = Decodings()[static_cast<std::size_t>(golden.decoding)].name;
    std::string text = path.string() + "\n" + std::string(function) + " " +
                       std::to_string(golden.length) + " " + tool::ToHex(golden.octets, " ") + "\n";
    for (const NamedAnswer& answer : different) {
        text += "--- expected\n+++ " + answer.interface + "\n" +
                testing::internal::edit_distance::CreateUnifiedDiff(AnswerLines(golden),
                                                                    AnswerLines(answer.answer));
    }
    return text;
}

}  // namespace quorvane::test
