// The runtime: class registration, instance creation, reference counting and
// dispatch of equality, hashing and descriptions through class records.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <regex>
#include <thread>
#include <vector>

using namespace cftest;

namespace {

struct Counter {
    CFRuntimeBase base;
    long value;
    char padding[40];
};

std::atomic<int> initCalls{0};
std::atomic<int> finalizeCalls{0};
std::atomic<int> reclaimCalls{0};

void counterInit(CFTypeRef cf) {
    ++initCalls;
    auto* counter = static_cast<Counter*>(const_cast<void*>(cf));
    // Everything after the header arrives zeroed.
    bool zeroed = counter->value == 0;
    for (char c : counter->padding) zeroed = zeroed && c == 0;
    counter->value = zeroed ? 7 : -1;
}

void counterFinalize(CFTypeRef) { ++finalizeCalls; }
void counterReclaim(CFTypeRef) {
    // Runs before finalize.
    reclaimCalls = finalizeCalls.load() + 1;
}

Boolean counterEqual(CFTypeRef a, CFTypeRef b) {
    return static_cast<const Counter*>(a)->value == static_cast<const Counter*>(b)->value;
}

CFHashCode counterHash(CFTypeRef cf) { return CFHashCode(static_cast<const Counter*>(cf)->value) * 31; }

CFStringRef counterDebugDescription(CFTypeRef cf) {
    return static_cast<const Counter*>(cf)->value < 0 ? nullptr : CFSTR("a counter");
}

const CFRuntimeClass counterClass = {_kCFRuntimeResourcefulObject,
                                     "Counter",
                                     counterInit,
                                     nullptr,
                                     counterFinalize,
                                     counterEqual,
                                     counterHash,
                                     nullptr,
                                     counterDebugDescription,
                                     counterReclaim,
                                     nullptr,
                                     0};

const CFRuntimeClass plainClass = {0,       "Plain", nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr, nullptr, 0};

Counter* newCounter(CFTypeID typeID, long value) {
    auto* counter = static_cast<Counter*>(const_cast<void*>(
        _CFRuntimeCreateInstance(kCFAllocatorDefault, typeID, sizeof(Counter) - sizeof(CFRuntimeBase), nullptr)));
    if (counter != nullptr && value != 7) counter->value = value;
    return counter;
}

// Custom reference counting, as a class with version bit 8 does it.
struct Manual {
    CFRuntimeBase base;
    int count;
};
std::atomic<int> manualFrees{0};
uint32_t manualRefcount(intptr_t op, CFTypeRef cf) {
    auto* m = static_cast<Manual*>(const_cast<void*>(cf));
    if (op == 1) {
        ++m->count;
    } else if (op == -1) {
        if (--m->count == 0) {
            ++manualFrees;
            std::free(m);
        }
    } else {
        return uint32_t(m->count);
    }
    return 0;
}
const CFRuntimeClass manualClass = {_kCFRuntimeCustomRefCount, "Manual", nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, manualRefcount, 0};

// Classes registered once per process and shared by the tests below.
CFTypeID counterType() {
    static CFTypeID typeID = _CFRuntimeRegisterClass(&counterClass);
    return typeID;
}
CFTypeID plainType() {
    static CFTypeID typeID = _CFRuntimeRegisterClass(&plainClass);
    return typeID;
}
CFTypeID manualType() {
    static CFTypeID typeID = _CFRuntimeRegisterClass(&manualClass);
    return typeID;
}

}  // namespace

// Numbering is checked in a freshly started copy of this program, where no
// class has been registered yet.
TEST(Runtime, ClientClassesAreNumberedFrom256InOrder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CFRuntimeClass nameless = plainClass;
            nameless.className = nullptr;
            CFRuntimeClass customWithoutCallback = plainClass;
            customWithoutCallback.version = _kCFRuntimeCustomRefCount;
            // Refused records do not use up IDs.
            bool refused = _CFRuntimeRegisterClass(&nameless) == 0 && _CFRuntimeRegisterClass(nullptr) == 0 &&
                           _CFRuntimeRegisterClass(&customWithoutCallback) == 0;
            CFTypeID first = _CFRuntimeRegisterClass(&counterClass);
            CFTypeID second = _CFRuntimeRegisterClass(&plainClass);
            std::exit(refused && first == 256 && second == 257 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(Runtime, UnregisteredClassesCannotBeInstantiated) {
    static const CFRuntimeClass temporary = plainClass;
    CFTypeID typeID = _CFRuntimeRegisterClass(&temporary);
    ASSERT_GE(typeID, 256u);
    EXPECT_EQ(_CFRuntimeGetClassWithTypeID(typeID), &temporary);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(typeID))), "Plain");

    _CFRuntimeUnregisterClassWithTypeID(typeID);
    EXPECT_EQ(_CFRuntimeGetClassWithTypeID(typeID), nullptr);
    EXPECT_EQ(_CFRuntimeCreateInstance(nullptr, typeID, 8, nullptr), nullptr);
    EXPECT_EQ(CFCopyTypeIDDescription(typeID), nullptr);
}

TEST(Runtime, InstancesAreZeroedInitialisedCountedAndFinalised) {
    CFTypeID typeID = counterType();
    initCalls = finalizeCalls = reclaimCalls = 0;

    Counter* counter = newCounter(typeID, 7);
    ASSERT_NE(counter, nullptr);
    EXPECT_EQ(initCalls, 1);
    EXPECT_EQ(counter->value, 7);
    EXPECT_EQ(CFGetTypeID(counter), typeID);
    EXPECT_EQ(CFGetRetainCount(counter), 1);
    EXPECT_EQ(CFRetain(counter), counter);
    EXPECT_EQ(CFGetRetainCount(counter), 2);
    CFRelease(counter);
    EXPECT_EQ(CFGetRetainCount(counter), 1);
    EXPECT_EQ(finalizeCalls, 0);
    CFRelease(counter);
    EXPECT_EQ(finalizeCalls, 1);
    EXPECT_EQ(reclaimCalls, 1);

    EXPECT_EQ(_CFRuntimeCreateInstance(kCFAllocatorNull, typeID, 8, nullptr), nullptr);
    EXPECT_EQ(_CFRuntimeCreateInstance(nullptr, typeID, -1, nullptr), nullptr);
    unsigned char category = 0;
    EXPECT_EQ(_CFRuntimeCreateInstance(nullptr, typeID, 8, &category), nullptr);
    EXPECT_EQ(_CFRuntimeCreateInstance(nullptr, 999, 8, nullptr), nullptr);
}

TEST(Runtime, EqualityAndHashGoThroughTheClass) {
    auto a = own<CFTypeRef>(newCounter(counterType(), 3));
    auto b = own<CFTypeRef>(newCounter(counterType(), 3));
    auto c = own<CFTypeRef>(newCounter(counterType(), 4));
    EXPECT_TRUE(CFEqual(a, b));
    EXPECT_FALSE(CFEqual(a, c));
    EXPECT_EQ(CFHash(a), 93u);

    // No equal callback: identity only; no hash callback: the address.
    auto p = own(_CFRuntimeCreateInstance(nullptr, plainType(), 0, nullptr));
    auto q = own(_CFRuntimeCreateInstance(nullptr, plainType(), 0, nullptr));
    EXPECT_TRUE(CFEqual(p, p));
    EXPECT_FALSE(CFEqual(p, q));
    EXPECT_EQ(CFHash(p), CFHashCode(reinterpret_cast<uintptr_t>(p.get())));

    // Objects of different types are never equal, whatever the callbacks say.
    EXPECT_FALSE(CFEqual(a, p));
    EXPECT_FALSE(CFEqual(a, CFSTR("a counter")));
}

TEST(Runtime, DescriptionsUseTheCallbackOrTheClassNameAndAddresses) {
    auto described = own<CFTypeRef>(newCounter(counterType(), 1));
    auto description = own(CFCopyDescription(described));
    EXPECT_EQ(ascii(description), "a counter");

    // A callback that returns NULL falls back to the generic form.
    auto undescribed = own<CFTypeRef>(newCounter(counterType(), -5));
    auto fallback = own(CFCopyDescription(undescribed));
    char expected[96];
    std::snprintf(expected, sizeof expected, "<Counter 0x%lx [0x%lx]>", (unsigned long)undescribed.get(),
                  (unsigned long)kCFAllocatorSystemDefault);
    EXPECT_EQ(ascii(fallback), expected);

    auto plain = own(_CFRuntimeCreateInstance(nullptr, plainType(), 0, nullptr));
    auto plainDescription = own(CFCopyDescription(plain));
    EXPECT_TRUE(std::regex_match(ascii(plainDescription), std::regex("<Plain 0x[0-9a-f]+ \\[0x[0-9a-f]+\\]>")));
}

TEST(Runtime, CustomReferenceCountingIsDelegated) {
    auto* m = static_cast<Manual*>(const_cast<void*>(_CFRuntimeCreateInstance(nullptr, manualType(), 8, nullptr)));
    ASSERT_NE(m, nullptr);
    m->count = 1;
    CFRetain(m);
    EXPECT_EQ(m->count, 2);
    EXPECT_EQ(CFGetRetainCount(m), 2);
    CFRelease(m);
    CFRelease(m);
    EXPECT_EQ(manualFrees, 1);
}

TEST(Runtime, NullArgumentsGiveNeutralResults) {
    EXPECT_EQ(CFRetain(nullptr), nullptr);
    CFRelease(nullptr);
    EXPECT_EQ(CFGetRetainCount(nullptr), 0);
    EXPECT_EQ(CFHash(nullptr), 0u);
    EXPECT_FALSE(CFEqual(nullptr, nullptr));
    EXPECT_FALSE(CFEqual(nullptr, CFSTR("x")));
    EXPECT_FALSE(CFEqual(CFSTR("x"), nullptr));
    EXPECT_EQ(CFGetTypeID(nullptr), 0u);
    EXPECT_EQ(CFCopyDescription(nullptr), nullptr);
    EXPECT_EQ(CFGetAllocator(nullptr), kCFAllocatorSystemDefault);
}

TEST(Runtime, ReferenceCountingIsAtomic) {
    CFTypeID typeID = counterType();
    finalizeCalls = 0;
    Counter* counter = newCounter(typeID, 7);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([counter] {
            for (int i = 0; i < 100000; ++i) {
                CFRetain(counter);
                CFRelease(counter);
            }
            CFRetain(counter);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(counter), 5);
    for (int i = 0; i < 5; ++i) CFRelease(counter);
    EXPECT_EQ(finalizeCalls, 1);
}

#if defined(HALVANE_CF_KNOWS_SINGLE_THREADED)
// Counts are updated without a lock only until a second thread exists; the
// check runs in a freshly started copy of this program, which has one.
TEST(Runtime, PlainCountsEndWhenASecondThreadStarts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            bool alone = _CFRuntimeIsSingleThreaded();
            std::atomic<bool> stop{false};
            std::thread second([&stop] {
                while (!stop) std::this_thread::yield();
            });
            bool accompanied = !_CFRuntimeIsSingleThreaded();
            stop = true;
            second.join();
            std::exit(alone && accompanied ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
#endif

// The in-place forms keep the same count as the library's functions, in a
// process with one thread and after a second one has started.
TEST(Runtime, InPlaceRetainAndReleaseKeepTheLibrarysCount) {
    CFTypeID typeID = counterType();
    finalizeCalls = 0;
    Counter* counter = newCounter(typeID, 7);
    EXPECT_EQ(_CFRuntimeGetTypeID(counter), typeID);
    EXPECT_EQ(_CFRuntimeGetTypeID(counter), CFGetTypeID(counter));
    EXPECT_EQ(_CFRuntimeGetTypeID(CFSTR("x")), CFStringGetTypeID());
    EXPECT_EQ(_CFRuntimeGetTypeID(nullptr), 0u);

    EXPECT_EQ(_CFRuntimeRetain(counter), counter);
    CFRetain(counter);
    EXPECT_EQ(CFGetRetainCount(counter), 3);
    _CFRuntimeRelease(counter);
    CFRelease(counter);
    EXPECT_EQ(CFGetRetainCount(counter), 1);
    EXPECT_EQ(finalizeCalls, 0);

    // A second thread turns every later update into a locked one; the
    // counts written before it started are what it sees.
    std::thread([counter] {
        for (int i = 0; i < 1000; ++i) _CFRuntimeRetain(counter);
    }).join();
    EXPECT_FALSE(_CFRuntimeIsSingleThreaded());
    EXPECT_EQ(CFGetRetainCount(counter), 1001);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([counter] {
            for (int i = 0; i < 100000; ++i) {
                _CFRuntimeRetain(counter);
                _CFRuntimeRelease(counter);
            }
            for (int i = 0; i < 250; ++i) _CFRuntimeRelease(counter);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(counter), 1);
    EXPECT_EQ(finalizeCalls, 0);
    // The last release, in place or not, frees the object.
    _CFRuntimeRelease(counter);
    EXPECT_EQ(finalizeCalls, 1);
}

// Objects that keep no count of the runtime's own go to the library's
// functions from the in-place forms too.
TEST(Runtime, InPlaceRetainAndReleaseLeaveUncountedObjectsToTheirClass) {
    _CFRuntimeRetain(nullptr);
    _CFRuntimeRelease(nullptr);

    static Counter staticCounter;
    _CFRuntimeInitStaticInstance(&staticCounter, counterType());
    finalizeCalls = 0;
    _CFRuntimeRetain(&staticCounter);
    _CFRuntimeRelease(&staticCounter);
    _CFRuntimeRelease(&staticCounter);
    EXPECT_EQ(CFGetRetainCount(&staticCounter), 0x0FFFFFFFFFFFFFFFL);
    EXPECT_EQ(finalizeCalls, 0);

    manualFrees = 0;
    auto* m = static_cast<Manual*>(const_cast<void*>(_CFRuntimeCreateInstance(nullptr, manualType(), 8, nullptr)));
    ASSERT_NE(m, nullptr);
    m->count = 1;
    _CFRuntimeRetain(m);
    EXPECT_EQ(m->count, 2);
    _CFRuntimeRelease(m);
    _CFRuntimeRelease(m);
    EXPECT_EQ(manualFrees, 1);
}

TEST(Runtime, StaticInstancesAreImmortal) {
    CFTypeID typeID = counterType();
    finalizeCalls = 0;
    static Counter staticCounter;
    _CFRuntimeInitStaticInstance(&staticCounter, typeID);
    EXPECT_EQ(CFGetTypeID(&staticCounter), typeID);
    CFRetain(&staticCounter);
    CFRelease(&staticCounter);
    CFRelease(&staticCounter);
    EXPECT_EQ(CFGetRetainCount(&staticCounter), kImmortal);
    EXPECT_EQ(finalizeCalls, 0);
}

TEST(Runtime, BuiltinTypeIDsAndNames) {
    EXPECT_EQ(CFTypeGetTypeID(), 1u);
    EXPECT_EQ(CFAllocatorGetTypeID(), 2u);
    EXPECT_EQ(CFStringGetTypeID(), 7u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFStringGetTypeID()))), "CFString");
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFTypeGetTypeID()))), "CFType");
    EXPECT_EQ(CFCopyTypeIDDescription(0), nullptr);
    EXPECT_EQ(CFCopyTypeIDDescription(5000), nullptr);
}

TEST(Allocators, BuiltinAllocatorsAndTheNullAllocator) {
    EXPECT_EQ(kCFAllocatorDefault, nullptr);
    EXPECT_EQ(CFAllocatorGetDefault(), kCFAllocatorSystemDefault);
    EXPECT_EQ(CFGetTypeID(kCFAllocatorSystemDefault), CFAllocatorGetTypeID());
    EXPECT_EQ(CFGetRetainCount(kCFAllocatorMalloc), kImmortal);

    for (CFAllocatorRef allocator : {kCFAllocatorDefault, kCFAllocatorSystemDefault, kCFAllocatorMalloc}) {
        auto* bytes = static_cast<char*>(CFAllocatorAllocate(allocator, 32, 0));
        ASSERT_NE(bytes, nullptr);
        std::memset(bytes, 'x', 32);
        bytes = static_cast<char*>(CFAllocatorReallocate(allocator, bytes, 64, 0));
        ASSERT_NE(bytes, nullptr);
        EXPECT_EQ(bytes[31], 'x');
        CFAllocatorDeallocate(allocator, bytes);
    }
    EXPECT_EQ(CFAllocatorAllocate(kCFAllocatorNull, 32, 0), nullptr);
    EXPECT_EQ(CFAllocatorAllocate(nullptr, 0, 0), nullptr);
    char stack[4];
    CFAllocatorDeallocate(kCFAllocatorNull, stack);  // never frees

    auto description = own(CFCopyDescription(kCFAllocatorMalloc));
    EXPECT_TRUE(std::regex_match(ascii(description), std::regex("<CFAllocator 0x[0-9a-f]+ \\[0x[0-9a-f]+\\]>\\{malloc\\}")));
}
