#include "measure/decoder/decoder_pool.h"

#include <dlfcn.h>

#include <filesystem>

#include "measure/decoder/helper_path.h"
#include "measure/error.h"

namespace ovix::measure {

std::string HelperPath() {
    // The address of any object of this library will do.
    static constexpr char kAnchor = 0;
    Dl_info library{};
    if (!::dladdr(&kAnchor, &library) || !library.dli_fname)
        throw CError({.id = EError::HelperMissing, .problem = "cannot find the place of the measuring library"});
    std::error_code ignored;
    return std::filesystem::absolute(library.dli_fname, ignored).parent_path() / "ovix" / "ovix-decode";
}

CDecoderPool::~CDecoderPool() = default;

CDecoderPool::Process CDecoderPool::Take() const {
    Process taken;
    lock_.Try([&] {
        // Those of the parent of a forked process are put away: they serve it alone.
        while (!idle_.empty() && !(taken && taken->IsOurs())) {
            taken = std::move(idle_.back());
            idle_.pop_back();
        }
    });
    if (taken && taken->IsOurs()) return taken;
    return std::make_unique<CDecoderProcess>(format_, patience_);
}

void CDecoderPool::Return(Process process) const {
    if (process->IsAlive()) lock_.Try([&] { idle_.push_back(std::move(process)); });
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
