#include "measure/frame/frame_objects.h"

#include "core/core.h"

namespace ovix::measure {

namespace {

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
