#include <halvane/text/HVRange.h>

#include <algorithm>

const unsigned long long HVNotFound = 0x7FFFFFFFFFFFFFFFull;

namespace {

// The platform's range fields are 32-bit for the library: cut on the way
// in, sign-extended on the way out.
CFIndex toPlatform(unsigned long long value) { return CFIndex(int32_t(uint32_t(value))); }
unsigned long long fromPlatform(CFIndex value) {
    return static_cast<unsigned long long>(static_cast<long long>(int32_t(value)));
}

}  // namespace

HVRange::HVRange() : m_Location(HVNotFound), m_Length(0) {}

HVRange::HVRange(unsigned long long location, unsigned long long length) : m_Location(location), m_Length(length) {}

HVRange::HVRange(const CFRange& range) : m_Location(fromPlatform(range.location)), m_Length(fromPlatform(range.length)) {}

HVRange HVRange::RangeWithLocationAndLength(unsigned long long location, unsigned long long length) {
    return HVRange(location, length);
}

void HVRange::InitWithLocationAndLength(unsigned long long location, unsigned long long length) {
    m_Location = location;
    m_Length = length;
}

void HVRange::InitWithRange(const HVRange& other) { *this = other; }

HVRange& HVRange::operator=(const CFRange& range) {
    m_Location = fromPlatform(range.location);
    m_Length = fromPlatform(range.length);
    return *this;
}

HVRange::operator CFRange() const { return CFRangeMake(toPlatform(m_Location), toPlatform(m_Length)); }

unsigned long long HVRange::Location() const { return m_Location; }
unsigned long long HVRange::Length() const { return m_Length; }
void HVRange::SetLocation(unsigned long long location) { m_Location = location; }
void HVRange::SetLength(unsigned long long length) { m_Length = length; }
unsigned long long HVRange::EndOfRange() const { return m_Location + m_Length; }

void HVRange::Empty() {
    m_Location = HVNotFound;
    m_Length = 0;
}

bool HVRange::IsEmpty() const { return m_Length == 0 || m_Location == HVNotFound; }

bool HVRange::operator==(const HVRange& other) const {
    return m_Location == other.m_Location && m_Length == other.m_Length;
}

bool HVRange::IsEqualToRange(const HVRange& other) const { return *this == other; }

bool HVRange::IsLocationInRange(unsigned long long index) const {
    return m_Location <= index && index < m_Location + m_Length;
}

HVRange HVRange::UnionRange(const HVRange& other) const {
    unsigned long long location = std::min(m_Location, other.m_Location);
    unsigned long long distance = std::max(m_Location, other.m_Location) - location;
    return HVRange(location, std::max(m_Length, other.m_Length) + distance);
}

HVRange HVRange::IntersectionRange(const HVRange& other) const {
    unsigned long long start = std::max(m_Location, other.m_Location);
    unsigned long long end = std::min(EndOfRange(), other.EndOfRange());
    if (end <= start) return HVRange();
    return HVRange(start, end - start);
}

HVRange HVRange::RangeRemainingBeforeRange(const HVRange& other) const {
    HVRange result(*this);
    if (m_Length == 0 || m_Location == HVNotFound || other.m_Length == 0 || other.m_Location == HVNotFound) {
        return result;
    }
    result.m_Length = other.m_Location - m_Location;
    return result;
}

HVRange HVRange::RangeRemainingAfterRange(const HVRange& other) const {
    if (m_Length == 0 || m_Location == HVNotFound) return HVRange();
    if (other.m_Location == HVNotFound) return HVRange();
    if (other.m_Length != 0) {
        // Wrapping arithmetic, subtracting the overlap's location rather than
        // its distance from this range's start (ranges that do not overlap
        // give the not-found location there): kept exactly as callers
        // expect it.
        HVRange overlap = IntersectionRange(other);
        return HVRange(other.EndOfRange(), m_Length - overlap.m_Length - overlap.m_Location);
    }
    if (other.m_Location <= EndOfRange()) return HVRange(other.m_Location, m_Length - other.m_Location);
    return HVRange();
}
