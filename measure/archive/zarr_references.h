#pragma once

#include <filesystem>
#include <functional>
#include <span>
#include <stop_token>
#include <string>

#include "measure/sources/source.h"

namespace ovix::measure {

struct SReferenceOptions {
    /// Files are named by this and their names, for readers over HTTP; else by their full paths.
    std::string baseUrl = {};
    /// Above 1 the frames are an array "frames" of a structured type with the field "pixels", of which so many are one
    /// reference: they must stand equally far apart, and be a divisor of the frames of each file.
    u64 framesPerReference = 1;
    unsigned threads = 0;       ///< that look at files side by side; 0: as many as the machine runs at once
    std::stop_token stop = {};  ///< asked for: it ends between two files with `Interrupted`
    std::function<void(u64 done, u64 total)> progress = {};  ///< called on the caller's thread now and then
    /// Called on the caller's thread, at the end, for what each file is worth.
    std::function<void(const std::string& file, const SFinding& finding)> report = {};
};

/// Virtual Zarr: a JSON text that says where in many files the counts of all frames stand, so that readers of Zarr open
/// them as one array without knowing a camera. It is a list of references as fsspec takes them (version 1, all of them
/// written out) of a Zarr group (format 2):
///
/// - "counts" (time, y, x): 16-bit counts as recorded, a frame a chunk;
/// - "time": nanoseconds since 1970 in UTC, or the frame's number where one of them carries no time;
/// - "frame" and "preset" (-1 where a frame names none).
///
/// Files come in the order of their times where all frames carry one, else in the order given. Throws `CError` with the
/// file: FrameRefused for one whose pixels are no plain counts (`CFrameIndex`), WrongGeometry for one that differs from
/// the first in size, type, or place of the pixels, or whose frames make no such references.
OVIX_MEASURE_API std::string ZarrReferences(std::span<const std::filesystem::path> files, const SOpenOptions& options,
                                            const SReferenceOptions& how = {});

}  // namespace ovix::measure
