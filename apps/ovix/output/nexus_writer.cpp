#include <fmt/format.h>
#include <hdf5.h>
#include <hdf5_hl.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/cf_attributes.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/output_file.h"

namespace ovix::app {
namespace {

namespace fs = std::filesystem;

/// What the system said to the library, in the entry of its errors that lies deepest.
std::string SystemWords() {
    std::string words;
    const auto look = [](unsigned, const H5E_error2_t* entry, void* found) -> herr_t {
        constexpr std::string_view kStart = "error message = '";
        const std::string_view text = entry->desc ? entry->desc : "";
        const std::size_t at = text.find(kStart);
        if (at == text.npos) return 0;
        const std::string_view rest = text.substr(at + kStart.size());
        *static_cast<std::string*>(found) = ": " + std::string(rest.substr(0, rest.find('\'')));
        return 1;
    };
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, look, &words);
    return words;
}

void Require(i64 done, const std::string& what) {
    if (done < 0) throw CAppError(ExitFile, "cannot write " + what + SystemWords());
}

/// To be asked before anything is closed, by which the library forgets what went wrong.
hid_t Made(hid_t id) {
    Require(id, "a file, group or array");
    return id;
}

/// An identifier of the library, closed with its owner.
class CHandle {
  public:
    CHandle(hid_t id, herr_t (*close)(hid_t)) : id_(Made(id)), close_(close) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle() {
        if (id_ >= 0) close_(id_);
    }
    operator hid_t() const { return id_; }
    /// Where closing writes, and may fail.
    void Close(const char* what) { Require(close_(std::exchange(id_, -1)), what); }

  private:
    hid_t id_;
    herr_t (*close_)(hid_t);
};

/// Of text of any length in UTF-8, as readers take it for text.
hid_t TextType() {
    const hid_t type = H5Tcopy(H5T_C_S1);
    H5Tset_size(type, H5T_VARIABLE);
    H5Tset_cset(type, H5T_CSET_UTF8);
    return type;
}

void PutAttribute(hid_t object, const char* name, hid_t space, const char* const* texts) {
    const CHandle type(TextType(), H5Tclose), place(space, H5Sclose);
    const CHandle attribute(H5Acreate2(object, name, type, place, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
    Require(H5Awrite(attribute, type, texts), name);
}

void PutText(hid_t object, const char* name, const std::string& text) {
    const char* const one = text.c_str();
    PutAttribute(object, name, H5Screate(H5S_SCALAR), &one);
}

void PutTexts(hid_t object, const char* name, const std::vector<const char*>& texts) {
    const hsize_t count = texts.size();
    PutAttribute(object, name, H5Screate_simple(1, &count, nullptr), texts.data());
}

/// How a file, group or array is made: without the time of day, so that the same frames give the same bytes.
hid_t MakingOf(hid_t kind) {
    const hid_t how = H5Pcreate(kind);
    H5Pset_obj_track_times(how, false);
    return how;
}

void PutDataset(hid_t group, const char* name, const std::string& text) {
    const CHandle type(TextType(), H5Tclose), space(H5Screate(H5S_SCALAR), H5Sclose),
        how(MakingOf(H5P_DATASET_CREATE), H5Pclose);
    const CHandle set(H5Dcreate2(group, name, type, space, H5P_DEFAULT, how, H5P_DEFAULT), H5Dclose);
    const char* const one = text.c_str();
    Require(H5Dwrite(set, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, &one), name);
}

/// The numbers of pixels along a side of the image, as an array.
hid_t MakePlaces(hid_t group, const char* name, hsize_t count, const char* meaning) {
    const CHandle space(H5Screate_simple(1, &count, nullptr), H5Sclose), how(MakingOf(H5P_DATASET_CREATE), H5Pclose);
    const hid_t set = Made(H5Dcreate2(group, name, H5T_NATIVE_INT32, space, H5P_DEFAULT, how, H5P_DEFAULT));
    std::vector<i32> places(count);
    std::iota(places.begin(), places.end(), 0);
    Require(H5Dwrite(set, H5T_NATIVE_INT32, H5S_ALL, H5S_ALL, H5P_DEFAULT, places.data()), name);
    PutText(set, "long_name", meaning);
    return set;
}

struct SGroup : CHandle {
    SGroup(hid_t parent, const char* name, const char* nexusClass)
        : CHandle(H5Gcreate2(parent, name, H5P_DEFAULT, CHandle(MakingOf(H5P_GROUP_CREATE), H5Pclose), H5P_DEFAULT),
                  H5Gclose) {
        PutText(*this, "NX_class", nexusClass);
    }
};

/// The bytes of equal rank of all elements one behind the other, as the filter "shuffle" has them.
std::vector<u8> Shuffled(const u8* bytes, std::size_t size, std::size_t width) {
    std::vector<u8> shuffled(size);
    const std::size_t count = size / width;
    for (std::size_t rank = 0; rank < width; ++rank)
        for (std::size_t i = 0; i < count; ++i) shuffled[rank * count + i] = bytes[i * width + rank];
    return shuffled;
}

/// An array that grows by one element of its first dimension, a chunk each: a plane, or a number of a column.
class CGrowing {
  public:
    CGrowing(hid_t group, const char* name, hid_t type, std::vector<hsize_t> element, hsize_t together, int level)
        : type_(type), shape_(std::move(element)), set_(Create(group, name, together, level), H5Dclose) {}

    hid_t Set() const { return set_; }
    /// Compressed as the array has it.
    void AppendChunk(const std::vector<u8>& packed) {
        const hsize_t at = Grow();
        std::vector<hsize_t> offset(shape_.size(), 0);
        offset[0] = at;
        Require(H5Dwrite_chunk(set_, H5P_DEFAULT, 0, offset.data(), packed.size(), packed.data()), "a frame");
    }
    template <class T>
    void Append(T value) {
        const hsize_t at = Grow(), one = 1;
        const CHandle space(H5Dget_space(set_), H5Sclose), memory(H5Screate_simple(1, &one, nullptr), H5Sclose);
        H5Sselect_hyperslab(space, H5S_SELECT_SET, &at, nullptr, &one, nullptr);
        Require(H5Dwrite(set_, type_, memory, space, H5P_DEFAULT, &value), "a number");
    }

  private:
    hid_t Create(hid_t group, const char* name, hsize_t together, int level) {
        shape_.insert(shape_.begin(), 0);
        std::vector<hsize_t> most = shape_, chunk = shape_;
        most[0] = H5S_UNLIMITED;
        chunk[0] = together;
        const int rank = static_cast<int>(shape_.size());
        const CHandle space(H5Screate_simple(rank, shape_.data(), most.data()), H5Sclose);
        const CHandle how(MakingOf(H5P_DATASET_CREATE), H5Pclose);
        H5Pset_chunk(how, rank, chunk.data());
        if (level > 0) {
            if (H5Tget_size(type_) > 1) H5Pset_shuffle(how);
            H5Pset_deflate(how, static_cast<unsigned>(level));
        }
        return Made(H5Dcreate2(group, name, type_, space, H5P_DEFAULT, how, H5P_DEFAULT));
    }
    hsize_t Grow() {
        ++shape_[0];
        Require(H5Dset_extent(set_, shape_.data()), "one frame more");
        return shape_[0] - 1;
    }

    hid_t type_;
    std::vector<hsize_t> shape_;
    CHandle set_;
};

/// What is open of a file.
struct SArrays {
    SArrays(hid_t file, const SSeries& series, int level)
        : entry(file, "entry", "NXentry"),
          data(entry, "data", "NXdata"),
          values(data, VariableName(series.unit).c_str(), H5T_NATIVE_FLOAT, {series.height, series.width}, 1, level),
          status(data, "status", H5T_NATIVE_UINT8, {series.height, series.width}, 1, level),
          frame(data, "frame", H5T_NATIVE_INT64, {}, kColumn, 0),
          time(data, "time", H5T_NATIVE_DOUBLE, {}, kColumn, 0),
          y(MakePlaces(data, "y", series.height, "row of the image, from the top"), H5Dclose),
          x(MakePlaces(data, "x", series.width, "column of the image, from the left"), H5Dclose) {
        NameDimensions({{time.Set(), "time"}, {y, "y"}, {x, "x"}});
    }

    static constexpr hsize_t kColumn = 1024;
    SGroup entry, data;
    CGrowing values, status, frame, time;
    CHandle y, x;

  private:
    /// As dimension scales, by which netCDF and xarray know dimensions and coordinates; they read no `axes`.
    void NameDimensions(const std::vector<std::pair<hid_t, const char*>>& scales) {
        for (unsigned i = 0; i < scales.size(); ++i) {
            const auto& [scale, name] = scales[i];
            Require(H5DSset_scale(scale, name), name);
            for (const hid_t array : {values.Set(), status.Set()}) Require(H5DSattach_scale(array, scale, i), name);
        }
        Require(H5DSattach_scale(frame.Set(), time.Set(), 0), "time");
    }
};

/// A file for one that writes and any number that read meanwhile: whatever is there of it at any moment can be read.
hid_t CreateFile(const fs::path& path) {
    const CHandle making(MakingOf(H5P_FILE_CREATE), H5Pclose), access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    H5Pset_libver_bounds(access, H5F_LIBVER_V110, H5F_LIBVER_V110);
    return Made(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, making, access));
}

/// NeXus: /entry (NXentry) with /entry/data (NXdata), written beside its place and flushed with each frame.
class CNexusWriter final : public IFrameWriter {
  public:
    CNexusWriter(const fs::path& target, const SSeries& series, const SWriteOptions& options)
        : level_(std::min(options.compression, 9)), output_(target, options.overwrite) {
        H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);  // it would print what is thrown here
        Named([&] {
            file_.emplace(CreateFile(output_.File().Part()), H5Fclose);
            to_.emplace(*file_, series, level_);
            Describe(series);
        });
    }

    SEncodedFrame Encode(const SPicture& picture) const override {
        SEncodedFrame encoded;
        encoded.values.push_back(Packed(picture.values.data(), picture.values.size_bytes(), sizeof(float)));
        if (!picture.status.empty()) encoded.status.push_back(Packed(picture.status.data(), picture.status.size(), 1));
        return encoded;
    }
    void Append(const SPicture& picture, const SEncodedFrame& encoded) override {
        Named([&] { AppendFrame(picture, encoded); });
    }
    void Finish() override {
        if (!begun_) throw CAppError(ExitBadData, output_.Target().string() + ": no frame to write");
        to_.reset();
        Named([&] { file_->Close("its end"); });
        output_.Commit();
    }

  private:
    /// Does what the library may fail at, and says of which file.
    template <class Work>
    void Named(const Work& work) const {
        try {
            work();
        } catch (const CAppError& error) {
            throw CFault({.exit = error.Exit(), .file = output_.Target().string(), .problem = error.what()});
        }
    }
    void AppendFrame(const SPicture& picture, const SEncodedFrame& encoded) {
        if (!begun_) Begin(picture);
        to_->values.AppendChunk(encoded.values.front());
        for (const auto& status : encoded.status) to_->status.AppendChunk(status);
        to_->frame.Append<i64>(static_cast<i64>(picture.frame));
        const bool timed = start_ && picture.time;
        to_->time.Append<double>(timed    ? std::chrono::duration<double>(*picture.time - *start_).count()
                                 : start_ ? std::numeric_limits<double>::quiet_NaN()
                                          : static_cast<double>(picture.frame));
        Require(H5Fflush(*file_, H5F_SCOPE_LOCAL), "a frame");
    }
    void Describe(const SSeries& series) {
        const std::string name = VariableName(series.unit);
        PutText(*file_, "default", "entry");
        PutText(to_->entry, "default", "data");
        PutDataset(to_->entry, "title", series.title);
        PutText(to_->data, "signal", name);
        PutText(to_->data, "auxiliary_signals", "status");
        PutTexts(to_->data, "axes", {"time", "y", "x"});
        PutText(to_->values.Set(), "units", series.unit.symbol);
        PutText(to_->values.Set(), "long_name", series.unit.Label());
        const Json flags = StatusAttributes();
        PutText(to_->status.Set(), "flag_masks", JsonText(flags["flag_masks"]));
        PutText(to_->status.Set(), "flag_meanings", flags["flag_meanings"]);
        const SGroup process(to_->entry, "process", "NXprocess");
        PutDataset(process, "program", "ovix");
        PutDataset(process, "version", OVIX_VERSION);
        const SGroup note(process, "parameters", "NXnote");
        PutDataset(note, "type", "application/json");
        PutDataset(note, "data", JsonText(series.parameters));
    }
    void Begin(const SPicture& first) {
        start_ = first.time;
        PutText(to_->time.Set(), "long_name", start_ ? "time (s)" : "number of the frame; frames carry no time");
        if (start_) {
            PutText(to_->time.Set(), "units", "s");
            PutText(to_->time.Set(), "start", TimeText(*start_));
            PutDataset(to_->entry, "start_time", TimeText(*start_));
        }
        // All is described. From here on the library writes what a number points at before the number, so a process may
        // be killed at any moment; the name comes now, for those who read what a killed one left, or while it writes.
        Require(H5Fstart_swmr_write(*file_), "the description");
        output_.Show();
        begun_ = true;
    }
    std::vector<u8> Packed(const void* plane, std::size_t size, std::size_t width) const {
        const u8* bytes = static_cast<const u8*>(plane);
        if (level_ == 0) return {bytes, bytes + size};
        return Deflated(width > 1 ? Shuffled(bytes, size, width) : std::vector<u8>(bytes, bytes + size), level_);
    }

    int level_;
    COutputFile output_;
    std::optional<CHandle> file_;
    std::optional<SArrays> to_;  ///< closed before the file is
    std::optional<measure::Time> start_;
    bool begun_ = false;
};

}  // namespace

}  // namespace ovix::app

/// What `MakeFrameWriter` asks this library for; the caller owns the writer.
extern "C" ovix::app::IFrameWriter* OvixMakeNexusWriter(const std::filesystem::path& target,
                                                        const ovix::app::SSeries& series,
                                                        const ovix::app::SWriteOptions& options) {
    H5dont_atexit();  // there it would write a file again that it could not write before, and end in a fault
    return new ovix::app::CNexusWriter(target, series, options);
}
