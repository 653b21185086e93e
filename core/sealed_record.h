#pragma once

#include "core/array.h"
#include "core/bytes.h"
#include "core/file.h"

namespace ovix {

/// The kind of a sealed record: eight letters and the version of its form, the major number in the upper 16 bits.
/// A minor version only appends to the content, so a reader takes every minor version of its major one.
struct SSealedKind {
    char magic[9];
    u32 version;
};

/// Stored content in an envelope that gives every damage away:
///
///     offset  size
///     0       8     the magic
///     8       4     the version
///     12      4     n, the bytes of content
///     16      n     the content: numbers, and arrays with their 32-bit count before them; little-endian, not aligned
///     16 + n  4     CRC-32 of all bytes before it
///
/// Writer and reader offer the same operations, so that one function template can describe a content for both. All
/// answer false, for good, once something did not fit.
class OVIX_API CSealedWriter {
  public:
    explicit CSealedWriter(const SSealedKind& kind);

    template <Number T>
    bool Field(const T& value) {
        return Elements(&value, 1);
    }
    template <Number T>
    bool Field(const TArray<T>& values) {
        return Field(values.size()) && Elements(values.data(), values.size());
    }
    /// Elements whose number stands elsewhere.
    template <Number T>
    bool Elements(const T* values, u64 count) {
        u8* to = Extend(count, sizeof(T));
        if (!to) return count == 0;
        for (u64 i = 0; i < count; ++i) StoreLittle(to + i * sizeof(T), values[i]);
        return true;
    }
    /// Puts the whole record into the file, at its position.
    bool WriteTo(IFile& file);

  private:
    /// Room for the elements at the end; null when there is none.
    u8* Extend(u64 count, u64 size);

    TArray<u8> record_;
    bool whole_ = true;
};

class OVIX_API CSealedReader {
  public:
    /// Takes the record at the file's position; its size is held against what remains before memory is taken. False for
    /// another kind and for a damaged record.
    bool ReadFrom(IFile& file, const SSealedKind& kind);

    template <Number T>
    bool Field(T& value) {
        return cursor_.Read(value);
    }
    template <Number T>
    bool Field(TArray<T>& values) {
        u32 count = 0;
        return cursor_.Read(count) && Elements(values, count);
    }
    template <Number T>
    bool Elements(TArray<T>& values, u64 count) {
        if (count > ~u32{0} || !cursor_.Holds(count, sizeof(T)) || !values.SetSize(static_cast<u32>(count)))
            return false;
        const u8* from = cursor_.Take(count * sizeof(T));
        for (u32 i = 0; i < values.size(); ++i) values.data()[i] = LoadLittle<T>(from + i * sizeof(T));
        return true;
    }

  private:
    TArray<u8> record_;
    CByteCursor cursor_{nullptr, 0};
};

}  // namespace ovix
