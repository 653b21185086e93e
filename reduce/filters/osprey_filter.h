#pragma once

#include "reduce/filters/header_line_filter.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

/// The raw header of the frame at hand of an Osprey camera. Per preset and per frame, and never persisted.
class OVIX_REDUCE_API COspreyFrameInfoReduceObject : public TReduceObject<COspreyFrameInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{CEE1192C-7D8C-4633-A143-F304E294AA57}"_guid;
    static constexpr const wchar_t* kName = L"OspreyFrameInfo";
    static constexpr u16 kWords = 96;

    u16 header[kWords] = {};  ///< the first bytes of the frame as they stand there, beyond a narrow line too
    u16 headerWords = 0;      ///< how many of the words are header

    COspreyFrameInfoReduceObject();

    /// Takes the count of words for one of bytes: a duplicate has the first half of the header and zeros behind it.
    TSharedPtr<IReduceObject> Duplicate() const override;
};

/// The decoder of the Osprey camera family. Reached through the factory as "Osprey"; its own name is that of the
/// camera, "MV7100".
///
/// Beside the frame info it renews the instrument's temperatures in the `CTernFactoryCalReduceObject` of the frame's
/// preset, and keeps the raw header in a `COspreyFrameInfoReduceObject`. Frame counters start again behind 65535.
class OVIX_REDUCE_API COspreyFilter final : public CHeaderLineFilter {
  public:
    /// A header in its decoded form.
    struct SHeader {
        u8 preset = 0;            ///< 0 to 3
        u32 integrationTime = 0;  ///< the raw count
        u32 frameCounter = 0;
        u8 saturationFlag = 0;  ///< 0x80 or 0
        u32 saturation = 0;
        u32 fpaControlWord = 0;
        u32 fpaWindowWord = 0;
        u32 resolution = 0;
        i32 day = 0;  ///< of the year
        i32 hours = 0;
        i32 minutes = 0;
        i32 seconds = 0;
        i32 milliseconds = 0;
        i32 microseconds = 0;
        float airGapTemp = 0;      ///< degrees Celsius
        float dewarTemp = 0;       ///< degrees Celsius
        float frontPanelTemp = 0;  ///< degrees Celsius
    };

    COspreyFilter();
    static bool Register();

    // A header line of `width` words, of which up to 49 are touched in a line below 96 words, and 94 in others: a line
    // that is shorter must have as many bytes behind it. True.

    static bool ParseHeader(SHeader& header, void* line, u16 width);
    /// Writes into an existing line and keeps what the header does not tell, the high bytes of most words included.
    /// What it writes reads back the same, temperatures in steps of 0.23 degrees, but for two fields: the preset goes
    /// out unshifted and comes in from bits 4 and 5 of its byte, so that 16 reads back as 1; and a day from 1234 on
    /// reads back as one less by 1233, all others beyond 999 as 999.
    static bool EncodeHeader(SHeader& header, void* line, u16 width);

    const wchar_t* GetName() const override;
    /// Takes destinations of `UInt16`, or of no pixels.
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

  protected:
    u8 PresetOf(const u8* header) const override;
    u64 CounterOf(const u8* header) const override;
    void SetTime(CDateTime& time, const u8* header, u16 width) const override;
    bool FillObjects(const u8* header, GUID type, u16 width, CReduceObjectArray& objects, u8& preset) override;
};

}  // namespace ovix::reduce
