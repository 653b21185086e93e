#pragma once

#include <span>
#include <string>

#include "measure/frame/frame_index.h"

namespace ovix::measure {

/// The JSON text of a list of references, as its entries come.
class CReferenceText {
  public:
    CReferenceText();

    /// The array "counts" of frames, rows, columns: a frame a chunk.
    void AddCounts(u64 frames, const SFrameFormat& format, const SPixelPlace& pixels);
    /// The array "frames" of a structured type, `together` a chunk; a frame every `step` bytes.
    void AddFrames(u64 frames, u64 together, const SFrameFormat& format, const SPixelPlace& pixels, u64 step);
    void AddReference(const std::string& key, const std::string& url, u64 offset, u64 size);
    /// The coordinate "time": nanoseconds since 1970, or the frames' numbers where they carry no time.
    void AddTime(std::span<const i64> times, bool timed);
    /// A number for each frame, in the text itself.
    template <class T>
    void AddColumn(const std::string& name, std::span<const T> values, const std::string& meaning) {
        AddColumn(name, std::as_bytes(values), sizeof(T), ",\"long_name\":" + Quoted(meaning));
    }

    std::string Finish() &&;

  private:
    static std::string Quoted(std::string_view text);
    void AddColumn(const std::string& name, std::span<const std::byte> bytes, std::size_t width,
                   const std::string& attributes);
    void AddArray(const std::string& name, const std::string& shape, const std::string& chunks, const std::string& type,
                  const std::string& attributes);
    void Add(const std::string& key, const std::string& value);

    std::string text_;
};

}  // namespace ovix::measure
