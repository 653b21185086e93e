#include "measure/decoder/decoder_pool.h"

#include "measure/error.h"

namespace ovix::measure {

CDecoderPool::~CDecoderPool() = default;

CDecoderPool::Process CDecoderPool::Take() const {
    Process taken = idle_.With([](std::vector<Process>& idle) {
        Process last;
        if (idle.empty()) return last;
        last = std::move(idle.back());
        idle.pop_back();
        return last;
    });
    return taken ? std::move(taken) : std::make_unique<CDecoderProcess>(format_, patience_);
}

void CDecoderPool::Return(Process process) const {
    if (!process->IsAlive()) return;
    idle_.With([&](std::vector<Process>& idle) { idle.push_back(std::move(process)); });
}

void CDecoderPool::Decode(std::span<const u8> frame, u16* pixels) const {
    for (;;) {
        Process process = Take();
        try {
            process->Decode(frame, pixels);
            return Return(std::move(process));
        } catch (const CError&) {
            const bool again = process->DiedIdle();
            Return(std::move(process));
            if (!again) throw;
        }
    }
}

}  // namespace ovix::measure
