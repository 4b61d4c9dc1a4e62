// HVSize: a plain width and height.
#ifndef HALVANE_VALUES_HVSIZE_H
#define HALVANE_VALUES_HVSIZE_H

#include <halvane/values/HVSerialization.h>

class HV_EXPORT HVSize : public HVSerialization {
public:
    HVSize();
    HVSize(double width, double height);
    HVSize(const HVSize& other) = default;
    HVSize& operator=(const HVSize& other) = default;

    static HVSize SizeWithWidthAndHeight(double width, double height);
    // The all-zero size.
    static HVSize EmptySize();
    // Reads the Serialize() form "{width,height}".
    static HVSize SizeFromString(const HVString& text);
    static HVString StringFromSize(const HVSize& size);

    double Width() const;
    double Height() const;
    void SetWidth(double width);
    void SetHeight(double height);

    // Both dimensions zero.
    bool IsEmpty() const;
    void Empty();

    bool operator==(const HVSize& other) const;
    bool operator!=(const HVSize& other) const;

    void IncreaseSizeBySize(const HVSize& increase);
    void IncreaseSizeByWidthAndHeight(double width, double height);
    // Each dimension multiplied by its own ratio.
    void ScaleSizeBySizeScaleRatio(const HVSize& ratio);
    void ScaleSizeByWidthAndHeightScaleRatio(double widthRatio, double heightRatio);
    void ScaleSizeByScaleFactor(double factor);

    // "{%f,%f}".
    HVString Description() const;
    // "{%1.0f,%1.0f}", as for points.
    HVString Serialize() const override;
    // As for points, into width and height.
    void Deserialize(const HVString& text) override;

private:
    double m_Width;
    double m_Height;
};

#endif  // HALVANE_VALUES_HVSIZE_H
