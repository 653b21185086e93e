#include "core/rcal_file.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/file.h"
#include "core/sealed_record.h"

namespace ovix {

namespace {

constexpr SSealedKind kKind{"OVIXRCAL", 0x10000};

u32 CrcOf(const TArray<double>& values) {
    return ovix::CrcOf({reinterpret_cast<const u8*>(values.data()), values.size() * sizeof(double)});
}

template <class T>
bool Hand(bool there, T& out, const T& value) {
    if (there) out = value;
    return there;
}

}  // namespace

/// What a calibration must be like, whether it is set or loaded, and how it is stored.
struct CRCalFile::SRules {
    static bool IsBand(double low, double high) { return low > 0 && low < high && std::isfinite(high); }

    static bool IsPolynomial(i32 order, u32 count) {
        return order < 0 ? order >= -2 && count == 2 : i64{order} + 1 == i64{count};
    }
    static bool IsTempPolynomial(i32 order, u32 count) {
        return order == 0 ? count == 0 : IsPolynomial(order, count) && order > 0;
    }
    static bool IsLookup(const TArray<double>& radiances, const TArray<double>& temperatures) {
        const auto notAscending = [](double a, double b) { return !(a < b); };
        return radiances.size() == temperatures.size() &&
               std::adjacent_find(radiances.begin(), radiances.end(), notAscending) == radiances.end();
    }
    static bool IsPixelBackground(u32 width, u32 height, u32 count) { return count && u64{width} * height == count; }
    static bool IsWhole(const SPreset& preset) {
        const u32 type = preset.backgroundType;
        return (preset.coefficients.size() == 0 || IsPolynomial(preset.order, preset.coefficients.size())) &&
               preset.tempCoefficients.size() != 1 && IsLookup(preset.radiances, preset.temperatures) &&
               (type == NoBackground || type == BackgroundValue || type == BackgroundFile) &&
               std::all_of(preset.pixelBackgrounds.begin(), preset.pixelBackgrounds.end(), [](const auto& image) {
                   return IsPixelBackground(image.width, image.height, image.values.size());
               });
    }

    // The stored form, stated once for writing and reading.
    template <class Archive, class Image>
    static bool ImageFields(Archive& archive, Image& image) {
        return archive.Field(image.width) && archive.Field(image.height) && archive.Field(image.values);
    }
    template <class Archive, class Preset>
    static bool PresetFields(Archive& archive, Preset& preset) {
        u32 images = preset.pixelBackgrounds.size();
        bool done = archive.Field(preset.order) && archive.Field(preset.coefficients) &&
                    archive.Field(preset.tempCoefficients) && archive.Field(preset.radiances) &&
                    archive.Field(preset.temperatures) && archive.Field(preset.backgroundType) &&
                    archive.Field(preset.background) && archive.Field(images);
        // Reading, the array grows as images come, never by the count alone.
        for (u32 i = 0; done && i < images; ++i) done = ImageFields(archive, preset.pixelBackgrounds[i]);
        return done;
    }
    template <class Archive, class File>
    static bool FileFields(Archive& archive, File& file) {
        return archive.Field(file.lowWave_) && archive.Field(file.highWave_) &&
               std::all_of(std::begin(file.presets_), std::end(file.presets_),
                           [&](auto& preset) { return PresetFields(archive, preset); });
    }
};

const CRCalFile::SPixelBackground* CRCalFile::SPreset::Find(u32 width, u32 height) const {
    const auto found = std::find_if(pixelBackgrounds.begin(), pixelBackgrounds.end(),
                                    [&](const auto& image) { return image.width == width && image.height == height; });
    return found == pixelBackgrounds.end() ? nullptr : found;
}

void CRCalFile::DefaultCal() { *this = CRCalFile(); }

bool CRCalFile::Load(TSharedPtr<IFile> file, u32) {
    CSealedReader reader;
    CRCalFile loaded;
    if (!file || !reader.ReadFrom(*file, kKind) || !SRules::FileFields(reader, loaded)) return false;
    const bool hasBand = loaded.lowWave_ != 0 || loaded.highWave_ != 0;
    if (hasBand && !SRules::IsBand(loaded.lowWave_, loaded.highWave_)) return false;
    for (SPreset& preset : loaded.presets_) {
        if (!SRules::IsWhole(preset)) return false;
        for (SPixelBackground& image : preset.pixelBackgrounds) image.crc = CrcOf(image.values);
    }
    *this = std::move(loaded);
    return true;
}

bool CRCalFile::Save(TSharedPtr<IFile> file, u32) const {
    CSealedWriter writer(kKind);
    return file && SRules::FileFields(writer, *this) && writer.WriteTo(*file);
}

bool CRCalFile::HasCoefficients() const {
    return std::any_of(std::begin(presets_), std::end(presets_),
                       [](const SPreset& preset) { return preset.coefficients.size() != 0; });
}

bool CRCalFile::GetPolyOrder(int preset, int& order) const {
    return IsPreset(preset) && Hand(presets_[preset].coefficients.size() != 0, order, presets_[preset].order);
}

bool CRCalFile::GetCoefficients(int preset, TArray<double>& coefficients) const {
    if (!IsPreset(preset)) return false;
    const TArray<double>& stored = presets_[preset].coefficients;
    return Hand(stored.size() != 0, coefficients, stored);
}

bool CRCalFile::GetTempPolyOrder(int preset, int& order) const {
    if (!IsPreset(preset)) return false;
    const u32 count = presets_[preset].tempCoefficients.size();
    order = count ? static_cast<int>(count - 1) : 0;
    return true;
}

bool CRCalFile::GetTempCoefficients(int preset, TArray<double>& coefficients) const {
    if (!IsPreset(preset)) return false;
    const TArray<double>& stored = presets_[preset].tempCoefficients;
    return Hand(stored.size() != 0, coefficients, stored);
}

bool CRCalFile::GetLookup(int preset, TArray<double>& radiances, TArray<double>& temperatures) const {
    if (!IsPreset(preset)) return false;
    radiances = presets_[preset].radiances;
    temperatures = presets_[preset].temperatures;
    return true;
}

bool CRCalFile::GetBackgroundType(int preset, BACKGROUND_TYPE& type) const {
    return IsPreset(preset) && Hand(true, type, static_cast<BACKGROUND_TYPE>(presets_[preset].backgroundType));
}

bool CRCalFile::GetBackgroundValue(int preset, double& value) const {
    return IsPreset(preset) &&
           Hand(presets_[preset].backgroundType == BackgroundValue, value, presets_[preset].background);
}

bool CRCalFile::GetBackgroundFileCRC(int preset, u32 width, u32 height, u32& crc) const {
    const SPixelBackground* image = IsPreset(preset) ? presets_[preset].Find(width, height) : nullptr;
    return image && Hand(presets_[preset].backgroundType == BackgroundFile, crc, image->crc);
}

bool CRCalFile::GetBackgroundFile(int preset, u32 width, u32 height, TArray<double>& background) const {
    const SPixelBackground* image = IsPreset(preset) ? presets_[preset].Find(width, height) : nullptr;
    return image && Hand(presets_[preset].backgroundType == BackgroundFile, background, image->values);
}

bool CRCalFile::GetBandpass(double& low, double& high) const {
    return Hand(highWave_ > 0, low, lowWave_) && Hand(true, high, highWave_);
}

bool CRCalFile::SetPolynomial(int preset, int order, const TArray<double>& coefficients) {
    if (!IsPreset(preset) || !SRules::IsPolynomial(order, coefficients.size())) return false;
    presets_[preset].coefficients = coefficients;
    presets_[preset].order = order;
    return true;
}

bool CRCalFile::SetTempPolynomial(int preset, int order, const TArray<double>& coefficients) {
    return IsPreset(preset) &&
           Hand(SRules::IsTempPolynomial(order, coefficients.size()), presets_[preset].tempCoefficients, coefficients);
}

bool CRCalFile::SetLookup(int preset, const TArray<double>& radiances, const TArray<double>& temperatures) {
    if (!IsPreset(preset) || !SRules::IsLookup(radiances, temperatures)) return false;
    presets_[preset].radiances = radiances;
    presets_[preset].temperatures = temperatures;
    return true;
}

bool CRCalFile::SetNoBackground(int preset) {
    return IsPreset(preset) && Hand(true, presets_[preset].backgroundType, u32{NoBackground});
}

bool CRCalFile::SetBackgroundValue(int preset, double value) {
    if (!IsPreset(preset)) return false;
    presets_[preset].backgroundType = BackgroundValue;
    presets_[preset].background = value;
    return true;
}

bool CRCalFile::SetBackgroundFile(int preset, u32 width, u32 height, const TArray<double>& background) {
    if (!IsPreset(preset) || !SRules::IsPixelBackground(width, height, background.size())) return false;
    SPreset& stored = presets_[preset];
    const SPixelBackground* present = stored.Find(width, height);
    const u32 place =
        present ? static_cast<u32>(present - stored.pixelBackgrounds.data()) : stored.pixelBackgrounds.size();
    stored.pixelBackgrounds[place] = {width, height, background, CrcOf(background)};
    stored.backgroundType = BackgroundFile;
    return true;
}

bool CRCalFile::SetBandpass(double low, double high) {
    if (!SRules::IsBand(low, high)) return false;
    lowWave_ = low;
    highWave_ = high;
    return true;
}

}  // namespace ovix
