// The text of a call, which comes straight from the record, against the value tree of that record:
// all golden messages, whole and cut behind each of their octets.

#include <algorithm>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <string_view>

#include "bits/arena.h"
#include "facade/decodings.h"
#include "facade/utf8.h"
#include "iecodec/message_container.h"
#include "quorvane/decode.h"
#include "reflect/catalogue.h"
#include "reflect/convert.h"
#include "reflect/text_buffer.h"
#include "support/golden_file.h"

namespace quorvane {
namespace {

const reflect::Catalogue& CatalogueOf(const families::Family& family) {
    static std::list<reflect::Catalogue> made;
    const auto found = std::find_if(made.begin(), made.end(), [&](const auto& catalogue) {
        return catalogue.GetTables().types.data() == family.types.types.data();
    });
    return found != made.end() ? *found : made.emplace_back(family.types);
}

/// What the tree of a message prints; empty if there is no message.
std::string TextOfTree(Decoding decoding, std::span<const std::uint8_t> octets) {
    const facade::Binding binding = facade::BindingOf(decoding);
    const auto length = static_cast<std::int64_t>(octets.size());
    bits::Arena arena;
    iecodec::Diagnostics diagnostics;
    iecodec::DecodeContext context{
        binding.family->codec, {octets.data(), length}, arena, diagnostics};
    iecodec::MessageContainer container;
    static_cast<void>(iecodec::DispatchMessage(context, *binding.set,
                                               facade::RowOf(decoding).BitsOf(length), container));
    if (container.tag == 0) {
        return {};
    }
    reflect::TextBuffer text;
    reflect::ToTree(CatalogueOf(*binding.family), binding.set->memberTypes[container.tag - 1],
                    container.body, arena)
        ->Print(text, 0);
    std::string utf8;
    facade::AssignAsUtf8(utf8, text.View());
    return utf8;
}

/// The fields of a result's text.
std::string_view FieldsOf(std::string_view text) {
    const std::size_t message = text.find("MESSAGE: ");
    return message == std::string_view::npos ? std::string_view()
                                             : text.substr(text.find('\n', message) + 1);
}

TEST(Trees, PrintTheTextOfTheCall) {
    for (const auto& path : test::FindGoldenFiles(QUORVANE_SOURCE_DIR "/tests/golden")) {
        std::string problem;
        const auto golden = test::ReadGoldenFile(path, problem);
        ASSERT_TRUE(golden) << problem;
        if (!Decodings()[static_cast<std::size_t>(golden->decoding)].described) {
            continue;
        }
        for (std::size_t length = 0; length <= golden->octets.size(); ++length) {
            const std::span octets(golden->octets.data(), length);
            const Result result = Decode(golden->decoding, octets);
            ASSERT_EQ(FieldsOf(result.text), TextOfTree(golden->decoding, octets))
                << path.string() << ", " << length << " octets";
        }
    }
}

}  // namespace
}  // namespace quorvane
