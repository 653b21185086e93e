#pragma once

#include "core/file.h"
#include "core/guid.h"
#include "core/shared_ptr.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// The bits of the mask that `Load`, `Save`, `ShouldPersist` and `CalcCRC` are given. Others have no meaning.
enum EPersistFlags : u32 {
    PersistWithoutTables = 8,  ///< the file functions leave out the blocks of correction and user calibration
    PersistInitialState = 16,  ///< the initial state of a recording: the leading flag of a record is written as 1
};

/// Metadata of a source: one small typed object, tied to the whole source, to a preset or to a frame.
///
/// The fields are open to decoders, converters and the file layer. An object has no lock of its own: whoever shares one
/// between threads goes by the lock of its `CReduceObjectArray`.
class OVIX_REDUCE_API IReduceObject {
  public:
    static constexpr u64 NoFrame = ~u64{0};
    static constexpr u8 NoPreset = 255;

    bool valid = false;  ///< the object holds real data
    u64 frameNumber = NoFrame;
    u8 preset = NoPreset;
    u32 version = 0x10000;  ///< of the stored form, major number in the upper 16 bits
    bool persist = true;    ///< whether the object goes to the info file

    IReduceObject();
    IReduceObject(const IReduceObject&);
    IReduceObject& operator=(const IReduceObject&);
    virtual ~IReduceObject();

    virtual GUID GetTypeID() const = 0;
    virtual const wchar_t* GetName() const = 0;
    virtual bool IsCalObj() const;
    /// An independent copy, made through the factory so that a class replaced by a plug-in stays replaced.
    virtual TSharedPtr<IReduceObject> Duplicate() const = 0;
    /// The state of a fresh object; as a rule `frameNumber`, `preset`, `persist` and `version` stay.
    virtual void Default();
    /// Reads the stored form of the version that stood in the block header. After a false result the object may have
    /// changed and is not to be used.
    virtual bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags);
    /// Writes the newest stored form.
    virtual bool Save(TSharedPtr<IFile> file, u32 flags);
    virtual bool ShouldPersist(u32 flags) const;
    /// CRC-32 and number of the bytes that `Save` with these flags writes; both stay as they were when it fails.
    virtual bool CalcCRC(u32& crc, u64& size, u32 flags);

    bool IsPerFrame() const { return frameNumber != NoFrame; }
    bool IsPerPreset() const { return preset < NoPreset; }
};

}  // namespace ovix::reduce
