// Making the objects of a property list as a reader finds them: leaves in
// the mutability asked for, containers built once their contents are known,
// and one shared object per distinct immutable string of a document.
#include "CFPropertyListInternal.h"
#include "CFStringInternal.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>

#include <cstring>

namespace halvane::detail {

namespace {

constexpr size_t kFirstInternSlots = 256;

uint64_t hashBytes(const char* bytes, size_t length) {
    constexpr uint64_t kMultiplier = 0x9E3779B97F4A7C15ull;
    uint64_t h = length * kMultiplier;
    size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        h = (h ^ word) * kMultiplier;
        h ^= h >> 29;
    }
    uint64_t tail = 0;
    for (size_t shift = 0; i < length; ++i, shift += 8) tail |= uint64_t(uint8_t(bytes[i])) << shift;
    h = (h ^ tail) * kMultiplier;
    return h ^ (h >> 32);
}

}  // namespace

PropertyListBuilder::PropertyListBuilder(CFAllocatorRef allocator, CFOptionFlags mutability)
    : allocator_(allocator), mutability_(mutability) {}

PropertyListBuilder::~PropertyListBuilder() {
    for (CFTypeRef object : stack_) CFRelease(object);
    for (const InternSlot& slot : internSlots_) {
        if (slot.string != nullptr) CFRelease(slot.string);
    }
}

void PropertyListBuilder::growInternTable() {
    size_t capacity = internSlots_.empty() ? kFirstInternSlots : internSlots_.size() * 2;
    std::vector<InternSlot> slots(capacity, InternSlot{0, 0, 0, nullptr});
    size_t mask = capacity - 1;
    for (const InternSlot& slot : internSlots_) {
        if (slot.string == nullptr) continue;
        size_t i = size_t(slot.hash) & mask;
        while (slots[i].string != nullptr) i = (i + 1) & mask;
        slots[i] = slot;
    }
    internSlots_.swap(slots);
}

CFStringRef PropertyListBuilder::internedString(const char* utf8, size_t length) {
    auto bytes = reinterpret_cast<const uint8_t*>(utf8);
    // Offsets into the shared text are 32-bit; a document never gets there,
    // but a string that would is simply not shared.
    if (internText_.size() + length > UINT32_MAX) return createStringFromUTF8(allocator_, bytes, CFIndex(length));
    if ((internUsed_ + 1) * 2 > internSlots_.size()) growInternTable();
    uint64_t hash = hashBytes(utf8, length);
    size_t mask = internSlots_.size() - 1;
    size_t i = size_t(hash) & mask;
    for (; internSlots_[i].string != nullptr; i = (i + 1) & mask) {
        const InternSlot& slot = internSlots_[i];
        if (slot.hash == hash && slot.length == length &&
            std::memcmp(internText_.data() + slot.offset, utf8, length) == 0) {
            return static_cast<CFStringRef>(CFRetain(slot.string));
        }
    }
    CFStringRef string = createStringFromUTF8(allocator_, bytes, CFIndex(length));
    if (string == nullptr) return nullptr;
    internSlots_[i] = InternSlot{hash, uint32_t(internText_.size()), uint32_t(length), string};
    internText_.append(utf8, length);
    ++internUsed_;
    return static_cast<CFStringRef>(CFRetain(string));
}

bool PropertyListBuilder::pushString(const char* utf8, size_t length, bool isKey) {
    CFStringRef string;
    if (mutability_ == kCFPropertyListMutableContainersAndLeaves && !isKey) {
        thread_local std::u16string units;
        units.clear();
        if (!decodeUTF8(reinterpret_cast<const uint8_t*>(utf8), length, units)) return false;
        CFMutableStringRef mutableString = CFStringCreateMutable(allocator_, CFIndex(units.size()));
        if (mutableString == nullptr) return false;
        CFStringAppendCharacters(mutableString, units.data(), CFIndex(units.size()));
        if (units.capacity() > 64 * 1024) std::u16string().swap(units);
        string = mutableString;
    } else {
        string = internedString(utf8, length);
    }
    return push(string);
}

bool PropertyListBuilder::pushData(const uint8_t* bytes, size_t length) {
    if (mutability_ != kCFPropertyListMutableContainersAndLeaves) {
        return push(CFDataCreate(allocator_, bytes, CFIndex(length)));
    }
    CFMutableDataRef data = CFDataCreateMutable(allocator_, 0);
    if (data != nullptr) CFDataAppendBytes(data, bytes, CFIndex(length));
    return push(data);
}

bool PropertyListBuilder::pushNumber(CFNumberType type, const void* value) {
    return push(CFNumberCreate(allocator_, type, value));
}

bool PropertyListBuilder::pushDate(CFAbsoluteTime time) { return push(CFDateCreate(allocator_, time)); }

void PropertyListBuilder::pushBoolean(bool value) { push(CFRetain(value ? kCFBooleanTrue : kCFBooleanFalse)); }

bool PropertyListBuilder::push(CFTypeRef object) {
    if (object == nullptr) return false;
    stack_.push_back(object);
    return true;
}

bool PropertyListBuilder::makeArray(size_t mark) {
    CFIndex count = CFIndex(stack_.size() - mark);
    const void** values = stack_.data() + mark;
    CFArrayRef array;
    if (isMutableContainers()) {
        CFMutableArrayRef mutableArray = CFArrayCreateMutable(allocator_, 0, &kCFTypeArrayCallBacks);
        if (mutableArray != nullptr && count > 0) {
            CFArrayReplaceValues(mutableArray, CFRangeMake(0, 0), values, count);
            if (CFArrayGetCount(mutableArray) != count) {
                CFRelease(mutableArray);
                mutableArray = nullptr;
            }
        }
        array = mutableArray;
    } else {
        array = CFArrayCreate(allocator_, values, count, &kCFTypeArrayCallBacks);
    }
    if (array == nullptr) return false;
    for (size_t i = mark; i < stack_.size(); ++i) CFRelease(stack_[i]);
    stack_.resize(mark);
    stack_.push_back(array);
    return true;
}

bool PropertyListBuilder::makeDictionary(size_t mark) {
    CFIndex count = CFIndex(stack_.size() - mark) / 2;
    CFDictionaryRef dictionary;
    if (isMutableContainers()) {
        CFMutableDictionaryRef mutableDictionary = CFDictionaryCreateMutable(
            allocator_, count, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        if (mutableDictionary != nullptr) {
            for (CFIndex i = 0; i < count; ++i) {
                CFDictionarySetValue(mutableDictionary, stack_[mark + 2 * size_t(i)], stack_[mark + 2 * size_t(i) + 1]);
            }
        }
        dictionary = mutableDictionary;
    } else {
        // Creation keeps the first of repeated keys: handing the entries
        // over last to first keeps the last.
        scratchKeys_.resize(size_t(count));
        scratchValues_.resize(size_t(count));
        for (CFIndex i = 0; i < count; ++i) {
            size_t from = mark + 2 * size_t(count - 1 - i);
            scratchKeys_[size_t(i)] = stack_[from];
            scratchValues_[size_t(i)] = stack_[from + 1];
        }
        dictionary = CFDictionaryCreate(allocator_, scratchKeys_.data(), scratchValues_.data(), count,
                                        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    }
    if (dictionary == nullptr) return false;
    for (size_t i = mark; i < stack_.size(); ++i) CFRelease(stack_[i]);
    stack_.resize(mark);
    stack_.push_back(dictionary);
    return true;
}

CFTypeRef PropertyListBuilder::take() {
    if (stack_.empty()) return nullptr;
    CFTypeRef top = stack_.back();
    stack_.pop_back();
    return top;
}

}  // namespace halvane::detail
