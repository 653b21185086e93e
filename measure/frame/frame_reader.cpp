#include "measure/frame/frame_reader.h"

#include <utility>

#include "measure/frame/frame_decoder.h"
#include "measure/frame/frame_objects.h"
#include "measure/frame/scene.h"
#include "measure/text.h"

namespace ovix::measure {

struct CFrameReader::SBody {
    explicit SBody(const CSource& source) : decoder(source, SMeasureOptions().decodePatience) {
        source.Describe(description);
    }

    CFrameDecoder decoder;
    reduce::CReduceObjectArray description;
};

CFrameReader::CFrameReader(CSource source)
    : source_(std::move(source)), body_(std::make_shared<const SBody>(source_)) {}

const reduce::SFrameForm& CFrameReader::Form() const { return body_->decoder.Form(); }

SFrameFacts CFrameReader::Read(SRawFrame& raw, reduce::CReduceObjectArray& objects) const {
    return Read(raw, objects, nullptr);
}

SFrameFacts CFrameReader::Read(SRawFrame& raw, reduce::CReduceObjectArray& objects, std::span<u8> pixels) const {
    if (pixels.size() < body_->decoder.PixelBytes())
        throw CError({.id = EError::WrongArgument,
                      .expected = Say("room for ", body_->decoder.PixelBytes(), " bytes of pixels"),
                      .found = Say(pixels.size())});
    return Read(raw, objects, static_cast<void*>(pixels.data()));
}

SFrameFacts CFrameReader::Read(SRawFrame& raw, reduce::CReduceObjectArray& objects, void* pixels) const {
    CopyObjects(body_->description, objects);
    CSceneTrail scene(objects);
    try {
        const SFrameFacts facts = body_->decoder.Decode(raw.bytes, objects, pixels);
        scene.Finish(source_, {});
        return facts;
    } catch (const CError& error) {
        throw error.Of(source_.Name(), raw.number);
    }
}

}  // namespace ovix::measure
