#include "apps/ovix/synth/header_line_synth.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/synth/byte_fields.h"

namespace ovix::app {

CHeaderLineSynth::CHeaderLineSynth(const SSynthOptions& options, u32 headerBytes, WriteHeader write,
                                   CPlainResponse::Response response)
    : options_(options), headerBytes_(headerBytes), write_(write), camera_(options, response) {
    const u64 bytes = 2u * u64{options.width} * (options.height + 1u);
    if (bytes < headerBytes)
        throw UsageFault(fmt::format("{} x {} pixels and a header line make {} bytes; the header alone has {}",
                                     options.width, options.height, bytes, headerBytes));
}

std::vector<u8> CHeaderLineSynth::Frame(u64 number, std::span<const float> kelvin) {
    std::vector<u8> header(headerBytes_);
    write_(header.data(), options_, number);
    header.resize(2 * std::size_t{options_.width});  // cut or filled up with zeros
    const std::vector<u8> image = CountBytes(camera_.Counts(kelvin, number), false);
    header.insert(header.end(), image.begin(), image.end());
    return header;
}

}  // namespace ovix::app
