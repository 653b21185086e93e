#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// What a frame of the Lapwing and Wren cameras says of itself. Lapwing counts presets from 1, Wren from 0.
struct SDunlinFrame {
    u32 flags = 0;      ///< bit 0 basic data, bit 1 lock-in data present
    u64 timeStamp = 0;  ///< in microseconds since the start of 1601
    u64 frameCounter = 0;
    u16 numPresets = 0;
    u16 videoPresetLow = 0;
    u16 videoPresetHigh = 0;
    u16 activePreset = 0;
    float detectorTemp = 0;    ///< in kelvin
    float sensorTemp[4] = {};  ///< in kelvin; Lapwing has the first two
    float masterClock = 0;     ///< Lapwing in MHz, Wren as its trailer has it
    i32 integrationTime = 0;   ///< in microseconds, cut to whole ones
    float frameRate = 0;       ///< in Hz
    u8 filterPosition = 0;
    u8 externalTrigger = 0;
    u8 dataDisable = 0;
    u8 pageIndex = 0;
    u8 lensChange = 0;
    u8 inputSignalGrabbed = 0;  ///< of Wren alone
    u8 triggerInput = 0;        ///< not 0: it fired
    u16 lockinWord = 0;
    u32 lockinPeriod = 0;
    u32 lockinPhase = 0;
    u8 lockinMin = 0;
    u8 lockinMax = 0;
    u8 signalNumber = 0;
    u16 lockinMean[4] = {};
    u8 timeFlags = 0;  ///< bit 0 the time is that of the time code below, bit 2 the year does not count
    u16 dayOfYear = 0;
    u8 hours = 0, minutes = 0, seconds = 0;
    u32 microseconds = 0;  ///< of the second
    u8 year = 0;           ///< since 2000
};

/// The last frame of one preset as its camera told it. Not stored.
class OVIX_REDUCE_API CDunlinFrameInfoReduceObject : public TReduceObject<CDunlinFrameInfoReduceObject>,
                                                     public SDunlinFrame {
  public:
    static constexpr GUID typeID = "{03873FE5-59D8-4BFC-A759-85BBB1B78A48}"_guid;
    static constexpr const wchar_t* kName = L"DunlinFrameInfo";

    CDunlinFrameInfoReduceObject();
};

}  // namespace ovix::reduce
