#include "tools/capture/input_stream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <poll.h>
#include <sys/types.h>
#include <utility>
#include <zlib.h>

#include "tools/system.h"

namespace quorvane::capture {
namespace {

class InputStream {
  public:
    InputStream(int descriptor, InputState& state, std::function<void()> beforeWaiting)
        : descriptor_(descriptor), state_(state), beforeWaiting_(std::move(beforeWaiting)) {}
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;
    ~InputStream() {
        if (isGzip_) {
            inflateEnd(&inflater_);
        }
        if (descriptor_ != tool::kStandardInput) {
            tool::Close(descriptor_);
        }
    }

    /// As read().
    ssize_t Read(char* octets, std::size_t count) {
        if (!isStarted_ && !Start()) {
            return -1;
        }
        if (isGzip_) {
            return Inflate(octets, count);
        }
        if (begin_ == end_ && !Fill()) {
            return -1;
        }
        const std::size_t taken = std::min(count, end_ - begin_);
        std::memcpy(octets, buffer_.data() + begin_, taken);
        begin_ += taken;
        return static_cast<ssize_t>(taken);
    }

  private:
    /// Looks whether gzip's two first octets are there.
    bool Start() {
        isStarted_ = true;
        while (end_ < 2 && !atEnd_) {
            if (!Fill()) {
                return false;
            }
        }
        if (end_ >= 2 && buffer_[0] == 0x1F && buffer_[1] == 0x8B) {
            constexpr int kGzipAlone = 16;
            if (inflateInit2(&inflater_, MAX_WBITS + kGzipAlone) != Z_OK) {
                errno = ENOMEM;
                return false;
            }
            isGzip_ = true;
        }
        return true;
    }

    ssize_t Inflate(char* octets, std::size_t count) {
        inflater_.next_out = reinterpret_cast<Bytef*>(octets);
        inflater_.avail_out = static_cast<uInt>(std::min<std::size_t>(count, 1U << 30));
        const uInt room = inflater_.avail_out;
        while (inflater_.avail_out == room && !isInflated_) {
            if (begin_ == end_ && !Fill()) {
                return -1;
            }
            if (begin_ == end_) {
                if (!betweenMembers_) {
                    state_.problem = "the gzip stream is cut short";
                }
                isInflated_ = true;
                break;
            }
            if (!InflateSome()) {
                return -1;
            }
        }
        return static_cast<ssize_t>(room - inflater_.avail_out);
    }

    /// False for octets that are no gzip stream.
    bool InflateSome() {
        betweenMembers_ = false;
        inflater_.next_in = buffer_.data() + begin_;
        inflater_.avail_in = static_cast<uInt>(end_ - begin_);
        const int status = inflate(&inflater_, Z_NO_FLUSH);
        begin_ = end_ - inflater_.avail_in;
        if (status == Z_STREAM_END) {
            // Another member may follow.
            betweenMembers_ = true;
            inflateReset(&inflater_);
            return true;
        }
        if (status != Z_OK && status != Z_BUF_ERROR) {
            state_.problem = "the gzip stream is damaged";
            errno = EIO;
            return false;
        }
        return true;
    }

    /// Reads more behind what is there, if there is more. False with the reason in errno.
    bool Fill() {
        if (atEnd_) {
            return true;
        }
        if (begin_ == end_) {
            begin_ = end_ = 0;
        }
        if (beforeWaiting_ && MayWait()) {
            try {
                beforeWaiting_();
            } catch (...) {
                state_.thrown = std::current_exception();
                errno = EIO;
                return false;
            }
        }
        const std::int64_t count = tool::ReadSome(
            descriptor_, reinterpret_cast<char*>(buffer_.data() + end_), buffer_.size() - end_);
        if (count < 0) {
            state_.problem = std::string("cannot read: ") + std::strerror(errno);
            return false;
        }
        atEnd_ = count == 0;
        end_ += static_cast<std::size_t>(count);
        state_.octets += static_cast<std::uint64_t>(count);
        return true;
    }

    [[nodiscard]] bool MayWait() const {
        pollfd request{descriptor_, POLLIN, 0};
        return poll(&request, 1, 0) == 0;
    }

    int descriptor_;
    InputState& state_;
    std::function<void()> beforeWaiting_;
    std::array<std::uint8_t, std::size_t{64} << 10> buffer_{};
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool isStarted_ = false;
    bool atEnd_ = false;
    bool isGzip_ = false;
    bool betweenMembers_ = false;
    bool isInflated_ = false;
    z_stream inflater_{};
};

ssize_t ReadCookie(void* cookie, char* octets, std::size_t count) {
    return static_cast<InputStream*>(cookie)->Read(octets, count);
}

int CloseCookie(void* cookie) {
    delete static_cast<InputStream*>(cookie);
    return 0;
}

}  // namespace

std::FILE* OpenInputStream(int descriptor, InputState& state, std::function<void()> beforeWaiting) {
    auto stream = std::make_unique<InputStream>(descriptor, state, std::move(beforeWaiting));
    std::FILE* file = fopencookie(stream.get(), "r", {ReadCookie, nullptr, nullptr, CloseCookie});
    if (file != nullptr) {
        static_cast<void>(stream.release());
    }
    return file;
}

}  // namespace quorvane::capture
