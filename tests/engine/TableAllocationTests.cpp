#include "engine/TableAllocation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace tintorra {
namespace {

TEST(TableAllocation, LargeBlocksAreKeptForTheNextTableAndCanBeGivenBack)
{
    releaseRetainedTableMemory();
    ASSERT_EQ(retainedTableMemory(), 0u);
    constexpr std::size_t kWords = 3u << 20; // 12 MB
    {
        TableArray<std::uint32_t> table = allocateTable<std::uint32_t>(kWords);
        ASSERT_TRUE(table);
        std::memset(table.get(), 0xAB, kWords * sizeof(std::uint32_t));
    }
    const std::size_t kept = retainedTableMemory();
    EXPECT_GE(kept, kWords * sizeof(std::uint32_t));

    // A table of the same size takes the kept block; every word of it is usable.
    {
        TableArray<std::uint32_t> again = allocateTable<std::uint32_t>(kWords);
        ASSERT_TRUE(again);
        EXPECT_EQ(retainedTableMemory(), 0u);
        std::memset(again.get(), 0, kWords * sizeof(std::uint32_t));
        EXPECT_EQ(again[kWords - 1], 0u);
    }
    EXPECT_EQ(retainedTableMemory(), kept);

    // A table of 4 MB, itself large, does not take the 12 MB block it would leave mostly
    // unused.
    {
        TableArray<std::uint32_t> small = allocateTable<std::uint32_t>(kWords / 3);
        ASSERT_TRUE(small);
        EXPECT_EQ(retainedTableMemory(), kept);
    }

    releaseRetainedTableMemory();
    EXPECT_EQ(retainedTableMemory(), 0u);
}

TEST(TableAllocation, SmallTablesAreNotKept)
{
    releaseRetainedTableMemory();
    {
        TableArray<std::uint8_t> table = allocateTable<std::uint8_t>(1000);
        ASSERT_TRUE(table);
        table[999] = 1;
    }
    EXPECT_EQ(retainedTableMemory(), 0u);
}

TEST(TableAllocation, InjectedFailureHitsExactlyTheChosenAllocation)
{
    failTableAllocationAfter(2);
    TableArray<std::uint16_t> first = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> second = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> third = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> fourth = allocateTable<std::uint16_t>(10);
    failTableAllocationAfter(-1);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_FALSE(third);
    EXPECT_TRUE(fourth);
}

} // namespace
} // namespace tintorra
