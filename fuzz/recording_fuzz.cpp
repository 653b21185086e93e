#include "fuzz/memory_file.h"
#include "measure/measure.h"

/// Any bytes as a recording: opened, with its findings, and its first frames with their metadata. Errors are answers.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ovix::measure;
    static const CMemoryFile file;
    const std::string& path = file.Hold(data, size);
    bool sound = false;
    try {
        sound = CheckRecording(path, [](const SFinding& finding) {
            if (finding.what.empty() && finding.found.empty()) std::abort();
        });
        const CSource source = Open(path, {.acceptDamage = true});
        const CFrameReader reader(source);
        SRawFrame raw;
        for (ovix::u64 n = 0; n < 3 && n < source.Count(); ++n) {
            try {
                source.Read(n, raw);
                ovix::reduce::CReduceObjectArray objects;
                reader.Read(raw, objects);
            } catch (const CError& error) {
                if (error.Facts().frame != n || sound) std::abort();
            }
        }
    } catch (const CError& error) {
        if (!*error.what()) std::abort();
    }
    return 0;
}
