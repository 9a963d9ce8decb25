#pragma once

// The order in which a struct's or a header's members stand in the record.

#include <algorithm>
#include <string>
#include <vector>

#include "compiler/reporter.h"

namespace quorvane::compiler {

/// The named ones of `items`, which stand in wire order, in the order of the record: the same
/// unless `record` names another. `owner` is what they are members of, as errors tell it.
template <typename Item>
std::vector<const Item*> RecordOrder(Reporter& reporter, const std::vector<Item>& items,
                                     const std::vector<Name>& record, const std::string& owner) {
    std::vector<const Item*> wire;
    for (const Item& item : items) {
        if (!item.name.text.empty()) {
            wire.push_back(&item);
        }
    }
    if (record.empty()) {
        return wire;
    }
    const std::vector<const Item*> all = wire;
    std::vector<const Item*> ordered;
    for (const Name& name : record) {
        const auto found = std::find_if(wire.begin(), wire.end(), [&](const Item* item) {
            return item->name.text == name.text;
        });
        if (found == wire.end()) {
            reporter.Error(name.span, "'" + name.text + "' is no member of the " + owner +
                                          ", or stands in the record's order already");
            continue;
        }
        ordered.push_back(*found);
        wire.erase(found);
    }
    for (const Item* item : wire) {
        reporter.Error(item->name.span,
                       "'" + item->name.text + "' is missing in the record's order");
        ordered.push_back(item);
    }
    reporter.ErrorIf(wire.empty() && record.size() == all.size() && ordered == all,
                     record.front().span,
                     "the record's order is that on the wire; leave the line out");
    return ordered;
}

}  // namespace quorvane::compiler
