#include <halvane/values/HVRect.h>

#include <halvane/text/HVString.h>
#include <halvane/values/detail/GeometryText.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

// Minimum and maximum that keep a NaN instead of dropping it, so that a NaN
// coordinate shows in the result (and a NaN rectangle intersects).
double smallerOf(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::numeric_limits<double>::quiet_NaN();
    return b < a ? b : a;
}

double largerOf(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::numeric_limits<double>::quiet_NaN();
    return b > a ? b : a;
}

}  // namespace

HVRect::HVRect() = default;

HVRect::HVRect(const HVPoint& origin, const HVSize& size) : m_Origin(origin), m_Size(size) {}

HVRect::HVRect(double x, double y, double width, double height) : m_Origin(x, y), m_Size(width, height) {}

HVRect HVRect::RectWithOriginAndSize(const HVPoint& origin, const HVSize& size) {
    return HVRect(origin, size);
}

HVRect HVRect::RectWithXYCoordinatesWidthAndHeight(double x, double y, double width, double height) {
    return HVRect(x, y, width, height);
}

const HVRect& HVRect::EmptyRect() {
    static const HVRect empty;
    return empty;
}

HVRect HVRect::RectFromString(const HVString& text) {
    HVRect rect;
    rect.Deserialize(text);
    return rect;
}

HVString HVRect::StringFromRect(const HVRect& rect) {
    return rect.Serialize();
}

HVPoint HVRect::Origin() const {
    return m_Origin;
}
HVSize HVRect::Size() const {
    return m_Size;
}
void HVRect::SetOrigin(const HVPoint& origin) {
    m_Origin = origin;
}
void HVRect::SetSize(const HVSize& size) {
    m_Size = size;
}

double HVRect::XCoordinate() const {
    return m_Origin.XCoordinate();
}
double HVRect::YCoordinate() const {
    return m_Origin.YCoordinate();
}
double HVRect::MinX() const {
    return m_Origin.XCoordinate();
}
double HVRect::MinY() const {
    return m_Origin.YCoordinate();
}
double HVRect::Width() const {
    return m_Size.Width();
}
double HVRect::Height() const {
    return m_Size.Height();
}
void HVRect::SetXCoordinate(double x) {
    m_Origin.SetXCoordinate(x);
}
void HVRect::SetYCoordinate(double y) {
    m_Origin.SetYCoordinate(y);
}
void HVRect::SetWidth(double width) {
    m_Size.SetWidth(width);
}
void HVRect::SetHeight(double height) {
    m_Size.SetHeight(height);
}
double HVRect::MaxX() const {
    return MinX() + Width();
}
double HVRect::MaxY() const {
    return MinY() + Height();
}
double HVRect::MidX() const {
    return MinX() + Width() / 2.0;
}
double HVRect::MidY() const {
    return MinY() + Height() / 2.0;
}

bool HVRect::IsEmpty() const {
    return IsEqualToRect(EmptyRect());
}

void HVRect::Empty() {
    m_Origin.Empty();
    m_Size.Empty();
}

bool HVRect::operator==(const HVRect& other) const {
    return m_Origin == other.m_Origin && m_Size == other.m_Size;
}
bool HVRect::operator!=(const HVRect& other) const {
    return !operator==(other);
}
bool HVRect::IsEqualToRect(const HVRect& other) const {
    return operator==(other);
}

void HVRect::OffsetByPoint(const HVPoint& offset) {
    m_Origin.OffsetByPoint(offset);
}
void HVRect::OffsetBySize(const HVSize& offset) {
    m_Origin.OffsetBySize(offset);
}
void HVRect::OffsetByXYCoordinates(double dx, double dy) {
    m_Origin.OffsetByXYCoordinates(dx, dy);
}

void HVRect::IncreaseSizeBySize(const HVSize& increase) {
    m_Size.IncreaseSizeBySize(increase);
}
void HVRect::IncreaseSizeByWidthAndHeight(double width, double height) {
    m_Size.IncreaseSizeByWidthAndHeight(width, height);
}
void HVRect::ScaleSizeBySizeScaleRatio(const HVSize& ratio) {
    m_Size.ScaleSizeBySizeScaleRatio(ratio);
}
void HVRect::ScaleSizeByWidthAndHeightScaleRatio(double widthRatio, double heightRatio) {
    m_Size.ScaleSizeByWidthAndHeightScaleRatio(widthRatio, heightRatio);
}
void HVRect::ScaleSizeByScaleFactor(double factor) {
    m_Size.ScaleSizeByScaleFactor(factor);
}

HVRect HVRect::InsetRect(double dx, double dy) const {
    return HVRect(MinX() + dx, MinY() + dy, Width() - 2.0 * dx, Height() - 2.0 * dy);
}

HVRect HVRect::OffsetRect(double dx, double dy) const {
    return HVRect(MinX() + dx, MinY() + dy, Width(), Height());
}

HVRect HVRect::IntegralRect() const {
    double left = std::floor(MinX());
    double bottom = std::floor(MinY());
    return HVRect(left, bottom, std::ceil(MaxX()) - left, std::ceil(MaxY()) - bottom);
}

HVRect HVRect::UnionRect(const HVRect& other) const {
    double left = smallerOf(MinX(), other.MinX());
    double bottom = smallerOf(MinY(), other.MinY());
    return HVRect(left, bottom, largerOf(MaxX(), other.MaxX()) - left, largerOf(MaxY(), other.MaxY()) - bottom);
}

HVRect HVRect::IntersectionRect(const HVRect& other) const {
    double left = largerOf(MinX(), other.MinX());
    double bottom = largerOf(MinY(), other.MinY());
    double right = smallerOf(MaxX(), other.MaxX());
    double top = smallerOf(MaxY(), other.MaxY());
    // Written so that a NaN edge does not count as "no overlap".
    if (right < left || top < bottom) return EmptyRect();
    return HVRect(left, bottom, right - left, top - bottom);
}

bool HVRect::IsPointInRect(const HVPoint& point) const {
    double x = point.XCoordinate();
    double y = point.YCoordinate();
    return x >= MinX() && x <= MinX() + Width() && y >= MinY() && y <= MinY() + Height();
}

bool HVRect::DoesContainRect(const HVRect& other) const {
    return other.MinX() >= MinX() && other.MaxX() <= MaxX() && other.MinY() >= MinY() && other.MaxY() <= MaxY();
}

bool HVRect::DoesIntersectRect(const HVRect& other) const {
    return !IntersectionRect(other).IsEqualToRect(EmptyRect());
}

HVString HVRect::Description() const {
    return HVString::StringWithFormat("{%@,%@}", m_Origin.Description().Ref(), m_Size.Description().Ref());
}

HVString HVRect::Serialize() const {
    return HVString::StringWithFormat("{%@,%@}", m_Origin.Serialize().Ref(), m_Size.Serialize().Ref());
}

void HVRect::Deserialize(const HVString& text) {
    std::vector<HVString> parts = halvane::detail::TextComponents(text, "},{");
    m_Origin.Deserialize(parts.size() > 0 ? parts[0] : HVString());
    m_Size.Deserialize(parts.size() > 1 ? parts[1] : HVString());
}
