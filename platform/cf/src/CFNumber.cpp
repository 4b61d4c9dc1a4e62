// CFNumber: an immutable signed, unsigned or floating-point value.
//
// A number is one heap block: the header, whose class bits hold the stored
// type code (1 to 6, or 39 to 43 for unsigned integers), and eight bytes of
// value. Every C-name type code is stored as its fixed-width counterpart.
// Conversions, comparison and hashing work on the exact value: an integer
// as a sign and a 64-bit magnitude (which covers both SInt64 and UInt64),
// a float as a double (Float32 widens exactly).
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFNumber.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

union NumberStorage {
    int64_t s;   // signed integer codes 1 to 4
    uint64_t u;  // unsigned codes 39 to 43
    float f;     // Float32 (5)
    double d;    // Float64 (6)
};

struct __CFNumber {
    CFRuntimeBase base;
    NumberStorage value;
};

// kCFNumberLongType, kCFNumberCFIndexType and kCFNumberULongType are stored
// as 64-bit values.
static_assert(sizeof(long) == 8 && sizeof(unsigned long) == 8, "an LP64 platform is assumed");

namespace halvane::detail {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr uint64_t kHashFactor = 2654435761u;
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

// The shared values: never freed, retain and release ignore them.
constinit __CFNumber nanNumber = {immortalHeader(kCFNumberTypeID, kCFNumberFloat64Type),
                                  {.d = std::numeric_limits<double>::quiet_NaN()}};
constinit __CFNumber positiveInfinityNumber = {immortalHeader(kCFNumberTypeID, kCFNumberFloat64Type), {.d = kInfinity}};
constinit __CFNumber negativeInfinityNumber = {immortalHeader(kCFNumberTypeID, kCFNumberFloat64Type),
                                               {.d = -kInfinity}};
constinit __CFNumber float32Zero = {immortalHeader(kCFNumberTypeID, kCFNumberFloat32Type), {.f = 0.0f}};
constinit __CFNumber float32One = {immortalHeader(kCFNumberTypeID, kCFNumberFloat32Type), {.f = 1.0f}};
constinit __CFNumber float64Zero = {immortalHeader(kCFNumberTypeID, kCFNumberFloat64Type), {.d = 0.0}};
constinit __CFNumber float64One = {immortalHeader(kCFNumberTypeID, kCFNumberFloat64Type), {.d = 1.0}};

// The fixed-width code a type code is stored as; 0 for an unknown code.
CFNumberType storedType(CFNumberType type) {
    switch (type) {
        case kCFNumberSInt8Type:
        case kCFNumberCharType:
            return kCFNumberSInt8Type;
        case kCFNumberSInt16Type:
        case kCFNumberShortType:
            return kCFNumberSInt16Type;
        case kCFNumberSInt32Type:
        case kCFNumberIntType:
            return kCFNumberSInt32Type;
        case kCFNumberSInt64Type:
        case kCFNumberLongType:
        case kCFNumberLongLongType:
        case kCFNumberCFIndexType:
        case kCFNumberNSIntegerType:
            return kCFNumberSInt64Type;
        case kCFNumberFloat32Type:
        case kCFNumberFloatType:
            return kCFNumberFloat32Type;
        case kCFNumberFloat64Type:
        case kCFNumberDoubleType:
        case kCFNumberCGFloatType:
            return kCFNumberFloat64Type;
        case kCFNumberUInt8Type:
        case kCFNumberUInt16Type:
        case kCFNumberUInt32Type:
        case kCFNumberULongType:
        case kCFNumberUInt64Type:
            return type;
        default:
            return 0;
    }
}

bool isFloatType(CFNumberType stored) {
    return stored == kCFNumberFloat32Type || stored == kCFNumberFloat64Type;
}
bool isUnsignedType(CFNumberType stored) {
    return stored >= kCFNumberUInt8Type;
}

unsigned bitWidth(CFNumberType stored) {
    switch (stored) {
        case kCFNumberSInt8Type:
        case kCFNumberUInt8Type:
            return 8;
        case kCFNumberSInt16Type:
        case kCFNumberUInt16Type:
            return 16;
        case kCFNumberSInt32Type:
        case kCFNumberUInt32Type:
        case kCFNumberFloat32Type:
            return 32;
        default:
            return 64;
    }
}

const char* typeName(CFNumberType stored) {
    switch (stored) {
        case kCFNumberSInt8Type:
            return "kCFNumberSInt8Type";
        case kCFNumberSInt16Type:
            return "kCFNumberSInt16Type";
        case kCFNumberSInt32Type:
            return "kCFNumberSInt32Type";
        case kCFNumberSInt64Type:
            return "kCFNumberSInt64Type";
        case kCFNumberFloat32Type:
            return "kCFNumberFloat32Type";
        case kCFNumberFloat64Type:
            return "kCFNumberFloat64Type";
        case kCFNumberUInt8Type:
            return "kCFNumberUInt8Type";
        case kCFNumberUInt16Type:
            return "kCFNumberUInt16Type";
        case kCFNumberUInt32Type:
            return "kCFNumberUInt32Type";
        case kCFNumberULongType:
            return "kCFNumberULongType";
        default:
            return "kCFNumberUInt64Type";
    }
}

CFNumberType storedTypeOf(CFNumberRef n) {
    return CFNumberType(classBits(n));
}

// An integer in [-2^63, 2^64 - 1]; zero is never negative.
struct Integer {
    bool negative;
    uint64_t magnitude;

    // The value modulo 2^64, the bits a C conversion keeps.
    uint64_t bits() const { return negative ? 0 - magnitude : magnitude; }
};

Integer integerFromSigned(int64_t value) {
    return value < 0 ? Integer{true, 0 - uint64_t(value)} : Integer{false, uint64_t(value)};
}

int compareIntegers(Integer a, Integer b) {
    if (a.negative != b.negative) return a.negative ? -1 : 1;
    if (a.magnitude == b.magnitude) return 0;
    bool aSmaller = a.magnitude < b.magnitude;
    return (aSmaller != a.negative) ? -1 : 1;
}

bool fitsSigned(Integer value, unsigned width) {
    uint64_t limit = uint64_t(1) << (width - 1);
    return value.negative ? value.magnitude <= limit : value.magnitude < limit;
}

bool fitsUnsigned(Integer value, unsigned width) {
    return !value.negative && (width == 64 || value.magnitude < (uint64_t(1) << width));
}

// A double with no fractional part inside [-2^63, 2^64) as an integer.
Integer integerFromIntegralDouble(double t) {
    return t < 0 ? Integer{true, uint64_t(-t)} : Integer{false, uint64_t(t)};
}

// Exact comparison of an integer with a double that is not NaN.
int compareIntegerWithDouble(Integer a, double d) {
    if (d >= kTwoTo64) return -1;
    if (d < -kTwoTo63) return 1;
    double whole = std::trunc(d);
    if (int order = compareIntegers(a, integerFromIntegralDouble(whole))) return order;
    double fraction = d - whole;
    return fraction > 0 ? -1 : (fraction < 0 ? 1 : 0);
}

// The stored value without loss.
struct Value {
    CFNumberType type;  // stored type code
    Integer integer;    // when not a float type
    double real;        // when a float type
};

Value valueOf(CFNumberRef n) {
    CFNumberType type = storedTypeOf(n);
    if (type == kCFNumberFloat32Type) return {type, {}, double(n->value.f)};
    if (type == kCFNumberFloat64Type) return {type, {}, n->value.d};
    if (isUnsignedType(type)) return {type, {false, n->value.u}, 0};
    return {type, integerFromSigned(n->value.s), 0};
}

// a is an integer, b a float. NaN sits between the negative integers and
// zero; -0.0 just below integer zero.
int compareIntegerWithFloat(Integer a, double b) {
    if (std::isnan(b)) return a.negative ? -1 : 1;
    int order = compareIntegerWithDouble(a, b);
    if (order == 0 && b == 0 && std::signbit(b)) return 1;
    return order;
}

// NaN equals NaN and sorts between the values with a negative sign bit and
// those with a positive one; -0.0 sorts below +0.0.
int compareFloats(double a, double b) {
    bool aNaN = std::isnan(a), bNaN = std::isnan(b);
    if (aNaN || bNaN) {
        if (aNaN && bNaN) return 0;
        if (aNaN) return std::signbit(b) ? 1 : -1;
        return std::signbit(a) ? -1 : 1;
    }
    if (std::signbit(a) != std::signbit(b)) return std::signbit(a) ? -1 : 1;
    return a < b ? -1 : (a > b ? 1 : 0);
}

int compareValues(const Value& a, const Value& b) {
    bool aFloat = isFloatType(a.type), bFloat = isFloatType(b.type);
    if (!aFloat && !bFloat) return compareIntegers(a.integer, b.integer);
    if (aFloat && bFloat) return compareFloats(a.real, b.real);
    if (!aFloat) return compareIntegerWithFloat(a.integer, b.real);
    return -compareIntegerWithFloat(b.integer, a.real);
}

// --- Reading values in and writing them out -------------------------------

template <typename T>
T load(const void* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <typename T>
void store(void* to, T value) {
    std::memcpy(to, &value, sizeof value);
}

// Writes the low bits of an integer in the width and signedness of a
// stored integer type (C++20 makes the narrowing conversions modular).
void storeInteger(void* to, CFNumberType stored, Integer value) {
    uint64_t bits = value.bits();
    switch (stored) {
        case kCFNumberSInt8Type:
            return store(to, int8_t(bits));
        case kCFNumberSInt16Type:
            return store(to, int16_t(bits));
        case kCFNumberSInt32Type:
            return store(to, int32_t(bits));
        case kCFNumberSInt64Type:
            return store(to, int64_t(bits));
        case kCFNumberUInt8Type:
            return store(to, uint8_t(bits));
        case kCFNumberUInt16Type:
            return store(to, uint16_t(bits));
        case kCFNumberUInt32Type:
            return store(to, uint32_t(bits));
        default:
            return store(to, bits);
    }
}

// Integer to integer: the low bits, exact when the value fits. 8- and
// 16-bit signed targets also accept values that fit the unsigned type of
// the same width, as callers storing unsigned chars and shorts in the
// signed codes rely on.
bool convertInteger(Integer value, CFNumberType target, void* out) {
    unsigned width = bitWidth(target);
    if (target == kCFNumberFloat32Type) {
        float result = value.negative ? -float(value.magnitude) : float(value.magnitude);
        store(out, result);
        return compareIntegerWithDouble(value, double(result)) == 0;
    }
    if (target == kCFNumberFloat64Type) {
        double result = value.negative ? -double(value.magnitude) : double(value.magnitude);
        store(out, result);
        return compareIntegerWithDouble(value, result) == 0;
    }
    storeInteger(out, target, value);
    if (isUnsignedType(target)) return fitsUnsigned(value, width);
    return fitsSigned(value, width) || (width <= 16 && fitsUnsigned(value, width));
}

// Float to integer: truncation toward zero, saturation at the target's
// limits and NaN as 0 (the last two report a loss).
bool convertFloatToInteger(double value, CFNumberType target, void* out) {
    unsigned width = bitWidth(target);
    bool isUnsigned = isUnsignedType(target);
    Integer lowest = isUnsigned ? Integer{false, 0} : Integer{true, uint64_t(1) << (width - 1)};
    Integer highest = isUnsigned ? Integer{false, width == 64 ? ~uint64_t(0) : (uint64_t(1) << width) - 1}
                                 : Integer{false, (uint64_t(1) << (width - 1)) - 1};
    if (std::isnan(value)) {
        storeInteger(out, target, Integer{false, 0});
        return false;
    }
    double whole = std::trunc(value);
    if (compareIntegerWithDouble(lowest, whole) > 0) {
        storeInteger(out, target, lowest);
        return false;
    }
    if (compareIntegerWithDouble(highest, whole) < 0) {
        storeInteger(out, target, highest);
        return false;
    }
    storeInteger(out, target, integerFromIntegralDouble(whole));
    return whole == value;
}

// Float to float: widening is exact (a NaN is always stored as the Float64
// constant, so no Float32 NaN reaches here); narrowing is exact when the
// value survives the round trip, which a NaN never does.
bool convertFloat(double value, CFNumberType source, CFNumberType target, void* out) {
    if (target == kCFNumberFloat64Type) {
        store(out, value);
        return true;
    }
    float narrowed = float(value);
    store(out, narrowed);
    if (source == kCFNumberFloat32Type) return true;
    return double(narrowed) == value;
}

bool convertValue(const Value& value, CFNumberType target, void* out) {
    if (!isFloatType(value.type)) return convertInteger(value.integer, target, out);
    if (isFloatType(target)) return convertFloat(value.real, value.type, target, out);
    return convertFloatToInteger(value.real, target, out);
}

// --- Class callbacks --------------------------------------------------------

Boolean equalNumbers(CFTypeRef a, CFTypeRef b) {
    return compareValues(valueOf(static_cast<CFNumberRef>(a)), valueOf(static_cast<CFNumberRef>(b))) == 0;
}

// Integers hash as |i| * 2654435761; floats hash their integral part the
// same way and add the fraction's bits, so integral floats hash like the
// equal integers.
CFHashCode hashNumber(CFTypeRef cf) {
    Value value = valueOf(static_cast<CFNumberRef>(cf));
    if (!isFloatType(value.type)) return value.integer.magnitude * kHashFactor;
    if (!std::isfinite(value.real)) return std::bit_cast<uint64_t>(value.real) * kHashFactor;
    double magnitude = std::fabs(value.real);
    double whole = std::trunc(magnitude);
    double wholeModulo = whole < kTwoTo64 ? whole : std::fmod(whole, kTwoTo64);
    return uint64_t(wholeModulo) * kHashFactor + uint64_t((magnitude - whole) * kTwoTo64);
}

void appendFloatSpecial(TextBuilder& text, double value, bool signedZero) {
    if (std::isnan(value)) {
        text.ascii("nan");
    } else if (std::isinf(value)) {
        text.ascii(value > 0 ? "+infinity" : "-infinity");
    } else if (signedZero) {
        text.ascii(std::signbit(value) ? "-0.0" : "+0.0");
    } else {
        text.ascii("0.0");
    }
}

bool isSpecialFloat(double value) {
    return !std::isfinite(value) || value == 0;
}

void appendInteger(TextBuilder& text, Integer value, bool alwaysSigned) {
    if (value.negative || alwaysSigned) text.ascii(value.negative ? "-" : "+");
    text.format("%llu", static_cast<unsigned long long>(value.magnitude));
}

CFStringRef copyNumberFormattingDescription(CFTypeRef cf, CFDictionaryRef) {
    Value value = valueOf(static_cast<CFNumberRef>(cf));
    TextBuilder text;
    if (!isFloatType(value.type)) {
        appendInteger(text, value.integer, false);
    } else if (isSpecialFloat(value.real)) {
        appendFloatSpecial(text, value.real, false);
    } else {
        text.format("%.17g", value.real);
    }
    return text.create();
}

CFStringRef copyNumberDebugDescription(CFTypeRef cf) {
    Value value = valueOf(static_cast<CFNumberRef>(cf));
    TextBuilder text;
    text.ascii("<CFNumber ").pointer(cf).ascii(" [").pointer(descriptionAllocatorAddress(cf)).ascii("]>{value = ");
    if (!isFloatType(value.type)) {
        appendInteger(text, value.integer, true);
    } else if (isSpecialFloat(value.real)) {
        appendFloatSpecial(text, value.real, true);
    } else {
        text.format(value.type == kCFNumberFloat32Type ? "%+.10f" : "%+.20f", value.real);
    }
    return text.ascii(", type = ").ascii(typeName(value.type)).ascii("}").create();
}

// The shared instance for a float value, or nullptr when it has none.
CFNumberRef sharedFloat(double value, CFNumberType stored) {
    if (std::isnan(value)) return &nanNumber;
    if (std::isinf(value)) return value > 0 ? &positiveInfinityNumber : &negativeInfinityNumber;
    if (value == 0 && !std::signbit(value)) return stored == kCFNumberFloat32Type ? &float32Zero : &float64Zero;
    if (value == 1) return stored == kCFNumberFloat32Type ? &float32One : &float64One;
    return nullptr;
}

NumberStorage loadStorage(CFNumberType stored, const void* from) {
    NumberStorage storage{};
    switch (stored) {
        case kCFNumberSInt8Type:
            storage.s = load<int8_t>(from);
            break;
        case kCFNumberSInt16Type:
            storage.s = load<int16_t>(from);
            break;
        case kCFNumberSInt32Type:
            storage.s = load<int32_t>(from);
            break;
        case kCFNumberSInt64Type:
            storage.s = load<int64_t>(from);
            break;
        case kCFNumberFloat32Type:
            storage.f = load<float>(from);
            break;
        case kCFNumberFloat64Type:
            storage.d = load<double>(from);
            break;
        case kCFNumberUInt8Type:
            storage.u = load<uint8_t>(from);
            break;
        case kCFNumberUInt16Type:
            storage.u = load<uint16_t>(from);
            break;
        case kCFNumberUInt32Type:
            storage.u = load<uint32_t>(from);
            break;
        case kCFNumberULongType:
            storage.u = load<unsigned long>(from);
            break;
        default:
            storage.u = load<uint64_t>(from);
            break;
    }
    return storage;
}

// The number behind a public argument, or nullptr after reporting misuse.
CFNumberRef checkedNumber(CFNumberRef n, const char* caller) {
    if (isA(n, kCFNumberTypeID)) return n;
    reportMisuse("CFNumber: %s(): not a number", caller);
    return nullptr;
}

}  // namespace

constinit const CFRuntimeClass kNumberClass = {0,
                                               "CFNumber",
                                               nullptr,
                                               nullptr,
                                               nullptr,
                                               equalNumbers,
                                               hashNumber,
                                               copyNumberFormattingDescription,
                                               copyNumberDebugDescription,
                                               nullptr,
                                               nullptr,
                                               0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFNumberRef kCFNumberPositiveInfinity = &positiveInfinityNumber;
const CFNumberRef kCFNumberNegativeInfinity = &negativeInfinityNumber;
const CFNumberRef kCFNumberNaN = &nanNumber;

CFTypeID CFNumberGetTypeID(void) {
    return kCFNumberTypeID;
}

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void* valuePtr) {
    CFNumberType stored = storedType(theType);
    if (stored == 0) {
        reportMisuse("CFNumber: CFNumberCreate(): unknown number type %ld", theType);
        return nullptr;
    }
    if (valuePtr == nullptr) {
        reportMisuse("CFNumber: CFNumberCreate(): NULL value pointer");
        return nullptr;
    }
    NumberStorage storage = loadStorage(stored, valuePtr);
    if (stored == kCFNumberFloat32Type || stored == kCFNumberFloat64Type) {
        double value = stored == kCFNumberFloat32Type ? double(storage.f) : storage.d;
        if (CFNumberRef shared = sharedFloat(value, stored)) return shared;
    }
    auto* number = createInstance<__CFNumber>(allocator, kCFNumberTypeID, 0, uintptr_t(stored));
    if (number == nullptr) return nullptr;
    number->value = storage;
    return number;
}

CFNumberType CFNumberGetType(CFNumberRef number) {
    if (!checkedNumber(number, "CFNumberGetType")) return 0;
    return storedTypeOf(number);
}

CFIndex CFNumberGetByteSize(CFNumberRef number) {
    if (!checkedNumber(number, "CFNumberGetByteSize")) return 0;
    return CFIndex(bitWidth(storedTypeOf(number)) / 8);
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    if (!checkedNumber(number, "CFNumberIsFloatType")) return false;
    return isFloatType(storedTypeOf(number));
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
    CFNumberType target = storedType(theType);
    if (target == 0 || valuePtr == nullptr) {
        reportMisuse("CFNumber: CFNumberGetValue(): %s", target == 0 ? "unknown number type" : "NULL value pointer");
        return false;
    }
    if (!checkedNumber(number, "CFNumberGetValue")) {
        std::memset(valuePtr, 0, bitWidth(target) / 8);
        return false;
    }
    return convertValue(valueOf(number), target, valuePtr);
}

CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef otherNumber, void*) {
    if (!checkedNumber(number, "CFNumberCompare") || !checkedNumber(otherNumber, "CFNumberCompare")) {
        return kCFCompareEqualTo;
    }
    return CFComparisonResult(compareValues(valueOf(number), valueOf(otherNumber)));
}
