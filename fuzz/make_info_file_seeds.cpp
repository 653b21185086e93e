#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "core/file.h"
#include "reduce/files/acquisition_file.h"
#include "reduce/files/info_file.h"
#include "reduce/objects/reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/correction_objects.h"
#include "support/byte_writer.h"

/// Writes small files of every kind of object as first inputs of `fuzz_info_file` to the folder that is named:
/// fuzz/corpus/info_file.
namespace {

using namespace ovix;
using namespace ovix::reduce;

constexpr u32 kOldest = 0x10000;

void Put(const std::filesystem::path& path, const u8* bytes, u64 size) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void Put(const std::filesystem::path& path, CMemFile& memory) { Put(path, memory.GetData(), memory.GetSize()); }

/// One file for each class, with its newest form.
void AddClasses(const std::filesystem::path& folder) {
    const CReduceObjectFactory& factory = *reduceObjectFactory();
    for (u32 i = 0; i < factory.GetEntryCount(); ++i) {
        CReduceObjectArray array;
        const auto object = array.GetObjectOfType(factory.GetEntryAt(i).extra.typeID, -1, true);
        if (!object->ShouldPersist(0)) continue;
        if (const auto tables = object.Cast<CCorrectionReduceObject>()) tables->Create(3, 2, -1, 7);
        CMemFile memory;
        SaveInfoFile(BorrowShared<IFile>(memory), array, 0);
        Put(folder / factory.GetEntryAt(i).name.GetUTF8(), memory);
    }
}

/// The oldest stream of a class, which is zeros throughout.
void AddOldest(const std::filesystem::path& folder, const char* name, const GUID& type, std::size_t size) {
    test::CByteWriter w;
    w.Text("QUOR KRT-LM File", 32).Guid("{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"_guid).U32(4096).U8(255).U64(~u64{0});
    w.U32(0).U64(0).U32(0);
    w.Text(name, 32).Guid(type).U32(kOldest).U8(255).U64(~u64{0}).U32(3).U64(size).U32(0).Zeros(size);
    Put(folder / (std::string(name) + "_oldest"), w.bytes.data(), w.bytes.size());
}

void AddRecordings(const std::filesystem::path& folder) {
    for (const bool unpacked : {false, true}) {
        CReduceObjectArray array;
        array.GetSourceInfo(true)->width = 4;
        CMemFile memory;
        const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
        StartKRTFile(file, array, unpacked);
        file->WriteZeros(32);
        Put(folder / (unpacked ? "recording_unpacked" : "recording"), memory);
    }
    CMemFile memory;
    const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
    CreateInfoFile(file);
    WriteFreeInfoFileBlock(file, 100);
    Put(folder / "free", memory);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_info_file_seeds FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    AddClasses(folder);
    AddOldest(folder, "SourceInfo", CSourceInfoReduceObject::typeID, 512);
    AddOldest(folder, "ObjectParameters", "{616033EC-ED49-485A-B1FE-4F563DC20F52}"_guid, 41);
    AddOldest(folder, "FOV", "{42FD8DA7-B376-45C2-8255-B9267E512077}"_guid, 16);
    AddOldest(folder, "Correction", CCorrectionReduceObject::typeID, 9);
    AddRecordings(folder);
    return 0;
}
