#pragma once

#include "core/date_time.h"
#include "core/pixel_types.h"
#include "core/stored_layout.h"
#include "core/typed_data.h"
#include "reduce/objects/reduce_object.h"

namespace ovix {

/// A position fix as devices and applications exchange it: 184 bytes, in the byte order of whoever filled it. The
/// library keeps, invalidates and turns it around; what the fields beside `status`, `datum` and `byteOrderMark` hold is
/// the business of the device, so they are named by kind and offset.
struct OVIX_REDUCE_API SGPSData {
    static constexpr u16 kByteOrderMark = 53;

    u32 status;  ///< 0 means no fix
    u8 bytes4[12];
    double double16;
    double double24;
    float single32;
    u32 uint36;
    u8 bytes40[24];
    float single64;
    u8 bytes68[6];
    u16 uint74;
    float single76;
    float single80;
    float single84;
    char datum[28];  ///< zero-terminated
    u32 uint116;
    double double120;
    double double128;
    float single136;
    float single140;
    u8 bytes144[32];
    u16 uint176;
    u16 byteOrderMark;
    u32 uint180;

    SGPSData() { invalidate(); }

    /// No fix: zeros, -1 in every floating field, the datum "WGS84", the mark of this machine's order.
    void invalidate();
    bool isValid() const { return status != 0; }
    /// Whether the record came from a machine of the other byte order.
    bool isSwapped() const { return byteOrderMark == 0x3500; }
    /// Turns the bytes of every numeric field around, unasked: a second call turns them back.
    void swap();
};
static_assert(sizeof(SGPSData) == 184);

namespace reduce {

/// A source as a whole: geometry, pixel type, unit of the stored pixels, identity of the camera, time of the recording,
/// and for each preset whether it is in use and how many frames it has.
///
/// Fields described as carried are stored and copied for applications; the library does not read them.
class OVIX_REDUCE_API CSourceInfoReduceObject : public TReduceObject<CSourceInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{344ED254-76DC-4B4C-B47B-3548A6837C26}"_guid;
    static constexpr const wchar_t* kName = L"SourceInfo";
    static constexpr u32 MaxPresets = 8;
    /// Bytes of the stored record.
    static constexpr u32 RecordSize = 2048;
    /// Where the record says `fixedPreset`, and how many frames a preset has.
    static constexpr u32 FixedPresetOffset = 78;
    static constexpr u32 FrameCountOffset(u32 preset) { return 1024 + preset * 128 + 15; }

    struct SPresetInfo {
        bool enabled = false;  ///< the preset is in use
        double valueA = 0;     ///< carried, as are the fields that follow, but for `frameCount`
        bool flagA = false;
        float scale = 1.0f;
        bool flagB = false;
        u32 frameCount = 0;  ///< frames of this preset
        bool flagC = false;
        double valueB = 0;
        double valueC = 0;

        void Default() { *this = SPresetInfo(); }
    };

    i32 sourceBits = 16;  ///< carried
    CString cameraName = L"Unknown Camera";
    bool flagA = false;               ///< carried
    bool flagB = false;               ///< carried
    bool fixedPreset = false;         ///< all frames count as preset 0; frame counts do not change what is enabled
    u8 presetCount = 4;               ///< presets that the source can have
    SPresetInfo presets[MaxPresets];  ///< of a fresh object, the first is enabled
    u8 sourceKind = 3;                ///< carried
    u16 width = 0;                    ///< of the image in pixels
    u16 height = 0;
    RECT frameRect;  ///< the rectangle for `AdjustFrameData`; carried
    bool frameRectSet = false;
    GUID pixelType = rootIRType;       ///< of the frames
    i32 sourceValue = 0;               ///< carried
    EUnit baseUnit = Counts;           ///< of the stored pixels
    ETempType baseTempType = Celsius;  ///< scale of stored temperatures
    u16 frameWidth = 0;                ///< of a frame as the camera delivers it
    u16 frameHeight = 0;
    u16 packetWidth = 0;  ///< of a frame as the acquisition file stores it
    u16 packetHeight = 0;
    u16 packetExtra = 0;
    CDateTime time;            ///< of the recording
    bool hasIdentity = false;  ///< the texts were given
    /// Identity of the source: `text0`, 3, 6, 9 and 12 are stored in 32 bytes each, the others in 16.
    CString text0, text1, text2, text3, text4, text5, text6, text7, text8, text9, text10, text11, text12;
    double rangeALow = 0;  ///< carried, as are all the ranges
    double rangeAHigh = 0;
    bool rangeASet = false;
    double rangeBLow = 0;
    double rangeBHigh = 0;
    bool rangeBSet = false;
    SGPSData gps;  ///< position of the recording; not stored

    CSourceInfoReduceObject();

    /// What the stored record holds behind its size and its version.
    static StoredLayout RecordLayout();

    /// Leaves `frameRect`, `frameRectSet` and `pixelType`: they describe the stream and outlive a reset.
    void Default() override;
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

    /// Patches the frame counts of the first n presets in a stored record in memory, and, unless it says `fixedPreset`,
    /// enables exactly those with frames. False for a null record, a size below that of one, or more than 8 presets.
    static bool UpdateNumFrames(void* record, u32 size, const u32* counts, u8 n);
    /// Patches the three packet fields of a stored record in memory; false as above.
    static bool UpdatePacketing(void* record, u32 size, u16 width, u16 height, u16 extra);

  private:
    bool LoadOldStream(IFile& file, u32 blockVersion);
};

}  // namespace reduce

}  // namespace ovix
