// CFData: immutable byte buffers (copied, or referenced with a deallocator)
// and mutable ones that grow geometrically, up to a fixed capacity when the
// creator gave one.
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFData.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

struct __CFData {
    CFRuntimeBase base;
    CFIndex length;
    CFIndex allocated;                // mutable data: bytes in the buffer
    CFIndex maxLength;                // mutable data: the fixed capacity, 0 when unbounded
    UInt8* bytes;                     // NULL until a mutable data first needs room
    CFAllocatorRef bytesDeallocator;  // no-copy data: who frees the caller's bytes
};

namespace halvane::detail {

namespace {

// Class bits of a data (fixed at creation).
enum DataBits : uintptr_t {
    kDataMutable = 1,
    kDataInline = 2,    // the bytes follow the object in the same block
    kDataExternal = 4,  // the caller's bytes, handed over with bytesDeallocator
};

bool isMutableData(CFDataRef d) {
    return (classBits(d) & kDataMutable) != 0;
}

bool usesDefaultAllocator(CFAllocatorRef allocator) {
    return allocator == nullptr || allocator == kCFAllocatorSystemDefault;
}

bool checkData(CFDataRef d, const char* caller) {
    if (isA(d, kCFDataTypeID)) return true;
    reportMisuse("CFData: %s(): %s is not a data object", caller, d == nullptr ? "NULL" : "the argument");
    return false;
}

bool checkMutableData(CFDataRef d, const char* caller) {
    if (!checkData(d, caller)) return false;
    if (isMutableData(d)) return true;
    reportMisuse("CFData: %s(): Expect mutable data", caller);
    return false;
}

bool checkRange(CFDataRef d, CFRange range, const char* caller) {
    if (range.location >= 0 && range.length >= 0 && range.location <= d->length &&
        range.length <= d->length - range.location) {
        return true;
    }
    reportMisuse("CFData: %s(): range {%ld, %ld} out of bounds (length %ld)", caller, range.location, range.length,
                 d->length);
    return false;
}

// Whether a mutable data may hold newLength bytes; reports when it may not.
bool admitsLength(CFDataRef d, CFIndex newLength, const char* caller) {
    if (d->maxLength == 0 || newLength <= d->maxLength) return true;
    // Kept word for word: callers and their logs search for this text.
    reportMisuse("CFData: %s(): fixed-capacity CFMutableData is full (capacity %ld, %ld bytes needed)", caller,
                 d->maxLength, newLength);
    return false;
}

// Makes room for needed bytes, doubling so that appending byte by byte
// stays linear overall; never beyond the fixed capacity.
bool reserve(CFMutableDataRef d, CFIndex needed, const char* caller) {
    if (needed <= d->allocated) return true;
    CFIndex grown = d->allocated <= LONG_MAX / 2 ? std::max<CFIndex>(d->allocated * 2, 16) : LONG_MAX;
    grown = std::max(grown, needed);
    if (d->maxLength > 0) grown = std::min(grown, d->maxLength);
    auto* bytes = static_cast<UInt8*>(std::realloc(d->bytes, size_t(grown)));
    if (bytes == nullptr) {
        reportMisuse("CFData: %s(): out of memory for %ld bytes", caller, grown);
        return false;
    }
    d->bytes = bytes;
    d->allocated = grown;
    return true;
}

// Sets the length of a mutable data; bytes that come into view are zeroes,
// including those hidden by an earlier shrink.
void resize(CFMutableDataRef d, CFIndex newLength, const char* caller) {
    if (!admitsLength(d, newLength, caller) || !reserve(d, newLength, caller)) return;
    if (newLength > d->length) std::memset(d->bytes + d->length, 0, size_t(newLength - d->length));
    d->length = newLength;
}

// The one splice behind every change of contents.
void replaceBytes(CFMutableDataRef d, CFRange range, const UInt8* newBytes, CFIndex newLength, const char* caller) {
    if (!checkMutableData(d, caller) || !checkRange(d, range, caller)) return;
    if (newLength < 0 || (newBytes == nullptr && newLength > 0)) {
        reportMisuse("CFData: %s(): %ld new bytes at %p", caller, newLength, static_cast<const void*>(newBytes));
        return;
    }
    CFIndex kept = d->length - range.length;
    if (newLength > LONG_MAX - kept) {
        reportMisuse("CFData: %s(): length overflow", caller);
        return;
    }
    CFIndex total = kept + newLength;
    if (!admitsLength(d, total, caller)) return;

    // The new bytes may come from this very buffer, which can move or be
    // shifted below: take them out first.
    std::unique_ptr<UInt8[]> ownCopy;
    auto source = reinterpret_cast<uintptr_t>(newBytes);
    auto start = reinterpret_cast<uintptr_t>(d->bytes);
    if (newLength > 0 && d->bytes != nullptr && source < start + size_t(d->allocated) &&
        start < source + size_t(newLength)) {
        ownCopy.reset(new (std::nothrow) UInt8[size_t(newLength)]);
        if (ownCopy == nullptr) {
            reportMisuse("CFData: %s(): out of memory for %ld bytes", caller, newLength);
            return;
        }
        std::memcpy(ownCopy.get(), newBytes, size_t(newLength));
        newBytes = ownCopy.get();
    }
    if (!reserve(d, total, caller)) return;
    CFIndex tail = d->length - range.location - range.length;
    if (tail > 0 && newLength != range.length) {
        std::memmove(d->bytes + range.location + newLength, d->bytes + range.location + range.length, size_t(tail));
    }
    if (newLength > 0) std::memcpy(d->bytes + range.location, newBytes, size_t(newLength));
    d->length = total;
}

__CFData* newImmutableData(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
    auto* d = createInstance<__CFData>(allocator, kCFDataTypeID, size_t(length), kDataInline);
    if (d == nullptr) return nullptr;
    d->length = length;
    if (length > 0) {
        d->bytes = reinterpret_cast<UInt8*>(d + 1);
        std::memcpy(d->bytes, bytes, size_t(length));
    }
    return d;
}

__CFData* newMutableData(CFAllocatorRef allocator, CFIndex capacity, const UInt8* bytes, CFIndex length,
                         const char* caller) {
    auto* d = createInstance<__CFData>(allocator, kCFDataTypeID, 0, kDataMutable);
    if (d == nullptr) return nullptr;
    d->maxLength = capacity;
    if (length > 0) {
        if (!reserve(d, length, caller)) {
            CFRelease(d);
            return nullptr;
        }
        std::memcpy(d->bytes, bytes, size_t(length));
        d->length = length;
    }
    return d;
}

void finalizeData(CFTypeRef cf) {
    auto* d = static_cast<__CFData*>(const_cast<void*>(cf));
    uintptr_t bits = classBits(d);
    if (bits & kDataMutable) {
        std::free(d->bytes);
    } else if (bits & kDataExternal) {
        if (d->bytesDeallocator != kCFAllocatorNull) CFAllocatorDeallocate(d->bytesDeallocator, d->bytes);
        CFRelease(d->bytesDeallocator);
    }
}

Boolean equalData(CFTypeRef cf1, CFTypeRef cf2) {
    auto a = static_cast<CFDataRef>(cf1);
    auto b = static_cast<CFDataRef>(cf2);
    return a->length == b->length && (a->length == 0 || std::memcmp(a->bytes, b->bytes, size_t(a->length)) == 0);
}

// The ELF hash of the first 80 bytes. h never exceeds 28 bits between
// steps, so the width of the arithmetic does not change the result.
CFHashCode hashData(CFTypeRef cf) {
    auto d = static_cast<CFDataRef>(cf);
    CFHashCode h = 0;
    CFIndex hashed = std::min<CFIndex>(d->length, 80);
    for (CFIndex i = 0; i < hashed; ++i) {
        h = (h << 4) + d->bytes[i];
        CFHashCode high = h & 0xF0000000u;
        if (high != 0) h ^= high >> 24;
        h &= ~high;
    }
    return h;
}

void appendHex(TextBuilder& text, const UInt8* bytes, CFIndex count) {
    for (CFIndex i = 0; i < count; ++i) text.format("%02x", bytes[i]);
}

CFStringRef copyDataDescription(CFTypeRef cf) {
    auto d = static_cast<CFDataRef>(cf);
    // Mutable data report the capacity they were given, else the room they
    // have; immutable data are exactly as large as their contents.
    CFIndex capacity = !isMutableData(d) ? d->length : d->maxLength > 0 ? d->maxLength : d->allocated;
    TextBuilder text;
    text.ascii("<CFData ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .format("]>{length = %ld, capacity = %ld, bytes = 0x", d->length, capacity);
    if (d->length > 24) {
        appendHex(text, d->bytes, 16);
        text.ascii(" ... ");
        appendHex(text, d->bytes + d->length - 8, 8);
    } else {
        appendHex(text, d->bytes, d->length);
    }
    return text.ascii("}").create();
}

}  // namespace

constinit const CFRuntimeClass kDataClass = {
    0,       "CFData", nullptr, nullptr, finalizeData, equalData, hashData, nullptr, copyDataDescription,
    nullptr, nullptr,  0};

}  // namespace halvane::detail

using namespace halvane::detail;

CFTypeID CFDataGetTypeID(void) {
    return kCFDataTypeID;
}

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
    if (length < 0 || (bytes == nullptr && length > 0)) {
        reportMisuse("CFData: CFDataCreate(): %ld bytes at %p", length, static_cast<const void*>(bytes));
        return nullptr;
    }
    return newImmutableData(allocator, bytes, length);
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                      CFAllocatorRef bytesDeallocator) {
    if (length < 0 || (bytes == nullptr && length > 0)) {
        reportMisuse("CFData: CFDataCreateWithBytesNoCopy(): %ld bytes at %p", length, static_cast<const void*>(bytes));
        return nullptr;
    }
    auto* d = createInstance<__CFData>(allocator, kCFDataTypeID, 0, kDataExternal);
    if (d == nullptr) return nullptr;
    d->length = length;
    d->bytes = const_cast<UInt8*>(bytes);
    d->bytesDeallocator = static_cast<CFAllocatorRef>(CFRetain(bytesDeallocator));
    return d;
}

CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef theData) {
    if (!checkData(theData, __func__)) return nullptr;
    // Bytes the data does not own (kCFAllocatorNull) may still change under
    // it, so only data that own their bytes are shared.
    bool ownsBytes = !(classBits(theData) & kDataExternal) || theData->bytesDeallocator != kCFAllocatorNull;
    if (!isMutableData(theData) && ownsBytes && usesDefaultAllocator(allocator)) {
        return static_cast<CFDataRef>(CFRetain(theData));
    }
    return newImmutableData(allocator, theData->bytes, theData->length);
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity) {
    if (capacity < 0) {
        reportMisuse("CFData: CFDataCreateMutable(): negative capacity %ld", capacity);
        return nullptr;
    }
    return newMutableData(allocator, capacity, nullptr, 0, __func__);
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFDataRef theData) {
    if (!checkData(theData, __func__)) return nullptr;
    if (capacity < 0 || (capacity > 0 && capacity < theData->length)) {
        reportMisuse("CFData: CFDataCreateMutableCopy(): capacity %ld cannot hold the %ld bytes of the data", capacity,
                     theData->length);
        return nullptr;
    }
    return newMutableData(allocator, capacity, theData->bytes, theData->length, __func__);
}

CFIndex CFDataGetLength(CFDataRef theData) {
    return checkData(theData, __func__) ? theData->length : 0;
}

const UInt8* CFDataGetBytePtr(CFDataRef theData) {
    if (!checkData(theData, __func__)) return nullptr;
    // An empty immutable data has no bytes to point at.
    if (theData->length == 0 && !isMutableData(theData)) return nullptr;
    return theData->bytes;
}

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef theData) {
    return checkMutableData(theData, __func__) ? theData->bytes : nullptr;
}

void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8* buffer) {
    if (!checkData(theData, __func__) || !checkRange(theData, range, __func__)) return;
    if (range.length == 0) return;
    if (buffer == nullptr) {
        reportMisuse("CFData: CFDataGetBytes(): NULL buffer for %ld bytes", range.length);
        return;
    }
    std::memcpy(buffer, theData->bytes + range.location, size_t(range.length));
}

void CFDataSetLength(CFMutableDataRef theData, CFIndex length) {
    if (!checkMutableData(theData, __func__)) return;
    if (length < 0) {
        reportMisuse("CFData: CFDataSetLength(): negative length %ld", length);
        return;
    }
    resize(theData, length, __func__);
}

void CFDataIncreaseLength(CFMutableDataRef theData, CFIndex extraLength) {
    if (!checkMutableData(theData, __func__)) return;
    if (extraLength < 0 || extraLength > LONG_MAX - theData->length) {
        reportMisuse("CFData: CFDataIncreaseLength(): cannot add %ld bytes to %ld", extraLength, theData->length);
        return;
    }
    resize(theData, theData->length + extraLength, __func__);
}

void CFDataAppendBytes(CFMutableDataRef theData, const UInt8* bytes, CFIndex length) {
    // The common case, bytes that fit the room already there, skips the
    // general splice. The room never exceeds a fixed capacity, and nothing
    // moves, so memmove copes with bytes taken from the data itself.
    if (isA(theData, kCFDataTypeID) && isMutableData(theData) && bytes != nullptr && length > 0 &&
        length <= theData->allocated - theData->length) {
        std::memmove(theData->bytes + theData->length, bytes, size_t(length));
        theData->length += length;
        return;
    }
    CFIndex end = isA(theData, kCFDataTypeID) ? theData->length : 0;
    replaceBytes(theData, CFRangeMake(end, 0), bytes, length, __func__);
}

void CFDataReplaceBytes(CFMutableDataRef theData, CFRange range, const UInt8* newBytes, CFIndex newLength) {
    replaceBytes(theData, range, newBytes, newLength, __func__);
}

void CFDataDeleteBytes(CFMutableDataRef theData, CFRange range) {
    replaceBytes(theData, range, nullptr, 0, __func__);
}

Boolean _CFDataIsMutable(CFDataRef theData) {
    return checkData(theData, __func__) && isMutableData(theData);
}
