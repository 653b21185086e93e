#include "reduce/pixels/abate.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// A block whose step s is preset `order[s]`, with the thresholds 100 + preset and 200 + preset.
CByteWriter Block(std::initializer_list<u8> order, u32 version, u8 enabled = 1) {
    CByteWriter bytes;
    bytes.U32(32 + 32 * order.size()).U32(version).U8(enabled).U8(1).U8(order.size()).PadTo(32);
    for (const u8 preset : order) bytes.U32(32).U8(preset).U16(100u + preset).U16(200u + preset).Zeros(23);
    return bytes;
}

/// The thresholds of presets below `given` are those of `Block`, the others their defaults.
void ExpectPresets(const CAbateCfgReduceObject& cfg, std::initializer_list<u8> order, u8 given) {
    EXPECT_TRUE(std::equal(order.begin(), order.end(), cfg.order));
    for (u8 i = 0; i < 8; ++i) {
        EXPECT_EQ(cfg.low[i], i < given ? 100 + i : 1000);  // by preset, not by place
        EXPECT_EQ(cfg.high[i], i < given ? 200 + i : 15000);
    }
}

TEST(AbateCfg, BlockIsReadAndWrittenAsSpelled) {
    CByteWriter block = Block({7, 6, 5, 4, 3, 2, 1, 0}, 0x20000, 0);
    CAbateCfgReduceObject cfg;
    ASSERT_TRUE(cfg.Load(FileOf(block), 0x20000, 0));
    EXPECT_FALSE(cfg.enabled);
    EXPECT_EQ(cfg.mode, AbateFromLast);
    ExpectPresets(cfg, {7, 6, 5, 4, 3, 2, 1, 0}, 8);
    EXPECT_EQ(SavedBytes(cfg), block.bytes);
    block.bytes[8] = 1;
    EXPECT_EQ(SavedBytes(cfg, PersistInitialState), block.bytes);
    EXPECT_FALSE(cfg.enabled);

    cfg.Default();
    EXPECT_EQ(cfg.mode, AbateFromFirst);
    ExpectPresets(cfg, {0, 1, 2, 3, 4, 5, 6, 7}, 0);
}

TEST(AbateCfg, PresetsAreLimitedInBothDirections) {
    CAbateCfgReduceObject cfg;
    ASSERT_TRUE(cfg.Load(FileOf(Block({200, 6, 5, 4, 3, 2, 1, 0}, 0x20000)), 0x20000, 0));
    EXPECT_EQ(cfg.order[0], 7);
    EXPECT_EQ(cfg.low[7], 300);
    cfg.order[1] = 99;
    const std::vector<u8> saved = SavedBytes(cfg);
    EXPECT_EQ(saved[32 + 32 + 4], 7);
    EXPECT_EQ(saved[32 + 32 + 5], 300 & 0xFF);
}

TEST(AbateCfg, OlderFormsHoldFourPresets) {
    CAbateCfgReduceObject cfg;
    cfg.low[6] = cfg.order[6] = 1;
    ASSERT_TRUE(cfg.Load(FileOf(Block({3, 1, 2, 0}, 0x1FFFF)), 0x10001, 0));
    ExpectPresets(cfg, {3, 1, 2, 0, 4, 5, 6, 7}, 4);

    CByteWriter stream;
    stream.U8(1).U8(1);
    for (u8 p = 0; p < 4; ++p) stream.U16(100u + p).U16(200u + p);
    stream.U8(3).U8(2).U8(1).U8(0);
    CAbateCfgReduceObject old;
    old.low[5] = 7;
    ASSERT_TRUE(old.Load(FileOf(stream), 0x10000, 0));
    EXPECT_TRUE(old.enabled);
    EXPECT_EQ(old.mode, AbateFromLast);
    EXPECT_EQ(old.low[5], 7);  // stays
    old.low[5] = 1000;
    ExpectPresets(old, {3, 2, 1, 0}, 4);
    for (std::size_t size = 0; size < stream.bytes.size(); ++size) {
        EXPECT_FALSE(old.Load(FileOf(stream, size), 0x10000, 0)) << size;
    }
}

TEST(AbateCfg, BlocksThatLieChangeNothing) {
    const auto patched = [](CByteWriter block, std::size_t offset, u8 value) {
        block.bytes[offset] = value;
        return block;
    };
    const CByteWriter good = Block({0, 1, 2, 3, 4, 5, 6, 7}, 0x20000);
    const CByteWriter old = Block({0, 1, 2, 3}, 0x10001);
    struct {
        CByteWriter block;
        u32 blockVersion;
    } const cases[] = {
        {patched(good, 0, 0), 0x20000},
        {patched(good, 6, 3), 0x20000},
        {patched(good, 10, 4), 0x20000},
        {patched(good, 256, 0), 0x20000},
        {good, 0x1FFFF},
        {patched(old, 6, 2), 0x10001},
        {patched(old, 10, 8), 0x10001},
        {patched(old, 128, 0), 0x10001},
        {old, 0x20000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        CAbateCfgReduceObject cfg;
        EXPECT_FALSE(cfg.Load(FileOf(c.block), c.blockVersion, 0));
        EXPECT_FALSE(cfg.enabled);
        EXPECT_EQ(cfg.low[0], 1000);
    }
    CAbateCfgReduceObject cfg;
    EXPECT_FALSE(cfg.Load(FileOf(good, 287), 0x20000, 0));
    EXPECT_TRUE(cfg.Load(FileOf(patched(good, 6, 2)), 0x30000, 0));
}

TEST(AbateSortHelper, FirstKeyUpSecondDown) {
    TArray<SAbateSortHelper> elements{{0, 2, 1}, {1, 1, 5}, {2, 2, 3}, {3, 1, 7}, {4, -1, 0}, {5, 2, 2}};
    SAbateSortHelper::Sort(elements);
    const u32 expected[] = {4, 3, 1, 2, 5, 0};
    for (u32 i = 0; i < 6; ++i) EXPECT_EQ(elements.GetAt(i).tag, expected[i]);
}

}  // namespace
}  // namespace ovix::reduce
