// HVString: numbers read from text.
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cmath>
#include <limits>

namespace {

CFStringRef asString(const HVString& text) {
    return static_cast<CFStringRef>(text.Ref());
}

constexpr double kTwoToThe63 = 9223372036854775808.0;

// Truncation toward zero; values the type cannot hold saturate and NaN
// reads 0, where a bare conversion would be undefined.
long long truncatedToLongLong(double value) {
    if (std::isnan(value)) return 0;
    if (value >= kTwoToThe63) return std::numeric_limits<long long>::max();
    if (value <= -kTwoToThe63) return std::numeric_limits<long long>::min();
    return static_cast<long long>(value);
}

}  // namespace

int HVString::IntValue() const {
    if (IsEmpty()) return 0;
    return int(CFStringGetIntValue(asString(*this)));
}

unsigned int HVString::UnsignedIntValue() const {
    return static_cast<unsigned int>(IntValue());
}

long long HVString::IntegerValue() const {
    return IntValue();
}

// The 32-bit reading, sign-extended: "-1" gives every bit set.
unsigned long long HVString::UIntegerValue() const {
    return static_cast<unsigned long long>(IntegerValue());
}

double HVString::DoubleValue() const {
    if (IsEmpty()) return 0;
    return CFStringGetDoubleValue(asString(*this));
}

float HVString::FloatValue() const {
    return static_cast<float>(DoubleValue());
}

long long HVString::LongLongValue() const {
    return truncatedToLongLong(DoubleValue());
}

unsigned long long HVString::ULongLongValue() const {
    double value = DoubleValue();
    if (value >= kTwoToThe63) {
        // Above the signed range: 2^63 comes off before the conversion and
        // goes back on after it, so the value stays exact. 2^64 and more
        // saturate.
        if (value >= 2 * kTwoToThe63) return std::numeric_limits<unsigned long long>::max();
        return static_cast<unsigned long long>(static_cast<long long>(value - kTwoToThe63)) + (1ull << 63);
    }
    // Negative values wrap around, as the signed conversion leaves them.
    return static_cast<unsigned long long>(truncatedToLongLong(value));
}

bool HVString::BoolValue() const {
    if (IsEmpty()) return false;
    switch (CFStringGetCharacterAtIndex(asString(*this), 0)) {
        case u'Y':
        case u'y':
        case u'T':
        case u't':
            return true;
        default:
            return CFStringGetIntValue(asString(*this)) != 0;
    }
}
