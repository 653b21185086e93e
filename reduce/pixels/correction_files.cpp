// The side of the correction that deals with the table files of one stem.

#include <algorithm>

#include "core/norm_file.h"
#include "reduce/pixels/correction_reduce_object.h"

namespace ovix::reduce {

namespace {

struct SKind {
    const wchar_t* extension;
    FILE_TYPE type;
    ECorrectionTables table;
};
constexpr SKind kKinds[] = {
    {L".mvg", GainTable, CorrectionGain},
    {L".mvo", OffsetTable, CorrectionOffset},
    {L".mvb", BadPixelTable, CorrectionBadPixels},
};

/// A path with one of the three extensions names the stem, any other path is one.
CString NameOf(const CString& path, const SKind& kind) {
    const bool hasExtension = std::any_of(std::begin(kKinds), std::end(kKinds),
                                          [&](const SKind& any) { return path.EndsWithNoCase(any.extension); });
    return hasExtension ? path::ChangeExtension(path, kind.extension) : path + kind.extension;
}

}  // namespace

bool CCorrectionReduceObject::Load(IFileSystem* fileSystem, const CString& path) {
    CNormFile files[std::size(kKinds)];
    const CNormFile* first = nullptr;
    u8 found = 0;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) {
        const CNormFile& file = files[i];
        if (!files[i].Load(fileSystem, NameOf(path, kKinds[i]))) continue;
        if (!first) first = &file;
        if (file.GetType() != kKinds[i].type || file.xPixels() != first->xPixels() ||
            file.yPixels() != first->yPixels()) {
            return false;
        }
        found = static_cast<u8>(found | kKinds[i].table);
    }
    if (!first) return false;

    flippedTopBottom = false;  // `flippedLeftRight` deliberately stays
    Create(first->xPixels(), first->yPixels(), preset, found);
    valid = true;
    const u64 n = u64{first->xPixels()} * first->yPixels();
    if (n == 0) return true;
    if (found & CorrectionGain) std::copy_n(files[0].GetGains(), n, gain.get());
    if (found & CorrectionOffset) std::copy_n(files[1].GetOffsets(), n, offset.get());
    if (found & CorrectionBadPixels) {
        std::copy_n(files[2].GetBadPixels().mask, n, mask.get());
        std::copy_n(files[2].GetBadPixels().map, n, map.get());
    }
    return true;
}

bool CCorrectionReduceObject::Save(IFileSystem* fileSystem, const CString& path) {
    if (width > 0xFFFF || height > 0xFFFF) return false;  // the files cannot say so
    const u8 tables = static_cast<u8>(present & ExistingTables());
    const CString name = NameOf(path, kKinds[0]);  // for all three, deliberately
    const u16 w = static_cast<u16>(width);
    const u16 h = static_cast<u16>(height);
    bool done = true;
    if (tables & CorrectionGain) done = CNormFile::SaveGainTable(fileSystem, name, w, h, preset, gain) && done;
    if (tables & CorrectionOffset) done = CNormFile::SaveOffsetTable(fileSystem, name, w, h, preset, offset) && done;
    if (tables & CorrectionBadPixels) {
        done = CNormFile::SaveBadPixelTable(fileSystem, name, w, h, preset, mask, map) && done;
    }
    return done;
}

}  // namespace ovix::reduce
