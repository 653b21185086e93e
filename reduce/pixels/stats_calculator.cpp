#include "reduce/pixels/stats_calculator.h"

#include "reduce/pixels/stats_route.h"

namespace ovix::reduce {

void CStatsCalculator::Start() {
    stats_.sum = 0;
    stats_.variance = 0;
    stats_.count = 0;
    stats_.statusUnion = 0;
    stats_.minimumStatus = 0;
    stats_.maximumStatus = 0;
    stats_.allMinimumIndex = ~u32{0};
    stats_.allMaximumIndex = ~u32{0};
    index_ = 0;
}

void CStatsCalculator::AddData(double value, u8 status, int x, int y) {
    index_ = 0;
    AddToRecord(stats_, value, status, x, y);
    ++index_;
}

void CStatsCalculator::Finish() {
    FinishBounds(stats_);
    FinishMoments(stats_);
}

}  // namespace ovix::reduce
