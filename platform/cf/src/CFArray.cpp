// CFArray: ordered collections of pointers whose life is managed by the
// callbacks given at creation. Immutable arrays keep their values in the
// same block as the object; mutable ones in a buffer that grows
// geometrically, up to a fixed capacity when the creator gave one.
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

struct __CFArray {
    CFRuntimeBase base;
    CFIndex count;
    CFIndex allocated;  // mutable arrays: slots in the buffer
    CFIndex maxCount;   // mutable arrays: the fixed capacity, 0 when unbounded
    const void** values;
    CFArrayCallBacks callBacks;  // copied at creation; NULL fields mean raw pointers
};

namespace halvane::detail {

// Callers read arrays in place through _CFArrayPrefix (CFArray.h).
static_assert(kCFArrayTypeID == _kCFArrayTypeID);
static_assert(offsetof(__CFArray, count) == offsetof(_CFArrayPrefix, _count));
static_assert(offsetof(__CFArray, values) == offsetof(_CFArrayPrefix, _values));
static_assert(std::is_same_v<decltype(__CFArray::values), decltype(_CFArrayPrefix::_values)>);

namespace {

enum ArrayBits : uintptr_t { kArrayMutable = 1 };

// The most values an array can hold: their slots must stay addressable.
constexpr CFIndex kMaxCount = CFIndex(SIZE_MAX / 2 / sizeof(void*));

// Temporary slots that report instead of throwing when memory runs out:
// no exception may cross the C interface.
std::unique_ptr<const void* []> temporarySlots(CFIndex count, const char* caller) {
    std::unique_ptr<const void*[]> slots(new (std::nothrow) const void*[size_t(count)]);
    if (slots == nullptr) reportMisuse("CFArray: %s(): out of memory for %ld values", caller, count);
    return slots;
}

bool isMutableArray(CFArrayRef a) {
    return (classBits(a) & kArrayMutable) != 0;
}

const void* retainCFType(CFAllocatorRef, const void* value) {
    return CFRetain(value);
}
void releaseCFType(CFAllocatorRef, const void* value) {
    CFRelease(value);
}

// The allocator handed to retain and release callbacks: the one every
// object reports through CFGetAllocator.
inline CFAllocatorRef callbackAllocator() {
    return kCFAllocatorSystemDefault;
}

inline const void* retainValue(CFArrayRef a, const void* value) {
    return a->callBacks.retain != nullptr ? a->callBacks.retain(callbackAllocator(), value) : value;
}

inline void releaseValue(CFArrayRef a, const void* value) {
    if (a->callBacks.release != nullptr) a->callBacks.release(callbackAllocator(), value);
}

inline bool matches(CFArrayRef a, const void* element, const void* value) {
    return element == value || (a->callBacks.equal != nullptr && a->callBacks.equal(element, value));
}

bool checkArray(CFArrayRef a, const char* caller) {
    if (isA(a, kCFArrayTypeID)) return true;
    reportMisuse("CFArray: %s(): %s is not an array", caller, a == nullptr ? "NULL" : "the argument");
    return false;
}

bool checkMutableArray(CFArrayRef a, const char* caller) {
    if (!checkArray(a, caller)) return false;
    if (isMutableArray(a)) return true;
    reportMisuse("CFArray: %s(): Expect mutable array", caller);
    return false;
}

// index must lie in [0, end); end is the count, or count + 1 where the
// index may designate the end.
bool checkIndex(CFArrayRef a, CFIndex index, CFIndex end, const char* caller) {
    // One unsigned comparison also rejects negative indices.
    if (static_cast<unsigned long>(index) < static_cast<unsigned long>(end)) return true;
    reportMisuse("CFArray: %s(): index (%ld) out of bounds (count %ld)", caller, index, a->count);
    return false;
}

bool checkRange(CFArrayRef a, CFRange range, const char* caller) {
    if (range.location >= 0 && range.length >= 0 && range.location <= a->count &&
        range.length <= a->count - range.location) {
        return true;
    }
    reportMisuse("CFArray: %s(): range {%ld, %ld} out of bounds (count %ld)", caller, range.location, range.length,
                 a->count);
    return false;
}

bool admitsCount(CFArrayRef a, CFIndex newCount, const char* caller) {
    if (a->maxCount == 0 || newCount <= a->maxCount) return true;
    reportMisuse("CFArray: %s(): fixed-capacity CFMutableArray is full (capacity %ld, %ld values needed)", caller,
                 a->maxCount, newCount);
    return false;
}

// Makes room for needed values, doubling so that appending one value at a
// time stays linear overall; never beyond the fixed capacity.
bool reserve(CFMutableArrayRef a, CFIndex needed, const char* caller) {
    if (needed <= a->allocated) return true;
    CFIndex grown = std::clamp<CFIndex>(a->allocated * 2, 8, kMaxCount);
    grown = std::max(grown, needed);
    if (a->maxCount > 0) grown = std::min(grown, a->maxCount);
    auto* values = static_cast<const void**>(std::realloc(a->values, size_t(grown) * sizeof(void*)));
    if (values == nullptr) {
        reportMisuse("CFArray: %s(): out of memory for %ld values", caller, grown);
        return false;
    }
    a->values = values;
    a->allocated = grown;
    return true;
}

// The one splice behind insertion, removal and replacement of several
// values. New values are retained before anything moves, so they may come
// from this very array.
void replaceValues(CFMutableArrayRef a, CFRange range, const void** newValues, CFIndex newCount, const char* caller) {
    if (!checkMutableArray(a, caller) || !checkRange(a, range, caller)) return;
    if (newCount < 0 || (newValues == nullptr && newCount > 0)) {
        reportMisuse("CFArray: %s(): %ld new values at %p", caller, newCount, static_cast<const void*>(newValues));
        return;
    }
    CFIndex kept = a->count - range.length;
    if (newCount > kMaxCount - kept) {
        reportMisuse("CFArray: %s(): %ld values cannot be stored", caller, newCount);
        return;
    }
    CFIndex total = kept + newCount;
    if (!admitsCount(a, total, caller)) return;

    const void* inlineSlots[16];
    std::unique_ptr<const void*[]> heapSlots;
    const void** retained = inlineSlots;
    if (newCount > CFIndex(std::size(inlineSlots))) {
        heapSlots = temporarySlots(newCount, caller);
        if (heapSlots == nullptr) return;
        retained = heapSlots.get();
    }
    for (CFIndex i = 0; i < newCount; ++i) retained[i] = retainValue(a, newValues[i]);
    if (!reserve(a, total, caller)) {
        for (CFIndex i = 0; i < newCount; ++i) releaseValue(a, retained[i]);
        return;
    }
    for (CFIndex i = range.location; i < range.location + range.length; ++i) releaseValue(a, a->values[i]);
    CFIndex tail = a->count - range.location - range.length;
    if (tail > 0 && newCount != range.length) {
        std::memmove(a->values + range.location + newCount, a->values + range.location + range.length,
                     size_t(tail) * sizeof(void*));
    }
    if (newCount > 0) std::memcpy(a->values + range.location, retained, size_t(newCount) * sizeof(void*));
    a->count = total;
}

// The hot path of filling an array: no splice, no temporary.
void appendValue(CFMutableArrayRef a, const void* value, const char* caller) {
    CFIndex count = a->count;
    if (!admitsCount(a, count + 1, caller) || !reserve(a, count + 1, caller)) return;
    a->values[count] = retainValue(a, value);
    a->count = count + 1;
}

__CFArray* newArray(CFAllocatorRef allocator, bool isMutable, CFIndex capacity, const CFArrayCallBacks& callBacks,
                    const void** values, CFIndex count, const char* caller) {
    if (count > kMaxCount) {
        reportMisuse("CFArray: %s(): %ld values cannot be stored", caller, count);
        return nullptr;
    }
    __CFArray* a = isMutable ? createInstance<__CFArray>(allocator, kCFArrayTypeID, 0, kArrayMutable)
                             : createInstance<__CFArray>(allocator, kCFArrayTypeID, size_t(count) * sizeof(void*));
    if (a == nullptr) return nullptr;
    a->callBacks = callBacks;
    if (isMutable) {
        a->maxCount = capacity;
        if (count > 0 && !reserve(a, count, caller)) {
            CFRelease(a);
            return nullptr;
        }
    } else {
        a->values = reinterpret_cast<const void**>(a + 1);
    }
    for (CFIndex i = 0; i < count; ++i) a->values[i] = retainValue(a, values[i]);
    a->count = count;
    return a;
}

const CFArrayCallBacks& callBacksOrNone(const CFArrayCallBacks* callBacks) {
    static constexpr CFArrayCallBacks kNoCallBacks = {0, nullptr, nullptr, nullptr, nullptr};
    return callBacks != nullptr ? *callBacks : kNoCallBacks;
}

// Stable bottom-up merge sort. Every element is moved exactly once per
// pass and every index stays in bounds whatever the comparator answers, so
// an inconsistent comparator gives a strange order, never lost values.
void mergeSort(const void** values, CFIndex count, CFComparatorFunction comparator, void* context, const char* caller) {
    constexpr CFIndex kRun = 8;
    std::unique_ptr<const void*[]> scratch;
    if (count > kRun && (scratch = temporarySlots(count, caller)) == nullptr) return;
    for (CFIndex start = 0; start < count; start += kRun) {
        CFIndex end = std::min(start + kRun, count);
        for (CFIndex i = start + 1; i < end; ++i) {
            const void* value = values[i];
            CFIndex j = i;
            for (; j > start && comparator(values[j - 1], value, context) > 0; --j) values[j] = values[j - 1];
            values[j] = value;
        }
    }
    if (count <= kRun) return;
    const void** from = values;
    const void** to = scratch.get();
    for (CFIndex width = kRun; width < count; width *= 2) {
        for (CFIndex left = 0; left < count; left += 2 * width) {
            CFIndex middle = std::min(left + width, count);
            CFIndex right = std::min(left + 2 * width, count);
            CFIndex i = left, j = middle, k = left;
            // Ties take the left value first: that is what keeps the sort stable.
            while (i < middle && j < right) to[k++] = comparator(from[i], from[j], context) > 0 ? from[j++] : from[i++];
            while (i < middle) to[k++] = from[i++];
            while (j < right) to[k++] = from[j++];
        }
        std::swap(from, to);
    }
    if (from != values) std::copy(from, from + count, values);
}

// Arrays can contain themselves, directly or through other arrays;
// equality and descriptions stop at this depth instead of recursing
// without end.
constexpr unsigned kMaxNesting = 256;
thread_local unsigned nesting = 0;

struct NestingGuard {
    NestingGuard() { ++nesting; }
    ~NestingGuard() { --nesting; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
};

void finalizeArray(CFTypeRef cf) {
    auto* a = static_cast<__CFArray*>(const_cast<void*>(cf));
    for (CFIndex i = 0; i < a->count; ++i) releaseValue(a, a->values[i]);
    if (isMutableArray(a)) std::free(a->values);
}

Boolean equalArrays(CFTypeRef cf1, CFTypeRef cf2) {
    auto a = static_cast<CFArrayRef>(cf1);
    auto b = static_cast<CFArrayRef>(cf2);
    // Arrays that compare their values differently are never equal, even
    // when both are empty.
    if (a->count != b->count || a->callBacks.equal != b->callBacks.equal) return false;
    if (nesting >= kMaxNesting) {
        reportMisuse("CFArray: CFEqual(): arrays nested more than %u deep are not compared", kMaxNesting);
        return false;
    }
    NestingGuard guard;
    for (CFIndex i = 0; i < a->count; ++i) {
        if (!matches(a, a->values[i], b->values[i])) return false;
    }
    return true;
}

CFHashCode hashArray(CFTypeRef cf) {
    return CFHashCode(static_cast<CFArrayRef>(cf)->count);
}

CFStringRef copyArrayDescription(CFTypeRef cf) {
    auto a = static_cast<CFArrayRef>(cf);
    TextBuilder text;
    text.ascii("<CFArray ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{type = ")
        .ascii(isMutableArray(a) ? "mutable-small" : "immutable")
        .format(", count = %ld, values = (", a->count);
    if (nesting >= kMaxNesting) return text.ascii("...)}").create();
    NestingGuard guard;
    if (a->count > 0) text.ascii("\n");
    for (CFIndex i = 0; i < a->count; ++i) {
        text.format("\t%ld : ", i);
        CFStringRef element =
            a->callBacks.copyDescription != nullptr ? a->callBacks.copyDescription(a->values[i]) : nullptr;
        if (element != nullptr) {
            text.string(element);
            CFRelease(element);
        } else {
            text.ascii("<").pointer(a->values[i]).ascii(">");
        }
        text.ascii("\n");
    }
    return text.ascii(")}").create();
}

}  // namespace

constinit const CFRuntimeClass kArrayClass = {
    0,       "CFArray", nullptr, nullptr, finalizeArray, equalArrays, hashArray, nullptr, copyArrayDescription,
    nullptr, nullptr,   0};

}  // namespace halvane::detail

using namespace halvane::detail;

constinit const CFArrayCallBacks kCFTypeArrayCallBacks = {0, retainCFType, releaseCFType, CFCopyDescription, CFEqual};

CFTypeID CFArrayGetTypeID(void) {
    return kCFArrayTypeID;
}

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                         const CFArrayCallBacks* callBacks) {
    if (numValues < 0 || (values == nullptr && numValues > 0)) {
        reportMisuse("CFArray: CFArrayCreate(): %ld values at %p", numValues, static_cast<const void*>(values));
        return nullptr;
    }
    return newArray(allocator, false, 0, callBacksOrNone(callBacks), values, numValues, __func__);
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef theArray) {
    if (!checkArray(theArray, __func__)) return nullptr;
    return newArray(allocator, false, 0, theArray->callBacks, theArray->values, theArray->count, __func__);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFArrayCallBacks* callBacks) {
    if (capacity < 0) {
        reportMisuse("CFArray: CFArrayCreateMutable(): negative capacity %ld", capacity);
        return nullptr;
    }
    return newArray(allocator, true, capacity, callBacksOrNone(callBacks), nullptr, 0, __func__);
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFArrayRef theArray) {
    if (!checkArray(theArray, __func__)) return nullptr;
    if (capacity < 0 || (capacity > 0 && capacity < theArray->count)) {
        reportMisuse("CFArray: CFArrayCreateMutableCopy(): capacity %ld cannot hold the %ld values of the array",
                     capacity, theArray->count);
        return nullptr;
    }
    return newArray(allocator, true, capacity, theArray->callBacks, theArray->values, theArray->count, __func__);
}

CFIndex CFArrayGetCount(CFArrayRef theArray) {
    return checkArray(theArray, __func__) ? theArray->count : 0;
}

CFIndex CFArrayGetCountOfValue(CFArrayRef theArray, CFRange range, const void* value) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return 0;
    CFIndex found = 0;
    for (CFIndex i = range.location; i < range.location + range.length; ++i) {
        if (matches(theArray, theArray->values[i], value)) ++found;
    }
    return found;
}

Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void* value) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return false;
    for (CFIndex i = range.location; i < range.location + range.length; ++i) {
        if (matches(theArray, theArray->values[i], value)) return true;
    }
    return false;
}

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx) {
    if (!checkArray(theArray, __func__) || !checkIndex(theArray, idx, theArray->count, __func__)) return nullptr;
    return theArray->values[idx];
}

void CFArrayGetValues(CFArrayRef theArray, CFRange range, const void** values) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__) || range.length == 0) return;
    if (values == nullptr) {
        reportMisuse("CFArray: CFArrayGetValues(): NULL buffer for %ld values", range.length);
        return;
    }
    std::memcpy(values, theArray->values + range.location, size_t(range.length) * sizeof(void*));
}

void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void* context) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return;
    if (applier == nullptr) {
        reportMisuse("CFArray: CFArrayApplyFunction(): NULL function");
        return;
    }
    // The count is read again at every step: an applier that removes values
    // ends the walk early instead of reading past the end.
    for (CFIndex i = range.location; i < range.location + range.length && i < theArray->count; ++i) {
        applier(theArray->values[i], context);
    }
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void* value) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return kCFNotFound;
    for (CFIndex i = range.location; i < range.location + range.length; ++i) {
        if (matches(theArray, theArray->values[i], value)) return i;
    }
    return kCFNotFound;
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef theArray, CFRange range, const void* value) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return kCFNotFound;
    for (CFIndex i = range.location + range.length; i > range.location; --i) {
        if (matches(theArray, theArray->values[i - 1], value)) return i - 1;
    }
    return kCFNotFound;
}

CFIndex CFArrayBSearchValues(CFArrayRef theArray, CFRange range, const void* value, CFComparatorFunction comparator,
                             void* context) {
    if (!checkArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return kCFNotFound;
    if (comparator == nullptr) {
        reportMisuse("CFArray: CFArrayBSearchValues(): NULL comparator");
        return kCFNotFound;
    }
    // The first position whose value is not less than the one searched:
    // a match if there is one, else where the value would be inserted.
    CFIndex low = range.location;
    CFIndex high = range.location + range.length;
    while (low < high) {
        CFIndex middle = low + (high - low) / 2;
        if (comparator(theArray->values[middle], value, context) < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

void CFArrayAppendValue(CFMutableArrayRef theArray, const void* value) {
    if (checkMutableArray(theArray, __func__)) appendValue(theArray, value, __func__);
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value) {
    if (!checkMutableArray(theArray, __func__) || !checkIndex(theArray, idx, theArray->count + 1, __func__)) return;
    replaceValues(theArray, CFRangeMake(idx, 0), &value, 1, __func__);
}

void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value) {
    if (!checkMutableArray(theArray, __func__) || !checkIndex(theArray, idx, theArray->count + 1, __func__)) return;
    if (idx == theArray->count) {
        appendValue(theArray, value, __func__);
        return;
    }
    // Retained before the old value goes, in case both are the same object.
    const void* retained = retainValue(theArray, value);
    releaseValue(theArray, theArray->values[idx]);
    theArray->values[idx] = retained;
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx) {
    if (!checkMutableArray(theArray, __func__) || !checkIndex(theArray, idx, theArray->count, __func__)) return;
    replaceValues(theArray, CFRangeMake(idx, 1), nullptr, 0, __func__);
}

void CFArrayRemoveAllValues(CFMutableArrayRef theArray) {
    if (!checkMutableArray(theArray, __func__)) return;
    CFIndex count = theArray->count;
    theArray->count = 0;
    for (CFIndex i = 0; i < count; ++i) releaseValue(theArray, theArray->values[i]);
}

void CFArrayReplaceValues(CFMutableArrayRef theArray, CFRange range, const void** newValues, CFIndex newCount) {
    replaceValues(theArray, range, newValues, newCount, __func__);
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef theArray, CFIndex idx1, CFIndex idx2) {
    if (!checkMutableArray(theArray, __func__) || !checkIndex(theArray, idx1, theArray->count, __func__) ||
        !checkIndex(theArray, idx2, theArray->count, __func__)) {
        return;
    }
    std::swap(theArray->values[idx1], theArray->values[idx2]);
}

void CFArraySortValues(CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator, void* context) {
    if (!checkMutableArray(theArray, __func__) || !checkRange(theArray, range, __func__)) return;
    if (comparator == nullptr) {
        reportMisuse("CFArray: CFArraySortValues(): NULL comparator");
        return;
    }
    if (range.length > 1) mergeSort(theArray->values + range.location, range.length, comparator, context, __func__);
}

void CFArrayAppendArray(CFMutableArrayRef theArray, CFArrayRef otherArray, CFRange otherRange) {
    if (!checkMutableArray(theArray, __func__) || !checkArray(otherArray, __func__) ||
        !checkRange(otherArray, otherRange, __func__)) {
        return;
    }
    replaceValues(theArray, CFRangeMake(theArray->count, 0), otherArray->values + otherRange.location,
                  otherRange.length, __func__);
}

Boolean _CFArrayIsMutable(CFArrayRef theArray) {
    return checkArray(theArray, __func__) && isMutableArray(theArray);
}
