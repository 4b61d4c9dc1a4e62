// Substrings, splitting a string at a separator and joining strings with one.
#include "CFStringSearchInternal.h"

#include <CoreFoundation/CFArray.h>

#include <vector>

using namespace halvane::detail;

namespace {

// A new immutable string with units [location, location + length) of s,
// kept in the ASCII form when s has it.
CFStringRef createSubstring(CFAllocatorRef allocator, CFStringRef s, CFIndex location, CFIndex length) {
    if (isASCIIString(s)) {
        return createStringFromASCII(allocator, reinterpret_cast<const char*>(s->contents.ascii) + location, length);
    }
    return createStringFromUnits(allocator, s->contents.units + location, length);
}

// An array of the given strings (retained by the array), each of which is
// released here.
CFArrayRef createArrayTakingStrings(CFAllocatorRef allocator, std::vector<CFTypeRef>& strings) {
    CFArrayRef array = CFArrayCreate(allocator, strings.data(), CFIndex(strings.size()), &kCFTypeArrayCallBacks);
    for (CFTypeRef s : strings) CFRelease(s);
    return array;
}

}  // namespace

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range) {
    if (!isA(str, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCreateWithSubstring(): not a string");
        return nullptr;
    }
    if (range.location < 0 || range.length < 0 || range.location > str->length ||
        range.length > str->length - range.location) {
        reportMisuse("CFString: CFStringCreateWithSubstring(): range {%ld, %ld} out of bounds (length %ld)",
                     range.location, range.length, str->length);
        return nullptr;
    }
    if (range.location == 0 && range.length == str->length) return CFStringCreateCopy(alloc, str);
    return createSubstring(alloc, str, range.location, range.length);
}

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef alloc, CFStringRef theString,
                                                  CFStringRef separatorString) {
    if (!isA(theString, kCFStringTypeID) || !isA(separatorString, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCreateArrayBySeparatingStrings(): not a string");
        return nullptr;
    }
    std::vector<CFTypeRef> pieces;
    CFIndex pieceStart = 0;
    bool failed = false;
    forEachMatch(theString, CFRange{0, theString->length}, separatorString, 0, [&](CFRange separator) {
        CFStringRef piece = createSubstring(alloc, theString, pieceStart, separator.location - pieceStart);
        if (piece == nullptr) {
            failed = true;
            return false;
        }
        pieces.push_back(piece);
        pieceStart = separator.location + separator.length;
        return true;
    });
    if (pieces.empty() && !failed) {
        // Nothing to split: callers get the string itself, not a copy.
        const void* only = theString;
        return CFArrayCreate(alloc, &only, 1, &kCFTypeArrayCallBacks);
    }
    CFStringRef last = failed ? nullptr : createSubstring(alloc, theString, pieceStart, theString->length - pieceStart);
    if (last == nullptr) {
        for (CFTypeRef piece : pieces) CFRelease(piece);
        return nullptr;
    }
    pieces.push_back(last);
    return createArrayTakingStrings(alloc, pieces);
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef alloc, CFArrayRef theArray, CFStringRef separatorString) {
    if (!isA(theArray, kCFArrayTypeID) || !isA(separatorString, kCFStringTypeID)) {
        reportMisuse("CFString: CFStringCreateByCombiningStrings(): %s",
                     isA(theArray, kCFArrayTypeID) ? "not a string" : "not an array");
        return nullptr;
    }
    CFIndex count = CFArrayGetCount(theArray);
    std::vector<const void*> elements(static_cast<size_t>(count));
    CFArrayGetValues(theArray, CFRange{0, count}, elements.data());
    CFIndex total = separatorString->length * (count > 0 ? count - 1 : 0);
    for (const void* element : elements) {
        if (!isA(element, kCFStringTypeID)) {
            reportMisuse("CFString: CFStringCreateByCombiningStrings(): element %p is not a string", element);
            return nullptr;
        }
        total += static_cast<CFStringRef>(element)->length;
    }
    if (count == 1) return CFStringCreateCopy(alloc, static_cast<CFStringRef>(elements[0]));
    std::u16string joined(size_t(total), u'\0');
    CFIndex at = 0;
    for (CFIndex k = 0; k < count; ++k) {
        if (k > 0) {
            copyUnits(separatorString, 0, separatorString->length, joined.data() + at);
            at += separatorString->length;
        }
        auto element = static_cast<CFStringRef>(elements[size_t(k)]);
        copyUnits(element, 0, element->length, joined.data() + at);
        at += element->length;
    }
    return createStringFromUnits(alloc, joined.data(), total);
}
