#include "measure/frame/frame_reader.h"

#include <utility>

#include "measure/frame/frame_decoder.h"
#include "measure/frame/frame_objects.h"
#include "measure/frame/scene.h"

namespace ovix::measure {

struct CFrameReader::SBody {
    explicit SBody(const CSource& source) : decoder(source, {}) { source.Describe(description); }

    CFrameDecoder decoder;
    reduce::CReduceObjectArray description;
};

CFrameReader::CFrameReader(CSource source)
    : source_(std::move(source)), body_(std::make_shared<const SBody>(source_)) {}

SFrameFacts CFrameReader::Read(SRawFrame& raw, reduce::CReduceObjectArray& objects) const {
    CopyObjects(body_->description, objects);
    CSceneTrail scene(objects);
    try {
        const SFrameFacts facts = body_->decoder.Decode(raw.bytes, objects, nullptr);
        scene.Finish(source_, {});
        return facts;
    } catch (const CError& error) {
        throw error.Of(source_.Name(), raw.number);
    }
}

}  // namespace ovix::measure
