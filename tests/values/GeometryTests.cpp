// Points, sizes and rectangles: text forms, parsing and rectangle geometry.
#include <halvane/text/HVString.h>
#include <halvane/values/HVPoint.h>
#include <halvane/values/HVRect.h>
#include <halvane/values/HVSize.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

std::string text(const HVString& string) {
    return std::string(string);
}

void expectRect(const HVRect& rect, double x, double y, double width, double height) {
    EXPECT_DOUBLE_EQ(rect.MinX(), x);
    EXPECT_DOUBLE_EQ(rect.MinY(), y);
    EXPECT_DOUBLE_EQ(rect.Width(), width);
    EXPECT_DOUBLE_EQ(rect.Height(), height);
}

const double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(GeometryText, PointAndSizeRoundToWholeNumbersWhenSerialized) {
    EXPECT_EQ(text(HVPoint(1.4, 2.6).Serialize()), "{1,3}");
    EXPECT_EQ(text(HVPoint(-0.4, 7.5).Serialize()), "{-0,8}");
    EXPECT_EQ(text(HVPoint::StringFromPoint(HVPoint(10, -20))), "{10,-20}");
    EXPECT_EQ(text(HVSize(3, 4.49).Serialize()), "{3,4}");
    EXPECT_EQ(text(HVSize::StringFromSize(HVSize(0.5, 1.5))), "{0,2}");
}

TEST(GeometryText, DescriptionsKeepSixDecimals) {
    EXPECT_EQ(text(HVPoint(1.4, -2.6).Description()), "{1.400000,-2.600000}");
    EXPECT_EQ(text(HVSize(3, 4).Description()), "{3.000000,4.000000}");
    EXPECT_EQ(text(HVRect(1.4, 2.6, 3, 4).Description()), "{{1.400000,2.600000},{3.000000,4.000000}}");
}

TEST(GeometryText, RectangleNestsTheTextsOfItsParts) {
    HVRect rect = HVRect::RectWithOriginAndSize(HVPoint(1.4, 2.6), HVSize(3, 4));
    EXPECT_EQ(text(rect.Serialize()), "{{1,3},{3,4}}");
    EXPECT_EQ(text(HVRect::StringFromRect(HVRect(-5, 0, 100.5, 0.2))), "{{-5,0},{100,0}}");
    EXPECT_EQ(text(HVRect::EmptyRect().Serialize()), "{{0,0},{0,0}}");
}

TEST(GeometryText, PointsAndSizesReadBackWithFractions) {
    HVPoint point = HVPoint::PointFromString("{1.25,-3.5}");
    EXPECT_EQ(point, HVPoint(1.25, -3.5));
    EXPECT_EQ(HVSize::SizeFromString("{640,480}"), HVSize(640, 480));
    // Every brace goes, wherever it stands.
    EXPECT_EQ(HVPoint::PointFromString("}}7{,{8"), HVPoint(7, 8));
    // Only the first two parts are read.
    EXPECT_EQ(HVPoint::PointFromString("{1,2,3}"), HVPoint(1, 2));
}

TEST(GeometryText, MissingOrUnreadablePartsReadAsZero) {
    HVPoint point(9, 9);
    point.Deserialize("{5}");
    EXPECT_EQ(point, HVPoint(5, 0));
    point.Deserialize("");
    EXPECT_EQ(point, HVPoint(0, 0));
    point = HVPoint(9, 9);
    point.Deserialize(HVString::SharedNullString());
    EXPECT_EQ(point, HVPoint(0, 0));
    EXPECT_EQ(HVSize::SizeFromString("{wide,tall}"), HVSize(0, 0));
}

TEST(GeometryText, RectangleReadsOriginAndSize) {
    HVRect rect = HVRect::RectFromString("{{1.5,2},{30,40.25}}");
    expectRect(rect, 1.5, 2, 30, 40.25);
    // Its own text reads back as the rounded rectangle.
    expectRect(HVRect::RectFromString(HVRect(1.4, 2.6, 3, 4).Serialize()), 1, 3, 3, 4);
    // Without the separator the size is left at zero.
    expectRect(HVRect::RectFromString("{{7,8}}"), 7, 8, 0, 0);
}

TEST(Point, OffsetsAndEmptiness) {
    HVPoint point = HVPoint::PointWithXYCoordinates(1, 2);
    EXPECT_FALSE(point.IsEmpty());
    point.OffsetByPoint(HVPoint(10, 20));
    point.OffsetBySize(HVSize(100, 200));
    point.OffsetByXYCoordinates(-0.5, 0.5);
    EXPECT_DOUBLE_EQ(point.XCoordinate(), 110.5);
    EXPECT_DOUBLE_EQ(point.YCoordinate(), 222.5);
    point.SetXCoordinate(0);
    EXPECT_FALSE(point.IsEmpty());
    point.SetYCoordinate(0);
    EXPECT_TRUE(point.IsEmpty());
    point = HVPoint(3, 4);
    point.Empty();
    EXPECT_TRUE(point.IsEmpty());
    EXPECT_TRUE(HVPoint().IsEmpty());
    EXPECT_NE(HVPoint(1, 2), HVPoint(1, 2.0000001));
}

TEST(Size, GrowthAndScaling) {
    HVSize size = HVSize::SizeWithWidthAndHeight(2, 3);
    size.IncreaseSizeBySize(HVSize(1, 1));
    size.IncreaseSizeByWidthAndHeight(-1, 2);
    EXPECT_EQ(size, HVSize(2, 6));
    size.ScaleSizeBySizeScaleRatio(HVSize(2, 0.5));
    EXPECT_EQ(size, HVSize(4, 3));
    size.ScaleSizeByWidthAndHeightScaleRatio(0.25, 3);
    EXPECT_EQ(size, HVSize(1, 9));
    size.ScaleSizeByScaleFactor(-2);
    EXPECT_EQ(size, HVSize(-2, -18));
    size.SetWidth(0);
    size.SetHeight(0);
    EXPECT_TRUE(size.IsEmpty());
    EXPECT_TRUE(HVSize::EmptySize().IsEmpty());
    size = HVSize(1, 0);
    EXPECT_FALSE(size.IsEmpty());
    size.Empty();
    EXPECT_EQ(size, HVSize::EmptySize());
}

TEST(Rect, AccessorsAndEdges) {
    HVRect rect = HVRect::RectWithXYCoordinatesWidthAndHeight(10, 20, 30, 40);
    EXPECT_EQ(rect.Origin(), HVPoint(10, 20));
    EXPECT_EQ(rect.Size(), HVSize(30, 40));
    EXPECT_DOUBLE_EQ(rect.XCoordinate(), 10);
    EXPECT_DOUBLE_EQ(rect.YCoordinate(), 20);
    EXPECT_DOUBLE_EQ(rect.MaxX(), 40);
    EXPECT_DOUBLE_EQ(rect.MaxY(), 60);
    EXPECT_DOUBLE_EQ(rect.MidX(), 25);
    EXPECT_DOUBLE_EQ(rect.MidY(), 40);
    rect.SetXCoordinate(1);
    rect.SetHeight(4);
    rect.SetSize(HVSize(5, rect.Height()));
    expectRect(rect, 1, 20, 5, 4);
}

TEST(Rect, MovesTheOriginAndChangesTheSize) {
    HVRect rect(1, 2, 3, 4);
    rect.OffsetBySize(HVSize(10, 10));
    rect.OffsetByXYCoordinates(-2, 0.5);
    expectRect(rect, 9, 12.5, 3, 4);
    rect.IncreaseSizeByWidthAndHeight(3, -1);
    rect.ScaleSizeBySizeScaleRatio(HVSize(0.5, 2));
    expectRect(rect, 9, 12.5, 3, 6);
}

TEST(Rect, EmptinessAndEqualityAreExact) {
    EXPECT_TRUE(HVRect().IsEmpty());
    EXPECT_TRUE(HVRect(0, -0.0, 0, 0).IsEmpty());
    EXPECT_FALSE(HVRect(0, 0, 0, 1e-300).IsEmpty());
    EXPECT_FALSE(HVRect(kNaN, 0, 0, 0).IsEmpty());
    HVRect rect(1, 2, 3, 4);
    rect.Empty();
    EXPECT_TRUE(rect.IsEqualToRect(HVRect::EmptyRect()));
    EXPECT_EQ(&HVRect::EmptyRect(), &HVRect::EmptyRect());
    EXPECT_TRUE(HVRect(1, 2, 3, 4) == HVRect(1, 2, 3, 4));
    EXPECT_TRUE(HVRect(1, 2, 3, 4) != HVRect(1, 2, 3, 5));
    EXPECT_FALSE(HVRect(kNaN, 2, 3, 4) == HVRect(kNaN, 2, 3, 4));
}

TEST(Rect, DerivedRectangles) {
    HVRect rect(1, 2, 10, 20);
    expectRect(rect.InsetRect(2, 3), 3, 5, 6, 14);
    expectRect(rect.InsetRect(-1, -1), 0, 1, 12, 22);
    expectRect(rect.OffsetRect(-1, 5), 0, 7, 10, 20);
    expectRect(HVRect(1.5, -2.5, 3.2, 1.1).IntegralRect(), 1, -3, 4, 2);
    expectRect(HVRect(1, 2, 3, 4).IntegralRect(), 1, 2, 3, 4);
    expectRect(HVRect(0, 0, 2, 2).UnionRect(HVRect(5, -1, 1, 1)), 0, -1, 6, 3);
    // The all-zero rectangle is a point at the origin like any other.
    expectRect(HVRect::EmptyRect().UnionRect(HVRect(5, 5, 1, 1)), 0, 0, 6, 6);
}

TEST(Rect, Intersections) {
    HVRect rect(0, 0, 10, 10);
    expectRect(rect.IntersectionRect(HVRect(5, -5, 10, 10)), 5, 0, 5, 5);
    EXPECT_TRUE(rect.DoesIntersectRect(HVRect(5, -5, 10, 10)));
    // Apart: the all-zero rectangle.
    EXPECT_TRUE(rect.IntersectionRect(HVRect(20, 20, 1, 1)).IsEmpty());
    EXPECT_FALSE(rect.DoesIntersectRect(HVRect(20, 20, 1, 1)));
    // Touching along an edge: a zero-width overlap, which intersects.
    expectRect(rect.IntersectionRect(HVRect(10, 2, 5, 5)), 10, 2, 0, 5);
    EXPECT_TRUE(rect.DoesIntersectRect(HVRect(10, 2, 5, 5)));
    // Unless every field of that overlap is zero: a corner at the origin.
    EXPECT_FALSE(rect.DoesIntersectRect(HVRect(-5, -5, 5, 5)));
    // A NaN field is not zero.
    EXPECT_TRUE(rect.DoesIntersectRect(HVRect(kNaN, 0, 1, 1)));
    EXPECT_TRUE(std::isnan(rect.IntersectionRect(HVRect(0, 0, kNaN, 1)).Width()));
}

TEST(Rect, ContainmentIncludesEveryEdge) {
    HVRect rect(0, 0, 10, 20);
    EXPECT_TRUE(rect.IsPointInRect(HVPoint(10, 5)));
    EXPECT_TRUE(rect.IsPointInRect(HVPoint(0, 0)));
    EXPECT_TRUE(rect.IsPointInRect(HVPoint(10, 20)));
    EXPECT_FALSE(rect.IsPointInRect(HVPoint(10.001, 5)));
    EXPECT_FALSE(rect.IsPointInRect(HVPoint(5, -0.001)));
    EXPECT_TRUE(rect.DoesContainRect(rect));
    EXPECT_TRUE(rect.DoesContainRect(HVRect(0, 5, 10, 15)));
    EXPECT_FALSE(rect.DoesContainRect(HVRect(0, 5, 10, 16)));
    EXPECT_FALSE(rect.DoesContainRect(HVRect(-1, 5, 2, 2)));
}
