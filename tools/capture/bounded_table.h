#pragma once

// A table that forgets what was used longest ago, so that its memory is bounded.

#include <cstddef>
#include <cstdint>
#include <list>
#include <unordered_map>
#include <utility>

namespace quorvane::capture {

template <typename Value>
class BoundedTable {
  public:
    explicit BoundedTable(std::size_t most) : most_(most) {}

    /// The value of `key`, or null.
    Value* Find(std::uint64_t key) {
        const auto found = places_.find(key);
        if (found == places_.end()) {
            return nullptr;
        }
        entries_.splice(entries_.begin(), entries_, found->second);
        return &found->second->second;
    }

    /// The value of `key`, made if there was none; `forget(value)` is called for what is dropped
    /// for it.
    template <typename Forget>
    Value& At(std::uint64_t key, Forget&& forget) {
        if (Value* known = Find(key)) {
            return *known;
        }
        if (entries_.size() == most_) {
            forget(entries_.back().second);
            places_.erase(entries_.back().first);
            entries_.pop_back();
        }
        entries_.emplace_front(key, Value{});
        places_[key] = entries_.begin();
        return entries_.front().second;
    }

    void Erase(std::uint64_t key) {
        if (const auto found = places_.find(key); found != places_.end()) {
            entries_.erase(found->second);
            places_.erase(found);
        }
    }

    /// Calls `visit(value)` for all.
    template <typename Visit>
    void ForEach(Visit&& visit) {
        for (auto& [key, value] : entries_) {
            visit(value);
        }
    }

  private:
    using Entries = std::list<std::pair<std::uint64_t, Value>>;

    std::size_t most_;
    Entries entries_;  // the one used last in front
    std::unordered_map<std::uint64_t, typename Entries::iterator> places_;
};

}  // namespace quorvane::capture
