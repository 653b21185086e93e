#pragma once

#include <gtest/gtest.h>

#include "hwy/targets.h"

namespace ovix::test {

/// Calls `f` once with each instruction set that this machine has and the vector loops were compiled for, the plain
/// one included.
template <class F>
void ForEachTarget(F&& f) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(target));
        f();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace ovix::test
