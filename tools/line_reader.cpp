#include "tools/line_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "tools/system.h"

namespace quorvane::tool {

LineReader::Outcome LineReader::Next(std::string_view& line) {
    for (;;) {
        const void* found = std::memchr(buffer_.data() + scanned_, '\n', end_ - scanned_);
        if (found != nullptr) {
            const auto lineEnd =
                static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
            line = {buffer_.data() + begin_, lineEnd - begin_};
            begin_ = scanned_ = lineEnd + 1;
            if (skipping_) {
                skipping_ = false;
                continue;
            }
            return line.size() > kLongestLine ? Outcome::kTooLong : Outcome::kLine;
        }
        scanned_ = end_;
        if (failed_) {
            return Outcome::kError;
        }
        if (atEnd_) {
            const bool rest = end_ > begin_ && !skipping_;
            line = {buffer_.data() + begin_, end_ - begin_};
            begin_ = end_;
            if (!rest) {
                return Outcome::kEnd;
            }
            return line.size() > kLongestLine ? Outcome::kTooLong : Outcome::kLine;
        }
        if (end_ - begin_ > kLongestLine) {
            begin_ = end_;
            if (!skipping_) {
                skipping_ = true;
                return Outcome::kTooLong;
            }
        }
        return Outcome::kNeedsInput;
    }
}

void LineReader::Fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        scanned_ -= begin_;
        begin_ = 0;
    }
    const std::int64_t count = ReadSome(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (count < 0) {
        failed_ = true;
    } else if (count == 0) {
        atEnd_ = true;
    } else {
        end_ += static_cast<std::size_t>(count);
    }
    if (atStart_) {
        PassMark();
    }
}

void LineReader::PassMark() {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    const std::string_view start(buffer_.data(), std::min(end_, kMark.size()));
    if (start == kMark) {
        begin_ = scanned_ = kMark.size();
    }
    atStart_ = start.size() < kMark.size() && kMark.starts_with(start) && !atEnd_;
}

}  // namespace quorvane::tool
