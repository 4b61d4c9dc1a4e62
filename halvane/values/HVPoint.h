// HVPoint: a plain x and y coordinate pair.
#ifndef HALVANE_VALUES_HVPOINT_H
#define HALVANE_VALUES_HVPOINT_H

#include <halvane/values/HVSerialization.h>

class HVSize;

class HV_EXPORT HVPoint : public HVSerialization {
public:
    HVPoint();
    HVPoint(double x, double y);
    HVPoint(const HVPoint& other) = default;
    HVPoint& operator=(const HVPoint& other) = default;

    static HVPoint PointWithXYCoordinates(double x, double y);
    // Reads the Serialize() form "{x,y}".
    static HVPoint PointFromString(const HVString& text);
    static HVString StringFromPoint(const HVPoint& point);

    double XCoordinate() const;
    double YCoordinate() const;
    void SetXCoordinate(double x);
    void SetYCoordinate(double y);

    // Both coordinates zero.
    bool IsEmpty() const;
    void Empty();

    bool operator==(const HVPoint& other) const;
    bool operator!=(const HVPoint& other) const;

    void OffsetByPoint(const HVPoint& offset);
    void OffsetBySize(const HVSize& offset);
    void OffsetByXYCoordinates(double dx, double dy);

    // "{%f,%f}".
    HVString Description() const;
    // "{%1.0f,%1.0f}": whole numbers, rounded.
    HVString Serialize() const override;
    // Drops every brace, splits at "," and reads the first two parts as
    // numbers (a missing or unreadable part reads as 0).
    void Deserialize(const HVString& text) override;

private:
    double m_X;
    double m_Y;
};

#endif  // HALVANE_VALUES_HVPOINT_H
