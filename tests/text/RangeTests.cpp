// HVRange: emptiness, membership, and the arithmetic of union,
// intersection and remainders.
#include <halvane/text/HVRange.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

namespace {

const HVRange kNotFound(HVNotFound, 0);

}  // namespace

TEST(Range, EmptinessAndMembership) {
    EXPECT_EQ(HVNotFound, 0x7FFFFFFFFFFFFFFFull);
    EXPECT_EQ(HVRange().Location(), HVNotFound);
    EXPECT_EQ(HVRange().Length(), 0u);
    EXPECT_TRUE(HVRange().IsEmpty());
    EXPECT_TRUE(HVRange(5, 0).IsEmpty());
    EXPECT_TRUE(HVRange(HVNotFound, 3).IsEmpty());
    EXPECT_FALSE(HVRange(0, 1).IsEmpty());
    HVRange range = HVRange::RangeWithLocationAndLength(4, 3);
    EXPECT_EQ(range.EndOfRange(), 7u);
    EXPECT_FALSE(range.IsLocationInRange(3));
    EXPECT_TRUE(range.IsLocationInRange(4));
    EXPECT_TRUE(range.IsLocationInRange(6));
    EXPECT_FALSE(range.IsLocationInRange(7));
    range.Empty();
    EXPECT_EQ(range, kNotFound);
    range.InitWithLocationAndLength(1, 2);
    EXPECT_TRUE(range.IsEqualToRange(HVRange(1, 2)));
    range.SetLocation(9);
    range.SetLength(8);
    EXPECT_EQ(range, HVRange(9, 8));
}

TEST(Range, UnionIsTheLargerLengthPlusTheDistance) {
    EXPECT_EQ(HVRange(0, 10).UnionRange(HVRange(2, 3)), HVRange(0, 12));
    EXPECT_EQ(HVRange(2, 3).UnionRange(HVRange(0, 10)), HVRange(0, 12));
    EXPECT_EQ(HVRange(0, 2).UnionRange(HVRange(5, 1)), HVRange(0, 7));
}

TEST(Range, Intersection) {
    EXPECT_EQ(HVRange(0, 5).IntersectionRange(HVRange(5, 5)), kNotFound);
    EXPECT_EQ(HVRange(0, 5).IntersectionRange(HVRange(3, 5)), HVRange(3, 2));
    EXPECT_EQ(HVRange(2, 10).IntersectionRange(HVRange(4, 2)), HVRange(4, 2));
}

TEST(Range, RemainingBefore) {
    EXPECT_EQ(HVRange(2, 10).RangeRemainingBeforeRange(HVRange(5, 3)), HVRange(2, 3));
    EXPECT_EQ(HVRange(2, 0).RangeRemainingBeforeRange(HVRange(5, 3)), HVRange(2, 0));
    EXPECT_EQ(HVRange(2, 10).RangeRemainingBeforeRange(HVRange(5, 0)), HVRange(2, 10));
    EXPECT_EQ(HVRange(2, 10).RangeRemainingBeforeRange(kNotFound), HVRange(2, 10));
    // No check that the other range starts inside this one.
    EXPECT_EQ(HVRange(5, 10).RangeRemainingBeforeRange(HVRange(2, 1)), HVRange(5, 0xFFFFFFFFFFFFFFFDull));
}

TEST(Range, RemainingAfter) {
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(HVRange(2, 3)), HVRange(5, 5));
    EXPECT_EQ(HVRange(4, 10).RangeRemainingAfterRange(HVRange(6, 2)), HVRange(8, 2));
    EXPECT_EQ(HVRange(0, 0).RangeRemainingAfterRange(HVRange(2, 3)), kNotFound);
    EXPECT_EQ(HVRange(HVNotFound, 4).RangeRemainingAfterRange(HVRange(2, 3)), kNotFound);
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(HVRange(HVNotFound, 3)), kNotFound);
    // Ranges that do not overlap subtract the not-found location, wrapping.
    EXPECT_EQ(HVRange(0, 4).RangeRemainingAfterRange(HVRange(6, 2)), HVRange(8, 4 - HVNotFound));
    // An empty other range: from its location to this range's length.
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(HVRange(4, 0)), HVRange(4, 6));
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(HVRange(10, 0)), HVRange(10, 0));
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(HVRange(11, 0)), kNotFound);
    EXPECT_EQ(HVRange(0, 10).RangeRemainingAfterRange(kNotFound), kNotFound);
}

TEST(Range, PlatformRangesHold32BitFields) {
    CFRange platform = HVRange(0x100000005ull, 0x200000003ull);
    EXPECT_EQ(platform.location, 5);
    EXPECT_EQ(platform.length, 3);
    HVRange back(CFRangeMake(7, 2));
    EXPECT_EQ(back, HVRange(7, 2));
    back = CFRangeMake(1, 1);
    EXPECT_EQ(back, HVRange(1, 1));
    // The platform's own not-found location widens with its sign.
    EXPECT_EQ(HVRange(CFRangeMake(kCFNotFound, 0)).Location(), 0xFFFFFFFFFFFFFFFFull);
}
