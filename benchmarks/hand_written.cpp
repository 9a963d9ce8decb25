#include "hand_written.h"

#include <array>
#include <benchmark/benchmark.h>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "dispatch.h"
#include "measure.h"
#include "quorvane/message.h"

namespace quorvane::benchmarks {
namespace {

using std::uint32_t;
using Octets = const std::uint8_t*;

/// The bits from `Offset` on, `Width` of them: constants, so that shifts and masks are all there
/// is.
template <unsigned Offset, unsigned Width>
uint32_t Bits(Octets octets) {
    static_assert(Width >= 1 && Width <= 32);
    constexpr unsigned kFirst = Offset / 8;
    constexpr unsigned kLast = (Offset + Width - 1) / 8;
    std::uint64_t value = 0;
    for (unsigned octet = kFirst; octet <= kLast; ++octet) {
        value = value << 8 | octets[octet];
    }
    constexpr unsigned kBehind = 8 * (kLast + 1) - (Offset + Width);
    return static_cast<uint32_t>(value >> kBehind & ((std::uint64_t{1} << Width) - 1));
}

// Members are in the order of the text.

/// TS 44.018, 9.1.21 and 10.5.2.20, with six cells.
struct MeasurementReport {
    struct Cell {
        uint32_t frequency, bsic, level;
    };
    uint32_t baUsed, dtxUsed, isValid;
    Cell cells[6];
    uint32_t cellCount, levelFull, levelSub, qualityFull, qualitySub, baUsed3g;

    template <unsigned Offset>
    static Cell CellAt(Octets octets) {
        return {Bits<Offset + 6, 5>(octets), Bits<Offset + 11, 6>(octets), Bits<Offset, 6>(octets)};
    }

    explicit MeasurementReport(Octets octets)
        : baUsed(Bits<16, 1>(octets)),
          dtxUsed(Bits<17, 1>(octets)),
          isValid(Bits<25, 1>(octets)),
          cells{CellAt<42>(octets), CellAt<59>(octets),  CellAt<76>(octets),
                CellAt<93>(octets), CellAt<110>(octets), CellAt<127>(octets)},
          cellCount(Bits<39, 3>(octets)),
          levelFull(Bits<18, 6>(octets)),
          levelSub(Bits<26, 6>(octets)),
          qualityFull(Bits<33, 3>(octets)),
          qualitySub(Bits<36, 3>(octets)),
          baUsed3g(Bits<24, 1>(octets)) {}
};

/// TS 44.018, 9.1.18, a packet uplink assignment.
struct ImmediateAssignment {
    uint32_t pageMode, dedicatedOrTbf, downlink, tma, channelType, hsn, maio, timeslot, training;
    uint32_t randomAccess, t1, t3, t2, timingAdvance;
    uint32_t mobileAllocation[8];
    uint32_t codingCommand, gamma, polling, tfi, tlliCoding, usf, usfGranularity;

    explicit ImmediateAssignment(Octets octets)
        : pageMode(Bits<30, 2>(octets)),
          dedicatedOrTbf(Bits<27, 1>(octets)),
          downlink(Bits<26, 1>(octets)),
          tma(Bits<25, 1>(octets)),
          channelType(Bits<32, 5>(octets)),
          hsn(Bits<50, 6>(octets)),
          maio(Bits<44, 6>(octets)),
          timeslot(Bits<37, 3>(octets)),
          training(Bits<40, 3>(octets)),
          randomAccess(Bits<56, 8>(octets)),
          t1(Bits<64, 5>(octets)),
          t3(Bits<69, 6>(octets)),
          t2(Bits<75, 5>(octets)),
          timingAdvance(Bits<82, 6>(octets)),
          mobileAllocation{Bits<96, 1>(octets),  Bits<97, 1>(octets),  Bits<98, 1>(octets),
                           Bits<99, 1>(octets),  Bits<100, 1>(octets), Bits<101, 1>(octets),
                           Bits<102, 1>(octets), Bits<103, 1>(octets)},
          codingCommand(Bits<121, 2>(octets)),
          gamma(Bits<125, 5>(octets)),
          polling(Bits<114, 1>(octets)),
          tfi(Bits<109, 5>(octets)),
          tlliCoding(Bits<123, 1>(octets)),
          usf(Bits<116, 3>(octets)),
          usfGranularity(Bits<119, 1>(octets)) {}
};

/// TS 44.018, 9.1.43a, without a packet broadcast channel.
struct SystemInformation13 {
    uint32_t changeMark, burstType, bsCvMax, acknowledgeType, drxTimer, nmo, t3168, t3192;
    uint32_t alpha, averageInterference, measuredChannel, averageTransfer, averageIdle;
    uint32_t controlOrder, priorityAccess, routingArea, splitCycle, changeField;

    explicit SystemInformation13(Octets octets)
        : changeMark(Bits<25, 3>(octets)),
          burstType(Bits<59, 1>(octets)),
          bsCvMax(Bits<61, 4>(octets)),
          acknowledgeType(Bits<60, 1>(octets)),
          drxTimer(Bits<56, 3>(octets)),
          nmo(Bits<48, 2>(octets)),
          t3168(Bits<50, 3>(octets)),
          t3192(Bits<53, 3>(octets)),
          alpha(Bits<67, 4>(octets)),
          averageInterference(Bits<82, 4>(octets)),
          measuredChannel(Bits<81, 1>(octets)),
          averageTransfer(Bits<76, 5>(octets)),
          averageIdle(Bits<71, 5>(octets)),
          controlOrder(Bits<46, 2>(octets)),
          priorityAccess(Bits<43, 3>(octets)),
          routingArea(Bits<34, 8>(octets)),
          splitCycle(Bits<42, 1>(octets)),
          changeField(Bits<28, 4>(octets)) {}
};

/// TS 44.060, 11.2.6.
struct DownlinkAckNack {
    uint32_t isFinal, bitmap[2], startingNumber, cValue, quality, variance, tfi;

    explicit DownlinkAckNack(Octets octets)
        : isFinal(Bits<11, 1>(octets)),
          bitmap{Bits<19, 32>(octets), Bits<51, 32>(octets)},
          startingNumber(Bits<12, 7>(octets)),
          cValue(Bits<84, 6>(octets)),
          quality(Bits<90, 3>(octets)),
          variance(Bits<93, 6>(octets)),
          tfi(Bits<6, 5>(octets)) {}
};

/// TS 44.060, 11.2.28, of a GPRS TBF.
struct UplinkAckNack {
    uint32_t isFinal, bitmap[2], startingNumber, codingCommand, pageMode, tfi;

    explicit UplinkAckNack(Octets octets)
        : isFinal(Bits<18, 1>(octets)),
          bitmap{Bits<26, 32>(octets), Bits<58, 32>(octets)},
          startingNumber(Bits<19, 7>(octets)),
          codingCommand(Bits<16, 2>(octets)),
          pageMode(Bits<6, 2>(octets)),
          tfi(Bits<10, 5>(octets)) {}
};

/// TS 44.060, 11.2.29, of a single block.
struct UplinkAssignment {
    uint32_t codingCommand, pageMode, timingIndex, timingTimeslot;
    uint32_t alpha, gamma, p0, powerMode, startingTime, timeslot, tlliCoding, tqi;

    explicit UplinkAssignment(Octets octets)
        : codingCommand(Bits<29, 2>(octets)),
          pageMode(Bits<6, 2>(octets)),
          timingIndex(Bits<34, 4>(octets)),
          timingTimeslot(Bits<38, 3>(octets)),
          alpha(Bits<48, 4>(octets)),
          gamma(Bits<52, 5>(octets)),
          p0(Bits<58, 4>(octets)),
          powerMode(Bits<63, 1>(octets)),
          startingTime(Bits<65, 13>(octets)),
          timeslot(Bits<44, 3>(octets)),
          tlliCoding(Bits<31, 1>(octets)),
          tqi(Bits<12, 16>(octets)) {}
};

template <typename Struct>
HandWritten Decoder(std::string_view golden) {
    return {golden,
            [](Octets octets) {
                Struct filled(octets);
                benchmark::DoNotOptimize(filled);
            },
            [](Octets octets) {
                const auto members =
                    std::bit_cast<std::array<uint32_t, sizeof(Struct) / sizeof(uint32_t)>>(
                        Struct(octets));
                return std::vector<uint32_t>(members.begin(), members.end());
            },
            {}};
}

/// What the record has taken from the message's bits, in the order of the text; strings of bits as
/// numbers of 32 bits each.
std::vector<uint32_t> RecordValues(const test::GoldenFile& golden) {
    Message message;
    message.Decode(golden.decoding, golden.octets);
    std::vector<uint32_t> values;
    Visit(message.Root(), [&](const Field& field, unsigned) {
        if (!field.GetPlace()) {
            return true;
        }
        if (field.Kind() == FieldKind::kNumber || field.Kind() == FieldKind::kEnumerated) {
            values.push_back(field.Number());
        } else if (field.Kind() == FieldKind::kBits) {
            const auto octets = field.Octets();
            for (std::size_t first = 0; first + 4 <= octets.size(); first += 4) {
                values.push_back(Bits<0, 32>(octets.data() + first));
            }
        }
        return true;
    });
    return values;
}

std::vector<HandWritten> LoadDecoders() {
    std::vector<HandWritten> decoders;
    for (HandWritten decoder : {
             Decoder<MeasurementReport>("rr/measurement_report_six_cells"),
             Decoder<ImmediateAssignment>("rr/immediate_assignment_packet_uplink_short"),
             Decoder<SystemInformation13>("rr/si13_release_97"),
             Decoder<DownlinkAckNack>("rlcmac/packet_downlink_ack_nack"),
             Decoder<UplinkAckNack>("rlcmac/packet_uplink_ack_nack_gprs"),
             Decoder<UplinkAssignment>("rlcmac/packet_uplink_assignment_single_block"),
         }) {
        if (test::OfLeftOutFamily(decoder.golden)) {
            continue;
        }
        const std::string name(decoder.golden);
        std::string problem;
        const auto golden =
            test::ReadGoldenFile(QUORVANE_SOURCE_DIR "/tests/golden/" + name + ".golden", problem);
        if (!golden || decoder.values(golden->octets.data()) != RecordValues(*golden)) {
            std::fprintf(stderr, "%s: decoded by hand it has other values\n", name.c_str());
            std::exit(1);
        }
        decoder.message = *golden;
        decoders.push_back(std::move(decoder));
    }
    return decoders;
}

// A pass takes a message so many times, as one alone is short beside the benchmark's loop.
constexpr int kTimes = 100;

}  // namespace

void RegisterHandWritten() {
    for (const HandWritten& decoder : HandWrittenDecoders()) {
        const std::string name(decoder.golden);
        benchmark::RegisterBenchmark((name + "/decode").c_str(),
                                     [&decoder](benchmark::State& state) {
                                         bits::Arena arena;
                                         iecodec::Diagnostics diagnostics;
                                         Measure(state, kTimes, [&] {
                                             for (int count = 0; count < kTimes; ++count) {
                                                 DecodeAndDrop(decoder.message, arena, diagnostics);
                                             }
                                         });
                                     });
        benchmark::RegisterBenchmark((name + "/by_hand").c_str(),
                                     [&decoder](benchmark::State& state) {
                                         Measure(state, kTimes, [&] {
                                             for (int count = 0; count < kTimes; ++count) {
                                                 decoder.pass(decoder.message.octets.data());
                                             }
                                         });
                                     });
    }
}

std::span<const HandWritten> HandWrittenDecoders() {
    static const std::vector<HandWritten> decoders = LoadDecoders();
    return decoders;
}

}  // namespace quorvane::benchmarks
