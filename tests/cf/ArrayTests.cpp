// CFArray: callbacks and the retain counts of elements, mutation, fixed
// capacities, searching, sorting, equality, hashing and descriptions.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

using namespace cftest;

namespace {

// Elements whose reference counts and destruction the tests can watch.
struct Tracked {
    CFRuntimeBase base;
    long id;
};

int trackedFinalized = 0;

void trackedFinalize(CFTypeRef) {
    ++trackedFinalized;
}
Boolean trackedEqual(CFTypeRef a, CFTypeRef b) {
    return static_cast<const Tracked*>(a)->id == static_cast<const Tracked*>(b)->id;
}
CFStringRef trackedDescription(CFTypeRef cf) {
    std::string text = "T" + std::to_string(static_cast<const Tracked*>(cf)->id);
    std::u16string wide(text.begin(), text.end());
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(wide.data()), CFIndex(wide.size()));
}

const CFRuntimeClass trackedClass = {
    0,       "Tracked", nullptr, nullptr, trackedFinalize, trackedEqual, nullptr, nullptr, trackedDescription,
    nullptr, nullptr,   0};

CFTypeID trackedType() {
    static CFTypeID typeID = _CFRuntimeRegisterClass(&trackedClass);
    return typeID;
}

CFTypeRef newTracked(long id) {
    auto* t = static_cast<Tracked*>(const_cast<void*>(
        _CFRuntimeCreateInstance(nullptr, trackedType(), sizeof(Tracked) - sizeof(CFRuntimeBase), nullptr)));
    t->id = id;
    return t;
}

Owned<CFTypeRef> tracked(long id) {
    return own(newTracked(id));
}

long idOf(const void* value) {
    return static_cast<const Tracked*>(value)->id;
}

std::vector<long> idsOf(CFArrayRef a) {
    std::vector<long> ids;
    for (CFIndex i = 0; i < CFArrayGetCount(a); ++i) ids.push_back(idOf(CFArrayGetValueAtIndex(a, i)));
    return ids;
}

// Raw values: integers stored as pointers with NULL callbacks.
const void* raw(intptr_t n) {
    return reinterpret_cast<const void*>(n);
}
intptr_t number(const void* p) {
    return reinterpret_cast<intptr_t>(p);
}

std::vector<intptr_t> numbersOf(CFArrayRef a) {
    std::vector<intptr_t> out;
    for (CFIndex i = 0; i < CFArrayGetCount(a); ++i) out.push_back(number(CFArrayGetValueAtIndex(a, i)));
    return out;
}

Owned<CFMutableArrayRef> rawArray(std::vector<intptr_t> numbers, CFIndex capacity = 0) {
    auto a = own(CFArrayCreateMutable(nullptr, capacity, nullptr));
    for (intptr_t n : numbers) CFArrayAppendValue(a, raw(n));
    return a;
}

CFComparisonResult compareNumbers(const void* a, const void* b, void*) {
    intptr_t x = number(a), y = number(b);
    return x < y ? kCFCompareLessThan : x > y ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

// Callbacks that count their calls.
struct CallCounts {
    int retains = 0, releases = 0, descriptions = 0, equals = 0;
};
CallCounts calls;

const void* countingRetain(CFAllocatorRef, const void* value) {
    ++calls.retains;
    return value;
}
void countingRelease(CFAllocatorRef, const void*) {
    ++calls.releases;
}
CFStringRef countingDescription(const void*) {
    ++calls.descriptions;
    return CFSTR("item");
}
Boolean equalModuloTen(const void* a, const void* b) {
    ++calls.equals;
    return number(a) % 10 == number(b) % 10;
}

std::string header(CFTypeRef cf) {
    char text[96];
    std::snprintf(text, sizeof text, "<CFArray 0x%lx [0x%lx]>", (unsigned long)cf,
                  (unsigned long)kCFAllocatorSystemDefault);
    return text;
}

}  // namespace

TEST(ArrayCreation, ElementsAreRetainedByEveryArrayThatHoldsThem) {
    trackedFinalized = 0;
    auto a = tracked(1), b = tracked(2), c = tracked(3);
    const void* values[] = {a.get(), b.get(), c.get()};
    {
        auto array = own(CFArrayCreate(nullptr, values, 3, &kCFTypeArrayCallBacks));
        ASSERT_TRUE(array);
        EXPECT_EQ(CFGetTypeID(array), 19u);
        EXPECT_EQ(CFArrayGetTypeID(), 19u);
        EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(19))), "CFArray");
        EXPECT_FALSE(_CFArrayIsMutable(array));
        EXPECT_EQ(CFArrayGetCount(array), 3);
        EXPECT_EQ(CFArrayGetValueAtIndex(array, 1), b.get());
        EXPECT_EQ(CFGetRetainCount(a), 2);

        auto copy = own(CFArrayCreateCopy(nullptr, array));
        EXPECT_NE(copy.get(), array.get());
        EXPECT_FALSE(_CFArrayIsMutable(copy));
        EXPECT_EQ(CFGetRetainCount(b), 3);
        auto mutableCopy = own(CFArrayCreateMutableCopy(nullptr, 0, array));
        EXPECT_TRUE(_CFArrayIsMutable(mutableCopy));
        EXPECT_EQ(CFGetRetainCount(c), 4);
        EXPECT_EQ(idsOf(mutableCopy), (std::vector<long>{1, 2, 3}));

        // The copy of a mutable array keeps its values, not its mutability.
        CFArrayAppendValue(mutableCopy, a.get());
        auto frozen = own(CFArrayCreateCopy(nullptr, mutableCopy));
        EXPECT_EQ(idsOf(frozen), (std::vector<long>{1, 2, 3, 1}));
        EXPECT_EQ(CFGetRetainCount(a), 7);  // ours, array, copy, mutableCopy twice, frozen twice
    }
    EXPECT_EQ(CFGetRetainCount(a), 1);
    EXPECT_EQ(CFGetRetainCount(b), 1);
    EXPECT_EQ(CFGetRetainCount(c), 1);
    EXPECT_EQ(trackedFinalized, 0);

    // An array can be the last owner of its elements.
    {
        CFTypeRef only = newTracked(4);
        auto holder = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
        CFArrayAppendValue(holder, only);
        CFRelease(only);
        EXPECT_EQ(CFGetRetainCount(CFArrayGetValueAtIndex(holder, 0)), 1);
        EXPECT_EQ(trackedFinalized, 0);
    }
    EXPECT_EQ(trackedFinalized, 1);

    auto empty = own(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
    EXPECT_EQ(CFArrayGetCount(empty), 0);
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFArrayCreate(nullptr, nullptr, 2, &kCFTypeArrayCallBacks), nullptr);
        EXPECT_EQ(CFArrayCreate(nullptr, values, -1, &kCFTypeArrayCallBacks), nullptr);
        EXPECT_EQ(CFArrayCreateMutable(nullptr, -1, nullptr), nullptr);
        EXPECT_EQ(CFArrayCreateCopy(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFArrayCreateMutableCopy(nullptr, 0, reinterpret_cast<CFArrayRef>(CFSTR("x"))), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 5) << reports;
    EXPECT_EQ(CFArrayCreate(kCFAllocatorNull, values, 3, &kCFTypeArrayCallBacks), nullptr);
    EXPECT_EQ(CFGetRetainCount(a), 1);
}

TEST(ArrayMutation, RetainCountsFollowSetInsertRemoveAndReplace) {
    trackedFinalized = 0;
    auto a = tracked(1), b = tracked(2), c = tracked(3), d = tracked(4);
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, a.get());
    CFArrayAppendValue(array, b.get());
    // SetValueAtIndex at the count appends.
    CFArraySetValueAtIndex(array, 2, c.get());
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 2, 3}));
    EXPECT_EQ(CFGetRetainCount(c), 2);

    // Replacing a value releases the old one and retains the new one.
    CFArraySetValueAtIndex(array, 0, d.get());
    EXPECT_EQ(idsOf(array), (std::vector<long>{4, 2, 3}));
    EXPECT_EQ(CFGetRetainCount(a), 1);
    EXPECT_EQ(CFGetRetainCount(d), 2);

    // Setting the value already there keeps it alive even when the array
    // holds the only reference.
    {
        auto onlyInArray = tracked(9);
        CFArraySetValueAtIndex(array, 1, onlyInArray.get());
        EXPECT_EQ(CFGetRetainCount(b), 1);
    }
    EXPECT_EQ(CFGetRetainCount(CFArrayGetValueAtIndex(array, 1)), 1);
    CFArraySetValueAtIndex(array, 1, CFArrayGetValueAtIndex(array, 1));
    EXPECT_EQ(trackedFinalized, 0);
    EXPECT_EQ(idOf(CFArrayGetValueAtIndex(array, 1)), 9);

    CFArrayInsertValueAtIndex(array, 0, a.get());
    CFArrayInsertValueAtIndex(array, 2, b.get());
    CFArrayInsertValueAtIndex(array, 5, b.get());
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 4, 2, 9, 3, 2}));
    EXPECT_EQ(CFGetRetainCount(b), 3);

    CFArrayRemoveValueAtIndex(array, 3);  // the last reference to 9
    EXPECT_EQ(trackedFinalized, 1);
    CFArrayRemoveValueAtIndex(array, 4);
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 4, 2, 3}));
    EXPECT_EQ(CFGetRetainCount(b), 2);

    // Exchanging moves values without retaining or releasing them.
    CFArrayExchangeValuesAtIndices(array, 0, 3);
    CFArrayExchangeValuesAtIndices(array, 1, 1);
    EXPECT_EQ(idsOf(array), (std::vector<long>{3, 4, 2, 1}));
    EXPECT_EQ(CFGetRetainCount(a), 2);
    EXPECT_EQ(CFGetRetainCount(c), 2);

    // ReplaceValues is the general splice.
    const void* replacement[] = {c.get(), c.get(), c.get()};
    CFArrayReplaceValues(array, CFRangeMake(1, 2), replacement, 3);
    EXPECT_EQ(idsOf(array), (std::vector<long>{3, 3, 3, 3, 1}));
    EXPECT_EQ(CFGetRetainCount(c), 5);
    EXPECT_EQ(CFGetRetainCount(d), 1);
    EXPECT_EQ(CFGetRetainCount(b), 1);
    CFArrayReplaceValues(array, CFRangeMake(0, 4), nullptr, 0);
    EXPECT_EQ(idsOf(array), (std::vector<long>{1}));
    EXPECT_EQ(CFGetRetainCount(c), 1);
    CFArrayReplaceValues(array, CFRangeMake(1, 0), replacement, 2);
    CFArrayReplaceValues(array, CFRangeMake(0, 0), replacement, 1);
    EXPECT_EQ(idsOf(array), (std::vector<long>{3, 1, 3, 3}));

    CFArrayRemoveAllValues(array);
    EXPECT_EQ(CFArrayGetCount(array), 0);
    EXPECT_EQ(CFGetRetainCount(a), 1);
    EXPECT_EQ(CFGetRetainCount(c), 1);

    // Destroying the array releases what it still holds.
    CFArrayAppendValue(array, d.get());
    CFArrayAppendValue(array, d.get());
    EXPECT_EQ(CFGetRetainCount(d), 3);
    CFRelease(array);
    EXPECT_EQ(CFGetRetainCount(d), 1);
    EXPECT_EQ(trackedFinalized, 1);
}

TEST(ArrayMutation, AppendArrayAcceptsItself) {
    auto a = tracked(1), b = tracked(2);
    auto array = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array, a.get());
    CFArrayAppendValue(array, b.get());
    const void* moreValues[] = {b.get(), a.get(), b.get()};
    auto more = own(CFArrayCreate(nullptr, moreValues, 3, &kCFTypeArrayCallBacks));
    CFArrayAppendArray(array, more, CFRangeMake(1, 2));
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 2, 1, 2}));
    // Appending an array to itself reads the values before the buffer grows.
    std::vector<long> expected = idsOf(array);
    for (int i = 0; i < 5; ++i) {
        CFArrayAppendArray(array, array, CFRangeMake(0, CFArrayGetCount(array)));
        std::vector<long> twice = expected;
        twice.insert(twice.end(), expected.begin(), expected.end());
        expected = twice;
    }
    EXPECT_EQ(idsOf(array), expected);
    EXPECT_EQ(CFGetRetainCount(a), 1 + 1 + 64);  // ours, `more`'s, 64 in the array
    CFArrayAppendArray(array, array, CFRangeMake(0, 0));
    EXPECT_EQ(CFArrayGetCount(array), 128);
}

TEST(ArrayCallbacks, CustomCallbacksAreCopiedAndCalledOncePerValue) {
    calls = CallCounts();
    CFArrayCallBacks callBacks = {0, countingRetain, countingRelease, countingDescription, equalModuloTen};
    const void* values[] = {raw(1), raw(2), raw(3)};
    CFArrayRef array = CFArrayCreate(nullptr, values, 3, &callBacks);
    // Later changes to the caller's structure do not reach the array.
    callBacks.retain = nullptr;
    callBacks.release = nullptr;
    EXPECT_EQ(calls.retains, 3);

    CFMutableArrayRef mutableCopy = CFArrayCreateMutableCopy(nullptr, 0, array);
    EXPECT_EQ(calls.retains, 6);
    CFArrayAppendValue(mutableCopy, raw(14));
    CFArraySetValueAtIndex(mutableCopy, 0, raw(5));
    EXPECT_EQ(calls.retains, 8);
    EXPECT_EQ(calls.releases, 1);
    CFArrayRemoveValueAtIndex(mutableCopy, 1);
    CFArrayExchangeValuesAtIndices(mutableCopy, 0, 1);
    EXPECT_EQ(calls.retains, 8);
    EXPECT_EQ(calls.releases, 2);
    EXPECT_EQ(numbersOf(mutableCopy), (std::vector<intptr_t>{3, 5, 14}));

    // The equal callback decides matches when the pointers differ.
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(mutableCopy, CFRangeMake(0, 3), raw(24)), 2);
    EXPECT_EQ(calls.equals, 3);
    EXPECT_EQ(CFArrayGetCountOfValue(mutableCopy, CFRangeMake(0, 3), raw(13)), 1);
    EXPECT_TRUE(CFArrayContainsValue(mutableCopy, CFRangeMake(0, 3), raw(5)));
    EXPECT_FALSE(CFArrayContainsValue(mutableCopy, CFRangeMake(0, 3), raw(7)));

    auto description = own(CFCopyDescription(mutableCopy));
    EXPECT_EQ(calls.descriptions, 3);
    EXPECT_EQ(ascii(description), header(mutableCopy) +
                                      "{type = mutable-small, count = 3, values = (\n\t0 : item\n\t1 : item\n\t2 : "
                                      "item\n)}");

    CFRelease(mutableCopy);
    EXPECT_EQ(calls.releases, 5);
    CFRelease(array);
    EXPECT_EQ(calls.releases, 8);
    EXPECT_EQ(calls.retains, 8);
}

TEST(ArrayCallbacks, RetainMayStoreADifferentValue) {
    CFArrayCallBacks doubling = {0, [](CFAllocatorRef, const void* v) { return raw(number(v) * 2); }, nullptr, nullptr,
                                 nullptr};
    const void* values[] = {raw(1), raw(21)};
    auto array = own(CFArrayCreate(nullptr, values, 2, &doubling));
    EXPECT_EQ(numbersOf(array), (std::vector<intptr_t>{2, 42}));
}

TEST(ArrayCallbacks, NullCallbacksStoreRawPointers) {
    auto array = rawArray({0, 42, 7, 42});
    EXPECT_EQ(numbersOf(array), (std::vector<intptr_t>{0, 42, 7, 42}));
    EXPECT_EQ(CFArrayGetCountOfValue(array, CFRangeMake(0, 4), raw(42)), 2);
    EXPECT_EQ(CFArrayGetCountOfValue(array, CFRangeMake(0, 4), nullptr), 1);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 4), raw(42)), 1);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 4), raw(42)), 3);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 3), raw(42)), 1);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(2, 2), raw(0)), kCFNotFound);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(0, 0), raw(0)), kCFNotFound);

    // Only some callbacks: the missing ones fall back to raw behaviour.
    calls = CallCounts();
    CFArrayCallBacks onlyEqual = {0, nullptr, nullptr, nullptr, equalModuloTen};
    const void* values[] = {raw(3), raw(11)};
    auto partial = own(CFArrayCreate(nullptr, values, 2, &onlyEqual));
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(partial, CFRangeMake(0, 2), raw(21)), 1);
    // Identical pointers match without asking the callback.
    int equalsBefore = calls.equals;
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(partial, CFRangeMake(0, 2), raw(3)), 0);
    EXPECT_EQ(calls.equals, equalsBefore);
    EXPECT_EQ(ascii(own(CFCopyDescription(partial))),
              header(partial) + "{type = immutable, count = 2, values = (\n\t0 : <0x3>\n\t1 : <0xb>\n)}");
}

TEST(ArrayCapacity, NonZeroCapacityIsAHardLimit) {
    auto a = tracked(1), b = tracked(2), c = tracked(3);
    auto array = own(CFArrayCreateMutable(nullptr, 2, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array, a.get());
    CFArrayAppendValue(array, b.get());

    std::string reports = reportsOf([&] { CFArrayAppendValue(array, c.get()); });
    EXPECT_EQ(lineCount(reports), 1);
    EXPECT_NE(reports.find("CFArrayAppendValue"), std::string::npos) << reports;
    EXPECT_NE(reports.find("fixed-capacity CFMutableArray is full"), std::string::npos) << reports;

    const void* two[] = {c.get(), c.get()};
    auto other = own(CFArrayCreate(nullptr, two, 1, &kCFTypeArrayCallBacks));
    reports = reportsOf([&] {
        CFArrayInsertValueAtIndex(array, 0, c.get());
        CFArraySetValueAtIndex(array, 2, c.get());
        CFArrayReplaceValues(array, CFRangeMake(0, 1), two, 2);
        CFArrayAppendArray(array, other, CFRangeMake(0, 1));
    });
    EXPECT_EQ(lineCount(reports), 4) << reports;
    EXPECT_EQ(occurrences(reports, "fixed-capacity CFMutableArray is full"), 4) << reports;
    EXPECT_NE(reports.find("CFArraySetValueAtIndex(): fixed-capacity"), std::string::npos) << reports;
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 2}));
    // Refused values were not retained, and nothing was released.
    EXPECT_EQ(CFGetRetainCount(c), 2);  // ours and `other`'s
    EXPECT_EQ(CFGetRetainCount(a), 2);

    // Changes that keep the count within the capacity go through.
    CFArrayReplaceValues(array, CFRangeMake(0, 2), two, 2);
    EXPECT_EQ(idsOf(array), (std::vector<long>{3, 3}));
    CFArrayRemoveValueAtIndex(array, 0);
    CFArrayInsertValueAtIndex(array, 0, a.get());
    EXPECT_EQ(idsOf(array), (std::vector<long>{1, 3}));
    EXPECT_EQ(CFGetRetainCount(b), 1);

    // A mutable copy needs room for every value of its source.
    reports = reportsOf([&] {
        EXPECT_EQ(CFArrayCreateMutableCopy(nullptr, 1, array), nullptr);
        EXPECT_EQ(CFArrayCreateMutableCopy(nullptr, -2, array), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
    auto exact = own(CFArrayCreateMutableCopy(nullptr, 2, array));
    ASSERT_TRUE(exact);
    reports = reportsOf([&] { CFArrayAppendValue(exact, a.get()); });
    EXPECT_NE(reports.find("fixed-capacity CFMutableArray is full"), std::string::npos);
    EXPECT_EQ(idsOf(exact), (std::vector<long>{1, 3}));
    // Capacity 0 is unbounded.
    auto unbounded = rawArray({});
    for (int i = 0; i < 1000; ++i) CFArrayAppendValue(unbounded, raw(i));
    EXPECT_EQ(CFArrayGetCount(unbounded), 1000);
    EXPECT_EQ(number(CFArrayGetValueAtIndex(unbounded, 999)), 999);
}

TEST(ArraySearch, BinarySearchGivesTheFirstMatchOrTheInsertionPoint) {
    auto array = rawArray({10, 20, 20, 20, 30, 40});
    CFRange all = CFRangeMake(0, 6);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(20), compareNumbers, nullptr), 1);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(10), compareNumbers, nullptr), 0);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(5), compareNumbers, nullptr), 0);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(25), compareNumbers, nullptr), 4);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(40), compareNumbers, nullptr), 5);
    EXPECT_EQ(CFArrayBSearchValues(array, all, raw(99), compareNumbers, nullptr), 6);
    // Only the range is searched.
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(2, 3), raw(5), compareNumbers, nullptr), 2);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(2, 3), raw(35), compareNumbers, nullptr), 5);
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(3, 0), raw(35), compareNumbers, nullptr), 3);

    std::vector<intptr_t> visited;
    CFArrayApplyFunction(
        array, CFRangeMake(1, 4),
        [](const void* value, void* context) {
            static_cast<std::vector<intptr_t>*>(context)->push_back(number(value));
        },
        &visited);
    EXPECT_EQ(visited, (std::vector<intptr_t>{20, 20, 20, 30}));

    const void* window[3] = {};
    CFArrayGetValues(array, CFRangeMake(3, 3), window);
    EXPECT_EQ(number(window[0]), 20);
    EXPECT_EQ(number(window[2]), 40);

    // CFType callbacks find equal objects, not only the same pointer.
    auto strings = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(strings, CFSTR("fig"));
    CFArrayAppendValue(strings, string(u"pear"));
    CFArrayAppendValue(strings, string(u"fig"));
    EXPECT_EQ(CFArrayGetCountOfValue(strings, CFRangeMake(0, 3), string(u"fig")), 2);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(strings, CFRangeMake(0, 3), CFSTR("fig")), 2);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(strings, CFRangeMake(0, 3), CFSTR("pear")), 1);
    EXPECT_FALSE(CFArrayContainsValue(strings, CFRangeMake(0, 3), CFSTR("plum")));
}

TEST(ArraySort, MergeSortIsStableAndSortsOnlyTheRange) {
    struct Item {
        int key;
        int order;
    };
    std::vector<Item> items;
    for (int i = 0; i < 1000; ++i) items.push_back({(i * 7919) % 10, i});
    auto array = own(CFArrayCreateMutable(nullptr, 0, nullptr));
    for (const Item& item : items) CFArrayAppendValue(array, &item);
    auto byKey = [](const void* a, const void* b, void* context) -> CFComparisonResult {
        ++*static_cast<int*>(context);
        int x = static_cast<const Item*>(a)->key, y = static_cast<const Item*>(b)->key;
        return x < y ? kCFCompareLessThan : x > y ? kCFCompareGreaterThan : kCFCompareEqualTo;
    };
    int comparisons = 0;
    CFArraySortValues(array, CFRangeMake(0, 1000), byKey, &comparisons);
    EXPECT_GT(comparisons, 0);
    EXPECT_LT(comparisons, 20000);  // about n log n, far from n squared
    bool ordered = true;
    for (CFIndex i = 1; i < 1000; ++i) {
        auto previous = static_cast<const Item*>(CFArrayGetValueAtIndex(array, i - 1));
        auto current = static_cast<const Item*>(CFArrayGetValueAtIndex(array, i));
        ordered = ordered &&
                  (previous->key < current->key || (previous->key == current->key && previous->order < current->order));
    }
    EXPECT_TRUE(ordered);

    // Only the range moves.
    auto numbers = rawArray({9, 8, 7, 3, 1, 2, 0});
    CFArraySortValues(numbers, CFRangeMake(2, 4), compareNumbers, nullptr);
    EXPECT_EQ(numbersOf(numbers), (std::vector<intptr_t>{9, 8, 1, 2, 3, 7, 0}));

    // A comparator that contradicts itself scrambles the order but loses nothing.
    std::vector<intptr_t> many;
    for (int i = 0; i < 300; ++i) many.push_back(i);
    auto scrambled = rawArray(many);
    int counter = 0;
    CFArraySortValues(
        scrambled, CFRangeMake(0, 300),
        [](const void*, const void*, void* context) -> CFComparisonResult {
            return CFComparisonResult((*static_cast<int*>(context))++ % 3) - 1;
        },
        &counter);
    std::vector<intptr_t> after = numbersOf(scrambled);
    std::sort(after.begin(), after.end());
    EXPECT_EQ(after, many);

    // Immutable arrays are left alone.
    const void* values[] = {raw(3), raw(1), raw(2)};
    auto immutable = own(CFArrayCreate(nullptr, values, 3, nullptr));
    std::string reports = reportsOf([&] {
        CFArraySortValues(const_cast<CFMutableArrayRef>(immutable.get()), CFRangeMake(0, 3), compareNumbers, nullptr);
        CFArraySortValues(numbers, CFRangeMake(0, 3), nullptr, nullptr);
        CFArraySortValues(numbers, CFRangeMake(5, 3), compareNumbers, nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);
    EXPECT_EQ(numbersOf(immutable), (std::vector<intptr_t>{3, 1, 2}));
    EXPECT_EQ(numbersOf(numbers), (std::vector<intptr_t>{9, 8, 1, 2, 3, 7, 0}));
}

TEST(ArrayEquality, CountCallbacksAndElementsDecide) {
    const void* values[] = {CFSTR("a"), CFSTR("b")};
    auto immutable = own(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
    auto mutableArray = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(mutableArray, string(u"a"));
    CFArrayAppendValue(mutableArray, string(u"b"));
    EXPECT_TRUE(CFEqual(immutable, mutableArray));
    EXPECT_TRUE(CFEqual(mutableArray, immutable));
    EXPECT_EQ(CFHash(immutable), 2u);
    EXPECT_EQ(CFHash(mutableArray), 2u);

    CFArrayExchangeValuesAtIndices(mutableArray, 0, 1);
    EXPECT_FALSE(CFEqual(immutable, mutableArray));
    CFArrayRemoveValueAtIndex(mutableArray, 0);
    EXPECT_FALSE(CFEqual(immutable, mutableArray));
    EXPECT_EQ(CFHash(mutableArray), 1u);

    // Different equal callbacks: never equal, even when empty or when the
    // elements are the same pointers.
    auto emptyTyped = own(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
    auto emptyRaw = own(CFArrayCreate(nullptr, nullptr, 0, nullptr));
    EXPECT_FALSE(CFEqual(emptyTyped, emptyRaw));
    EXPECT_TRUE(CFEqual(emptyRaw, own(CFArrayCreateMutable(nullptr, 0, nullptr))));
    auto sameValuesRaw = own(CFArrayCreate(nullptr, values, 2, nullptr));
    EXPECT_FALSE(CFEqual(immutable, sameValuesRaw));
    // Raw arrays compare pointers.
    EXPECT_TRUE(CFEqual(sameValuesRaw, own(CFArrayCreateCopy(nullptr, sameValuesRaw))));
    auto anotherA = string(u"a");
    const void* equalStrings[] = {anotherA.get(), CFSTR("b")};
    EXPECT_FALSE(CFEqual(sameValuesRaw, own(CFArrayCreate(nullptr, equalStrings, 2, nullptr))));

    // Nested arrays compare by content.
    const void* outerValues[] = {immutable.get()};
    auto immutableCopy = own(CFArrayCreateCopy(nullptr, immutable));
    const void* otherOuterValues[] = {immutableCopy.get()};
    auto outer = own(CFArrayCreate(nullptr, outerValues, 1, &kCFTypeArrayCallBacks));
    auto otherOuter = own(CFArrayCreate(nullptr, otherOuterValues, 1, &kCFTypeArrayCallBacks));
    EXPECT_TRUE(CFEqual(outer, otherOuter));
    EXPECT_FALSE(CFEqual(outer, immutable));
}

TEST(ArrayDescription, ElementLinesAndTypes) {
    auto a = string(u"a");
    const void* values[] = {a.get(), CFSTR("b")};
    auto array = own(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
    std::string expected = header(array) +
                           "{type = immutable, count = 2, values = (\n\t0 : " + ascii(own(CFCopyDescription(a))) +
                           "\n\t1 : " + ascii(own(CFCopyDescription(CFSTR("b")))) + "\n)}";
    EXPECT_EQ(ascii(own(CFCopyDescription(array))), expected);

    auto empty = own(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
    EXPECT_EQ(ascii(own(CFCopyDescription(empty))), header(empty) + "{type = immutable, count = 0, values = ()}");
    auto emptyMutable = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    EXPECT_EQ(ascii(own(CFCopyDescription(emptyMutable))),
              header(emptyMutable) + "{type = mutable-small, count = 0, values = ()}");

    // Without a copyDescription callback: the pointer, 0x0 for NULL.
    auto raw = rawArray({0x2a, 0, 0xbeef});
    EXPECT_EQ(ascii(own(CFCopyDescription(raw))),
              header(raw) +
                  "{type = mutable-small, count = 3, values = (\n\t0 : <0x2a>\n\t1 : <0x0>\n\t2 : "
                  "<0xbeef>\n)}");

    // Nested arrays print their own description in place.
    const void* nestedValues[] = {array.get()};
    auto nested = own(CFArrayCreate(nullptr, nestedValues, 1, &kCFTypeArrayCallBacks));
    EXPECT_EQ(ascii(own(CFCopyDescription(nested))),
              header(nested) + "{type = immutable, count = 1, values = (\n\t0 : " + expected + "\n)}");

    // An array that contains itself is described to a bounded depth.
    auto loop = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(loop, loop.get());
    std::string text = ascii(own(CFCopyDescription(loop)));
    EXPECT_EQ(occurrences(text, "{type = mutable-small, count = 1, values = ("), 257);
    EXPECT_EQ(occurrences(text, "values = (...)}"), 1);

    // Two distinct arrays that contain themselves: comparing them stops at
    // the same depth, says so once and answers false.
    auto otherLoop = own(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(otherLoop, otherLoop.get());
    std::string reports = reportsOf([&] { EXPECT_FALSE(CFEqual(loop, otherLoop)); });
    EXPECT_EQ(lineCount(reports), 1) << reports;

    // Breaking the cycles lets the arrays go.
    CFArrayRemoveAllValues(loop);
    CFArrayRemoveAllValues(otherLoop);
    EXPECT_EQ(CFGetRetainCount(loop), 1);
    EXPECT_EQ(CFGetRetainCount(otherLoop), 1);
}

// The in-place reading agrees with the functions for immutable arrays (values
// in the object's block) and mutable ones (values in a buffer that moves as
// it grows), and leaves anything else to CFArrayGetCount.
TEST(ArrayInPlace, CountAndValuesAgreeWithTheFunctions) {
    const void* values[] = {raw(5), raw(6), raw(7)};
    auto immutable = own(CFArrayCreate(nullptr, values, 3, nullptr));
    auto growing = rawArray({});
    for (intptr_t n = 0; n < 1000; ++n) {
        CFArrayAppendValue(growing, raw(n * 3));
        ASSERT_EQ(_CFArrayGetCountInPlace(growing), n + 1);
        ASSERT_EQ(_CFArrayGetValueAtIndexInPlace(growing, n), raw(n * 3));
    }
    CFArrayRemoveValueAtIndex(growing, 0);
    CFArrayInsertValueAtIndex(growing, 10, raw(-4));
    for (CFArrayRef array : {static_cast<CFArrayRef>(immutable.get()), static_cast<CFArrayRef>(growing.get())}) {
        ASSERT_EQ(_CFArrayGetCountInPlace(array), CFArrayGetCount(array));
        for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
            ASSERT_EQ(_CFArrayGetValueAtIndexInPlace(array, i), CFArrayGetValueAtIndex(array, i));
        }
    }
    EXPECT_EQ(_CFArrayGetValueAtIndexInPlace(growing, 10), raw(-4));
    EXPECT_EQ(_CFArrayGetCountInPlace(immutable), 3);
    EXPECT_EQ(_kCFArrayTypeID, CFArrayGetTypeID());

    std::string reports = reportsOf([] {
        EXPECT_EQ(_CFArrayGetCountInPlace(nullptr), 0);
        EXPECT_EQ(_CFArrayGetCountInPlace(reinterpret_cast<CFArrayRef>(CFSTR("text"))), 0);
    });
    EXPECT_EQ(reports,
              "CFArray: CFArrayGetCount(): NULL is not an array\n"
              "CFArray: CFArrayGetCount(): the argument is not an array\n");
}

TEST(ArrayMisuse, WrongArgumentsGiveNeutralResults) {
    auto array = rawArray({1, 2, 3});
    const void* values[] = {raw(7)};
    auto immutable = own(CFArrayCreate(nullptr, values, 1, nullptr));
    auto asMutable = const_cast<CFMutableArrayRef>(immutable.get());
    auto notAnArray = reinterpret_cast<CFMutableArrayRef>(const_cast<__CFString*>(CFSTR("text")));
    const void* buffer[3] = {raw(-1), raw(-1), raw(-1)};
    int applied = 0;
    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFArrayGetValueAtIndex(array, 3), nullptr);
        EXPECT_EQ(CFArrayGetValueAtIndex(array, -1), nullptr);
        CFArrayGetValues(array, CFRangeMake(2, 2), buffer);
        CFArrayGetValues(array, CFRangeMake(0, 1), nullptr);
        EXPECT_EQ(CFArrayGetCountOfValue(array, CFRangeMake(-1, 2), raw(1)), 0);
        EXPECT_FALSE(CFArrayContainsValue(array, CFRangeMake(0, 4), raw(1)));
        EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(4, 0), raw(1)), kCFNotFound);
        EXPECT_EQ(CFArrayGetLastIndexOfValue(array, CFRangeMake(1, LONG_MAX), raw(1)), kCFNotFound);
        EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(0, 3), raw(1), nullptr, nullptr), kCFNotFound);
        CFArrayApplyFunction(
            array, CFRangeMake(0, 9), [](const void*, void* c) { ++*static_cast<int*>(c); }, &applied);
        CFArrayApplyFunction(array, CFRangeMake(0, 3), nullptr, nullptr);
        CFArraySetValueAtIndex(array, 4, raw(9));
        CFArrayInsertValueAtIndex(array, 4, raw(9));
        CFArrayRemoveValueAtIndex(array, 3);
        CFArrayExchangeValuesAtIndices(array, 0, 3);
        CFArrayReplaceValues(array, CFRangeMake(2, 2), values, 1);
        CFArrayReplaceValues(array, CFRangeMake(0, 1), nullptr, 1);
        CFArrayAppendArray(array, immutable, CFRangeMake(1, 1));
        CFArrayAppendArray(array, nullptr, CFRangeMake(0, 0));
        // Immutable arrays refuse every change.
        CFArrayAppendValue(asMutable, raw(8));
        CFArraySetValueAtIndex(asMutable, 0, raw(8));
        CFArrayRemoveAllValues(asMutable);
        CFArrayExchangeValuesAtIndices(asMutable, 0, 0);
        // NULL and objects of another type.
        EXPECT_EQ(CFArrayGetCount(nullptr), 0);
        EXPECT_EQ(CFArrayGetValueAtIndex(nullptr, 0), nullptr);
        EXPECT_FALSE(_CFArrayIsMutable(nullptr));
        EXPECT_EQ(CFArrayGetCount(notAnArray), 0);
        CFArrayAppendValue(notAnArray, raw(1));
        CFArrayAppendValue(nullptr, raw(1));
    });
    EXPECT_EQ(lineCount(reports), 29) << reports;
    EXPECT_NE(reports.find("CFArray: CFArrayGetValueAtIndex(): index (3) out of bounds (count 3)"), std::string::npos)
        << reports;
    EXPECT_NE(reports.find("CFArray: CFArrayAppendValue(): Expect mutable array"), std::string::npos) << reports;
    EXPECT_EQ(applied, 0);
    EXPECT_EQ(number(buffer[0]), -1);
    EXPECT_EQ(numbersOf(array), (std::vector<intptr_t>{1, 2, 3}));
    EXPECT_EQ(numbersOf(immutable), (std::vector<intptr_t>{7}));
    EXPECT_EQ(ascii(CFSTR("text")), "text");
}
