#pragma once

#include "reduce/objects/reduce_object.h"

/// The objects of the Lapwing and Wren cameras.
namespace ovix::reduce {

/// What the application, or a file, says of a camera of the Lapwing and Wren families, once per source. The library
/// itself looks at `useCameraClock` alone; all else is kept and stored under plain labels.
class OVIX_REDUCE_API CDunlinCameraInfoReduceObject : public TReduceObject<CDunlinCameraInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{B5C2E5E6-34B3-4171-9039-2270CEFEDB14}"_guid;
    static constexpr const wchar_t* kName = L"DunlinCameraInfo";

    // Zero-terminated.
    char text0[20] = {};
    char text1[20] = {};
    char text2[20] = {};
    char text3[20] = {};
    char text4[11] = {};
    float value0 = 0, value1 = 0, value2 = 0, value3 = 0;
    u8 byte0 = 0;
    i32 number0 = 0;
    u8 byte1 = 0, byte2 = 0, byte3 = 0, byte4 = 0;
    bool useCameraClock = false;  ///< Lapwing frames take their time from the camera's time code, not its time stamp

    CDunlinCameraInfoReduceObject();

    /// Copies the texts up to their terminators only.
    TSharedPtr<IReduceObject> Duplicate() const override;
    /// The five texts and `number0` stay.
    void Default() override;
    /// The form 0x10000 ends before `useCameraClock`.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

/// The factory's data of one preset of a Lapwing or Wren camera. Decoders set the two last fields from each frame, and
/// leave `valid` alone; all else is kept and stored under plain labels.
class OVIX_REDUCE_API CDunlinFactoryCalReduceObject : public TReduceObject<CDunlinFactoryCalReduceObject> {
  public:
    static constexpr GUID typeID = "{82ECA642-C98D-4083-8965-E92E386BA005}"_guid;
    static constexpr const wchar_t* kName = L"DunlinFactoryCal";

    u32 calWord0 = 0;
    float calValue0 = 0, calValue1 = 0, calValue2 = 0, calValue3 = 0, calValue4 = 0, calValue5 = 0, calValue6 = 0;
    u32 calWord1 = 0, calWord2 = 0;
    float calValue7 = 0, calValue8 = 0;
    float detectorTemp = 0;
    float integrationTime = 0;  ///< in microseconds

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

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

/// The last frame of one preset as its camera described it. Not stored.
class OVIX_REDUCE_API CDunlinFrameInfoReduceObject : public TReduceObject<CDunlinFrameInfoReduceObject>,
                                                     public SDunlinFrame {
  public:
    static constexpr GUID typeID = "{03873FE5-59D8-4BFC-A759-85BBB1B78A48}"_guid;
    static constexpr const wchar_t* kName = L"DunlinFrameInfo";

    CDunlinFrameInfoReduceObject();
};

}  // namespace ovix::reduce
