#include "measure/frame/frame_objects.h"

#include <algorithm>
#include <filesystem>

#include "core/core.h"
#include "measure/error.h"

namespace ovix::measure {

namespace {

/// The tables whose files stand under the stem, as the library finds them: bits of `ECorrectionTables`.
u8 TablesOnDisk(const std::string& stem) {
    constexpr std::pair<const char*, u8> kFiles[] = {
        {".mvg", reduce::CorrectionGain}, {".mvo", reduce::CorrectionOffset}, {".mvb", reduce::CorrectionBadPixels}};
    const CString given(std::filesystem::path(stem).extension().c_str());
    const bool namesOne = std::any_of(std::begin(kFiles), std::end(kFiles),
                                      [&](const auto& file) { return given.EqualsNoCase(CString(file.first)); });
    const std::string base = namesOne ? std::filesystem::path(stem).replace_extension().string() : stem;
    u8 tables = 0;
    for (const auto& [extension, table] : kFiles) {
        std::error_code ignored;
        if (std::filesystem::exists(base + extension, ignored)) tables = static_cast<u8>(tables | table);
    }
    return tables;
}

std::string SizeText(u32 width, u32 height) { return std::to_string(width) + " x " + std::to_string(height); }

void RequireSize(const reduce::CCorrectionReduceObject& tables, const SFrameFormat& format, const std::string& whose) {
    if (tables.width == format.width && tables.height == format.height) return;
    throw CError({.id = EError::CorrectionUnusable,
                  .file = whose,
                  .expected = "tables of " + SizeText(format.width, format.height),
                  .found = SizeText(tables.width, tables.height)});
}

template <class... Object>
bool IsOneOf(const GUID& type) {
    return ((type == Object::typeID) || ...);
}

bool IsShared(const GUID& type) { return IsOneOf<reduce::CCorrectionReduceObject, reduce::CRCalReduceObject>(type); }

/// Of the source as a whole, the same for all frames of a measurement; or of the frame, and no part of a calibration.
bool ConversionsPassOver(const GUID& type) {
    return IsShared(type) || IsOneOf<reduce::CSourceInfoReduceObject, reduce::CFOVReduceObject,
                                     reduce::CFrameHeaderReduceObject, reduce::CFrameInfoReduceObject,
                                     reduce::COspreyFrameInfoReduceObject, reduce::CDunlinFrameInfoReduceObject,
                                     reduce::CDunlinCameraInfoReduceObject, reduce::CCurlewCameraInfoReduceObject,
                                     reduce::CCorrectionCfgReduceObject, reduce::CAbateCfgReduceObject>(type);
}

}  // namespace

void LoadCorrectionTables(reduce::CReduceObjectArray& objects, const SCorrectionFiles& files,
                          const SFrameFormat& format) {
    const u8 present = TablesOnDisk(files.stem);
    if (!present)
        throw CError({.id = EError::FileMissing,
                      .file = files.stem,
                      .problem = "there is no .mvg, .mvo or .mvb file of that stem"});
    const auto tables = objects.Get<reduce::CCorrectionReduceObject>(files.preset ? *files.preset : -1, true);
    // The library passes over a file that it cannot read. Here, one that is there is meant.
    const bool loaded = tables && tables->Load(FileSystem, CString(files.stem.c_str()));
    if (!loaded || (tables->present & present) != present)
        throw CError({.id = EError::CorrectionUnusable,
                      .file = files.stem,
                      .expected = "correction tables of one size, each of the kind of its extension",
                      .found = "a damaged file, another kind or another size"});
    RequireSize(*tables, format, files.stem);
}

bool HasCorrection(reduce::CReduceObjectArray& objects, const SFrameFormat& format) {
    bool found = false;
    for (u32 i = 0; i < objects.GetSize(); ++i) {
        const auto tables = objects.GetAt(i).Cast<reduce::CCorrectionReduceObject>();
        if (!tables) continue;
        found = true;
        if (tables->present) RequireSize(*tables, format, "the recorded correction");
    }
    return found;
}

void PutUserCalibration(reduce::CReduceObjectArray& objects, const SMeasureOptions& options) {
    if (!options.userCalibration) return;
    const auto object = objects.Get<reduce::CRCalReduceObject>(-1, true);
    if (!object)
        throw CError({.id = EError::NoCalibration, .problem = "a plug-in has taken the place of the user calibration"});
    object->cal = *options.userCalibration;
    object->valid = true;
}

void CopyObjects(const reduce::CReduceObjectArray& from, reduce::CReduceObjectArray& to) {
    to.Reset();
    for (u32 i = 0; i < from.GetSize(); ++i) {
        const auto object = from.GetAt(i);
        if (object) to.Add(IsShared(object->GetTypeID()) ? object : object->Duplicate());
    }
}

bool DescribeCalibration(const reduce::CReduceObjectArray& objects, const Presets& presets, std::vector<u8>& bytes) {
    bytes.assign(presets.begin(), presets.end());
    for (u32 i = 0; i < objects.GetSize(); ++i) {
        const auto object = objects.GetAt(i);
        if (!object || ConversionsPassOver(object->GetTypeID())) continue;
        CMemFile file;
        file.PutGUID(object->GetTypeID());
        file.PutUInt8(object->preset);
        file.PutBool(object->valid);
        const u64 head = file.GetSize();
        if (!object->Save(BorrowShared(static_cast<IFile&>(file)), 0)) return false;
        // The length keeps the bytes of two objects apart.
        const u64 length = file.GetSize() - head;
        const u8* size = reinterpret_cast<const u8*>(&length);
        bytes.insert(bytes.end(), size, size + sizeof length);
        bytes.insert(bytes.end(), file.GetData(), file.GetData() + file.GetSize());
    }
    return true;
}

}  // namespace ovix::measure
