#pragma once

// Captures: pcap and pcapng through libpcap, also compressed by gzip, from a file or a pipe.
//
// Tests: tests/capture/capture_file_test.cpp, fuzz/capture_fuzz.cpp.

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "tools/capture/packet.h"

namespace quorvane::capture {

/// A file that cannot be opened or is no capture, in words for the user.
class CaptureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class CaptureFile {
  public:
    /// Opens the file, or takes standard input if its name is "-". Calls `beforeWaiting`, if it is
    /// given, ahead of reads that may wait for input.
    explicit CaptureFile(const std::string& name, std::function<void()> beforeWaiting = {});
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;
    ~CaptureFile();

    /// Reads the next packet, whose octets are valid until the next call. False at the end of the
    /// capture, or where it cannot be read any further.
    bool Next(Packet& packet);

    /// Why the capture ended ahead of its end; empty if it did not.
    [[nodiscard]] const std::string& Problem() const { return problem_; }
    [[nodiscard]] std::uint64_t Packets() const { return packets_; }
    /// How many octets of the file have been read; of a compressed one, compressed ones.
    [[nodiscard]] std::uint64_t Octets() const;

  private:
    struct Reader;

    std::unique_ptr<Reader> reader_;
    std::uint64_t packets_ = 0;
    std::string problem_;
};

}  // namespace quorvane::capture
