#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

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
    /// temperatures; the noise depends on the frame's number.
    virtual std::vector<u8> Frame(u64 number, std::span<const float> kelvin) = 0;
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

}  // namespace ovix::app
