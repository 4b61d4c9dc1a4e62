// CFString and bytes: creation from encoded text (copying and no-copy),
// conversion to encoded text, C strings and the encoding queries.
#include "CFStringEncodingTables.h"
#include "CFStringInternal.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

// How an encoding maps characters to bytes.
enum class Scheme { kUnsupported, kASCII, kLatin1, kTable, kUTF8, kUTF16, kUTF32, kNonLossyASCII };

// Byte order of the 16- and 32-bit encodings. kExternal: a leading
// byte-order mark decides, big-endian without one.
enum class ByteOrder { kHost, kBig, kLittle, kExternal };

struct Encoding {
    Scheme scheme = Scheme::kUnsupported;
    const EightBitTable* table = nullptr;  // kTable only
    ByteOrder order = ByteOrder::kHost;    // kUTF16 and kUTF32 only
};

constexpr ByteOrder kHostOrder = std::endian::native == std::endian::little ? ByteOrder::kLittle : ByteOrder::kBig;

Encoding encodingOf(CFStringEncoding encoding) {
    switch (encoding) {
        case kCFStringEncodingMacRoman: return {Scheme::kTable, &kMacRomanTable};
        case kCFStringEncodingWindowsLatin1: return {Scheme::kTable, &kWindowsLatin1Table};
        case kCFStringEncodingNextStepLatin: return {Scheme::kTable, &kNextStepLatinTable};
        case kCFStringEncodingISOLatin1: return {Scheme::kLatin1};
        case kCFStringEncodingASCII: return {Scheme::kASCII};
        case kCFStringEncodingUTF8: return {Scheme::kUTF8};
        case kCFStringEncodingNonLossyASCII: return {Scheme::kNonLossyASCII};
        case kCFStringEncodingUTF16: return {Scheme::kUTF16, nullptr, ByteOrder::kHost};
        case kCFStringEncodingUTF16BE: return {Scheme::kUTF16, nullptr, ByteOrder::kBig};
        case kCFStringEncodingUTF16LE: return {Scheme::kUTF16, nullptr, ByteOrder::kLittle};
        case kCFStringEncodingUTF32: return {Scheme::kUTF32, nullptr, ByteOrder::kHost};
        case kCFStringEncodingUTF32BE: return {Scheme::kUTF32, nullptr, ByteOrder::kBig};
        case kCFStringEncodingUTF32LE: return {Scheme::kUTF32, nullptr, ByteOrder::kLittle};
        default: return {};
    }
}

// Encodings in which ASCII text is its own bytes, so that ASCII strings
// convert by copying. NonLossyASCII is not one: it escapes the backslash.
bool asciiIsIdentity(Scheme scheme) {
    return scheme == Scheme::kASCII || scheme == Scheme::kLatin1 || scheme == Scheme::kTable || scheme == Scheme::kUTF8;
}

// Encodings that C strings may use: one NUL byte ends the text.
bool isASCIISuperset(Scheme scheme) { return asciiIsIdentity(scheme) || scheme == Scheme::kNonLossyASCII; }

bool usesDefaultAllocator(CFAllocatorRef allocator) {
    return allocator == nullptr || allocator == kCFAllocatorSystemDefault;
}

bool isHighSurrogate(uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLowSurrogate(uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }
bool isSurrogate(uint32_t u) { return u >= 0xD800 && u <= 0xDFFF; }

void appendCodePoint(std::u16string& out, uint32_t c) {
    if (c >= 0x10000) {
        c -= 0x10000;
        out.push_back(char16_t(0xD800 + (c >> 10)));
        out.push_back(char16_t(0xDC00 + (c & 0x3FF)));
    } else {
        out.push_back(char16_t(c));
    }
}

// The per-thread buffer text is decoded into before a string copies it.
// It lives on between calls so that decoding does not allocate, and is
// given back after an unusually long text.
class ScratchUnits {
public:
    ScratchUnits() : units_(buffer()) { units_.clear(); }
    ~ScratchUnits() {
        if (units_.capacity() > kKeptCapacity) std::u16string().swap(units_);
    }
    ScratchUnits(const ScratchUnits&) = delete;
    ScratchUnits& operator=(const ScratchUnits&) = delete;

    std::u16string& units() { return units_; }

private:
    static constexpr size_t kKeptCapacity = 64 * 1024;
    static std::u16string& buffer() {
        thread_local std::u16string units;
        return units;
    }
    std::u16string& units_;
};

// ---------------------------------------------------------------------------
// Bytes to units

uint16_t read16(const uint8_t* p, ByteOrder order) {
    return order == ByteOrder::kBig ? uint16_t(p[0] << 8 | p[1]) : uint16_t(p[1] << 8 | p[0]);
}

uint32_t read32(const uint8_t* p, ByteOrder order) {
    if (order == ByteOrder::kBig) return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
    return uint32_t(p[3]) << 24 | uint32_t(p[2]) << 16 | uint32_t(p[1]) << 8 | p[0];
}

bool decodeUTF16(const uint8_t* bytes, size_t length, ByteOrder order, std::u16string& out) {
    if (order == ByteOrder::kExternal) {
        if (length == 1) return false;
        order = ByteOrder::kBig;
        if (length >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
            order = ByteOrder::kLittle;
            bytes += 2;
            length -= 2;
        } else if (length >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
            bytes += 2;
            length -= 2;
        }
    }
    if (order == ByteOrder::kHost) order = kHostOrder;
    size_t count = length / 2;  // an odd trailing byte is ignored
    size_t start = out.size();
    out.resize(start + count);
    if (order == kHostOrder) {
        std::memcpy(out.data() + start, bytes, count * 2);
    } else {
        for (size_t i = 0; i < count; ++i) out[start + i] = char16_t(read16(bytes + 2 * i, order));
    }
    return true;
}

// The plain UTF-32 encoding always reads as an external representation.
bool decodeUTF32(const uint8_t* bytes, size_t length, ByteOrder order, std::u16string& out) {
    if (length < 4) return false;
    if (order == ByteOrder::kHost) {
        order = ByteOrder::kBig;
        if (bytes[0] == 0xFF && bytes[1] == 0xFE && bytes[2] == 0 && bytes[3] == 0) {
            order = ByteOrder::kLittle;
            bytes += 4;
            length -= 4;
        } else if (bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 0xFE && bytes[3] == 0xFF) {
            bytes += 4;
            length -= 4;
        }
    }
    out.reserve(out.size() + length / 4);
    for (size_t i = 0; i + 4 <= length; i += 4) {
        uint32_t c = read32(bytes + i, order);
        if (c > 0x10FFFF) return false;
        appendCodePoint(out, c);
    }
    return true;
}

bool decodeEightBit(const uint8_t* bytes, size_t length, const Encoding& encoding, std::u16string& out) {
    size_t start = out.size();
    out.resize(start + length);
    char16_t* units = out.data() + start;
    for (size_t i = 0; i < length; ++i) {
        uint8_t b = bytes[i];
        if (b < 0x80 || encoding.scheme != Scheme::kTable) {
            units[i] = b;  // ASCII reads bytes from 0x80 up as ISO Latin 1
            continue;
        }
        UniChar c = encoding.table->upperHalf[b - 0x80];
        if (c == 0) return false;
        units[i] = c;
    }
    return true;
}

int hexValue(uint8_t b) {
    if (b >= '0' && b <= '9') return b - '0';
    if (b >= 'a' && b <= 'f') return b - 'a' + 10;
    if (b >= 'A' && b <= 'F') return b - 'A' + 10;
    return -1;
}

bool isOctal(uint8_t b) { return b >= '0' && b <= '7'; }

// ASCII with escapes: "\\" is a backslash, "\uXXXX" a UTF-16 unit, "\ooo"
// (at most 0377) the character of that value. A backslash that starts no
// escape stands for itself. Bytes from 0x80 up are not NonLossyASCII.
bool decodeNonLossyASCII(const uint8_t* bytes, size_t length, std::u16string& out) {
    out.reserve(out.size() + length);
    size_t i = 0;
    while (i < length) {
        uint8_t b = bytes[i];
        if (b >= 0x80) return false;
        if (b != '\\') {
            out.push_back(b);
            ++i;
            continue;
        }
        if (i + 1 < length && bytes[i + 1] == '\\') {
            out.push_back(u'\\');
            i += 2;
            continue;
        }
        if (i + 6 <= length && bytes[i + 1] == 'u') {
            int d0 = hexValue(bytes[i + 2]), d1 = hexValue(bytes[i + 3]);
            int d2 = hexValue(bytes[i + 4]), d3 = hexValue(bytes[i + 5]);
            if ((d0 | d1 | d2 | d3) >= 0) {
                out.push_back(char16_t(d0 << 12 | d1 << 8 | d2 << 4 | d3));
                i += 6;
                continue;
            }
        }
        if (i + 4 <= length && bytes[i + 1] >= '0' && bytes[i + 1] <= '3' && isOctal(bytes[i + 2]) &&
            isOctal(bytes[i + 3])) {
            out.push_back(char16_t((bytes[i + 1] - '0') << 6 | (bytes[i + 2] - '0') << 3 | (bytes[i + 3] - '0')));
            i += 4;
            continue;
        }
        out.push_back(u'\\');
        ++i;
    }
    return true;
}

bool hasUTF8ByteOrderMark(const uint8_t* bytes, size_t length) {
    return length >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF;
}

// Appends the characters of bytes to out; false when the bytes are not
// valid text in the encoding.
bool decodeBytes(const uint8_t* bytes, size_t length, const Encoding& encoding, bool isExternalRepresentation,
                 std::u16string& out) {
    switch (encoding.scheme) {
        case Scheme::kASCII:
        case Scheme::kLatin1:
        case Scheme::kTable: return decodeEightBit(bytes, length, encoding, out);
        case Scheme::kUTF8:
            if (hasUTF8ByteOrderMark(bytes, length)) {
                bytes += 3;
                length -= 3;
            }
            return decodeUTF8AllowingStrayA9(bytes, length, out);
        case Scheme::kUTF16:
            return decodeUTF16(bytes, length,
                               encoding.order == ByteOrder::kHost && isExternalRepresentation ? ByteOrder::kExternal
                                                                                               : encoding.order,
                               out);
        case Scheme::kUTF32: return decodeUTF32(bytes, length, encoding.order, out);
        case Scheme::kNonLossyASCII: return decodeNonLossyASCII(bytes, length, out);
        case Scheme::kUnsupported: return false;
    }
    return false;
}

// True when the bytes, taken as they are, are the ASCII text they encode.
bool isPlainASCII(const uint8_t* bytes, CFIndex length, Scheme scheme) {
    if (!isASCIISuperset(scheme)) return false;
    if (length == 0) return true;
    if (!allASCII(bytes, length)) return false;
    return scheme != Scheme::kNonLossyASCII || std::memchr(bytes, '\\', size_t(length)) == nullptr;
}

CFStringRef createFromBytes(CFAllocatorRef alloc, const uint8_t* bytes, CFIndex numBytes, const Encoding& encoding,
                            bool isExternalRepresentation) {
    if (numBytes == 0) return createStringFromASCII(alloc, nullptr, 0);
    if (encoding.scheme == Scheme::kUTF8) {
        auto length = size_t(numBytes);
        if (hasUTF8ByteOrderMark(bytes, length)) {
            bytes += 3;
            numBytes -= 3;
        }
        // Valid text, ASCII or not, needs one pass; only invalid text that
        // may owe its failure to a stray 0xA9 takes the second, lenient one.
        CFStringRef s = createStringFromUTF8(alloc, bytes, numBytes);
        if (s != nullptr || std::memchr(bytes, 0xA9, size_t(numBytes)) == nullptr) return s;
        ScratchUnits scratch;
        if (!decodeUTF8AllowingStrayA9(bytes, size_t(numBytes), scratch.units())) return nullptr;
        return createStringFromUnits(alloc, scratch.units().data(), CFIndex(scratch.units().size()));
    }
    if (isPlainASCII(bytes, numBytes, encoding.scheme)) {
        return createStringFromASCII(alloc, reinterpret_cast<const char*>(bytes), numBytes);
    }
    ScratchUnits scratch;
    if (!decodeBytes(bytes, size_t(numBytes), encoding, isExternalRepresentation, scratch.units())) return nullptr;
    return createStringFromUnits(alloc, scratch.units().data(), CFIndex(scratch.units().size()));
}

bool validBytesArgument(const UInt8* bytes, CFIndex numBytes, const char* caller) {
    if (numBytes < 0 || (bytes == nullptr && numBytes > 0)) {
        reportMisuse("CFString: %s(): invalid byte buffer (%p, %ld bytes)", caller, static_cast<const void*>(bytes),
                     numBytes);
        return false;
    }
    return true;
}

void releaseBuffer(CFAllocatorRef deallocator, const void* buffer) {
    if (buffer != nullptr && deallocator != kCFAllocatorNull) CFAllocatorDeallocate(deallocator, const_cast<void*>(buffer));
}

// ---------------------------------------------------------------------------
// Units to bytes

// Where converted bytes go: a buffer of fixed capacity, or nowhere when
// only the size is wanted.
class ByteSink {
public:
    ByteSink(uint8_t* buffer, CFIndex capacity) : buffer_(buffer), capacity_(buffer ? std::max<CFIndex>(capacity, 0) : 0) {}

    bool fits(CFIndex count) const { return buffer_ == nullptr || count <= capacity_ - used_; }
    void put(uint8_t byte) {
        if (buffer_ != nullptr) buffer_[used_] = byte;
        ++used_;
    }
    void put(const uint8_t* bytes, CFIndex count) {
        if (buffer_ != nullptr) std::memcpy(buffer_ + used_, bytes, size_t(count));
        used_ += count;
    }
    void put16(uint16_t unit, ByteOrder order) {
        if (order == ByteOrder::kBig) {
            put(uint8_t(unit >> 8));
            put(uint8_t(unit));
        } else {
            put(uint8_t(unit));
            put(uint8_t(unit >> 8));
        }
    }
    void put32(uint32_t value, ByteOrder order) {
        if (order == ByteOrder::kBig) {
            put16(uint16_t(value >> 16), order);
            put16(uint16_t(value), order);
        } else {
            put16(uint16_t(value), order);
            put16(uint16_t(value >> 16), order);
        }
    }
    // Room left, or "unlimited" when only measuring.
    CFIndex room() const { return buffer_ == nullptr ? LONG_MAX : capacity_ - used_; }
    CFIndex used() const { return used_; }

private:
    uint8_t* buffer_;
    CFIndex capacity_;
    CFIndex used_ = 0;
};

int byteInEightBit(uint32_t c, const Encoding& encoding) {
    if (c < 0x80) return int(c);
    switch (encoding.scheme) {
        case Scheme::kLatin1: return c < 0x100 ? int(c) : -1;
        case Scheme::kTable: return encoding.table->byteOf(UniChar(c));
        default: return -1;
    }
}

bool isCombiningMark(uint32_t u) { return u >= 0x300 && !isSurrogate(u) && u_getCombiningClass(UChar32(u)) != 0; }

// A base character followed by combining marks goes out as its precomposed
// form when the target has one ("e" U+0301 is é, 0xE9 in ISO Latin 1).
// Returns the units of the cluster consumed, or 0 (nothing written) when
// there is no cluster, it does not compose to characters of the encoding,
// or they do not fit.
template <typename Unit>
CFIndex putPrecomposed(const Unit* units, CFIndex length, CFIndex i, const Encoding& encoding, ByteSink& sink) {
    constexpr CFIndex kLongestCluster = 32;
    CFIndex end = i + 1;
    while (end < length && end - i < kLongestCluster && isCombiningMark(units[end])) ++end;
    if (end == i + 1 || (end < length && isCombiningMark(units[end]))) return 0;
    UChar cluster[kLongestCluster];
    for (CFIndex k = i; k < end; ++k) cluster[k - i] = UChar(units[k]);
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfc = unorm2_getNFCInstance(&status);
    UChar composed[kLongestCluster];
    int32_t composedLength = unorm2_normalize(nfc, cluster, int32_t(end - i), composed, kLongestCluster, &status);
    if (U_FAILURE(status) || composedLength > int32_t(end - i) || !sink.fits(composedLength)) return 0;
    uint8_t bytes[kLongestCluster];
    for (int32_t k = 0; k < composedLength; ++k) {
        int b = byteInEightBit(composed[k], encoding);
        if (b < 0) return 0;
        bytes[k] = uint8_t(b);
    }
    sink.put(bytes, composedLength);
    return end - i;
}

// The transliterating fallback of ASCII with loss byte 0xFF: the closest
// ASCII text for one character (at most three bytes).
size_t asciiFallback(uint32_t c, char (&out)[3]) {
    if (c >= 0x80 && c <= 0x9F) {
        out[0] = char(c - 0x80);  // C1 controls become the C0 controls
        return 1;
    }
    if (c == 0x2028 || c == 0x2029) {
        out[0] = '\n';
        return 1;
    }
    if (c == 0x2026) {
        out[0] = out[1] = out[2] = '.';
        return 3;
    }
    if (u_isUWhiteSpace(UChar32(c))) {
        out[0] = ' ';
        return 1;
    }
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfd = unorm2_getNFDInstance(&status);
    UChar decomposition[8];
    int32_t length = U_SUCCESS(status) ? unorm2_getDecomposition(nfd, UChar32(c), decomposition, 8, &status) : -1;
    if (U_SUCCESS(status) && length > 0 && decomposition[0] < 0x80) {
        out[0] = char(decomposition[0]);
        return 1;
    }
    out[0] = '?';
    return 1;
}

// ASCII, ISO Latin 1 and the table encodings.
template <typename Unit>
CFIndex encodeEightBit(const Unit* units, CFIndex length, const Encoding& encoding, uint8_t lossByte,
                       ByteSink& sink) {
    if constexpr (sizeof(Unit) == 1) {
        // ASCII storage: the bytes are the text.
        CFIndex count = std::min(length, sink.room());
        sink.put(reinterpret_cast<const uint8_t*>(units), count);
        return count;
    }
    const bool precomposes = encoding.scheme != Scheme::kASCII;
    CFIndex i = 0;
    while (i < length) {
        uint32_t c = units[i];
        if (precomposes && i + 1 < length && isCombiningMark(units[i + 1])) {
            if (CFIndex consumed = putPrecomposed(units, length, i, encoding, sink)) {
                i += consumed;
                continue;
            }
        }
        if (c < 0x80) {
            if (!sink.fits(1)) break;
            sink.put(uint8_t(c));
            ++i;
            continue;
        }
        int b = byteInEightBit(c, encoding);
        if (b >= 0) {
            if (!sink.fits(1)) break;
            sink.put(uint8_t(b));
            ++i;
            continue;
        }
        if (lossByte == 0) break;
        if (encoding.scheme == Scheme::kASCII && lossByte == 0xFF) {
            CFIndex consumed = 1;
            if (isHighSurrogate(c) && i + 1 < length && isLowSurrogate(units[i + 1])) {
                c = 0x10000 + ((c - 0xD800) << 10) + (units[i + 1] - 0xDC00);
                consumed = 2;
            }
            char text[3];
            size_t textLength = asciiFallback(c, text);
            if (!sink.fits(CFIndex(textLength))) break;
            sink.put(reinterpret_cast<const uint8_t*>(text), CFIndex(textLength));
            i += consumed;
            continue;
        }
        if (!sink.fits(1)) break;
        sink.put(lossByte);
        ++i;
    }
    return i;
}

// A lone surrogate ends the conversion: UTF-8 has no way to write one.
template <typename Unit>
CFIndex encodeUTF8(const Unit* units, CFIndex length, ByteSink& sink) {
    if constexpr (sizeof(Unit) == 1) {
        CFIndex count = std::min(length, sink.room());
        sink.put(reinterpret_cast<const uint8_t*>(units), count);
        return count;
    }
    CFIndex i = 0;
    while (i < length) {
        uint32_t c = units[i];
        if (c < 0x80) {
            if (!sink.fits(1)) break;
            sink.put(uint8_t(c));
            ++i;
        } else if (c < 0x800) {
            if (!sink.fits(2)) break;
            sink.put(uint8_t(0xC0 | c >> 6));
            sink.put(uint8_t(0x80 | (c & 0x3F)));
            ++i;
        } else if (!isSurrogate(c)) {
            if (!sink.fits(3)) break;
            sink.put(uint8_t(0xE0 | c >> 12));
            sink.put(uint8_t(0x80 | (c >> 6 & 0x3F)));
            sink.put(uint8_t(0x80 | (c & 0x3F)));
            ++i;
        } else if (isHighSurrogate(c) && i + 1 < length && isLowSurrogate(units[i + 1])) {
            if (!sink.fits(4)) break;
            c = 0x10000 + ((c - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            sink.put(uint8_t(0xF0 | c >> 18));
            sink.put(uint8_t(0x80 | (c >> 12 & 0x3F)));
            sink.put(uint8_t(0x80 | (c >> 6 & 0x3F)));
            sink.put(uint8_t(0x80 | (c & 0x3F)));
            i += 2;
        } else {
            break;
        }
    }
    return i;
}

// Never writes half of a surrogate pair.
template <typename Unit>
CFIndex encodeUTF16(const Unit* units, CFIndex length, ByteOrder order, ByteSink& sink) {
    if (order == ByteOrder::kHost) order = kHostOrder;
    CFIndex i = 0;
    while (i < length) {
        CFIndex count = isHighSurrogate(units[i]) && i + 1 < length && isLowSurrogate(units[i + 1]) ? 2 : 1;
        if (!sink.fits(2 * count)) break;
        for (CFIndex k = 0; k < count; ++k) sink.put16(uint16_t(units[i + k]), order);
        i += count;
    }
    return i;
}

// A lone surrogate has no UTF-32 form: it is lost (the loss byte's value
// as a unit) or ends the conversion.
template <typename Unit>
CFIndex encodeUTF32(const Unit* units, CFIndex length, ByteOrder order, uint8_t lossByte, ByteSink& sink) {
    if (order == ByteOrder::kHost) order = kHostOrder;
    CFIndex i = 0;
    while (i < length) {
        uint32_t c = units[i];
        CFIndex count = 1;
        if (isHighSurrogate(c) && i + 1 < length && isLowSurrogate(units[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            count = 2;
        } else if (isSurrogate(c)) {
            if (lossByte == 0) break;
            c = lossByte;
        }
        if (!sink.fits(4)) break;
        sink.put32(c, order);
        i += count;
    }
    return i;
}

// ASCII as itself, a backslash doubled, characters up to 0xFF as "\ooo",
// every other unit as "\uxxxx".
template <typename Unit>
CFIndex encodeNonLossyASCII(const Unit* units, CFIndex length, ByteSink& sink) {
    static constexpr char kHex[] = "0123456789abcdef";
    CFIndex i = 0;
    for (; i < length; ++i) {
        uint32_t c = units[i];
        uint8_t text[6];
        CFIndex textLength;
        if (c == '\\') {
            text[0] = text[1] = '\\';
            textLength = 2;
        } else if (c < 0x80) {
            text[0] = uint8_t(c);
            textLength = 1;
        } else if (c < 0x100) {
            text[0] = '\\';
            text[1] = uint8_t('0' + (c >> 6));
            text[2] = uint8_t('0' + (c >> 3 & 7));
            text[3] = uint8_t('0' + (c & 7));
            textLength = 4;
        } else {
            text[0] = '\\';
            text[1] = 'u';
            for (int k = 0; k < 4; ++k) text[2 + k] = uint8_t(kHex[c >> (12 - 4 * k) & 0xF]);
            textLength = 6;
        }
        if (!sink.fits(textLength)) break;
        sink.put(text, textLength);
    }
    return i;
}

template <typename Unit>
CFIndex encodeUnits(const Unit* units, CFIndex length, const Encoding& encoding, uint8_t lossByte, ByteSink& sink) {
    switch (encoding.scheme) {
        case Scheme::kASCII:
        case Scheme::kLatin1:
        case Scheme::kTable: return encodeEightBit(units, length, encoding, lossByte, sink);
        case Scheme::kUTF8: return encodeUTF8(units, length, sink);
        case Scheme::kUTF16: return encodeUTF16(units, length, encoding.order, sink);
        case Scheme::kUTF32: return encodeUTF32(units, length, encoding.order, lossByte, sink);
        case Scheme::kNonLossyASCII: return encodeNonLossyASCII(units, length, sink);
        case Scheme::kUnsupported: return 0;
    }
    return 0;
}

// UTF-16 host order from UTF-16 storage: a copy, stopping short of a pair
// that would be split.
CFIndex copyHostUTF16(const UniChar* units, CFIndex length, ByteSink& sink) {
    CFIndex count = std::min(length, sink.room() / 2);
    if (count < length && count > 0 && isHighSurrogate(units[count - 1]) && isLowSurrogate(units[count])) --count;
    sink.put(reinterpret_cast<const uint8_t*>(units), count * 2);
    return count;
}

CFIndex encodeString(CFStringRef s, CFRange range, CFStringEncoding encodingID, uint8_t lossByte,
                     bool isExternalRepresentation, uint8_t* buffer, CFIndex maxBufLen, CFIndex* usedBufLen) {
    Encoding encoding = encodingOf(encodingID);
    ByteSink sink(buffer, maxBufLen);
    CFIndex converted = 0;
    bool bomFits = true;
    if (isExternalRepresentation && (encodingID == kCFStringEncodingUTF16 || encodingID == kCFStringEncodingUTF32)) {
        CFIndex bomLength = encoding.scheme == Scheme::kUTF16 ? 2 : 4;
        bomFits = sink.fits(bomLength);
        if (bomFits) {
            if (bomLength == 2) {
                sink.put16(0xFEFF, kHostOrder);
            } else {
                sink.put32(0xFEFF, kHostOrder);
            }
        }
    }
    if (bomFits && encoding.scheme != Scheme::kUnsupported) {
        converted = withUnits(s, [&](auto* units, CFIndex) -> CFIndex {
            auto* start = units + range.location;
            if constexpr (sizeof(*units) == 2) {
                if (encoding.scheme == Scheme::kUTF16 &&
                    (encoding.order == ByteOrder::kHost || encoding.order == kHostOrder)) {
                    return copyHostUTF16(start, range.length, sink);
                }
            }
            return encodeUnits(start, range.length, encoding, lossByte, sink);
        });
    }
    if (usedBufLen != nullptr) *usedBufLen = sink.used();
    return converted;
}

}  // namespace

}  // namespace halvane::detail

// ---------------------------------------------------------------------------
// Public functions

CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
    if (!validBytesArgument(bytes, numBytes, "CFStringCreateWithBytes")) return nullptr;
    return createFromBytes(alloc, bytes, numBytes, encodingOf(encoding), isExternalRepresentation);
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                          CFStringEncoding encoding, Boolean isExternalRepresentation,
                                          CFAllocatorRef contentsDeallocator) {
    if (!validBytesArgument(bytes, numBytes, "CFStringCreateWithBytesNoCopy")) return nullptr;
    Encoding info = encodingOf(encoding);
    bool hostUTF16 = info.scheme == Scheme::kUTF16 &&
                     (info.order == kHostOrder || (info.order == ByteOrder::kHost && !isExternalRepresentation));
    CFIndex referencedLength = hostUTF16 ? numBytes / 2 : numBytes;
    if (referencedLength > 0 || !usesDefaultAllocator(alloc)) {
        // Text whose bytes are already its storage is referenced: ASCII in
        // an ASCII-compatible encoding, and host-order UTF-16 that needs no
        // byte-order mark removed.
        if (isPlainASCII(bytes, numBytes, info.scheme)) {
            return createStringReferencingASCII(alloc, reinterpret_cast<const char*>(bytes), numBytes, false,
                                                contentsDeallocator);
        }
        if (hostUTF16 && reinterpret_cast<uintptr_t>(bytes) % alignof(UniChar) == 0) {
            return createStringReferencingUnits(alloc, reinterpret_cast<const UniChar*>(bytes), referencedLength,
                                                contentsDeallocator);
        }
    }
    // Anything else is decoded into a string of its own; the caller's
    // buffer is not kept, so it goes now. A failed creation leaves it to the
    // caller.
    CFStringRef s = createFromBytes(alloc, bytes, numBytes, info, isExternalRepresentation);
    if (s != nullptr) releaseBuffer(contentsDeallocator, bytes);
    return s;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding) {
    Encoding info = encodingOf(encoding);
    if (cStr == nullptr || (info.scheme != Scheme::kUnsupported && !isASCIISuperset(info.scheme))) {
        reportMisuse("CFString: CFStringCreateWithCString(): %s",
                     cStr == nullptr ? "NULL C string" : "a C string needs an ASCII-compatible encoding");
        return nullptr;
    }
    return createFromBytes(alloc, reinterpret_cast<const uint8_t*>(cStr), CFIndex(std::strlen(cStr)), info, false);
}

CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding,
                                            CFAllocatorRef contentsDeallocator) {
    Encoding info = encodingOf(encoding);
    if (cStr == nullptr || (info.scheme != Scheme::kUnsupported && !isASCIISuperset(info.scheme))) {
        reportMisuse("CFString: CFStringCreateWithCStringNoCopy(): %s",
                     cStr == nullptr ? "NULL C string" : "a C string needs an ASCII-compatible encoding");
        return nullptr;
    }
    auto length = CFIndex(std::strlen(cStr));
    auto bytes = reinterpret_cast<const uint8_t*>(cStr);
    if ((length > 0 || !usesDefaultAllocator(alloc)) && isPlainASCII(bytes, length, info.scheme)) {
        return createStringReferencingASCII(alloc, cStr, length, true, contentsDeallocator);
    }
    CFStringRef s = createFromBytes(alloc, bytes, length, info, false);
    if (s != nullptr) releaseBuffer(contentsDeallocator, cStr);
    return s;
}

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen) {
    if (usedBufLen != nullptr) *usedBufLen = 0;
    if (!isA(theString, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringGetBytes(): not a string");
        return 0;
    }
    if (range.location < 0 || range.length < 0 || range.location > theString->length ||
        range.length > theString->length - range.location) {
        reportMisuse("CFString: CFStringGetBytes(): range {%ld, %ld} out of bounds (length %ld)", range.location,
                     range.length, theString->length);
        return 0;
    }
    return encodeString(theString, range, encoding, lossByte, isExternalRepresentation, buffer, maxBufLen,
                        usedBufLen);
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (!isA(theString, kCFStringTypeID) || buffer == nullptr || bufferSize <= 0) {
        reportMisuse("CFString: CFStringGetCString(): %s", isA(theString, kCFStringTypeID) ? "no buffer" : "not a string");
        return false;
    }
    CFIndex used = 0;
    CFIndex converted = encodeString(theString, CFRangeMake(0, theString->length), encoding, 0, false,
                                     reinterpret_cast<uint8_t*>(buffer), bufferSize - 1, &used);
    if (converted != theString->length) {
        buffer[0] = '\0';
        return false;
    }
    buffer[used] = '\0';
    return true;
}

const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding) {
    if (!isA(theString, kCFStringTypeID)) return nullptr;
    constexpr uintptr_t kTerminatedASCII = kStringASCII | kStringNulTerminated;
    if ((classBits(theString) & kTerminatedASCII) != kTerminatedASCII) return nullptr;
    if (!asciiIsIdentity(encodingOf(encoding).scheme)) return nullptr;
    return reinterpret_cast<const char*>(theString->contents.ascii);
}

void CFStringAppendCString(CFMutableStringRef theString, const char* cStr, CFStringEncoding encoding) {
    Encoding info = encodingOf(encoding);
    if (cStr == nullptr || !isASCIISuperset(info.scheme)) {
        reportMisuse("CFString: CFStringAppendCString(): %s",
                     cStr == nullptr ? "NULL C string" : "a C string needs an ASCII-compatible encoding");
        return;
    }
    ScratchUnits scratch;
    std::u16string& units = scratch.units();
    auto bytes = reinterpret_cast<const uint8_t*>(cStr);
    size_t length = std::strlen(cStr);
    if (isPlainASCII(bytes, CFIndex(length), info.scheme)) {
        units.assign(bytes, bytes + length);
    } else if (!decodeBytes(bytes, length, info, false, units)) {
        reportMisuse("CFString: CFStringAppendCString(): the bytes are not valid in encoding 0x%x", encoding);
        return;
    }
    replaceUnits(theString, CFRangeMake(CFStringGetLength(theString), 0), units.data(), CFIndex(units.size()),
                 "CFStringAppendCString");
}

CFStringEncoding CFStringGetSystemEncoding(void) { return kCFStringEncodingUTF8; }

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding) {
    return encodingOf(encoding).scheme != Scheme::kUnsupported;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    CFIndex bytesPerUnit = 0;
    switch (encodingOf(encoding).scheme) {
        case Scheme::kASCII:
        case Scheme::kLatin1:
        case Scheme::kTable: bytesPerUnit = 1; break;
        case Scheme::kUTF8: bytesPerUnit = 3; break;
        case Scheme::kUTF16: bytesPerUnit = 2; break;
        case Scheme::kUTF32: bytesPerUnit = 4; break;
        case Scheme::kNonLossyASCII: bytesPerUnit = 6; break;
        case Scheme::kUnsupported: return kCFNotFound;
    }
    if (length < 0 || length > LONG_MAX / bytesPerUnit) return kCFNotFound;
    return length * bytesPerUnit;
}
