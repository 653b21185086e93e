#include "apps/ovix/synth/plain_response.h"

namespace ovix::app {

const std::vector<u16>& CPlainResponse::Counts(std::span<const float> kelvin, u64 frame) {
    even_.clear();
    for (const float temperature : kelvin) even_.push_back(response_(temperature));
    detector_.Read(even_, frame, counts_);
    return counts_;
}

}  // namespace ovix::app
