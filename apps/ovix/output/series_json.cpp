#include "apps/ovix/output/series_json.h"

#include "apps/ovix/status_flags.h"

namespace ovix::app {

Json CountStatus(std::span<const u8> status) {
    u64 ofByte[256] = {};
    for (u8 byte : status) ++ofByte[byte];
    Json counts{{"good", ofByte[0]}};
    for (const SStatusFlag& flag : kStatusFlags) {
        u64 pixels = 0;
        for (unsigned byte = 0; byte < 256; ++byte) pixels += byte & flag.bit ? ofByte[byte] : 0;
        if (pixels > 0) counts[flag.key] = pixels;
    }
    return counts;
}

Json DescribeSeries(const SSeries& series) {
    return {{"schema", kSchemaVersion},       {"title", series.title}, {"quantity", series.unit.quantity},
            {"unit", series.unit.symbol},     {"width", series.width}, {"height", series.height},
            {"parameters", series.parameters}};
}

Json DescribeFrame(const SPicture& picture) {
    Json frame{{"frame", picture.frame}};
    if (!picture.caption.empty()) frame["caption"] = picture.caption;
    if (!picture.status.empty()) frame["status"] = CountStatus(picture.status);
    return frame;
}

}  // namespace ovix::app
