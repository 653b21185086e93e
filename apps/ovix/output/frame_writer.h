#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/ovix/json.h"
#include "apps/ovix/output/picture_range.h"
#include "apps/ovix/units.h"

namespace ovix::app {

/// What holds for all frames that go to one output.
struct SSeries {
    u16 width = 0;
    u16 height = 0;
    /// How many frames will be added, skipped ones included. One frame makes a plain picture or table.
    u64 frames = 1;
    bool knowsFrames = false;  ///< none of them will be skipped: as many will be there
    SUnitText unit;
    std::string title;                 ///< one line for a reader: source, camera
    Json parameters = Json::object();  ///< all that the values rest on: emissivity, distance, ...
};

/// One frame. The pixels belong to the caller.
struct SPicture {
    u64 frame = 0;                           ///< its number in the source
    std::span<const float> values;           ///< width times height, in the unit of the series
    std::span<const u8> status;              ///< as many status bytes, or none
    std::string caption;                     ///< what differs from frame to frame: the time, say
    std::optional<measure::Time> time = {};  ///< when it was taken; nothing where the frame does not say it
    /// Of video: as many colours, 0xRRGGBB, which are what its picture shows.
    std::span<const u32> colours = {};
};

/// Values as whole numbers of 16 bits: value = offset + number * step. Where there is `noData`, 0 stands for a pixel
/// without data, and values begin at 1.
struct SSteps {
    double step = 1;
    double offset = 0;
    bool noData = false;
};

struct SWriteOptions {
    bool overwrite = false;
    std::string format = {};  ///< of the standard output: ".npy"; a file has that of its extension
    /// From 0, no compression, over 1, quick, to small: 12 of TIFF and PNG, 9 of Zarr and NeXus, 19 of Zstandard. The
    /// pixels are the same. On temperatures with a sensor's noise, level 2 saves 1 % and takes half as long again; 4, 6
    /// and 9 take 2 to 5 times as long as 1 and save less than that or nothing.
    int compression = 1;
    bool zstd = false;  ///< of TIFF: by Zstandard and not by Deflate
    // Of TIFF, NPY and CSV.
    bool status = true;  ///< the status bytes go to a file beside; of the standard output never
    bool mask = false;   ///< values of pixels without data are NaN
    // Of TIFF and NPY.
    std::optional<SSteps> steps = {};  ///< none for floats of 32 bits
    // Of NPY.
    bool squeeze = false;  ///< one frame has the shape (height, width)
    // Of Zarr.
    double step = 0;       ///< values are stored as whole multiples of it, in their unit; 0: as floats
    bool byTrace = false;  ///< chunks of many frames and few pixels, for who reads pixels over time
    // Of pictures.
    const SPalette* palette = &Palettes().front();
    /// The values at the ends of the palette; several frames need it said, one has its own lowest and highest.
    std::optional<std::pair<float, float>> range = {};
    /// In place of a range, of one frame: at the ends are the values at these shares of its pixels.
    std::optional<Percentiles> percentiles = {};
    std::vector<measure::CPixelSet> marks = {};  ///< regions to be drawn
    std::vector<float> isotherms = {};           ///< values along which lines are drawn
    bool markExtremes = false;                   ///< where the least and the greatest good pixel are, with their values
    int zoom = 0;        ///< pixels of the picture for one of the frame, in both directions; 0: what suits
    bool plain = false;  ///< the pixels alone, as numbers of 16 bits
};

/// What `IFrameWriter::Encode` makes of a frame. What is in it is the format's own matter.
struct SEncodedFrame {
    using Pieces = std::vector<std::vector<u8>>;
    Pieces values;
    Pieces status;
    std::vector<u16> steps;     ///< of values as whole numbers
    std::vector<float> masked;  ///< of values with pixels left out
    Json description;
};

/// Writes frames one after the other; memory does not grow with their number. A file appears in `Finish`, whole,
/// and not at all without it; but of several PNG files each appears as soon as it is appended. Failures throw
/// `CAppError`.
///
/// A frame goes in two steps, so that the first, which costs nearly all of the time, can be done on many threads.
class IFrameWriter {
  public:
    virtual ~IFrameWriter();
    /// Depends on the picture and on what the writer was made of, and on nothing else: any number of threads may do it
    /// at a time, in any order, also while another one appends.
    virtual SEncodedFrame Encode(const SPicture& picture) const = 0;
    /// The next frame of the output, with what `Encode` made of it. By one thread at a time.
    virtual void Append(const SPicture& picture, const SEncodedFrame& encoded) = 0;
    /// Both steps.
    void Add(const SPicture& picture) { Append(picture, Encode(picture)); }
    virtual void Finish() = 0;
};

/// The writer that belongs to the extension: `.png`, `.tif` or `.tiff`, `.npy`, `.csv`, `.zarr`, `.nxs`, in any case of
/// letters.
/// Another extension is wrong usage.
///
/// - NPY 1.0: little-endian 32-bit floats or 16-bit steps of shape (frames, height, width). A JSON file beside it
///   (`out.json`) holds what `DescribeSeries` says and, under "frames", a `DescribeFrame` for each.
/// - TIFF with a page of 32-bit floats or 16-bit steps for each frame, by Deflate without a predictor, so that every
///   reader opens it. `ImageDescription` is JSON in ASCII: that of a page says what `DescribeFrame` does, that of the
///   first also what `DescribeSeries` does, with the "shape" and "axes" of all pages where their number is known. Each
///   page has its name, its time stamp, and the tags by which GDAL knows unit, scale, offset and no data. BigTIFF when
///   more than 2 GiB of pixels are to come.
/// - CSV: a table for spreadsheets and scripts, one line for each row of each frame: the number of the frame, the row,
///   then the pixels from left to right. The head names them with their unit: `frame,row,x0 [°C],x1 [°C]`. Numbers are
///   the shortest texts that read back to the same value. JSON beside it (`out.csv.json`) as of NPY.
/// - PNG: a picture for the eye: palette, colour bar with the unit, title and caption, what is marked, and a legend for
///   what the palette does not show, where it occurs; of video its colours. `Description` is JSON in ASCII: what
///   `DescribeSeries` and `DescribeFrame` say, the range and the palette. A plain one holds the pixels alone, grey in
///   16 bits, as `CPlainScale` says; its description holds the scale.
///
/// - Zarr, a folder of format 2: arrays of values and status by the CF conventions, packed by Blosc with shuffled bits,
///   and the coordinates time and frame. It is written to `out.zarr.part`, which at any time can be read as far as it
///   is written, also after the process was killed.
/// - NeXus, HDF5 1.10 and later: the same in /entry/data (NXdata), with its origin in /entry/process; likewise in
///   `out.nxs.part`, for which a reader asks HDF5 as one of many beside a writer (SWMR).
///
/// Several frames go to one file, but for PNG, where each has its own: `out.png` becomes `out-000012.png` for frame 12.
/// The status bytes of TIFF, NPY and CSV go to a file beside: `out.status.npy`. For "-" there is nothing beside.
std::unique_ptr<IFrameWriter> MakeFrameWriter(const std::filesystem::path& target, const SSeries& series,
                                              const SWriteOptions& options);

/// What is written once: schema, title, quantity and unit, size, parameters, and how numbers become values, by the
/// names of the CF conventions.
Json DescribeSeries(const SSeries& series, const SWriteOptions& options);
/// What is written for each frame: its number, time, caption, and the status bytes by flag where there are any.
Json DescribeFrame(const SPicture& picture);
/// How many pixels bear each flag of the status byte, by the flag's name, and how many none ("good"); one with several
/// counts once, under the heaviest, so that all add up.
Json CountStatus(std::span<const u8> status);

}  // namespace ovix::app
