#include <algorithm>

#include "measure/sources/frame_layout.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// A few frames of a file; of each thing that is wrong with them the first is reported.
class CEndsCheck {
  public:
    CEndsCheck(const IBytes& bytes, const IFrameLayout& layout, const CFrameProbe& probe, const Report& report)
        : bytes_(bytes), layout_(layout), probe_(probe), report_(report) {}

    void Run() {
        // Frames of lengths of their own are counted by walking through all of them.
        const u64 count = layout_.FrameSize() ? layout_.Count() : 2;
        const auto first = Look(0);
        if (count > 1) Compare(first, Look(1));
        if (count > 4) Look(count / 2);
        if (count < 3) return;
        const auto last = Look(count - 2);
        Compare(last, Look(count - 1));
    }

  private:
    struct SSeen {
        u64 number = 0;
        u64 offset = 0;
        CFrameProbe::SCarried carried = {};
    };

    void Find(EFinding id, EWeight weight, const SSeen& seen, std::string what, std::string expected,
              std::string found) {
        if (std::find(said_.begin(), said_.end(), id) != said_.end()) return;
        said_.push_back(id);
        report_({.id = id,
                 .weight = weight,
                 .frame = seen.number,
                 .offset = seen.offset,
                 .what = std::move(what),
                 .expected = std::move(expected),
                 .found = std::move(found)});
    }
    /// Nothing of a frame that is not there or does not pass.
    std::optional<SSeen> Look(u64 number) {
        const auto place = layout_.Find(number);
        if (!place || place->size > CUInt32::Max) return {};
        const std::vector<u8> frame = bytes_.Get(place->offset, place->size);
        SSeen seen{number, place->offset};
        if (const auto fault = probe_.FaultOf(frame)) {
            const SErrorFacts& facts = fault->Facts();
            seen.offset += facts.offset.value_or(0);
            Find(EFinding::FrameDamaged, EWeight::Damage, seen, "the frame does not pass its family's check",
                 facts.expected, facts.found);
            return {};
        }
        CheckEvidence(seen, probe_.Evidence(frame));
        seen.carried = probe_.Carried(frame);
        return seen;
    }
    void CheckEvidence(const SSeen& seen, const reduce::SFrameEvidence& evidence) {
        const SFrameFormat& format = probe_.Format();
        if (evidence.mark == reduce::EFrameMark::Absent)
            Find(EFinding::NoMark, EWeight::Doubt, seen, "the frame does not bear the mark of its family",
                 "a frame of \"" + format.pixelTypeName + "\"", "bytes that might be anything");
        const bool otherWidth = evidence.width && evidence.width != format.width;
        const bool otherHeight = evidence.height && evidence.height != format.height;
        if (otherWidth || otherHeight)
            Find(EFinding::OtherSize, EWeight::Doubt, seen, "the frame names another size",
                 Say(format.width, " x ", format.height),
                 evidence.height ? Say(evidence.width, " x ", evidence.height) : Say("a width of ", evidence.width));
    }
    void Compare(const std::optional<SSeen>& a, const std::optional<SSeen>& b) {
        if (!a || !b) return;
        const auto& [counter, time] = a->carried;
        const auto& [nextCounter, nextTime] = b->carried;
        if (counter && nextCounter && *nextCounter != probe_.CounterAfter(*counter))
            Find(EFinding::CounterJumps, EWeight::Doubt, *b, "the counter jumps",
                 Say(probe_.CounterAfter(*counter), " behind ", *counter), Say(*nextCounter));
        if (time && nextTime && nextTime->GetTimestamp() < time->GetTimestamp())
            Find(EFinding::TimeRunsBack, EWeight::Doubt, *b, "the time runs back from one frame to the next",
                 "no time before that of the frame before it", nextTime->Format(L"%Y-%m-%dT%H:%M:%S.%fZ").GetUTF8());
    }

    const IBytes& bytes_;
    const IFrameLayout& layout_;
    const CFrameProbe& probe_;
    const Report& report_;
    std::vector<EFinding> said_;
};

}  // namespace

void CheckEnds(const IBytes& bytes, const IFrameLayout& layout, const CFrameProbe& probe, const Report& report) {
    CEndsCheck(bytes, layout, probe, report).Run();
}

}  // namespace ovix::measure
