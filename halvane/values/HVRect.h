// HVRect: a plain rectangle, an origin and a size. Nothing is normalised:
// a negative width or height is kept and computed with as it is.
#ifndef HALVANE_VALUES_HVRECT_H
#define HALVANE_VALUES_HVRECT_H

#include <halvane/values/HVPoint.h>
#include <halvane/values/HVSerialization.h>
#include <halvane/values/HVSize.h>

class HV_EXPORT HVRect : public HVSerialization {
public:
    HVRect();
    HVRect(const HVPoint& origin, const HVSize& size);
    HVRect(double x, double y, double width, double height);
    HVRect(const HVRect& other) = default;
    HVRect& operator=(const HVRect& other) = default;

    static HVRect RectWithOriginAndSize(const HVPoint& origin, const HVSize& size);
    static HVRect RectWithXYCoordinatesWidthAndHeight(double x, double y, double width, double height);
    // The all-zero rectangle, made once.
    static const HVRect& EmptyRect();
    // Reads the Serialize() form "{{x,y},{width,height}}".
    static HVRect RectFromString(const HVString& text);
    static HVString StringFromRect(const HVRect& rect);

    HVPoint Origin() const;
    HVSize Size() const;
    void SetOrigin(const HVPoint& origin);
    void SetSize(const HVSize& size);

    double XCoordinate() const;
    double YCoordinate() const;
    double MinX() const;
    double MinY() const;
    double Width() const;
    double Height() const;
    void SetXCoordinate(double x);
    void SetYCoordinate(double y);
    void SetWidth(double width);
    void SetHeight(double height);
    double MaxX() const;
    double MaxY() const;
    double MidX() const;
    double MidY() const;

    // All four fields exactly zero.
    bool IsEmpty() const;
    void Empty();

    // Field by field, exactly.
    bool operator==(const HVRect& other) const;
    bool operator!=(const HVRect& other) const;
    bool IsEqualToRect(const HVRect& other) const;

    // Move the origin.
    void OffsetByPoint(const HVPoint& offset);
    void OffsetBySize(const HVSize& offset);
    void OffsetByXYCoordinates(double dx, double dy);

    // Change the size.
    void IncreaseSizeBySize(const HVSize& increase);
    void IncreaseSizeByWidthAndHeight(double width, double height);
    void ScaleSizeBySizeScaleRatio(const HVSize& ratio);
    void ScaleSizeByWidthAndHeightScaleRatio(double widthRatio, double heightRatio);
    void ScaleSizeByScaleFactor(double factor);

    // Each side moved inwards by dx or dy (outwards when negative).
    HVRect InsetRect(double dx, double dy) const;
    HVRect OffsetRect(double dx, double dy) const;
    // The origin rounded down and the far edges rounded up.
    HVRect IntegralRect() const;
    // The smallest rectangle that covers both, zero-sized ones included.
    HVRect UnionRect(const HVRect& other) const;
    // The overlap; the all-zero rectangle when there is none. Rectangles
    // that only touch overlap in a rectangle of zero width or height.
    HVRect IntersectionRect(const HVRect& other) const;
    // Every edge belongs to the rectangle.
    bool IsPointInRect(const HVPoint& point) const;
    bool DoesContainRect(const HVRect& other) const;
    // True unless the intersection is the all-zero rectangle; a NaN field
    // differs from zero, so NaN input intersects.
    bool DoesIntersectRect(const HVRect& other) const;

    // "{%@,%@}" of the origin's and the size's descriptions.
    HVString Description() const;
    // "{%@,%@}" of the origin's and the size's Serialize() texts.
    HVString Serialize() const override;
    // Splits at "},{" and hands the parts to the origin and the size.
    void Deserialize(const HVString& text) override;

private:
    HVPoint m_Origin;
    HVSize m_Size;
};

#endif  // HALVANE_VALUES_HVRECT_H
