#include "apps/ovix/output/tiff_writer.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <exception>

#include "apps/ovix/output/data_writer.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/output/series_json.h"

namespace ovix::app {
namespace {

constexpr u64 kBigBytes = u64{2} << 30;
constexpr u32 kStripBytes = 256 * 1024;

/// The file as libtiff sees it. An exception must not pass through C: it waits here until libtiff has returned.
struct STiffStream {
    COutputFile file;
    u64 position = 0;
    std::exception_ptr failure;

    template <class Move>
    tmsize_t Guard(tmsize_t size, Move move) {
        try {
            const u64 moved = move();
            position += moved;
            return static_cast<tmsize_t>(moved);
        } catch (...) {
            failure = std::current_exception();
            return size == 0 ? 0 : -1;
        }
    }

    static STiffStream& Of(thandle_t handle) { return *static_cast<STiffStream*>(handle); }
    static tmsize_t Read(thandle_t handle, void* data, tmsize_t size) {
        STiffStream& self = Of(handle);
        return self.Guard(size, [&] { return self.file.ReadAt(self.position, data, static_cast<u64>(size)); });
    }
    static tmsize_t Write(thandle_t handle, void* data, tmsize_t size) {
        STiffStream& self = Of(handle);
        return self.Guard(size, [&] {
            self.file.WriteAt(self.position, data, static_cast<u64>(size));
            return static_cast<u64>(size);
        });
    }
    static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
        STiffStream& self = Of(handle);
        const u64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.position : self.file.Size();
        return self.position = base + offset;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Of(handle).file.Size(); }
};

template <class T>
class TTiffFile {
  public:
    TTiffFile(const std::filesystem::path& target, const SSeries& series, bool overwrite)
        : stream_{COutputFile(target, overwrite), 0, nullptr}, series_(series) {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
        const u64 bytes = series.frames * series.width * series.height * sizeof(T);
        tiff_ = TIFFClientOpen(target.c_str(), bytes > kBigBytes ? "w8" : "w", &stream_, STiffStream::Read,
                               STiffStream::Write, STiffStream::Seek, STiffStream::Close, STiffStream::Size, nullptr,
                               nullptr);
        Require(tiff_ != nullptr);
    }
    ~TTiffFile() {
        if (tiff_) TIFFClose(tiff_);
    }
    TTiffFile(const TTiffFile&) = delete;
    TTiffFile& operator=(const TTiffFile&) = delete;

    void Add(const SPicture& picture, std::span<const T> plane) {
        const u32 rows = DescribePage(picture);
        for (u32 y = 0, strip = 0; y < series_.height; y += rows, ++strip) {
            const auto part = plane.subspan(std::size_t{y} * series_.width,
                                            std::size_t{std::min(rows, series_.height - y)} * series_.width);
            // libtiff takes its data unqualified, and leaves it alone where no predictor is used.
            Require(TIFFWriteEncodedStrip(tiff_, strip, const_cast<T*>(part.data()),
                                          static_cast<tmsize_t>(part.size_bytes())) >= 0);
        }
        Require(TIFFWriteDirectory(tiff_) == 1);
        first_ = false;
    }
    void Complete() {
        TIFFClose(tiff_);
        tiff_ = nullptr;
        Require(true);
    }
    void Commit() { stream_.file.Commit(); }

  private:
    u32 DescribePage(const SPicture& picture) {
        const u32 rows = std::clamp<u32>(kStripBytes / static_cast<u32>(series_.width * sizeof(T)), 1, series_.height);
        TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, u32{series_.width});
        TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, u32{series_.height});
        TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, static_cast<int>(8 * sizeof(T)));
        TIFFSetField(tiff_, TIFFTAG_SAMPLEFORMAT,
                     std::is_floating_point_v<T> ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
        TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, rows);
        if (series_.frames > 1) TIFFSetField(tiff_, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        Json text = first_ ? DescribeSeries(series_) : Json::object();
        text.update(DescribeFrame(picture));
        TIFFSetField(tiff_, TIFFTAG_IMAGEDESCRIPTION, JsonText(text, -1, true).c_str());
        if (first_) TIFFSetField(tiff_, TIFFTAG_SOFTWARE, "ovix " OVIX_VERSION);
        return rows;
    }
    void Require(bool done) {
        if (stream_.failure) std::rethrow_exception(std::exchange(stream_.failure, nullptr));
        if (!done) throw CAppError(ExitFile, stream_.file.Target().string() + ": cannot write it as TIFF");
    }

    STiffStream stream_;
    SSeries series_;
    TIFF* tiff_ = nullptr;
    bool first_ = true;
};

}  // namespace

std::unique_ptr<IFrameWriter> MakeTiffWriter(const std::filesystem::path& target, const SSeries& series,
                                             bool overwrite) {
    return std::make_unique<TDataWriter<TTiffFile>>(target, series, overwrite);
}

}  // namespace ovix::app
