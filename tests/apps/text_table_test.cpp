#include "apps/ovix/text/text_table.h"

#include <gtest/gtest.h>

namespace ovix::app {
namespace {

TEST(TextTable, ColumnsAlignByCharacters) {
    CTextTable table({{"Region", CTextTable::Left}, {"Mean (°C)", CTextTable::Right}, {"", CTextTable::Left}});
    table.Row({"Gehäuse", "21.50"});
    table.Row({"x", "-1234567890", "note", "surplus"});
    EXPECT_EQ(table.Text(),
              "Region     Mean (°C)\n"
              "───────  ───────────  ────\n"
              "Gehäuse        21.50\n"
              "x        -1234567890  note\n");
    CTextTable plain({{"", CTextTable::Left}, {"", CTextTable::Left}});
    plain.Row({"a", "b"});
    EXPECT_EQ(plain.Text(), "a  b\n");
}

}  // namespace
}  // namespace ovix::app
