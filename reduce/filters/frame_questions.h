#pragma once

#include "core/array.h"
#include "core/guid.h"
#include "core/string.h"
#include "core/typed_data.h"
#include "reduce/api.h"

/// What can be asked about the frames of a family of cameras without parsing them: which form its pixels have, whether
/// given bytes may be parsed at all, what stands where in them, and what they say by themselves. A family hands its
/// answers over when it registers its decoder, a plug-in as well as a built-in one.
///
/// Arguments are those of `IFilter`; `filter` is the name under which the decoder is registered. Nothing here changes a
/// frame or keeps a state, so any number of threads may ask.
namespace ovix::reduce {

/// What is wrong with a frame: where, what had to stand there, what was found.
struct SFrameFault {
    u64 offset = 0;
    CString expected;
    CString found;
};

/// Whether a buffer of `frameSize` bytes holds all that the operations of the filter will read, offsets inside the
/// frame included. After true, no operation of the filter on these arguments reads or writes out of bounds, whatever
/// the bytes are, given a destination of width times height pixels.
///
/// False for an unknown filter, a family that registered no check, a type that it does not take, and a frame that
/// would not do; `fault` then says why.
OVIX_REDUCE_API bool CheckFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height,
                                u32 frameSize, SFrameFault* fault = nullptr);

/// The same for a buffer as a camera delivers it, with `frameCount` images (0 counts as 1), ahead of `CheckForTrigger`
/// and `StoreFrame`. After true these read nothing outside of the buffer, and what `StoreFrame` cuts out of it for any
/// of the images, given a destination of `bufferSize` bytes, passes `CheckFrame`. `StoreFrame` may still decline an
/// image that the camera marked as not to be kept.
OVIX_REDUCE_API bool CheckFrames(const wchar_t* filter, const void* buffer, GUID type, u16 width, u16 height,
                                 u16 frameCount, u32 bufferSize, SFrameFault* fault = nullptr);

/// What `ParseFrame` makes of the pixels of one pixel type.
struct SFrameForm {
    EDataType element = NoPixels;  ///< of the destination: `UInt16`, `Opaque` for three 8-bit channels, or `NoPixels`
    u32 bytesPerPixel = 0;         ///< of the destination
    EUnit unit = Counts;           ///< base unit of the pixels
    bool compressed = false;       ///< a codec unpacks them; damaged frames may keep it busy, or have it abort
    bool ownLength = false;        ///< frames of one size differ in length, and each tells its own
    GUID wholeType{};              ///< of frames that begin with the header for which the type stands; else the type

    /// False for a type that stands for a header alone.
    bool HasPixels() const { return element != NoPixels; }

    static SFrameForm OfCounts(GUID type) { return {UInt16, 2, Counts, false, false, type}; }
    static SFrameForm OfColours(GUID type) { return {Opaque, 3, RGB24, false, false, type}; }
    static SFrameForm OfHeader(GUID wholeType) { return {NoPixels, 0, Counts, false, false, wholeType}; }
};

/// False for an unknown filter, a family that registered no answer, and a type that it does not take.
OVIX_REDUCE_API bool GetFrameForm(const wchar_t* filter, GUID type, SFrameForm& form);

/// The letters or the number by which a family marks its frames.
enum class EFrameMark : u8 {
    NotDefined,  ///< nothing in a frame tells it from other bytes
    Absent,      ///< the family has a mark, and this frame, which can be parsed all the same, lacks it
    Present,
};

/// How much of a time a frame holds.
enum class EFrameTime : u8 {
    None,         ///< decoders give the time of parsing
    WithoutYear,  ///< day of the year and time of day; decoders take the year from elsewhere
    Full,
};

/// What one frame says by itself. It follows from the type and the form of the frame, not from its values: a clock that
/// nobody set counts as a time. What is not here, `ParseFrame` and the light operations make up: from the clock of the
/// host, a count of their own, or the frame before.
struct SFrameEvidence {
    EFrameMark mark = EFrameMark::NotDefined;
    EFrameTime time = EFrameTime::None;
    bool frameCounter = false;
    bool preset = false;
    // Of the picture, as the frame names them; 0 when it says nothing. They need not agree with the caller's.
    u16 width = 0;
    u16 height = 0;
};

/// For a frame that `CheckFrame` passed with the same arguments, and ahead of the operations of the families that write
/// to their frames. Reads a few words. False as `GetFrameForm`.
OVIX_REDUCE_API bool GetFrameEvidence(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height,
                                      u32 frameSize, SFrameEvidence& evidence);

/// One field of a frame's header or trailer: the bytes that it touches, its name, and its decoded value with its unit.
/// Fields stand in any order and may overlap, as two readings of the same bytes do.
struct SFrameField {
    u64 offset = 0;  ///< in bytes, from the frame's start
    u32 size = 0;    ///< in bytes
    CString name;
    CString value;
};

/// What stands where in a frame beside its pixels: empties `fields`, then adds the fields that the filter's family
/// knows of. Frames without a header or trailer have none.
///
/// False when `CheckFrame` refuses the frame, and for a family that registered no description.
OVIX_REDUCE_API bool DescribeFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height,
                                   u32 frameSize, TArray<SFrameField>& fields);

/// The answers of one family, each for the function of nearly the same name. Null stands for a question that the family
/// leaves open.
struct SFrameAnswers {
    /// `fault` may be null.
    bool (*check)(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) = nullptr;
    /// Without it a buffer holds one image, and `check` decides.
    bool (*checkBuffer)(const void* buffer, GUID type, u16 width, u16 height, u16 frameCount, u32 bufferSize,
                        SFrameFault* fault) = nullptr;
    bool (*form)(GUID type, SFrameForm& form) = nullptr;
    /// Given a frame that passed the check, of a type that `form` takes, and evidence of nothing.
    void (*evidence)(const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                     SFrameEvidence& evidence) = nullptr;
    /// Adds to `fields`, given a frame that passed the check. A record in the other byte order is read in a copy.
    void (*describe)(const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                     TArray<SFrameField>& fields) = nullptr;
};

}  // namespace ovix::reduce
