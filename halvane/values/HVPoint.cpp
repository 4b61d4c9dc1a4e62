#include <halvane/values/HVPoint.h>

#include <halvane/text/HVString.h>
#include <halvane/values/HVSize.h>
#include <halvane/values/detail/GeometryText.h>

HVPoint::HVPoint() : m_X(0.0), m_Y(0.0) {}

HVPoint::HVPoint(double x, double y) : m_X(x), m_Y(y) {}

HVPoint HVPoint::PointWithXYCoordinates(double x, double y) {
    return HVPoint(x, y);
}

HVPoint HVPoint::PointFromString(const HVString& text) {
    HVPoint point;
    point.Deserialize(text);
    return point;
}

HVString HVPoint::StringFromPoint(const HVPoint& point) {
    return point.Serialize();
}

double HVPoint::XCoordinate() const {
    return m_X;
}
double HVPoint::YCoordinate() const {
    return m_Y;
}
void HVPoint::SetXCoordinate(double x) {
    m_X = x;
}
void HVPoint::SetYCoordinate(double y) {
    m_Y = y;
}

bool HVPoint::IsEmpty() const {
    return m_X == 0.0 && m_Y == 0.0;
}

void HVPoint::Empty() {
    m_X = 0.0;
    m_Y = 0.0;
}

bool HVPoint::operator==(const HVPoint& other) const {
    return m_X == other.m_X && m_Y == other.m_Y;
}
bool HVPoint::operator!=(const HVPoint& other) const {
    return !operator==(other);
}

void HVPoint::OffsetByPoint(const HVPoint& offset) {
    OffsetByXYCoordinates(offset.m_X, offset.m_Y);
}

void HVPoint::OffsetBySize(const HVSize& offset) {
    OffsetByXYCoordinates(offset.Width(), offset.Height());
}

void HVPoint::OffsetByXYCoordinates(double dx, double dy) {
    m_X += dx;
    m_Y += dy;
}

HVString HVPoint::Description() const {
    return halvane::detail::PairDescription(m_X, m_Y);
}

HVString HVPoint::Serialize() const {
    return halvane::detail::RoundedPairText(m_X, m_Y);
}

void HVPoint::Deserialize(const HVString& text) {
    halvane::detail::ReadPairText(text, m_X, m_Y);
}
