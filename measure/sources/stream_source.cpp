#include "measure/sources/stream_source.h"

#include <algorithm>
#include <utility>

#include "measure/recordings/stored_metadata.h"
#include "measure/text.h"

namespace ovix::measure {

using reduce::SInfoFileBlock;

namespace {

constexpr u64 kPaddingOfLast = 4096;  // of a frame that has no other behind it

/// Waits for all that stands before the first frame of a recording, as far as its blocks can be followed.
std::vector<u8> TakeMetadata(CFeed& feed) {
    constexpr u64 kMost = u64{1} << 40;
    u64 at = SInfoFileBlock::HeaderBytes;
    while (at < kMost && feed.Fill(at + SInfoFileBlock::HeaderBytes)) {
        CMemFile header;
        header.Attach(const_cast<u8*>(feed.Window().data() + at), SInfoFileBlock::HeaderBytes, false);
        SInfoFileBlock block;
        if (!reduce::ReadInfoFileBlock(BorrowShared<IFile>(header), block)) break;
        at += SInfoFileBlock::HeaderBytes;
        const bool isLast = block.size == SInfoFileBlock::ToEndOfFile;
        at += isLast ? reduce::PixelsHeaderBytes(block.version) : std::min(block.size, kMost);
        if (!feed.Fill(at) || isLast) break;
    }
    const std::span<const u8> window = feed.Window().first(std::min<u64>(at, feed.Window().size()));
    return {window.begin(), window.end()};
}

}  // namespace

CStreamSource::CStreamSource(CFeed feed, ESource kind, SFrameFormat format)
    : IBody(feed.Shared(), kind, std::move(format)),
      feed_(std::move(feed)),
      probe_(Format()),
      ownLength_(kind == ESource::Dump && FormOf(Format()).ownLength) {}

std::shared_ptr<CStreamSource> CStreamSource::OfRecording(CFeed feed, const SOpenOptions& options) {
    const CRecordingFile file(std::make_shared<CBytesInMemory>(feed.File().Name(), TakeMetadata(feed)));
    auto source = std::make_shared<CStreamSource>(std::move(feed), ESource::Recording, FormatOf(file));
    reduce::CReduceObjectArray objects;
    LoadMetadata(file, source->Format(), options, objects, [&](SFinding finding) { source->Add(std::move(finding)); });
    source->SetObjects(objects);
    source->size_ = file.Pixels().frameSize;
    source->tail_ = file.FrameStep() - source->size_;
    source->counted_ = CountedFrames(objects);
    if (source->File().IsRegular())
        source->sums_ = SumsBeside(file, 0, [&](SFinding finding) { source->Add(std::move(finding)); });
    const u64 framesAt = file.FramesAt();
    const u64 step = file.FrameStep();
    CFeed& from = source->feed_;
    from.Drop(framesAt);
    // The source outlives its feed.
    for (const SInfoFileBlock& block : file.Blocks()) {
        if (block.typeID != reduce::CSourceInfoReduceObject::typeID || !options.follow) continue;
        from.EndWhen([input = from.Shared(), block, framesAt, step, body = source.get()] {
            CBytesFile now(*input);
            reduce::CReduceObjectArray stored;
            const auto info = stored.GetSourceInfo(true);
            now.Seek(static_cast<i64>(block.dataOffset), IFile::FromStart);
            if (!info->Load(BorrowShared<IFile>(now), block.version, 0)) return false;
            body->counted_ = CountedFrames(stored);
            return *body->counted_ != 0 && framesAt + *body->counted_ * step <= input->SizeNow();
        });
    }
    if (!from.Fill(source->size_))
        throw CError({.id = EError::NoFrames,
                      .file = file.Name(),
                      .offset = framesAt,
                      .expected = Say("frames of ", step, " bytes"),
                      .found = Say(from.Window().size(), " bytes")});
    source->LookAtFirstFrame();
    return source;
}

std::shared_ptr<CStreamSource> CStreamSource::OfDump(CFeed feed, SFrameFormat format, const SOpenOptions& options) {
    const ESource kind = KindOf(format);
    auto source = std::make_shared<CStreamSource>(std::move(feed), kind, std::move(format));
    source->FindSize(options.frameSize);
    source->SetObjects({});
    source->LookAtFirstFrame();
    return source;
}

void CStreamSource::FindSize(u32 given) {
    ownLength_ = ownLength_ && !given;
    const auto none = [&] {
        return CError({.id = EError::NoFrames,
                       .file = File().Name(),
                       .expected = "a frame",
                       .found = Say("the end after ", feed_.Window().size(), " bytes")});
    };
    if (ownLength_) {
        if (!SizeHere()) throw none();
    } else if (given || Format().filter.empty()) {
        size_ = given ? given : PlainBytes(Format());
        if (!feed_.Fill(size_)) throw none();
        if (probe_.Passes(feed_.Window().first(size_))) tells_ = LookAtFirst(probe_, feed_.Window().first(size_)).tells;
    } else {
        // It can pass as soon as there are its pixels; one that does not pass with the most bytes never will.
        while (!probe_.Passes(feed_.Window()) && feed_.Window().size() < probe_.MostBytes() && feed_.FillMore()) {
        }
        if (feed_.Window().empty()) throw none();
        try {
            const SFirstFrame first = LookAtFirst(probe_, feed_.Window());
            size_ = first.smallest;
            tells_ = first.tells;
            tailKnown_ = !tells_;
        } catch (const CError& error) {
            throw error.Of(File().Name(), 0);
        }
    }
}

void CStreamSource::LookAtFirstFrame() {
    const std::span<const u8> frame = feed_.Window().first(ownLength_ ? SizeHere() : size_);
    const CBytesInMemory bytes(File().Name(), {frame.begin(), frame.end()});
    CheckEnds(bytes, CEqualFrames(bytes, 0, frame.size(), frame.size()), probe_,
              [this](SFinding finding) { Add(std::move(finding)); });
    bool asked = false;
    FindOverruled([&]() -> std::optional<std::vector<u8>> {
        if (std::exchange(asked, true)) return {};
        return std::vector<u8>(frame.begin(), frame.end());
    });
    tells_ = tells_ && probe_.Passes(frame) && probe_.TellsFrames(frame.size());
    if (tells_) smallest_ = probe_.SmallestSize(frame);
}

u64 CStreamSource::SizeHere() {
    if (!ownLength_) return feed_.Fill(size_) ? size_ : 0;
    const u64 most = probe_.MostBytes() + CFrameProbe::kMostTail;
    for (u64 wanted = 4; wanted <= most && feed_.Fill(wanted);) {
        const u64 next = COwnLengthFrames::BytesToTell(feed_.Window().first(wanted));
        if (next == wanted) return wanted;
        if (next < wanted) return 0;
        wanted = next;
    }
    return 0;
}

void CStreamSource::SkipBetweenFrames() {
    if (ownLength_) {
        while (feed_.Fill(4) &&
               std::all_of(feed_.Window().begin(), feed_.Window().begin() + 4, [](u8 b) { return !b; }))
            feed_.Drop(1);
    } else if (number_ == 1 && !tailKnown_) {
        tailKnown_ = true;
        const u64 most = std::min(CFrameProbe::kMostTail, size_ - 1);
        for (u64 at = 0; at <= most && feed_.Fill(at + size_); ++at) {
            if (!probe_.Passes(feed_.Window().subspan(at, size_))) continue;
            tail_ = at;
            break;
        }
        feed_.Drop(tail_);
    } else if (number_ > 0) {
        feed_.Fill(tail_);
        feed_.Drop(std::min<u64>(tail_, feed_.Window().size()));
    }
}

bool CStreamSource::Next(SRawFrame& frame, const std::stop_token& stop) {
    feed_.StopOn(stop);
    if (!torn_) SkipBetweenFrames();
    torn_ = false;
    const u64 size = SizeHere();
    if (!size && (!ownLength_ || feed_.Window().size() < 4)) return End();
    if (!size || (tells_ && !probe_.Passes(feed_.Window().first(size)) && !StandsInPlace())) PassOver();
    frame.number = number_++;
    frame.offset = feed_.Offset();
    frame.bytes.assign(feed_.Window().begin(), feed_.Window().begin() + static_cast<std::ptrdiff_t>(size));
    feed_.Drop(size);
    if (sums_) {
        if (unlocated_ && sums_->Locate(*unlocated_, frame.number, frame.bytes)) unlocated_.reset();
        HoldAgainstSum(*sums_, frame);
    }
    if (IsBigEndian(Format())) SwapBytes(frame.bytes);
    return true;
}

/// Whether the next frame that passes is where this one's size puts it, so that this one is damaged and no byte is
/// lost. At the end there is nothing to go by.
bool CStreamSource::StandsInPlace() {
    if (ownLength_) return true;
    const u64 step = size_ + tail_;
    feed_.Fill(2 * step + size_);
    const std::span<const u8> window = feed_.Window();
    const auto next = NextFrame(probe_, window, 1, window.size(), size_, smallest_);
    return next ? *next % step == 0 : window.size() < step + size_;
}

void CStreamSource::PassOver() {
    const u64 start = feed_.Offset();
    bool found = false;
    do {
        feed_.Drop(1);
        const std::span<const u8> window = feed_.Window();
        if (ownLength_) {
            const u64 size = SizeHere();
            found = size && probe_.Passes(feed_.Window().first(size));
        } else if (window.size() >= size_) {
            const auto next = NextFrame(probe_, window, 0, window.size(), size_, smallest_);
            found = next.has_value();
            feed_.Drop(next ? *next : window.size() - size_);
        }
    } while (!found && feed_.Fill(ownLength_ ? 104 : size_ + 1));
    if (!found) feed_.Drop(feed_.Window().size());
    torn_ = true;
    unlocated_ = number_;
    const u64 passed = feed_.Offset() - start;
    Add({.id = EFinding::BytesPassedOver,
         .weight = EWeight::Damage,
         .frame = number_,
         .offset = start,
         .what = "bytes were lost or inserted: no frame begins where the next one should",
         .expected = Say("frame ", number_, " at ", start),
         .found =
             Say(found ? "the next frame at " : "the end at ", feed_.Offset(), "; ", passed, " bytes passed over")});
    throw CError({.id = EError::FrameRefused,
                  .file = File().Name(),
                  .frame = number_,
                  .problem = Say("bytes were lost or inserted: ", passed, " bytes passed over"),
                  .expected = Say("a frame at byte ", start),
                  .found = found ? Say("the next one at ", feed_.Offset()) : "none up to the end"});
}

bool CStreamSource::End() {
    const u64 left = feed_.Window().size();
    const bool padding = !ownLength_ && number_ == 1 && tail_ == 0 && left <= kPaddingOfLast && !counted_;
    if (left && !padding)
        Add({.id = EFinding::FrameCut,
             .weight = EWeight::Damage,
             .frame = number_,
             .offset = feed_.Offset(),
             .what = "the last frame is cut",
             .expected = ownLength_ ? "a whole frame" : Say(size_, " bytes"),
             .found = Say(left)});
    feed_.Drop(left);
    if (counted_ && *counted_ != number_) {
        const bool finished = *counted_ != 0;
        Add({.id = finished ? EFinding::CountsDiffer : EFinding::NeverFinished,
             .weight = finished ? EWeight::Damage : EWeight::Doubt,
             .what = finished ? "the source info counts other frames than there are" : "the recording was not finished",
             .expected = finished ? Say(*counted_, " frames") : "frame counts",
             .found = finished ? Say(number_) : "none"});
    }
    return false;
}

void CStreamSource::Read(u64 number, SRawFrame&) const { Find(number); }

SExtent CStreamSource::Find(u64) const {
    throw CError({.id = EError::NotNumbered,
                  .file = File().Name(),
                  .problem = "its frames come one after the other and cannot be asked for by number"});
}

}  // namespace ovix::measure
