// The messages of a capture: packets in, answers out, in constant memory.
//
// One thread reads and puts segments together; all decode what it has gathered, itself included.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvane/decode.h"
#include "quorvane/message.h"
#include "tools/capture/capture_file.h"
#include "tools/capture/dissector.h"
#include "tools/capture_answers.h"
#include "tools/commands.h"
#include "tools/edit_distance.h"
#include "tools/field_condition.h"
#include "tools/input_file.h"
#include "tools/ordered_jobs.h"
#include "tools/progress.h"
#include "tools/system.h"
#include "tools/tally.h"
#include "tools/tolerant.h"

namespace quorvane::tool {
namespace {

struct Counts {
    Tally all;
    std::vector<std::int64_t> ofFunction = std::vector<std::int64_t>(Decodings().size());
    std::int64_t shown = 0;

    void Add(const Counts& other) {
        all.Add(other.all);
        std::transform(ofFunction.begin(), ofFunction.end(), other.ofFunction.begin(),
                       ofFunction.begin(), std::plus());
        shown += other.shown;
    }
};

/// Which messages are shown.
class Filter {
  public:
    explicit Filter(const CaptureOptions& options) : types_(options.types) {
        for (const std::string& function : options.functions) {
            functions_.push_back(DecodingNamed(function));
        }
        for (const std::string& type : types_) {
            RequireType(type);
        }
        for (const std::string& condition : options.conditions) {
            conditions_.emplace_back(condition);
        }
    }

    [[nodiscard]] bool Lets(Decoding decoding, const Message& message) const {
        return (functions_.empty() || Contains(functions_, decoding)) &&
               (types_.empty() || Contains(types_, message.TypeName())) &&
               std::all_of(
                   conditions_.begin(), conditions_.end(),
                   [&](const FieldCondition& condition) { return condition.Holds(message); });
    }

  private:
    template <typename Values, typename Value>
    static bool Contains(const Values& values, const Value& value) {
        return std::find(values.begin(), values.end(), value) != values.end();
    }

    static void RequireType(const std::string& name) {
        std::set<std::string_view> names;
        for (const DecodingInfo& info : Decodings()) {
            for (std::size_t index = 0; index < MessageTypes::Count(info.decoding); ++index) {
                names.insert(MessageTypes::At(info.decoding, index).Name());
            }
        }
        if (!names.contains(name)) {
            throw UsageError("--type " + name + ": no message has that name" +
                             NearestWords(name, names) +
                             "; the line \"MESSAGE: \" of a text shows it");
        }
    }

    std::vector<Decoding> functions_;
    std::vector<std::string> types_;
    std::vector<FieldCondition> conditions_;
};

/// Messages to be decoded together, and their answers.
struct Group {
    explicit Group(CaptureForm form) : answers(form) {}

    struct Item {
        capture::FoundMessage found;  // without its octets
        std::size_t begin = 0;        // of its octets
        std::size_t size = 0;
    };

    void Clear() {
        items.clear();
        octets.clear();
        answers.Clear();
    }

    std::vector<Item> items;
    std::vector<std::uint8_t> octets;
    CaptureAnswers answers;
};

/// Decodes groups, in one thread.
class GroupDecoder {
  public:
    GroupDecoder(const CaptureOptions& options, std::shared_ptr<const Filter> filter)
        : options_(options.decode), filter_(std::move(filter)) {}

    void Decode(Group& group) {
        for (const Group::Item& item : group.items) {
            capture::FoundMessage found = item.found;
            found.octets = std::span(group.octets).subspan(item.begin, item.size);
            Decode(found, group.answers);
        }
    }

    /// Of all groups so far.
    [[nodiscard]] const Counts& Counted() const { return counts_; }

  private:
    void Decode(capture::FoundMessage& found, CaptureAnswers& answers) {
        DecodeOptions options = options_;
        options.tolerant = options.tolerant || found.isProtected;
        bool isKnown = message_.Decode(found.decoding, found.octets, options);
        if (!isKnown && found.otherwise) {
            isKnown = message_.Decode(*found.otherwise, found.octets, options);
            if (isKnown) {
                found.decoding = *found.otherwise;
                found.source.uplink = true;
            } else {
                message_.Decode(found.decoding, found.octets, options);
            }
        }
        ++counts_.ofFunction[static_cast<std::size_t>(found.decoding)];
        if (isKnown) {
            counts_.all.AddMessage(IsFaulty(message_));
        } else {
            counts_.all.AddUnknown();
        }
        if (filter_->Lets(found.decoding, message_)) {
            ++counts_.shown;
            answers.Add(found, message_);
        }
    }

    DecodeOptions options_;
    std::shared_ptr<const Filter> filter_;
    Message message_;
    Counts counts_;
};

std::vector<GroupDecoder> MakeDecoders(const CaptureOptions& options) {
    const auto filter = std::make_shared<const Filter>(options);
    std::vector<GroupDecoder> decoders;
    for (unsigned index = 0; index < ThreadsOf(options.jobs); ++index) {
        decoders.emplace_back(options, filter);
    }
    return decoders;
}

class CaptureRun {
  public:
    explicit CaptureRun(const CaptureOptions& options)
        : form_(options.format == "json"  ? CaptureForm::kJson
                : options.format == "csv" ? CaptureForm::kCsv
                                          : CaptureForm::kText),
          dissector_(options.port),
          decoders_(MakeDecoders(options)),
          progress_("packets", SizeOfInput(options.file)),
          group_(form_),
          jobs_(
              decoders_.size(),
              [this](std::size_t thread, Group& group) { decoders_[thread].Decode(group); },
              [](Group& group) {
                  Print(group.answers.View());
                  group.Clear();
              },
              group_),
          file_(options.file, [this] { Flush(); }) {}

    int Run() {
        if (form_ == CaptureForm::kCsv) {
            Print(kCsvHeader);
        }
        capture::Packet packet;
        capture::FoundMessage found;
        while (file_.Next(packet)) {
            if (dissector_.Take(packet, found)) {
                Add(found);
            }
            progress_.Show(file_.Packets(), file_.Octets());
        }
        Flush();
        dissector_.Finish();
        progress_.Hide();
        PrintSummary();
        if (InterruptSignal() != 0) {
            return Interrupted("packet " + std::to_string(file_.Packets()));
        }
        if (!file_.Problem().empty()) {
            std::fprintf(stderr, "quorvane: the capture cannot be read behind packet %llu: %s\n",
                         static_cast<unsigned long long>(file_.Packets()), file_.Problem().c_str());
            return kNotFound;
        }
        return kDone;
    }

  private:
    // Enough that handing a group over costs next to nothing beside decoding it.
    static constexpr std::size_t kGroupOctets = std::size_t{4} << 10;

    void Add(const capture::FoundMessage& found) {
        Group::Item& item = group_.items.emplace_back();
        item.found = found;
        item.found.octets = {};
        item.begin = group_.octets.size();
        item.size = found.octets.size();
        group_.octets.insert(group_.octets.end(), found.octets.begin(), found.octets.end());
        if (group_.octets.size() >= kGroupOctets) {
            jobs_.Submit(group_);
        }
    }

    /// Shows all that was found by now.
    void Flush() {
        if (!group_.items.empty()) {
            jobs_.Submit(group_);
        }
        jobs_.Finish();
    }

    void PrintSummary() const {
        Counts counts;
        for (const GroupDecoder& decoder : decoders_) {
            counts.Add(decoder.Counted());
        }
        const auto show = [](auto count, const std::string& words) {
            std::fprintf(stderr, "%12llu %s\n", static_cast<unsigned long long>(count),
                         words.c_str());
        };
        show(file_.Packets(), "packets");
        show(counts.all.Messages(), "messages");
        for (std::size_t index = 0; index < counts.ofFunction.size(); ++index) {
            if (counts.ofFunction[index] > 0) {
                show(counts.ofFunction[index], "  " + std::string(Decodings()[index].name));
            }
        }
        show(counts.all.Unknown(), "unknown messages");
        show(counts.all.Faulty(), "messages with faults");
        show(counts.shown, "messages shown");
        show(dissector_.Counts().Sum(), "packets without a message");
        for (const auto& [kind, count] : dissector_.Counts().All()) {
            if (count > 0) {
                show(count, "  " + capture::WordsOf(kind));
            }
        }
        if (dissector_.LapdmGaps() > 0) {
            show(dissector_.LapdmGaps(), "gaps in the numbers of LAPDm frames");
        }
    }

    CaptureForm form_;
    capture::Dissector dissector_;
    std::vector<GroupDecoder> decoders_;  // one a thread
    Progress progress_;
    Group group_;
    OrderedJobs<Group> jobs_;
    capture::CaptureFile file_;  // which may call Flush as soon as it is opened
};

}  // namespace

const bool kReadsCaptures = true;

int Capture(const CaptureOptions& options) {
    CatchInterrupts();
    try {
        return CaptureRun(options).Run();
    } catch (const capture::CaptureError& error) {
        throw UsageError(error.what());
    }
}

}  // namespace quorvane::tool
