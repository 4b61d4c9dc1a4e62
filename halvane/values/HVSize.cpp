#include <halvane/values/HVSize.h>

#include <halvane/text/HVString.h>
#include <halvane/values/detail/GeometryText.h>

HVSize::HVSize() : m_Width(0.0), m_Height(0.0) {}

HVSize::HVSize(double width, double height) : m_Width(width), m_Height(height) {}

HVSize HVSize::SizeWithWidthAndHeight(double width, double height) {
    return HVSize(width, height);
}

HVSize HVSize::EmptySize() {
    return HVSize();
}

HVSize HVSize::SizeFromString(const HVString& text) {
    HVSize size;
    size.Deserialize(text);
    return size;
}

HVString HVSize::StringFromSize(const HVSize& size) {
    return size.Serialize();
}

double HVSize::Width() const {
    return m_Width;
}
double HVSize::Height() const {
    return m_Height;
}
void HVSize::SetWidth(double width) {
    m_Width = width;
}
void HVSize::SetHeight(double height) {
    m_Height = height;
}

bool HVSize::IsEmpty() const {
    return m_Width == 0.0 && m_Height == 0.0;
}

void HVSize::Empty() {
    m_Width = 0.0;
    m_Height = 0.0;
}

bool HVSize::operator==(const HVSize& other) const {
    return m_Width == other.m_Width && m_Height == other.m_Height;
}
bool HVSize::operator!=(const HVSize& other) const {
    return !operator==(other);
}

void HVSize::IncreaseSizeBySize(const HVSize& increase) {
    IncreaseSizeByWidthAndHeight(increase.m_Width, increase.m_Height);
}

void HVSize::IncreaseSizeByWidthAndHeight(double width, double height) {
    m_Width += width;
    m_Height += height;
}

void HVSize::ScaleSizeBySizeScaleRatio(const HVSize& ratio) {
    ScaleSizeByWidthAndHeightScaleRatio(ratio.m_Width, ratio.m_Height);
}

void HVSize::ScaleSizeByWidthAndHeightScaleRatio(double widthRatio, double heightRatio) {
    m_Width *= widthRatio;
    m_Height *= heightRatio;
}

void HVSize::ScaleSizeByScaleFactor(double factor) {
    ScaleSizeByWidthAndHeightScaleRatio(factor, factor);
}

HVString HVSize::Description() const {
    return halvane::detail::PairDescription(m_Width, m_Height);
}

HVString HVSize::Serialize() const {
    return halvane::detail::RoundedPairText(m_Width, m_Height);
}

void HVSize::Deserialize(const HVString& text) {
    halvane::detail::ReadPairText(text, m_Width, m_Height);
}
