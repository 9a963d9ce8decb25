#include "tools/capture/capture_file.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

#include "capture/capture_writer.h"

namespace quorvane::capture {
namespace {

using test::CaptureWriter;
using test::FileForm;
using test::Octets;
using test::WrittenPacket;

struct Read {
    std::vector<WrittenPacket> packets;
    std::vector<int> linkTypes;
    std::string problem;
};

class CaptureFileTest : public testing::Test {
  protected:
    CaptureFileTest()
        : path_(std::filesystem::path(testing::TempDir()) /
                ("quorvane_capture_" + std::to_string(getpid()))) {}
    ~CaptureFileTest() override { std::filesystem::remove(path_); }

    void Write(const std::string& contents) { std::ofstream(path_, std::ios::binary) << contents; }

    Read ReadBack() {
        CaptureFile file(path_.string());
        Read read;
        Packet packet;
        while (file.Next(packet)) {
            EXPECT_EQ(packet.number, read.packets.size() + 1);
            read.packets.push_back(
                {Octets(packet.octets.begin(), packet.octets.end()),
                 static_cast<std::uint32_t>(packet.seconds), packet.nanoseconds,
                 packet.length - static_cast<std::uint32_t>(packet.octets.size())});
            read.linkTypes.push_back(packet.linkType);
        }
        read.problem = file.Problem();
        return read;
    }

    Read ReadBack(const std::string& contents) {
        Write(contents);
        return ReadBack();
    }

    std::string ErrorOf(const std::string& contents) {
        Write(contents);
        try {
            const CaptureFile file(path_.string());
        } catch (const CaptureError& error) {
            return error.what();
        }
        return "";
    }

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

std::string TwoPackets(FileForm form = {}) {
    CaptureWriter writer(form);
    writer.Add({{1, 2, 3}, 1'700'000'000, 123'456'789, 0});
    writer.Add({{4, 5, 6, 7, 8}, 1'700'000'001, 5'000, 10});
    return writer.File();
}

std::string Gzip(const std::string& text) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

TEST_F(CaptureFileTest, ReadsEveryForm) {
    for (const bool pcapng : {false, true}) {
        for (const bool bigEndian : {false, true}) {
            for (const bool nanoseconds : {false, true}) {
                const FileForm form{pcapng, bigEndian, nanoseconds, 113};
                const Read read = ReadBack(TwoPackets(form));
                ASSERT_EQ(read.packets.size(), 2U) << pcapng << bigEndian << nanoseconds;
                EXPECT_EQ(read.problem, "");
                EXPECT_EQ(read.packets[0].octets, (Octets{1, 2, 3}));
                EXPECT_EQ(read.packets[0].seconds, 1'700'000'000U);
                EXPECT_EQ(read.packets[0].nanoseconds, nanoseconds ? 123'456'789U : 123'456'000U);
                EXPECT_EQ(read.packets[0].missing, 0U);
                EXPECT_EQ(read.packets[1].octets, (Octets{4, 5, 6, 7, 8}));
                EXPECT_EQ(read.packets[1].seconds, 1'700'000'001U);
                EXPECT_EQ(read.packets[1].nanoseconds, 5'000U);
                EXPECT_EQ(read.packets[1].missing, 10U);
                EXPECT_EQ(read.linkTypes, (std::vector<int>{113, 113}));
            }
        }
    }
}

TEST_F(CaptureFileTest, ReadsGzipInOneMemberOrMore) {
    const std::string file = TwoPackets();
    EXPECT_EQ(ReadBack(Gzip(file)).packets.size(), 2U);
    const Read read = ReadBack(Gzip(file.substr(0, 30)) + Gzip(file.substr(30)));
    EXPECT_EQ(read.packets.size(), 2U);
    EXPECT_EQ(read.problem, "");
}

TEST_F(CaptureFileTest, GivesWhatIsThereOfACutFile) {
    const std::string file = TwoPackets();
    const Read plain = ReadBack(file.substr(0, file.size() - 1));
    EXPECT_EQ(plain.packets.size(), 1U);
    EXPECT_NE(plain.problem, "");

    const std::string packed = Gzip(file);
    const Read cut = ReadBack(packed.substr(0, packed.size() - 9));
    EXPECT_EQ(cut.problem, "the gzip stream is cut short");
}

TEST_F(CaptureFileTest, TellsOfDamagedGzip) {
    std::string packed = Gzip(TwoPackets() + std::string(100'000, 'x'));
    packed[20] = static_cast<char>(~packed[20]);
    packed[21] = static_cast<char>(~packed[21]);
    Write(packed);
    std::string problem = ErrorOf(packed);
    if (problem.empty()) {
        problem = ReadBack().problem;
    }
    EXPECT_NE(problem.find("the gzip stream is damaged"), std::string::npos) << problem;
}

TEST_F(CaptureFileTest, RefusesWhatIsNoCapture) {
    EXPECT_NE(ErrorOf("").find("is no capture in pcap or pcapng"), std::string::npos);
    EXPECT_NE(ErrorOf("EPS_MMUplink 2 07 41\n").find("is no capture"), std::string::npos);
    EXPECT_NE(ErrorOf("\x1F\x8A").find("is no capture"), std::string::npos);  // nor compressed
    std::filesystem::remove(Path());
    try {
        const CaptureFile file(Path().string());
        FAIL();
    } catch (const CaptureError& error) {
        EXPECT_EQ(error.what(), "cannot open '" + Path().string() + "': No such file or directory");
    }
}

// What was found has to be shown ahead of a wait, and what goes wrong there has to come out.
TEST_F(CaptureFileTest, CallsAheadOfWaiting) {
    const std::string fifo = Path().string() + ".fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const int writer = open(fifo.c_str(), O_RDWR);
    ASSERT_GE(writer, 0);
    const std::string contents = TwoPackets();
    ASSERT_EQ(write(writer, contents.data(), contents.size()),
              static_cast<ssize_t>(contents.size()));
    int calls = 0;
    CaptureFile file(fifo, [&calls] {
        ++calls;
        throw std::runtime_error("no more");
    });
    Packet packet;
    EXPECT_TRUE(file.Next(packet));
    EXPECT_TRUE(file.Next(packet));
    EXPECT_EQ(calls, 0);
    EXPECT_THROW(file.Next(packet), std::runtime_error);
    EXPECT_EQ(calls, 1);
    close(writer);
    std::filesystem::remove(fifo);
}

}  // namespace
}  // namespace quorvane::capture
