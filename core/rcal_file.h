#pragma once

#include "core/array.h"
#include "core/file.h"

namespace ovix {

enum BACKGROUND_TYPE : u32 {
    NoBackground = 0,
    BackgroundValue = 2,  ///< one value for all pixels
    BackgroundFile = 3,   ///< one value per pixel
};

/// A user's calibration: for each of eight presets a polynomial from counts to radiance, an optional background, and a
/// polynomial or a table from radiance to temperature; for all of them the band.
///
/// A value: copies are independent. `preset` is 0 to 7. A getter is false, with its output as it was, where the
/// calibration has nothing of the kind. The stored form is described in `docs/formats/rcal_file.md`.
class OVIX_API CRCalFile {
  public:
    static constexpr int PresetCount = 8;

    /// Back to an empty calibration.
    void DefaultCal();
    /// At the file's position. A damaged record fails and leaves the calibration as it was; no size in it is believed
    /// before it is held against what remains in the file. There are no flags.
    bool Load(TSharedPtr<IFile> file, u32 flags);
    bool Save(TSharedPtr<IFile> file, u32 flags) const;

    /// Whether any polynomial from counts to radiance exists.
    bool HasCoefficients() const;
    bool GetPolyOrder(int preset, int& order) const;
    bool GetCoefficients(int preset, TArray<double>& coefficients) const;
    /// 0 for none.
    bool GetTempPolyOrder(int preset, int& order) const;
    bool GetTempCoefficients(int preset, TArray<double>& coefficients) const;
    /// Ascending radiances with their temperatures in degrees Celsius; empty for none.
    bool GetLookup(int preset, TArray<double>& radiances, TArray<double>& temperatures) const;
    bool GetBackgroundType(int preset, BACKGROUND_TYPE& type) const;
    bool GetBackgroundValue(int preset, double& value) const;
    /// The checksum of the per-pixel background for frames of that size.
    bool GetBackgroundFileCRC(int preset, u32 width, u32 height, u32& crc) const;
    bool GetBackgroundFile(int preset, u32 width, u32 height, TArray<double>& background) const;
    /// The band in micrometres.
    bool GetBandpass(double& low, double& high) const;

    // Each setter is false for a preset beyond 7 or arguments that make no calibration, which changes nothing.

    /// `order` is the order code of the radiance kernels: a polynomial of order n has n + 1 coefficients, and so have
    /// the two linear forms with a background, -1 and -2, two.
    bool SetPolynomial(int preset, int order, const TArray<double>& coefficients);
    /// From order 1 upward; order 0 without coefficients for none.
    bool SetTempPolynomial(int preset, int order, const TArray<double>& coefficients);
    /// Pairs in strictly ascending order of the radiance; two empty arrays for none.
    bool SetLookup(int preset, const TArray<double>& radiances, const TArray<double>& temperatures);
    bool SetNoBackground(int preset);
    bool SetBackgroundValue(int preset, double value);
    /// `width` times `height` values for frames of that size, beside those for frames of other sizes.
    bool SetBackgroundFile(int preset, u32 width, u32 height, const TArray<double>& background);
    bool SetBandpass(double low, double high);

  private:
    /// The background of each pixel, for frames of one size.
    struct SPixelBackground {
        u32 width = 0;
        u32 height = 0;
        TArray<double> values;
        u32 crc = 0;  ///< of the values as they are stored
    };
    struct SPreset {
        i32 order = 0;  ///< means something only with coefficients
        TArray<double> coefficients;
        TArray<double> tempCoefficients;
        TArray<double> radiances;
        TArray<double> temperatures;
        u32 backgroundType = NoBackground;
        double background = 0;
        TArray<SPixelBackground> pixelBackgrounds;

        const SPixelBackground* Find(u32 width, u32 height) const;
    };
    struct SRules;

    static bool IsPreset(int preset) { return preset >= 0 && preset < PresetCount; }

    double lowWave_ = 0;  ///< both are 0 for none
    double highWave_ = 0;
    SPreset presets_[PresetCount];
};

}  // namespace ovix
