#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace frame_types = reduce::frame_types;

/// What the frames of a stream have in common.
struct SSynthOptions {
    GUID type;              ///< pixel type; one that the family makes
    std::string form = {};  ///< one of the family's forms of that type; empty for the first of them
    u16 width = 640;
    u16 height = 480;
    u32 seed = 1;  ///< of noise and fixed pattern; the same seed gives the same bytes
    bool noise = true;
    bool fixedPattern = true;  ///< gain and offset of each pixel differ
    bool badPixels = true;     ///< a few pixels are stuck
};

/// One form of a pixel type: the options of a stream name both.
struct SSynthForm {
    GUID type;
    std::string form;
    std::string description;
};

/// A camera that looks at a scene: makes the raw frames of one stream.
class ISynthesizer {
  public:
    virtual ~ISynthesizer();
    /// The bytes of one frame; those of compressed forms differ in number. `kelvin` holds width times height
    /// temperatures; the noise depends on the frame's number. Frames may be made on several threads at a time.
    virtual std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const = 0;
    /// The tables that undo the fixed pattern and stand in for the bad pixels, for preset 0; empty for a stream without
    /// either, and for video.
    virtual TSharedPtr<reduce::CCorrectionReduceObject> Correction() const = 0;
};

/// A family of cameras. Temperatures outside what it can measure end at its limits.
struct SSynthFamily {
    const wchar_t* filter;  ///< the registered name of its decoder
    std::vector<SSynthForm> (*forms)();
    /// Throws `CAppError` (wrong usage) for a type or form that the family does not make.
    std::unique_ptr<ISynthesizer> (*make)(const SSynthOptions& options);
};

/// The options with the form that they mean: one of `forms`, the first of the type when none is named. Throws wrong
/// usage, with the forms that there are, for another one, and for a picture without pixels.
SSynthOptions WithForm(SSynthOptions options, std::span<const SSynthForm> forms);

/// `SSynthFamily::make` of a family whose synthesiser takes such options.
template <class Synthesizer, std::vector<SSynthForm> (*kForms)()>
std::unique_ptr<ISynthesizer> MakeSynth(const SSynthOptions& options) {
    return std::make_unique<Synthesizer>(WithForm(options, kForms()));
}

/// All families that can be made.
std::span<const SSynthFamily> SynthFamilies();
/// The family whose forms include the type, or null.
const SSynthFamily* FindSynthFamily(const GUID& type);
/// The family whose decoder has the name, case aside. Throws wrong usage, with the names that there are, for another.
const SSynthFamily& SynthFamilyOf(const std::string& option, const std::string& decoder);

// The families, each in its own file.

/// Its four uncompressed types come as "digital" (a header ahead of the container), "plain", "digital-swapped" and
/// "plain-swapped" (pixels and record in the other byte order), its compressed type as "jpeg-ls", its video types as
/// "video".
SSynthFamily K410SynthFamily();
// The two older relatives of the K410. Their infrared types come as "big-endian", as the cameras send their record, and
// "little-endian", their video types as "video".
SSynthFamily MV310SynthFamily();
SSynthFamily PloverSynthFamily();
// The families with a header line; but for Osprey, counts as `CPlainResponse` tells them. "LOR-RA" and the Falcon
// family come as "header-line", "LOR-SB" as "lens", with the lens block behind the header, and "no-lens".
SSynthFamily LORRASynthFamily();
SSynthFamily LORSBSynthFamily();
SSynthFamily MVFalconSynthFamily();
/// "header-line" frames, whose header the library's own writer makes. They bring no calibration; the counts follow
/// Planck's law at 4 micrometres, where B = h c / (wavelength k) = 3597 K:
///
///     count = 500 + 3e8 / (exp(3597 / T) - 1)        T in kelvin
///
/// That is 1412 counts at 10 degrees Celsius and 15,478 at 90, with 41 and 409 counts a kelvin. Black bodies can
/// calibrate it, and a Tern factory calibration fits that has planckR 3e8, planckB 3597, planckF 1, adjustGain 1 and
/// adjustOffset 500.
SSynthFamily OspreySynthFamily();
/// Counts and a line for the trailer, which pictures of less than 48 columns have no room for.
SSynthFamily LapwingSynthFamily();
/// Counts of 14 bits, with the trailer of newer cameras ("native") or that of older ones ("older").
SSynthFamily WrenSynthFamily();

}  // namespace ovix::app
