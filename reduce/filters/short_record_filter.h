#pragma once

#include <span>

#include "core/typed_data.h"
#include "reduce/filters/camera_record_objects.h"
#include "reduce/filters/filter_factory.h"

namespace ovix::reduce {

/// The pixel types of one of the older relatives of the K410, whose infrared frames end with the first 1148 bytes of
/// the camera record.
struct SShortRecordFamily {
    struct SType {
        GUID id;
        const wchar_t* name;  ///< in the registry of pixel types
        EDataType element;
        GUID base;
        bool infrared = false;  ///< 16-bit counts and a record; the others are video in the order U, Y0, V, Y1
    };
    const wchar_t* name;           ///< of the decoder
    std::span<const SType> types;  ///< in their order at the factory
    bool numbersFrames = false;    ///< the record's counter is the number of the frame
    bool hasPackets = false;       ///< a buffer may hold several images, with one record for all behind them

    /// Null for a type of another family.
    const SType* Find(const GUID& type) const;
    bool IsInfrared(const GUID& type) const;
};

/// The body of the decoders of the older relatives: width times height 16-bit counts, then the record directly behind
/// them at byte 2 * width * height, without a container or a signature.
///
/// **Frames are written to.** A record in the other byte order is turned around where it stands, by `ParseFrame`,
/// `ParseTime` and `ParseBasicInfo`; `ParseFrame` also overrules some of its fields. So the frame must be in memory
/// that can be written, never in a read-only mapping, and no two threads may parse one buffer at the same moment. Who
/// needs the bytes as the camera sent them keeps a copy. `CheckFrame`, `DescribeFrame` and `StoreFrame` leave the frame
/// alone.
///
/// It counts frames: one object serves one stream.
class CShortRecordFilter : public IFilter {
  public:
    const wchar_t* GetName() const override;
    bool HasPixels(GUID type) const override;
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    bool HasTime(GUID type) const override;

  protected:
    /// `family` lives as long as the filter.
    explicit CShortRecordFilter(const SShortRecordFamily& family) : family_(family) {}

    bool IsInfrared(const GUID& type) const { return family_.IsInfrared(type); }

    u16 ownCounter_ = 0;  ///< frames that were numbered here, wrapping

  private:
    // A family's share. `record` is in the native order and stands in the frame.
    virtual void OverruleRecord(u8* record, u16 width, u16 height) const = 0;
    /// The frame's number, and what else differs in the frame info.
    virtual void FillFrameInfo(CFrameInfoReduceObject& info, const u8* record) = 0;
    /// For `ParseBasicInfo`; null stands for a video frame.
    virtual u64 BasicCounter(const u8* record) const = 0;

    bool ParseInfrared(u8* frame, u16 width, u16 height, STypedData dest, const SCameraRecordObjects& objects);
    bool ParseVideo(const u8* frame, u16 width, u16 height, STypedData dest, const SCameraRecordObjects& objects);

    const SShortRecordFamily& family_;
};

/// Registers the decoder and its pixel types.
bool RegisterShortRecordFilter(const SShortRecordFamily& family, CFilterFactory::Create_t create,
                               CFilterFactory::Destroy_t destroy, const SFrameAnswers& answers);

/// A frame, or a buffer of several images.
bool CheckShortRecord(const SShortRecordFamily& family, const void* buffer, GUID type, u16 width, u16 height,
                      u16 images, u32 size, SFrameFault* fault);
bool GetShortRecordForm(const SShortRecordFamily& family, GUID type, SFrameForm& form);
void GetShortRecordEvidence(const SShortRecordFamily& family, const void* frame, GUID type, u16 width, u16 height,
                            SFrameEvidence& evidence);
void DescribeShortRecord(const SShortRecordFamily& family, const void* frame, GUID type, u16 width, u16 height,
                         TArray<SFrameField>& fields);

/// The same for the decoder `Filter` of one family.
template <class Filter, const SShortRecordFamily& kFamily>
bool RegisterShortRecordFilter() {
    using Functions = TCreateAndDestroy<Filter, IFilter>;
    return RegisterShortRecordFilter(
        kFamily, Functions::Create, Functions::Destroy,
        {.check =
             [](const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
                 return CheckShortRecord(kFamily, frame, type, width, height, 1, frameSize, fault);
             },
         .checkBuffer =
             [](const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
                 return CheckShortRecord(kFamily, buffer, type, width, height, images, size, fault);
             },
         .form = [](GUID type, SFrameForm& form) { return GetShortRecordForm(kFamily, type, form); },
         .evidence =
             [](const void* frame, GUID type, u16 width, u16 height, u32, SFrameEvidence& evidence) {
                 GetShortRecordEvidence(kFamily, frame, type, width, height, evidence);
             },
         .describe =
             [](const void* frame, GUID type, u16 width, u16 height, u32, TArray<SFrameField>& fields) {
                 DescribeShortRecord(kFamily, frame, type, width, height, fields);
             }});
}

}  // namespace ovix::reduce
