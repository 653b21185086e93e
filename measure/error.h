#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// What went wrong, by a number that keeps its meaning from version to version. The hundreds are the kinds on which a
/// program decides; the names are for its code.
enum class EError : u16 {
    // The caller asked for what cannot be.
    WrongArgument = 101,
    UnitNotOffered = 102,
    NoSuchFrame = 103,
    NotNumbered = 104,  ///< frames of a pipe come one after the other

    // The file, whatever is in it.
    FileMissing = 201,
    FileUnreadable = 202,
    FileUnwritable = 203,
    FileExists = 204,
    FileIsInput = 205,  ///< an output would replace what is read
    FileChanged = 206,  ///< became shorter while it was read
    UnknownFormat = 207,

    // A source as a whole.
    NoFrames = 301,
    BlocksBroken = 302,  ///< the chain of blocks cannot be followed to the frames
    MetadataDamaged = 303,
    NoDecoder = 304,
    WrongGeometry = 305,

    // One frame.
    FrameCut = 401,
    FrameRefused = 402,   ///< its family's check or decoder does not take it
    PixelsDamaged = 403,  ///< compressed pixels that do not decode
    PresetOutOfRange = 404,
    SumDiffers = 405,  ///< of its bytes, against a side file of sums

    // Calibration and correction.
    NoCalibration = 501,
    CorrectionUnusable = 502,
    FitUndetermined = 503,

    // The system.
    HelperMissing = 601,
    SystemFailed = 602,
    Interrupted = 603,
};

/// All that is known of a failure. What does not apply stays empty.
struct SErrorFacts {
    EError id = EError::SystemFailed;
    std::string file = {};           ///< as the caller named it
    std::optional<u64> frame = {};   ///< number in its source, from 0
    std::string block = {};          ///< name of a block of a recording
    std::optional<u64> offset = {};  ///< byte in the frame where there is one, else in the file
    std::string problem = {};        ///< what is the matter, where expected and found do not say it
    std::string expected = {};
    std::string found = {};
    std::string advice = {};  ///< what to do, in words that know no program
    int systemError = 0;      ///< errno of a system call that failed
};

/// The one exception of the measuring layer. Texts are UTF-8; those from files may hold any character.
class OVIX_MEASURE_API CError : public std::runtime_error {
  public:
    explicit CError(SErrorFacts facts);
    CError(const CError&) noexcept;
    ~CError() override;

    /// `what()` is one line of all facts; it may hold control characters where a text from a file does.
    EError Id() const { return facts_->id; }
    const SErrorFacts& Facts() const { return *facts_; }
    /// The same failure, of this frame of this file; what the thrower knew already stays.
    CError Of(const std::string& file, std::optional<u64> frame) const;

  private:
    std::shared_ptr<const SErrorFacts> facts_;
};

}  // namespace ovix::measure
