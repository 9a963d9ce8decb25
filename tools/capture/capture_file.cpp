#include "tools/capture/capture_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <pcap/pcap.h>
#include <utility>

#include "tools/capture/input_stream.h"
#include "tools/system.h"

namespace quorvane::capture {

struct CaptureFile::Reader {
    Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() {
        if (pcap != nullptr) {
            pcap_close(pcap);  // and the file with it
        } else if (file != nullptr) {
            std::fclose(file);
        }
    }

    InputState input;
    std::FILE* file = nullptr;
    pcap_t* pcap = nullptr;
    int linkType = 0;
};

CaptureFile::CaptureFile(const std::string& name, std::function<void()> beforeWaiting)
    : reader_(std::make_unique<Reader>()) {
    const bool isStandard = name == "-";
    const int descriptor = isStandard ? tool::kStandardInput : tool::OpenToRead(name);
    if (descriptor < 0) {
        throw CaptureError("cannot open '" + name + "': " + std::strerror(errno));
    }
    const std::string shownName = isStandard ? "standard input" : "'" + name + "'";
    reader_->file = OpenInputStream(descriptor, reader_->input, std::move(beforeWaiting));
    if (reader_->file == nullptr) {
        throw CaptureError("cannot read " + shownName + ": " + std::strerror(errno));
    }
    std::array<char, PCAP_ERRBUF_SIZE> words{};
    reader_->pcap = pcap_fopen_offline_with_tstamp_precision(
        reader_->file, PCAP_TSTAMP_PRECISION_NANO, words.data());
    if (reader_->pcap == nullptr) {
        if (reader_->input.thrown) {
            std::rethrow_exception(reader_->input.thrown);
        }
        const std::string& problem = reader_->input.problem;
        throw CaptureError(shownName + " is no capture in pcap or pcapng: " +
                           (problem.empty() ? words.data() : problem));
    }
    reader_->linkType = pcap_datalink(reader_->pcap);
}

CaptureFile::~CaptureFile() = default;

std::uint64_t CaptureFile::Octets() const {
    return reader_->input.octets;
}

bool CaptureFile::Next(Packet& packet) {
    pcap_pkthdr* header = nullptr;
    const u_char* octets = nullptr;
    const int status = pcap_next_ex(reader_->pcap, &header, &octets);
    if (reader_->input.thrown) {
        std::rethrow_exception(reader_->input.thrown);
    }
    if (status != 1) {
        problem_ = reader_->input.problem;
        if (problem_.empty() && status == PCAP_ERROR) {
            problem_ = pcap_geterr(reader_->pcap);
            if (problem_.find("different from the type of the first interface") !=
                std::string::npos) {
                problem_ += "; examples/one_link_type.sh gives all packets one type";
            }
        }
        return false;
    }
    packet.number = ++packets_;
    packet.seconds = header->ts.tv_sec;
    packet.nanoseconds = static_cast<std::uint32_t>(header->ts.tv_usec);  // as was asked for
    packet.linkType = reader_->linkType;
    packet.length = header->len;
    packet.octets = {octets, header->caplen};
    return true;
}

}  // namespace quorvane::capture
