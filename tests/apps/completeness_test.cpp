#include "app_files.h"
#include "apps/ovix/synth/synth.h"

namespace ovix::app {
namespace {

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

/// Whether a file of the folder begins with the decoder's name, written small and without dashes.
bool HasSeed(const std::filesystem::path& folder, std::string name) {
    name = Lower(name);
    std::erase(name, '-');
    return std::any_of(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator(),
                       [&](const auto& entry) { return entry.path().filename().string().starts_with(name + "_"); });
}

/// Whoever adds a camera is told here what is still missing: docs/adding-a-camera.md goes through it.
TEST(Completeness, EveryDecoderHasItsCheckItsSynthesiserItsSeedAndItsPage) {
    const std::filesystem::path tree = OVIX_SOURCE_DIR;
    const std::string formats = test::ReadText(tree / "docs/formats.md");
    ASSERT_FALSE(formats.empty());
    const reduce::CFilterFactory& factory = *reduce::filterFactory();
    ASSERT_GT(factory.GetEntryCount(), 0u);
    for (u32 i = 0; i < factory.GetEntryCount(); ++i) {
        const auto& entry = factory.GetEntryAt(i);
        const std::string name = entry.name.GetUTF8();
        if (!reduce::OriginOf(entry.create).IsEmpty()) continue;  // one of another test
        EXPECT_NE(entry.extra.check, nullptr)
            << name << ": answer `check` to Register, so that CheckFrame knows its frames";
        EXPECT_NE(entry.extra.describe, nullptr)
            << name << ": answer `describe` to Register, so that its frames can be shown byte by byte";
        EXPECT_NE(entry.extra.evidence, nullptr)
            << name << ": answer `evidence` to Register, so that nothing made up is taken for read";
        for (const GUID& type : entry.extra.pixelTypes) {
            reduce::SFrameForm form;
            EXPECT_TRUE(reduce::GetFrameForm(entry.name, type, form))
                << name << ": answer `form` to Register for each of the types that it handles";
            if (form.wholeType != type) continue;  // part of a frame: it has no pixels, no name and no synthesiser
            SPixelType facts;
            ASSERT_TRUE(GetPixelType(type, facts)) << name << ": RegisterPixelType each of the types that it handles";
            const std::string typeName = facts.name.GetUTF8();
            const SSynthFamily* family = FindSynthFamily(type);
            EXPECT_TRUE(family && entry.name == family->filter) << typeName << ": apps/ovix/synth cannot make it";
            EXPECT_NE(formats.find(typeName), std::string::npos) << typeName << ": not in docs/formats.md";
        }
        const std::string page = "formats/" + Lower(name) + ".md";
        EXPECT_NE(formats.find("| " + name + " |"), std::string::npos) << name << ": no row in docs/formats.md";
        EXPECT_NE(formats.find("(" + page + ")"), std::string::npos)
            << name << ": docs/formats.md does not lead to " << page;
        EXPECT_TRUE(std::filesystem::exists(tree / "docs" / page)) << "docs/" << page << " is missing";
        EXPECT_TRUE(HasSeed(tree / "fuzz/corpus/frames", name)) << name << ": no seed in fuzz/corpus/frames";
    }
}

}  // namespace
}  // namespace ovix::app
