#include "board/position.h"
#include "protocol/settings.h"
#include "search/transposition.h"
#include "support/searching.h"

namespace quelmar {

namespace {

class TranspositionTest : public SearchTest {
protected:
    // Makes the store functions see another position; all of them share a bucket.
    static void stand_at(u64 number) { position.current().key = 5 + (number << 32); }
    static TTEntry* entry(u64 number) { return tt_probe(5 + (number << 32)); }
};

TEST_F(TranspositionTest, SizesAreTheLargestPowerOfTwoThatFits) {
    const struct {
        int megabytes;
        u64 buckets;
    } cases[] = {
        {-5, 16384},  {0, 16384},      {1, 16384},       {2, 32768},        {3, 65536},
        {24, 524288}, {800, 16777216}, {4096, 67108864}, {8192, 134217728}, {2147483647, u64{1} << 32}};
    for (const auto& c : cases)
        EXPECT_EQ(tt_buckets_for(c.megabytes), c.buckets) << c.megabytes;
}

TEST_F(TranspositionTest, AnImpossibleSizeFallsBackAndSaysSo) {
    settings.hash_mb = 2147483647;
    const std::string said = printed_by(apply_hash_size);
    if (!said.empty()) {  // a machine may really have that much
        EXPECT_EQ(said.rfind("# hash of 2147483647 MB is not available, using ", 0), 0U) << said;
    }
    stand_at(1);
    tt_store_upper(60, 7, 0);
    EXPECT_NE(entry(1), nullptr);
    EXPECT_EQ(tt_allocate(1), 1);
    EXPECT_EQ(entry(1), nullptr);
}

TEST_F(TranspositionTest, LowerBoundsPreferTheDeeperInSlotOne) {
    stand_at(1);
    tt_store_lower(120, 111, 10, 0);
    stand_at(2);
    tt_store_lower(60, 222, 20, 0);  // shallower: second slot
    stand_at(3);
    tt_store_lower(60, 333, 30, 0);  // the second slot is always overwritten
    EXPECT_NE(entry(1), nullptr);
    EXPECT_EQ(entry(2), nullptr);
    ASSERT_NE(entry(3), nullptr);
    EXPECT_EQ(entry(3)->move, 333U);
    stand_at(4);
    tt_store_lower(120, 444, 40, 0);  // as deep: replaces the first
    EXPECT_EQ(entry(1), nullptr);
    EXPECT_EQ(entry(4)->upper_score, INFINITE_SCORE);
    EXPECT_EQ(entry(4)->upper_depth, 0);
}

TEST_F(TranspositionTest, UpperBoundsLeaveFailHighsOfThisSearchAlone) {
    stand_at(1);
    tt_store_lower(60, 111, 10, 0);
    stand_at(2);
    tt_store_upper(600, -20, 0);  // deeper, but slot 0 holds a lower bound
    EXPECT_NE(entry(1), nullptr);
    ASSERT_NE(entry(2), nullptr);
    EXPECT_EQ(entry(2)->lower_score, -INFINITE_SCORE);
    EXPECT_EQ(entry(2)->move, 0U);
    ++tt_generation;
    stand_at(3);
    tt_store_upper(60, -30, 0);  // slot 0 is of an older search now
    EXPECT_EQ(entry(1), nullptr);
    EXPECT_NE(entry(3), nullptr);
    stand_at(4);
    tt_store_upper(59, -40, 0);  // shallower than the upper bound in slot 0
    EXPECT_NE(entry(3), nullptr);
    stand_at(5);
    tt_store_upper(60, -50, 0);
    EXPECT_EQ(entry(3), nullptr);
}

TEST_F(TranspositionTest, BothBoundsOfAPositionStandInOneEntry) {
    stand_at(1);
    tt_store_lower(60, 111, 10, TT_MATE_THREAT);
    stand_at(2);
    tt_store_lower(180, 222, 10, 0);
    tt_store_upper(240, 10, 0);  // slot 0 is kept for its lower bound, so the upper one goes to slot 1
    EXPECT_EQ(entry(2)->upper_score, INFINITE_SCORE);
    ++tt_generation;
    tt_store_upper(240, 10, 0);
    EXPECT_EQ(entry(2)->upper_score, 10);
    EXPECT_EQ(entry(2)->lower_score, 10);
    EXPECT_EQ(entry(2)->move, 222U);
    EXPECT_EQ(entry(2)->flags, 0);
    EXPECT_NE(entry(2)->lower_generation, entry(2)->upper_generation);
    tt_store_lower(300, 0, 12, TT_MATE_THREAT);  // no move: the old one stays
    EXPECT_EQ(entry(2)->move, 222U);
    EXPECT_EQ(entry(2)->flags, TT_MATE_THREAT);
}

TEST_F(TranspositionTest, MateScoresAreRelativeToTheStoringNode) {
    const struct {
        int score, ply, stored;
    } cases[] = {{29799, 9, 29799},   {29800, 9, 29809},   {29990, 4, 29994},
                 {-29990, 4, -29994}, {-29799, 4, -29799}, {30001, 9, 30001},
                 {-30001, 9, -30001}, {75000, 3, 30001},   {-75000, 3, -30001}};
    for (const auto& c : cases) {
        position.search_ply = c.ply;
        stand_at(1);
        tt_store_upper(60, c.score, 0);
        EXPECT_EQ(entry(1)->upper_score, c.stored) << c.score;
        if (std::abs(c.score) <= INFINITE_SCORE) {
            EXPECT_EQ(tt_score_at(entry(1)->upper_score, c.ply), c.score) << c.score;
        }
    }
    position.search_ply = 0;
    EXPECT_EQ(tt_score_at(29994, 6), 29988);
    EXPECT_EQ(tt_score_at(-29994, 6), -29988);
}

TEST_F(TranspositionTest, OccupancyIsEstimatedFromTheStores) {
    EXPECT_EQ(tt_allocate(1), 1);
    tt_count_from_zero();
    EXPECT_EQ(tt_hashfull(), 0);
    for (int i = 0; i < 2 * 16384; ++i)
        tt_store_upper(60, 0, 0);
    EXPECT_EQ(tt_hashfull(), 632);
}

}  // namespace

}  // namespace quelmar
