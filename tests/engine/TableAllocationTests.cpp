#include "engine/TableAllocation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace tintorra {
namespace {

TEST(TableAllocation, LargeBlocksAreKeptForTheNextTableAndCanBeGivenBack)
{
    const auto memory = std::make_shared<TableMemory>();
    const UseTableMemory use(memory);
    constexpr std::size_t kWords = 3u << 20; // 12 MB
    {
        TableArray<std::uint32_t> table = allocateTable<std::uint32_t>(kWords);
        ASSERT_TRUE(table);
        std::memset(table.get(), 0xAB, kWords * sizeof(std::uint32_t));
    }
    const std::size_t kept = memory->retainedBytes();
    EXPECT_GE(kept, kWords * sizeof(std::uint32_t));

    // A table of the same size takes the kept block; every word of it is usable.
    {
        TableArray<std::uint32_t> again = allocateTable<std::uint32_t>(kWords);
        ASSERT_TRUE(again);
        EXPECT_EQ(memory->retainedBytes(), 0u);
        std::memset(again.get(), 0, kWords * sizeof(std::uint32_t));
        EXPECT_EQ(again[kWords - 1], 0u);
    }
    EXPECT_EQ(memory->retainedBytes(), kept);

    // A table of 4 MB, itself large, does not take the 12 MB block it would leave mostly
    // unused.
    {
        TableArray<std::uint32_t> small = allocateTable<std::uint32_t>(kWords / 3);
        ASSERT_TRUE(small);
        EXPECT_EQ(memory->retainedBytes(), kept);
    }

    memory->release();
    EXPECT_EQ(memory->retainedBytes(), 0u);
}

TEST(TableAllocation, KeepsNoMoreThanItsLimitNorAnythingOnceClosed)
{
    const auto memory =
        std::make_shared<TableMemory>(TableMemoryOptions{.retainedLimit = 8u << 20});
    TableArray<std::uint8_t> small, large, outliving;
    {
        const UseTableMemory use(memory);
        small = allocateTable<std::uint8_t>(1000);
        large = allocateTable<std::uint8_t>(12u << 20);
        outliving = allocateTable<std::uint8_t>(6u << 20);
    }
    ASSERT_TRUE(small && large && outliving);
    small.reset();
    large.reset();
    EXPECT_EQ(memory->retainedBytes(), 0u);
    memory->close();
    outliving.reset();
    EXPECT_EQ(memory->retainedBytes(), 0u);
}

TEST(TableAllocation, WithoutMemoryInUseNothingIsKept)
{
    const auto memory = std::make_shared<TableMemory>();
    {
        const UseTableMemory use(memory);
    }
    TableArray<std::uint32_t> table = allocateTable<std::uint32_t>(3u << 20);
    ASSERT_TRUE(table);
    table.reset();
    EXPECT_EQ(memory->retainedBytes(), 0u);
}

TEST(TableAllocation, InjectedFailureHitsExactlyTheChosenAllocation)
{
    const UseTableMemory use(
        std::make_shared<TableMemory>(TableMemoryOptions{.failAllocationAfter = 2}));
    TableArray<std::uint16_t> first = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> second = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> third = allocateTable<std::uint16_t>(10);
    TableArray<std::uint16_t> fourth = allocateTable<std::uint16_t>(10);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_FALSE(third);
    EXPECT_TRUE(fourth);
}

} // namespace
} // namespace tintorra
