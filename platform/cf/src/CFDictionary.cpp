// CFDictionary: a hash table with open addressing and linear probing.
//
// Each slot holds the key, the value and the key's full hash; a parallel
// array of one-byte tags marks the slot empty (0) or used (0x80 plus seven
// bits of the hash), so a probe usually rejects a slot without touching the
// entry and calls the equal callback only on a full hash match. Removal
// shifts the following entries back instead of leaving tombstones, so the
// table never fills up with dead slots and never needs cleaning.
#include "CFDictionaryInternal.h"
#include "CFInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFDictionary.h>

#include <algorithm>
#include <cstring>

namespace halvane::detail {

struct DictionaryEntry {
    const void* key;
    const void* value;
    CFHashCode hash;  // of the key, as the key hash callback gave it
};

}  // namespace halvane::detail

struct __CFDictionary {
    CFRuntimeBase base;
    CFDictionaryKeyCallBacks keyCallBacks;
    CFDictionaryValueCallBacks valueCallBacks;
    CFIndex count;
    size_t slotCount;       // 0 (nothing allocated yet) or a power of two >= 8
    unsigned shift;         // 64 - log2(slotCount): the home slot is the top bits of the mixed hash
    uint32_t enumerations;  // mutable dictionaries: applier or description calls in progress
    halvane::detail::DictionaryEntry* entries;
    uint8_t* tags;  // in the same block as entries
};

namespace halvane::detail {
namespace {

using Entry = DictionaryEntry;

enum DictionaryBits : uintptr_t { kDictionaryMutable = 1 };

constexpr size_t kMinimumSlots = 8;
// Preallocation from a capacity hint stops here; the table still grows
// beyond it as entries arrive.
constexpr CFIndex kLargestCapacityHint = CFIndex(1) << 20;
// Nested descriptions and comparisons deeper than this are refused: only a
// dictionary that contains itself gets there.
constexpr unsigned kMaximumNesting = 256;

// Fibonacci hashing: spreads hashes whose low bits are all alike (pointers,
// small integers) over the whole table.
constexpr uint64_t kHashMultiplier = 0x9E3779B97F4A7C15ull;

inline uint64_t mix(CFHashCode hash) {
    return uint64_t(hash) * kHashMultiplier;
}
inline size_t homeSlot(const __CFDictionary* d, uint64_t mixed) {
    return size_t(mixed >> d->shift);
}
// Seven bits just below those that pick the home slot, so that neighbours
// in a probe run rarely share a tag.
inline uint8_t tagOf(const __CFDictionary* d, uint64_t mixed) {
    return uint8_t(0x80 | ((mixed >> (d->shift - 7)) & 0x7F));
}

inline bool isMutable(CFDictionaryRef d) {
    return (classBits(d) & kDictionaryMutable) != 0;
}

// At most three used slots in four: short probe runs and always an empty
// slot to end a search.
inline bool fits(CFIndex count, size_t slotCount) {
    return size_t(count) <= slotCount / 4 * 3;
}

// Doubling below this never overflows the size of the block.
constexpr size_t kLargestSlotCount = SIZE_MAX / (sizeof(Entry) + 1) / 2;

// The table size for count entries, or 0 when no table that large can be
// allocated.
size_t slotsFor(CFIndex count) {
    size_t slots = kMinimumSlots;
    while (!fits(count, slots)) {
        if (slots >= kLargestSlotCount) return 0;
        slots *= 2;
    }
    return slots;
}

unsigned log2Of(size_t powerOfTwo) {
    return unsigned(__builtin_ctzll(powerOfTwo));
}

thread_local unsigned nestingDepth = 0;

// Counts nested descriptions and comparisons on this thread.
class NestingGuard {
public:
    NestingGuard() : allowed_(nestingDepth < kMaximumNesting) { ++nestingDepth; }
    ~NestingGuard() { --nestingDepth; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
    bool allowed() const { return allowed_; }

private:
    bool allowed_;
};

// While an applier or a description callback runs, the table must not move
// under the loop: mutations are refused until it ends.
class EnumerationGuard {
public:
    explicit EnumerationGuard(CFDictionaryRef d) : counter_(nullptr) {
        if (isMutable(d)) {
            counter_ = &const_cast<__CFDictionary*>(d)->enumerations;
            std::atomic_ref<uint32_t>(*counter_).fetch_add(1, std::memory_order_relaxed);
        }
    }
    ~EnumerationGuard() {
        if (counter_ != nullptr) std::atomic_ref<uint32_t>(*counter_).fetch_sub(1, std::memory_order_relaxed);
    }
    EnumerationGuard(const EnumerationGuard&) = delete;
    EnumerationGuard& operator=(const EnumerationGuard&) = delete;

private:
    uint32_t* counter_;
};

// --- Callbacks -------------------------------------------------------------

const void* retainType(CFAllocatorRef, const void* value) {
    return CFRetain(value);
}
void releaseType(CFAllocatorRef, const void* value) {
    CFRelease(value);
}

const void* copyStringKey(CFAllocatorRef allocator, const void* value) {
    auto key = static_cast<CFStringRef>(value);
    if (!isA(key, kCFStringTypeID)) {
        // Kept usable rather than stored as NULL: the key is retained as is.
        reportMisuse("CFDictionary: kCFCopyStringDictionaryKeyCallBacks: key %p is not a string", value);
        return CFRetain(value);
    }
    return CFStringCreateCopy(allocator, key);
}

// Missing callbacks mean raw pointers: stored as given, compared by
// identity, hashed by address.
inline CFHashCode hashKey(const __CFDictionary* d, const void* key) {
    return d->keyCallBacks.hash != nullptr ? d->keyCallBacks.hash(key) : CFHashCode(reinterpret_cast<uintptr_t>(key));
}

inline bool keysEqual(const __CFDictionary* d, const void* stored, const void* key) {
    return stored == key || (d->keyCallBacks.equal != nullptr && d->keyCallBacks.equal(stored, key));
}

inline bool valuesEqual(const __CFDictionary* d, const void* stored, const void* value) {
    return stored == value || (d->valueCallBacks.equal != nullptr && d->valueCallBacks.equal(stored, value));
}

inline const void* retainKey(const __CFDictionary* d, const void* key) {
    return d->keyCallBacks.retain != nullptr ? d->keyCallBacks.retain(kCFAllocatorSystemDefault, key) : key;
}

inline const void* retainValue(const __CFDictionary* d, const void* value) {
    return d->valueCallBacks.retain != nullptr ? d->valueCallBacks.retain(kCFAllocatorSystemDefault, value) : value;
}

inline void releaseEntry(const CFDictionaryKeyCallBacks& keys, const CFDictionaryValueCallBacks& values,
                         const Entry& entry) {
    if (keys.release != nullptr) keys.release(kCFAllocatorSystemDefault, entry.key);
    if (values.release != nullptr) values.release(kCFAllocatorSystemDefault, entry.value);
}

// --- Table -----------------------------------------------------------------

// Installs an empty table of slotCount slots; false when memory runs out
// (the dictionary keeps its old table then).
bool allocateTable(__CFDictionary* d, size_t slotCount) {
    if (slotCount == 0) return false;
    auto* block = static_cast<unsigned char*>(std::malloc(slotCount * (sizeof(Entry) + 1)));
    if (block == nullptr) return false;
    d->entries = reinterpret_cast<Entry*>(block);
    d->tags = block + slotCount * sizeof(Entry);
    std::memset(d->tags, 0, slotCount);
    d->slotCount = slotCount;
    d->shift = 64 - log2Of(slotCount);
    return true;
}

// Puts an entry whose key is known to be absent into the first free slot of
// its probe run. The table must have room.
void placeNew(__CFDictionary* d, const Entry& entry) {
    uint64_t mixed = mix(entry.hash);
    size_t mask = d->slotCount - 1;
    size_t slot = homeSlot(d, mixed);
    while (d->tags[slot] != 0) slot = (slot + 1) & mask;
    d->tags[slot] = tagOf(d, mixed);
    d->entries[slot] = entry;
}

// Moves every entry into a table of slotCount slots. The stored hashes are
// reused: no callback runs.
bool rehash(__CFDictionary* d, size_t slotCount) {
    Entry* oldEntries = d->entries;
    uint8_t* oldTags = d->tags;
    size_t oldSlotCount = d->slotCount;
    unsigned oldShift = d->shift;
    if (!allocateTable(d, slotCount)) {
        d->entries = oldEntries;
        d->tags = oldTags;
        d->slotCount = oldSlotCount;
        d->shift = oldShift;
        return false;
    }
    for (size_t i = 0; i < oldSlotCount; ++i) {
        if (oldTags[i] != 0) placeNew(d, oldEntries[i]);
    }
    std::free(oldEntries);
    return true;
}

// Makes room for one more entry.
bool reserveOneMore(__CFDictionary* d) {
    if (d->slotCount != 0 && fits(d->count + 1, d->slotCount)) return true;
    if (d->slotCount == 0) return allocateTable(d, kMinimumSlots);
    if (d->slotCount >= kLargestSlotCount) return false;
    return rehash(d, d->slotCount * 2);
}

// The slot holding key, or -1.
inline ptrdiff_t findSlot(const __CFDictionary* d, const void* key, CFHashCode hash) {
    if (d->count == 0) return -1;
    uint64_t mixed = mix(hash);
    uint8_t tag = tagOf(d, mixed);
    size_t mask = d->slotCount - 1;
    for (size_t slot = homeSlot(d, mixed);; slot = (slot + 1) & mask) {
        uint8_t slotTag = d->tags[slot];
        if (slotTag == 0) return -1;
        if (slotTag == tag) {
            const Entry& entry = d->entries[slot];
            if (entry.hash == hash && keysEqual(d, entry.key, key)) return ptrdiff_t(slot);
        }
    }
}

// Empties a slot, pulling back the entries after it whose probe run passes
// through it, so that every entry stays reachable from its home slot.
void eraseSlot(__CFDictionary* d, size_t hole) {
    size_t mask = d->slotCount - 1;
    for (size_t next = (hole + 1) & mask; d->tags[next] != 0; next = (next + 1) & mask) {
        size_t home = homeSlot(d, mix(d->entries[next].hash));
        if (((next - home) & mask) >= ((next - hole) & mask)) {
            d->entries[hole] = d->entries[next];
            d->tags[hole] = d->tags[next];
            hole = next;
        }
    }
    d->tags[hole] = 0;
    --d->count;
}

template <typename F>
void forEachEntry(const __CFDictionary* d, F&& f) {
    for (size_t slot = 0; slot < d->slotCount; ++slot) {
        if (d->tags[slot] != 0) f(slot, d->entries[slot]);
    }
}

// --- Creation --------------------------------------------------------------

// reserve: entries to make room for at once (0: allocate on first insert).
// Only immutable dictionaries fail when that room cannot be had; a mutable
// one grows later instead.
__CFDictionary* newDictionary(CFAllocatorRef allocator, bool isMutableDictionary, CFIndex reserve,
                              const CFDictionaryKeyCallBacks* keyCallBacks,
                              const CFDictionaryValueCallBacks* valueCallBacks) {
    auto* d = createInstance<__CFDictionary>(allocator, kCFDictionaryTypeID, 0,
                                             isMutableDictionary ? uintptr_t(kDictionaryMutable) : 0);
    if (d == nullptr) return nullptr;
    // Copied: later changes to the caller's structures do not reach here.
    if (keyCallBacks != nullptr) d->keyCallBacks = *keyCallBacks;
    if (valueCallBacks != nullptr) d->valueCallBacks = *valueCallBacks;
    if (reserve > 0 && !allocateTable(d, slotsFor(reserve)) && !isMutableDictionary) {
        CFRelease(d);
        return nullptr;
    }
    return d;
}

// A new dictionary with the callbacks and entries of source, each entry
// retained again.
__CFDictionary* copyDictionary(CFAllocatorRef allocator, CFDictionaryRef source, bool isMutableDictionary,
                               CFIndex capacityHint) {
    CFIndex reserve = std::max(std::min(capacityHint, kLargestCapacityHint), source->count);
    __CFDictionary* d =
        newDictionary(allocator, isMutableDictionary, reserve, &source->keyCallBacks, &source->valueCallBacks);
    if (d == nullptr) return nullptr;
    if (source->count > 0 && d->slotCount == 0) {
        reportMisuse("CFDictionary: copy of %ld entries: out of memory", source->count);
        CFRelease(d);
        return nullptr;
    }
    forEachEntry(source, [d](size_t, const Entry& entry) {
        placeNew(d, Entry{retainKey(d, entry.key), retainValue(d, entry.value), entry.hash});
        ++d->count;
    });
    return d;
}

enum class Existing { kKeep, kReplace };
enum class Missing { kAdd, kIgnore };

// The one path of AddValue, SetValue and ReplaceValue.
void store(__CFDictionary* d, const void* key, const void* value, Existing existing, Missing missing,
           const char* caller) {
    CFHashCode hash = hashKey(d, key);
    ptrdiff_t slot = findSlot(d, key, hash);
    if (slot >= 0) {
        if (existing == Existing::kKeep) return;
        // Retain the new pair before releasing the old one: they may be the
        // same objects.
        Entry old = d->entries[slot];
        d->entries[slot] = Entry{retainKey(d, key), retainValue(d, value), hash};
        releaseEntry(d->keyCallBacks, d->valueCallBacks, old);
        return;
    }
    if (missing == Missing::kIgnore) return;
    if (!reserveOneMore(d)) {
        reportMisuse("CFDictionary: %s(): out of memory; the entry was not added", caller);
        return;
    }
    placeNew(d, Entry{retainKey(d, key), retainValue(d, value), hash});
    ++d->count;
}

// --- Checks ----------------------------------------------------------------

bool checkDictionary(CFDictionaryRef d, const char* caller) {
    if (isA(d, kCFDictionaryTypeID)) return true;
    if (d == nullptr) {
        reportMisuse("CFDictionary: %s(): NULL dictionary", caller);
    } else {
        reportMisuse("CFDictionary: %s(): %p is not a dictionary", caller, static_cast<const void*>(d));
    }
    return false;
}

bool checkMutable(CFDictionaryRef d, const char* caller) {
    if (!checkDictionary(d, caller)) return false;
    if (!isMutable(d)) {
        reportMisuse("CFDictionary: %s(): Expect mutable dictionary", caller);
        return false;
    }
    if (std::atomic_ref<uint32_t>(const_cast<__CFDictionary*>(d)->enumerations).load(std::memory_order_relaxed) != 0) {
        reportMisuse("CFDictionary: %s(): dictionary changed while it is being enumerated; change refused", caller);
        return false;
    }
    return true;
}

// --- Class callbacks -------------------------------------------------------

void finalizeDictionary(CFTypeRef cf) {
    auto* d = static_cast<__CFDictionary*>(const_cast<void*>(cf));
    forEachEntry(d, [d](size_t, const Entry& entry) { releaseEntry(d->keyCallBacks, d->valueCallBacks, entry); });
    std::free(d->entries);
}

Boolean equalDictionaries(CFTypeRef cf1, CFTypeRef cf2) {
    auto a = static_cast<CFDictionaryRef>(cf1);
    auto b = static_cast<CFDictionaryRef>(cf2);
    if (a->count != b->count) return false;
    NestingGuard nesting;
    if (!nesting.allowed()) {
        reportMisuse("CFDictionary: CFEqual(): dictionaries nested too deeply (one contains itself?)");
        return false;
    }
    for (size_t slot = 0; slot < a->slotCount; ++slot) {
        if (a->tags[slot] == 0) continue;
        const Entry& entry = a->entries[slot];
        ptrdiff_t other = findSlot(b, entry.key, hashKey(b, entry.key));
        if (other < 0 || !valuesEqual(a, entry.value, b->entries[other].value)) return false;
    }
    return true;
}

CFHashCode hashDictionary(CFTypeRef cf) {
    return CFHashCode(static_cast<CFDictionaryRef>(cf)->count);
}

CFStringRef copyDictionaryDescription(CFTypeRef cf) {
    auto d = static_cast<CFDictionaryRef>(cf);
    TextBuilder text;
    text.ascii("<CFBasicHash ")
        .pointer(cf)
        .ascii(" [")
        .pointer(descriptionAllocatorAddress(cf))
        .ascii("]>{type = ")
        .ascii(isMutable(d) ? "mutable dict" : "immutable dict")
        .format(", count = %ld,\nentries =>\n", d->count);
    NestingGuard nesting;
    if (!nesting.allowed()) {
        reportMisuse("CFDictionary: CFCopyDescription(): dictionaries nested too deeply (one contains itself?)");
    } else {
        EnumerationGuard enumeration(d);
        forEachEntry(d, [d, &text](size_t slot, const Entry& entry) {
            text.format("\t%zu : ", slot);
            appendElementDescription(text, d->keyCallBacks.copyDescription, entry.key);
            text.ascii(" = ");
            appendElementDescription(text, d->valueCallBacks.copyDescription, entry.value);
            text.ascii("\n");
        });
    }
    text.ascii("}\n");
    return text.create();
}

}  // namespace

void appendElementDescription(TextBuilder& text, CFDictionaryCopyDescriptionCallBack describe, const void* element) {
    CFStringRef description = describe != nullptr ? describe(element) : nullptr;
    if (description == nullptr) {
        text.ascii("<").pointer(element).ascii(">");
        return;
    }
    text.string(description);
    CFRelease(description);
}

CFDictionaryCopyDescriptionCallBack keyDescriptionCallBack(CFDictionaryRef d) {
    return isA(d, kCFDictionaryTypeID) ? d->keyCallBacks.copyDescription : nullptr;
}

CFDictionaryCopyDescriptionCallBack valueDescriptionCallBack(CFDictionaryRef d) {
    return isA(d, kCFDictionaryTypeID) ? d->valueCallBacks.copyDescription : nullptr;
}

constinit const CFRuntimeClass kDictionaryClass = {.version = 0,
                                                   .className = "CFDictionary",
                                                   .init = nullptr,
                                                   .copy = nullptr,
                                                   .finalize = finalizeDictionary,
                                                   .equal = equalDictionaries,
                                                   .hash = hashDictionary,
                                                   .copyFormattingDesc = nullptr,
                                                   .copyDebugDesc = copyDictionaryDescription,
                                                   .reclaim = nullptr,
                                                   .refcount = nullptr,
                                                   .requiredAlignment = 0};

}  // namespace halvane::detail

using namespace halvane::detail;

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0,       retainType, releaseType, CFCopyDescription,
                                                                CFEqual, CFHash};
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks = {
    0, copyStringKey, releaseType, CFCopyDescription, CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, retainType, releaseType, CFCopyDescription,
                                                                    CFEqual};

CFTypeID CFDictionaryGetTypeID(void) {
    return kCFDictionaryTypeID;
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    if (numValues < 0 || (numValues > 0 && (keys == nullptr || values == nullptr))) {
        reportMisuse("CFDictionary: CFDictionaryCreate(): %ld entries without keys or values", numValues);
        return nullptr;
    }
    __CFDictionary* d = newDictionary(allocator, false, numValues, keyCallBacks, valueCallBacks);
    if (d == nullptr) return nullptr;
    // The table was sized for every pair; a repeated key keeps its first
    // occurrence.
    for (CFIndex i = 0; i < numValues; ++i) {
        store(d, keys[i], values[i], Existing::kKeep, Missing::kAdd, "CFDictionaryCreate");
    }
    return d;
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef theDict) {
    if (!checkDictionary(theDict, "CFDictionaryCreateCopy")) return nullptr;
    return copyDictionary(allocator, theDict, false, 0);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
    if (capacity < 0) {
        reportMisuse("CFDictionary: CFDictionaryCreateMutable(): negative capacity %ld", capacity);
        return nullptr;
    }
    return newDictionary(allocator, true, std::min(capacity, kLargestCapacityHint), keyCallBacks, valueCallBacks);
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFDictionaryRef theDict) {
    if (!checkDictionary(theDict, "CFDictionaryCreateMutableCopy")) return nullptr;
    if (capacity < 0) {
        reportMisuse("CFDictionary: CFDictionaryCreateMutableCopy(): negative capacity %ld", capacity);
        return nullptr;
    }
    return copyDictionary(allocator, theDict, true, capacity);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
    return checkDictionary(theDict, "CFDictionaryGetCount") ? theDict->count : 0;
}

CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef theDict, const void* key) {
    if (!checkDictionary(theDict, "CFDictionaryGetCountOfKey")) return 0;
    return findSlot(theDict, key, hashKey(theDict, key)) >= 0 ? 1 : 0;
}

CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef theDict, const void* value) {
    if (!checkDictionary(theDict, "CFDictionaryGetCountOfValue")) return 0;
    CFIndex matches = 0;
    forEachEntry(theDict, [theDict, value, &matches](size_t, const Entry& entry) {
        if (valuesEqual(theDict, entry.value, value)) ++matches;
    });
    return matches;
}

Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key) {
    if (!checkDictionary(theDict, "CFDictionaryContainsKey")) return false;
    return findSlot(theDict, key, hashKey(theDict, key)) >= 0;
}

Boolean CFDictionaryContainsValue(CFDictionaryRef theDict, const void* value) {
    if (!checkDictionary(theDict, "CFDictionaryContainsValue")) return false;
    for (size_t slot = 0; slot < theDict->slotCount; ++slot) {
        if (theDict->tags[slot] != 0 && valuesEqual(theDict, theDict->entries[slot].value, value)) return true;
    }
    return false;
}

const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key) {
    if (!checkDictionary(theDict, "CFDictionaryGetValue")) return nullptr;
    ptrdiff_t slot = findSlot(theDict, key, hashKey(theDict, key));
    return slot >= 0 ? theDict->entries[slot].value : nullptr;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef theDict, const void* key, const void** value) {
    if (!checkDictionary(theDict, "CFDictionaryGetValueIfPresent")) return false;
    ptrdiff_t slot = findSlot(theDict, key, hashKey(theDict, key));
    if (slot < 0) return false;
    if (value != nullptr) *value = theDict->entries[slot].value;
    return true;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values) {
    if (!checkDictionary(theDict, "CFDictionaryGetKeysAndValues")) return;
    CFIndex index = 0;
    forEachEntry(theDict, [keys, values, &index](size_t, const Entry& entry) {
        if (keys != nullptr) keys[index] = entry.key;
        if (values != nullptr) values[index] = entry.value;
        ++index;
    });
}

void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context) {
    if (!checkDictionary(theDict, "CFDictionaryApplyFunction")) return;
    if (applier == nullptr) {
        reportMisuse("CFDictionary: CFDictionaryApplyFunction(): NULL applier");
        return;
    }
    EnumerationGuard enumeration(theDict);
    forEachEntry(theDict, [applier, context](size_t, const Entry& entry) { applier(entry.key, entry.value, context); });
}

void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
    if (!checkMutable(theDict, "CFDictionaryAddValue")) return;
    store(theDict, key, value, Existing::kKeep, Missing::kAdd, "CFDictionaryAddValue");
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
    if (!checkMutable(theDict, "CFDictionarySetValue")) return;
    store(theDict, key, value, Existing::kReplace, Missing::kAdd, "CFDictionarySetValue");
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
    if (!checkMutable(theDict, "CFDictionaryReplaceValue")) return;
    store(theDict, key, value, Existing::kReplace, Missing::kIgnore, "CFDictionaryReplaceValue");
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef theDict, const void* key) {
    if (!checkMutable(theDict, "CFDictionaryRemoveValue")) return;
    ptrdiff_t slot = findSlot(theDict, key, hashKey(theDict, key));
    if (slot < 0) return;
    // Released only once the table is consistent again: a release may run
    // code that reads this dictionary.
    Entry removed = theDict->entries[slot];
    eraseSlot(theDict, size_t(slot));
    releaseEntry(theDict->keyCallBacks, theDict->valueCallBacks, removed);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef theDict) {
    if (!checkMutable(theDict, "CFDictionaryRemoveAllValues")) return;
    if (theDict->count == 0) return;
    // Detach the table first, for the same reason as in RemoveValue; the
    // capacity goes with it.
    Entry* entries = theDict->entries;
    uint8_t* tags = theDict->tags;
    size_t slotCount = theDict->slotCount;
    theDict->count = 0;
    theDict->slotCount = 0;
    theDict->entries = nullptr;
    theDict->tags = nullptr;
    for (size_t slot = 0; slot < slotCount; ++slot) {
        if (tags[slot] != 0) releaseEntry(theDict->keyCallBacks, theDict->valueCallBacks, entries[slot]);
    }
    std::free(entries);
}

Boolean _CFDictionaryIsMutable(CFDictionaryRef theDict) {
    return checkDictionary(theDict, "_CFDictionaryIsMutable") && isMutable(theDict);
}
