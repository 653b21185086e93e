#pragma once

#include "core/file_system.h"
#include "core/rcal_file.h"
#include "core/shared_ptr.h"
#include "reduce/objects/reduce_object.h"

/// What a source knows of its correction and of its calibration by the user.
namespace ovix::reduce {

/// The tables of a correction, as bits. They go to files.
enum ECorrectionTables : u8 {
    CorrectionGain = 1,
    CorrectionOffset = 2,
    CorrectionBadPixels = 4,  ///< mask and map, which come and go together
};

/// The tables of the non-uniformity correction of one preset (its number is `preset`), each of width times height
/// elements in rows from the top, or null.
///
/// Copies share the tables, and the last one frees them; `Duplicate` makes tables of its own. The object has no lock:
/// while a kernel reads the tables nothing else but reading may happen, and `Save` turns them for a while.
class OVIX_REDUCE_API CCorrectionReduceObject : public TReduceObject<CCorrectionReduceObject> {
  public:
    static constexpr GUID typeID = CorrectionTypeID;
    static constexpr const wchar_t* kName = L"Correction";

    TSharedTable<float> gain;  ///< identity 1
    TSharedTable<i16> offset;  ///< in counts; identity 0
    TSharedTable<u8> mask;     ///< not 0 marks a bad pixel; the kernels do not read it
    TSharedTable<u32> map;     ///< the index of the pixel whose data stand in for this one; identity i at place i
    u32 width = 0;
    u32 height = 0;
    u8 present = 0;                 ///< of `ECorrectionTables`
    bool flippedTopBottom = false;  ///< the tables are held upside down compared with their file
    bool flippedLeftRight = false;  ///< the tables are held mirrored compared with their file

    CCorrectionReduceObject();

    TSharedPtr<IReduceObject> Duplicate() const override;

    /// Makes those of the asked tables that do not exist yet, as identities. Another width, height or preset than the
    /// object's (presets are compared as bytes) drops everything first, through `Default`; an empty size changes
    /// nothing. Leaves `valid` to the caller who fills the tables. Failure raises the allocator's exception.
    void Create(u32 newWidth, u32 newHeight, i32 newPreset, u8 tables);
    /// Makes identities of those of the asked tables that exist.
    void Init(u8 tables);

    /// The record in an info file. Its sizes are held against what remains in the file before memory is taken, and
    /// map entries beyond the table become the pixel itself.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    /// Tables are stored in the orientation of their file. A write that fails behind the header leaves the tables so
    /// turned, with the flags still set.
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

    /// The three files of one stem: ".mvg" gains, ".mvo" offsets, ".mvb" bad pixels. One that is missing is no error,
    /// and if size and preset agree its table keeps what it held; false, with the object unchanged, when all are
    /// missing, one is of another kind than its name says, or sizes differ. Makes the object valid.
    bool Load(IFileSystem* fileSystem, const CString& path);
    /// Writes every table that is present, all of them under the name ".mvg": with more than one, the last written
    /// stays.
    bool Save(IFileSystem* fileSystem, const CString& path);

    /// Turns the tables by the difference to the present orientation, and remembers the new one.
    void SetFlipped(bool leftRight, bool topBottom);
    /// Turns places and contents of the tables; the two flags stay.
    void Flip(bool leftRight, bool topBottom);

  private:
    u64 PixelCount() const { return u64{width} * height; }
    u8 ExistingTables() const;
    void FillIdentity(u8 tables);
    void FlipMapEntries(bool leftRight, bool topBottom);
    void DropForeignMapEntries();
    bool ReadTables(IFile& file, u8 tables);
    bool WriteTables(IFile& file) const;
};

/// Which of the corrections are on. One object serves all presets of a source; it is not persisted.
class OVIX_REDUCE_API CCorrectionCfgReduceObject : public TReduceObject<CCorrectionCfgReduceObject> {
  public:
    static constexpr GUID typeID = "{191F2684-72A2-407C-8DEC-39DD57B9ABE0}"_guid;
    static constexpr const wchar_t* kName = L"CorrectionCfg";

    bool applyNUC = true;        ///< use the tables of gain and offset
    bool applyBadPixels = true;  ///< use the replacement map
    bool clip = true;            ///< clamp results to the two limits
    double minimum = 0.0;
    double maximum = 16383.0;

    CCorrectionCfgReduceObject();
};

/// A calibration that the user made himself, for all presets of a source: counts to radiance, radiance to temperature,
/// backgrounds and the band. `CUserConverter` applies it.
///
/// Whoever fills `cal` sets `valid`. The stored record is that of `CRCalFile`, whatever the block's version says.
class OVIX_REDUCE_API CRCalReduceObject : public TReduceObject<CRCalReduceObject> {
  public:
    static constexpr GUID typeID = UserCalibrationTypeID;
    static constexpr const wchar_t* kName = L"RCal";

    CRCalFile cal;

    CRCalReduceObject();

    /// A damaged record leaves the calibration as it was.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
