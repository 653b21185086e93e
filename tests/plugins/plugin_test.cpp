#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "laboratory_source_info.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "tests/support/byte_writer.h"
#include "toy_frame.h"

namespace ovix::reduce {
namespace {

/// All that a command prints that knows nothing of this process's environment.
std::string OutputOf(const std::string& command) {
    std::FILE* pipe = ::popen(("env -u OVIX_TEST_LOADED -u OVIX_DEBUG_OUTPUT " + command + " 2>&1").c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
    ::pclose(pipe);
    return output;
}

TEST(Plugins, AreTheLibrariesOfThePatternBesideTheLibrary) {
    // Damaged files, a folder, the library itself and the ".NET" ones are passed over, in any case of letters.
    EXPECT_EQ(OutputOf(PLUGIN_HOST " " BESIDE "/ovix.reduce.so"),
              "loaded OVIX.Reduce.Other.SO;ovix.reduce.marker.so;\n");
    // A library of another name is not known by its folder.
    EXPECT_EQ(OutputOf(PLUGIN_HOST " " RENAMED "/reduction.so"), "loaded ovix.reduce.host.so;\n");
}

TEST(Plugins, AddDecoders) {
    test::CByteWriter frame;
    frame.Text("TOY1", 4).U32(4'000'000'000).U32(1'704'067'200).U16(static_cast<u16>(-1234)).U8(5).U8(0);
    for (u16 count = 0; count < 6; ++count) frame.U16(1000 + count);
    void* bytes = frame.bytes.data();
    const u32 size = static_cast<u32>(frame.bytes.size());

    EXPECT_EQ(PixelWidth(toy::kPixelType), 2);
    EXPECT_TRUE(IsPixelBaseType(toy::kPixelType, rootIRType));
    const TSharedPtr<IFilter> filter = filterFactory()->CreateForPixelType(toy::kPixelType);
    ASSERT_TRUE(filter);
    EXPECT_STREQ(CString(filter->GetName()).GetUTF8(), "Toy");

    CReduceObjectArray objects;
    u16 pixels[7] = {};
    u8 preset = 0;
    ASSERT_TRUE(filter->ParseFrame(bytes, toy::kPixelType, 3, 2, size, {pixels, UInt16}, objects, preset));
    EXPECT_TRUE(preset == 5 && pixels[0] == 1000 && pixels[5] == 1005 && pixels[6] == 0);
    const auto info = objects.GetFrameInfo(5, false);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->frameNumber, 4'000'000'000u);
    EXPECT_STREQ(info->GetValue(L"Time").GetUTF8(), "001:00:00:00.000000");
    EXPECT_STREQ(info->GetValue(L"ChassisTemp").GetUTF8(), "-12.34");

    TArray<SFrameField> fields;
    ASSERT_TRUE(DescribeFrame(L"Toy", bytes, toy::kPixelType, 3, 2, size, fields));
    ASSERT_EQ(fields.size(), 4u);
    EXPECT_EQ(fields[2].offset, 12u);
    EXPECT_STREQ(fields[2].value.GetUTF8(), "-12.34 °C");

    u64 counter = 0;
    EXPECT_TRUE(filter->ParseReduceObjects(bytes, toy::kPixelType, 3, 2, size, objects, preset));
    EXPECT_TRUE(filter->ParseFrameCounter(bytes, toy::kPixelType, 3, 2, size, counter) && counter == 4'000'000'000);
    EXPECT_FALSE(filter->ParseFrame(bytes, rootIRType, 3, 2, size, {pixels, UInt16}, objects, preset));

    const auto faultAt = [&](GUID type, u16 width, u32 sizeOf) {
        SFrameFault fault;
        return CheckFrame(L"Toy", bytes, type, width, 2, sizeOf, &fault) ? -1 : static_cast<int>(fault.offset);
    };
    EXPECT_TRUE(faultAt(toy::kPixelType, 3, size) == -1 && faultAt(rootIRType, 3, size) == 0);
    EXPECT_TRUE(faultAt(toy::kPixelType, 65535, size) == 28 && faultAt(toy::kPixelType, 3, 5) != -1);
    frame.bytes[14] = 8;  // a preset that cannot be
    EXPECT_EQ(faultAt(toy::kPixelType, 3, size), 14);
}

TEST(Plugins, ReplaceClassesOfTheLibrary) {
    const TSharedPtr<IReduceObject> made = reduceObjectFactory()->CreateByName(L"SourceInfo");
    const auto info = made.Cast<toy::CLaboratorySourceInfo>();
    ASSERT_TRUE(info);
    EXPECT_STREQ(info->cameraName.GetUTF8(), "Laboratory Camera");
    info->room = L"roof";
    info->width = 640;
    const auto copy = info->Duplicate().Cast<toy::CLaboratorySourceInfo>();
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->room.Equals(L"roof") && copy->width == 640);

    CReduceObjectArray objects, duplicates;
    EXPECT_TRUE(objects.GetSourceInfo(true).Cast<toy::CLaboratorySourceInfo>());
    objects.Duplicate(duplicates);
    EXPECT_TRUE(duplicates.GetSourceInfo(false).Cast<toy::CLaboratorySourceInfo>());
    EXPECT_FALSE(CSourceInfoReduceObject::Register());
    // Who brought a class is told by its functions.
    EXPECT_TRUE(OriginOf(reduceObjectFactory()->GetEntry(L"SourceInfo").create).Equals(L"ovix.reduce.source_info.so"));
    EXPECT_TRUE(OriginOf(filterFactory()->GetEntry(L"Toy").create).Equals(L"ovix.reduce.example.so"));
    EXPECT_TRUE(OriginOf(filterFactory()->GetEntry(L"K410").create).IsEmpty());
}

TEST(Plugins, AreSeenInTheDebuggerOutput) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string output = OutputOf("OVIX_DEBUG_OUTPUT=1 " + self + " --gtest_list_tests");
    const std::string id = " SourceInfo as id {344ED254-76DC-4B4C-B47B-3548A6837C26}\n";
    const std::size_t plugin = output.find("]: CReduceObjectFactory::Register: Registered" + id);
    const std::size_t builtin = output.find("]: CReduceObjectFactory::Register: Failed to register" + id);
    EXPECT_NE(plugin, std::string::npos) << output;
    EXPECT_NE(builtin, std::string::npos) << output;
    EXPECT_LT(plugin, builtin);
    EXPECT_EQ(OutputOf(self + " --gtest_list_tests").find("CReduceObjectFactory"), std::string::npos);
}

}  // namespace
}  // namespace ovix::reduce
