#pragma once

#include <gtest/gtest.h>

#include "core/bytes.h"
#include "core/file.h"
#include "reduce/objects/reduce_object.h"
#include "support/byte_writer.h"
#include "support/text.h"

namespace ovix::test {

/// A file in memory that holds the bytes, or the first `size` of them, at its start.
inline TSharedPtr<IFile> FileOf(const CByteWriter& content, std::size_t size = ~std::size_t{0}) {
    const TSharedPtr<CMemFile> file = MakeShared<CMemFile>();
    file->WriteBytes(content.bytes.data(), static_cast<u32>(std::min(size, content.bytes.size())));
    file->SeekToBegin();
    return file;
}

/// What `Save` writes; empty when it fails.
inline std::vector<u8> SavedBytes(reduce::IReduceObject& object, u32 flags = 0) {
    const TSharedPtr<CMemFile> file = MakeShared<CMemFile>();
    if (!object.Save(file, flags)) return {};
    return {file->GetData(), file->GetData() + file->GetSize()};
}

inline std::string Counting(double first, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += Text(first + i);
    return text;
}

/// A block of `version` is read and written as spelled, or written as `newest`; a byte less and it is refused, and so
/// is a header that lies about its size, or has the version `limit`. Nothing is left behind by what was refused there.
template <class T>
void ExpectForm(const CByteWriter& form, u32 version, const std::string& values, u32 limit = 0,
                const CByteWriter* newest = nullptr) {
    SCOPED_TRACE(testing::Message() << CString(T::kName).GetUTF8() << " of block version " << std::hex << version);
    T object;
    object.valid = true;
    ASSERT_TRUE(object.Load(FileOf(form), version, 0));
    EXPECT_EQ(ValuesOf(object), values);
    if constexpr (requires { object.planckR; }) {
        EXPECT_FALSE(object.valid) << "the caller's to set";
    }
    EXPECT_EQ(SavedBytes(object), (newest ? *newest : form).bytes);
    EXPECT_EQ(SavedBytes(*object.Duplicate()), (newest ? *newest : form).bytes);
    for (std::size_t size = 0; size < form.bytes.size(); ++size)
        ASSERT_FALSE(T().Load(FileOf(form, size), version, 0)) << size;
    if (!limit) return;
    const auto loads = [&](u32 size, u32 ofHeader) {
        CByteWriter changed = form;
        CByteWriter header;
        header.U32(size).U32(ofHeader);
        std::copy(header.bytes.begin(), header.bytes.end(), changed.bytes.begin());
        T read;
        const std::string before = ValuesOf(read);
        const bool done = read.Load(FileOf(changed), version, 0);
        EXPECT_TRUE(done || ValuesOf(read) == before);
        return done;
    };
    const u32 size = LoadLittle<u32>(form.bytes.data());
    EXPECT_TRUE(loads(size, limit - 1));
    EXPECT_FALSE(loads(size, limit) || loads(size - 1, limit - 1) || loads(size + 1, limit - 1));
}

/// `count` floats from `first` on.
inline CByteWriter Floats(float first, int count) {
    CByteWriter bytes;
    for (int i = 0; i < count; ++i) bytes.F32(first + static_cast<float>(i));
    return bytes;
}
inline CByteWriter Doubles(int first, int count) {
    CByteWriter bytes;
    for (int i = 0; i < count; ++i) bytes.F64(first + i);
    return bytes;
}
/// The block of a merge whose step s is preset `order[s]`, with the thresholds 100 + preset and 200 + preset, which
/// belong to the preset.
inline CByteWriter AbateBlock(std::initializer_list<u8> order, u32 version, bool enabled) {
    CByteWriter bytes;
    bytes.U32(32 + 32 * order.size()).U32(version).U8(enabled).U8(1).U8(order.size()).PadTo(32);
    for (const u8 preset : order) bytes.U32(32).U8(preset).U16(100u + preset).U16(200u + preset).Zeros(23);
    return bytes;
}
inline CByteWriter Record(u32 size, u32 version, const CByteWriter& fields) {
    return CByteWriter().U32(size).U32(version).Append(fields).PadTo(size);
}

}  // namespace ovix::test
