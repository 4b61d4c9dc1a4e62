// Strings from encoded bytes: CFStringCreateWithBytes, the C string and
// no-copy forms, and CFStringAppendCString.
#include "CFStringEncodingInternal.h"
#include "CFStringInternal.h"

#include <cstring>

using namespace halvane::detail;

namespace halvane::detail {

namespace {

bool usesDefaultAllocator(CFAllocatorRef allocator) {
    return allocator == nullptr || allocator == kCFAllocatorSystemDefault;
}

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

uint16_t read16(const uint8_t* p, UnitByteOrder order) {
    return order == UnitByteOrder::kBig ? uint16_t(p[0] << 8 | p[1]) : uint16_t(p[1] << 8 | p[0]);
}

uint32_t read32(const uint8_t* p, UnitByteOrder order) {
    if (order == UnitByteOrder::kBig) return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
    return uint32_t(p[3]) << 24 | uint32_t(p[2]) << 16 | uint32_t(p[1]) << 8 | p[0];
}

bool decodeUTF16(const uint8_t* bytes, size_t length, UnitByteOrder order, std::u16string& out) {
    if (order == UnitByteOrder::kExternal) {
        if (length == 1) return false;
        order = UnitByteOrder::kBig;
        if (length >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
            order = UnitByteOrder::kLittle;
            bytes += 2;
            length -= 2;
        } else if (length >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
            bytes += 2;
            length -= 2;
        }
    }
    if (order == UnitByteOrder::kHost) order = kHostOrder;
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
bool decodeUTF32(const uint8_t* bytes, size_t length, UnitByteOrder order, std::u16string& out) {
    if (length < 4) return false;
    if (order == UnitByteOrder::kHost) {
        order = UnitByteOrder::kBig;
        if (bytes[0] == 0xFF && bytes[1] == 0xFE && bytes[2] == 0 && bytes[3] == 0) {
            order = UnitByteOrder::kLittle;
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

bool decodeEightBit(const uint8_t* bytes, size_t length, const EncodingInfo& encoding, std::u16string& out) {
    size_t start = out.size();
    out.resize(start + length);
    char16_t* units = out.data() + start;
    for (size_t i = 0; i < length; ++i) {
        uint8_t b = bytes[i];
        if (b < 0x80 || encoding.scheme != EncodingScheme::kTable) {
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

bool isOctal(uint8_t b) {
    return b >= '0' && b <= '7';
}

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
bool decodeBytes(const uint8_t* bytes, size_t length, const EncodingInfo& encoding, bool isExternalRepresentation,
                 std::u16string& out) {
    switch (encoding.scheme) {
        case EncodingScheme::kASCII:
        case EncodingScheme::kLatin1:
        case EncodingScheme::kTable:
            return decodeEightBit(bytes, length, encoding, out);
        case EncodingScheme::kUTF8:
            if (hasUTF8ByteOrderMark(bytes, length)) {
                bytes += 3;
                length -= 3;
            }
            return decodeUTF8AllowingStrayA9(bytes, length, out);
        case EncodingScheme::kUTF16:
            return decodeUTF16(bytes, length,
                               encoding.order == UnitByteOrder::kHost && isExternalRepresentation
                                   ? UnitByteOrder::kExternal
                                   : encoding.order,
                               out);
        case EncodingScheme::kUTF32:
            return decodeUTF32(bytes, length, encoding.order, out);
        case EncodingScheme::kNonLossyASCII:
            return decodeNonLossyASCII(bytes, length, out);
        case EncodingScheme::kUnsupported:
            return false;
    }
    return false;
}

// True when the bytes, taken as they are, are the ASCII text they encode.
bool isPlainASCII(const uint8_t* bytes, CFIndex length, EncodingScheme scheme) {
    if (!isASCIISuperset(scheme)) return false;
    if (length == 0) return true;
    if (!allASCII(bytes, length)) return false;
    return scheme != EncodingScheme::kNonLossyASCII || std::memchr(bytes, '\\', size_t(length)) == nullptr;
}

CFStringRef createFromBytes(CFAllocatorRef alloc, const uint8_t* bytes, CFIndex numBytes, const EncodingInfo& encoding,
                            bool isExternalRepresentation) {
    if (numBytes == 0) return createStringFromASCII(alloc, nullptr, 0);
    if (encoding.scheme == EncodingScheme::kUTF8) {
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
    if (buffer != nullptr && deallocator != kCFAllocatorNull)
        CFAllocatorDeallocate(deallocator, const_cast<void*>(buffer));
}

}  // namespace

}  // namespace halvane::detail

CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
    if (!validBytesArgument(bytes, numBytes, "CFStringCreateWithBytes")) return nullptr;
    return createFromBytes(alloc, bytes, numBytes, encodingOf(encoding), isExternalRepresentation);
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                          CFStringEncoding encoding, Boolean isExternalRepresentation,
                                          CFAllocatorRef contentsDeallocator) {
    if (!validBytesArgument(bytes, numBytes, "CFStringCreateWithBytesNoCopy")) return nullptr;
    EncodingInfo info = encodingOf(encoding);
    bool hostUTF16 = info.scheme == EncodingScheme::kUTF16 &&
                     (info.order == kHostOrder || (info.order == UnitByteOrder::kHost && !isExternalRepresentation));
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
    EncodingInfo info = encodingOf(encoding);
    if (cStr == nullptr || (info.scheme != EncodingScheme::kUnsupported && !isASCIISuperset(info.scheme))) {
        reportMisuse("CFString: CFStringCreateWithCString(): %s",
                     cStr == nullptr ? "NULL C string" : "a C string needs an ASCII-compatible encoding");
        return nullptr;
    }
    return createFromBytes(alloc, reinterpret_cast<const uint8_t*>(cStr), CFIndex(std::strlen(cStr)), info, false);
}

CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding,
                                            CFAllocatorRef contentsDeallocator) {
    EncodingInfo info = encodingOf(encoding);
    if (cStr == nullptr || (info.scheme != EncodingScheme::kUnsupported && !isASCIISuperset(info.scheme))) {
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

void CFStringAppendCString(CFMutableStringRef theString, const char* cStr, CFStringEncoding encoding) {
    EncodingInfo info = encodingOf(encoding);
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
