#include "apps/ovix/cli/many_inputs.h"

#include <algorithm>
#include <array>

#include "apps/ovix/facts/error_json.h"

namespace ovix::app {

EExit Worse(EExit a, EExit b) {
    constexpr std::array kOrder{ExitDone, ExitSkipped, ExitBadData, ExitFile, ExitUsage, ExitInterrupted};
    return std::max(a, b, [&](EExit one, EExit other) {
        return std::ranges::find(kOrder, one) < std::ranges::find(kOrder, other);
    });
}

EExit ForEachInput(const std::vector<CSourceArguments>& inputs,
                   const std::function<EExit(const CSourceArguments& input)>& run,
                   const std::function<void(const CSourceArguments& input, const CFault& fault)>& failed) {
    if (inputs.size() == 1) return run(inputs.front());
    EExit worst = ExitDone;
    for (const CSourceArguments& input : inputs) {
        try {
            worst = Worse(worst, run(input));
        } catch (const std::exception&) {
            const CFault fault = CurrentFault();
            if (fault.Exit() == ExitInterrupted) throw;
            SayFault(fault);
            failed(input, fault);
            worst = Worse(worst, fault.Exit());
        }
    }
    return worst;
}

}  // namespace ovix::app
