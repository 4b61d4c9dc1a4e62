// HVRange: a location and a length, both unsigned 64-bit. A search that
// finds nothing answers the not-found location with length 0.
#ifndef HALVANE_TEXT_HVRANGE_H
#define HALVANE_TEXT_HVRANGE_H

#include <halvane/core/HVExport.h>

#include <CoreFoundation/CFBase.h>

// The location of a failed search.
HV_EXPORT extern const unsigned long long HVNotFound;

class HV_EXPORT HVRange {
public:
    HVRange();
    HVRange(unsigned long long location, unsigned long long length);
    HVRange(const HVRange& other) = default;
    // The platform's fields are cut to 32 bits on the way in and widened
    // back on the way out.
    HVRange(const CFRange& range);

    static HVRange RangeWithLocationAndLength(unsigned long long location, unsigned long long length);

    void InitWithLocationAndLength(unsigned long long location, unsigned long long length);
    void InitWithRange(const HVRange& other);

    HVRange& operator=(const HVRange& other) = default;
    HVRange& operator=(const CFRange& range);
    operator CFRange() const;

    unsigned long long Location() const;
    unsigned long long Length() const;
    void SetLocation(unsigned long long location);
    void SetLength(unsigned long long length);
    unsigned long long EndOfRange() const;

    void Empty();
    bool IsEmpty() const;

    bool operator==(const HVRange& other) const;
    bool IsEqualToRange(const HVRange& other) const;
    bool IsLocationInRange(unsigned long long index) const;

    // Not the covering range: the larger length plus the distance between
    // the locations. Kept so: callers rely on the formula.
    HVRange UnionRange(const HVRange& other) const;
    HVRange IntersectionRange(const HVRange& other) const;
    HVRange RangeRemainingBeforeRange(const HVRange& other) const;
    HVRange RangeRemainingAfterRange(const HVRange& other) const;

private:
    unsigned long long m_Location;
    unsigned long long m_Length;
};

#endif  // HALVANE_TEXT_HVRANGE_H
