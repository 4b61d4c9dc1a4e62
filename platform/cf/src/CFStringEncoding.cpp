// Encoded bytes from strings: CFStringGetBytes, C strings, and the encoding
// queries.
#include "CFStringEncodingInternal.h"
#include "CFStringInternal.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <climits>
#include <cstring>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

// Where converted bytes go: a buffer of fixed capacity, or nowhere when
// only the size is wanted.
class ByteSink {
public:
    ByteSink(uint8_t* buffer, CFIndex capacity)
        : buffer_(buffer), capacity_(buffer ? std::max<CFIndex>(capacity, 0) : 0) {}

    bool fits(CFIndex count) const { return buffer_ == nullptr || count <= capacity_ - used_; }
    void put(uint8_t byte) {
        if (buffer_ != nullptr) buffer_[used_] = byte;
        ++used_;
    }
    void put(const uint8_t* bytes, CFIndex count) {
        if (buffer_ != nullptr) std::memcpy(buffer_ + used_, bytes, size_t(count));
        used_ += count;
    }
    void put16(uint16_t unit, UnitByteOrder order) {
        if (order == UnitByteOrder::kBig) {
            put(uint8_t(unit >> 8));
            put(uint8_t(unit));
        } else {
            put(uint8_t(unit));
            put(uint8_t(unit >> 8));
        }
    }
    void put32(uint32_t value, UnitByteOrder order) {
        if (order == UnitByteOrder::kBig) {
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

int byteInEightBit(uint32_t c, const EncodingInfo& encoding) {
    if (c < 0x80) return int(c);
    switch (encoding.scheme) {
        case EncodingScheme::kLatin1:
            return c < 0x100 ? int(c) : -1;
        case EncodingScheme::kTable:
            return encoding.table->byteOf(UniChar(c));
        default:
            return -1;
    }
}

bool isCombiningMark(uint32_t u) {
    return u >= 0x300 && !isSurrogate(u) && u_getCombiningClass(UChar32(u)) != 0;
}

// A base character followed by combining marks goes out as its precomposed
// form when the target has one ("e" U+0301 is é, 0xE9 in ISO Latin 1).
// Returns the units of the cluster consumed, or 0 (nothing written) when
// there is no cluster, it does not compose to characters of the encoding,
// or they do not fit.
template <typename Unit>
CFIndex putPrecomposed(const Unit* units, CFIndex length, CFIndex i, const EncodingInfo& encoding, ByteSink& sink) {
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
CFIndex encodeEightBit(const Unit* units, CFIndex length, const EncodingInfo& encoding, uint8_t lossByte,
                       ByteSink& sink) {
    if constexpr (sizeof(Unit) == 1) {
        // ASCII storage: the bytes are the text.
        CFIndex count = std::min(length, sink.room());
        sink.put(reinterpret_cast<const uint8_t*>(units), count);
        return count;
    }
    const bool precomposes = encoding.scheme != EncodingScheme::kASCII;
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
        if (encoding.scheme == EncodingScheme::kASCII && lossByte == 0xFF) {
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
CFIndex encodeUTF16(const Unit* units, CFIndex length, UnitByteOrder order, ByteSink& sink) {
    if (order == UnitByteOrder::kHost) order = kHostOrder;
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
CFIndex encodeUTF32(const Unit* units, CFIndex length, UnitByteOrder order, uint8_t lossByte, ByteSink& sink) {
    if (order == UnitByteOrder::kHost) order = kHostOrder;
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
CFIndex encodeUnits(const Unit* units, CFIndex length, const EncodingInfo& encoding, uint8_t lossByte, ByteSink& sink) {
    switch (encoding.scheme) {
        case EncodingScheme::kASCII:
        case EncodingScheme::kLatin1:
        case EncodingScheme::kTable:
            return encodeEightBit(units, length, encoding, lossByte, sink);
        case EncodingScheme::kUTF8:
            return encodeUTF8(units, length, sink);
        case EncodingScheme::kUTF16:
            return encodeUTF16(units, length, encoding.order, sink);
        case EncodingScheme::kUTF32:
            return encodeUTF32(units, length, encoding.order, lossByte, sink);
        case EncodingScheme::kNonLossyASCII:
            return encodeNonLossyASCII(units, length, sink);
        case EncodingScheme::kUnsupported:
            return 0;
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
    EncodingInfo encoding = encodingOf(encodingID);
    ByteSink sink(buffer, maxBufLen);
    CFIndex converted = 0;
    bool bomFits = true;
    if (isExternalRepresentation && (encodingID == kCFStringEncodingUTF16 || encodingID == kCFStringEncodingUTF32)) {
        CFIndex bomLength = encoding.scheme == EncodingScheme::kUTF16 ? 2 : 4;
        bomFits = sink.fits(bomLength);
        if (bomFits) {
            if (bomLength == 2) {
                sink.put16(0xFEFF, kHostOrder);
            } else {
                sink.put32(0xFEFF, kHostOrder);
            }
        }
    }
    if (bomFits && encoding.scheme != EncodingScheme::kUnsupported) {
        converted = withUnits(s, [&](auto* units, CFIndex) -> CFIndex {
            auto* start = units + range.location;
            if constexpr (sizeof(*units) == 2) {
                if (encoding.scheme == EncodingScheme::kUTF16 &&
                    (encoding.order == UnitByteOrder::kHost || encoding.order == kHostOrder)) {
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
    return encodeString(theString, range, encoding, lossByte, isExternalRepresentation, buffer, maxBufLen, usedBufLen);
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (!isA(theString, kCFStringTypeID) || buffer == nullptr || bufferSize <= 0) {
        reportMisuse("CFString: CFStringGetCString(): %s",
                     isA(theString, kCFStringTypeID) ? "no buffer" : "not a string");
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

CFStringEncoding CFStringGetSystemEncoding(void) {
    return kCFStringEncodingUTF8;
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding) {
    return encodingOf(encoding).scheme != EncodingScheme::kUnsupported;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    CFIndex bytesPerUnit = 0;
    switch (encodingOf(encoding).scheme) {
        case EncodingScheme::kASCII:
        case EncodingScheme::kLatin1:
        case EncodingScheme::kTable:
            bytesPerUnit = 1;
            break;
        case EncodingScheme::kUTF8:
            bytesPerUnit = 3;
            break;
        case EncodingScheme::kUTF16:
            bytesPerUnit = 2;
            break;
        case EncodingScheme::kUTF32:
            bytesPerUnit = 4;
            break;
        case EncodingScheme::kNonLossyASCII:
            bytesPerUnit = 6;
            break;
        case EncodingScheme::kUnsupported:
            return kCFNotFound;
    }
    if (length < 0 || length > LONG_MAX / bytesPerUnit) return kCFNotFound;
    return length * bytesPerUnit;
}
